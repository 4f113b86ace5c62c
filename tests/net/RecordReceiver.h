#pragma once

#include <tessel/net/commmsg.h>
#include <tessel/net/msgsocket.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// A record's data; the record is deleted.
inline std::string TakeText(CCommMsg* record) {
    const std::string text(reinterpret_cast<const char*>(record->GetData()), record->GetLength());
    delete record;
    return text;
}

/// Keeps what is delivered, and disconnects after as many records as it is told or does something else meanwhile.
class RecordReceiver : public CMsgSocket {
public:
    using CMsgSocket::CMsgSocket;

    std::vector<std::string> records;
    int closes = 0;
    std::size_t disconnectAt = 0;    ///< 0: never
    std::function<void()> meanwhile; ///< done once, while a record is delivered

private:
    void OnReadMsg(CCommMsg* record) override {
        records.push_back(TakeText(record));
        if (records.size() == disconnectAt) Disconnect();
        if (const auto now = std::exchange(meanwhile, nullptr)) now();
    }
    void OnClose() override { ++closes; }
};
