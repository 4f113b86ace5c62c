#include "support/Loopback.h"

#include <gtest/gtest.h>

#include <thread>
#include <tuple>

namespace {

std::string Record(unsigned int total, unsigned int length, const std::string& data) {
    const MESSAGE head{total, length, 7};
    return std::string(reinterpret_cast<const char*>(&head), sizeof head) + data;
}

/// Reads a message and its data; the data stays as it is after a failure.
int Read(const Connection& connection, std::string& data, MESSAGE** message) {
    unsigned long length = 0;
    CSocket any; // the socket to read from is an argument
    const int result = any.ReadMessage(connection.handle, message, length);
    if (result == 0) data.assign(reinterpret_cast<const char*>((*message)->GetData()), length);
    return result;
}

} // namespace

TEST(SocketMessages, Odd76ATypedRecordArrivesAndALongOneGrowsTheBuffer) {
    Connection connection(CSocket::MODE_BLOCKING);
    CSocket sender(std::exchange(connection.bare, INVALID_SOCKET), CSocket::MODE_BLOCKING, nullptr);
    std::string got;
    const MESSAGE* last = nullptr;
    for (const std::size_t size : {0u, 5u, 5120u, 5121u, 3000000u, 100u}) {
        const std::string data(size, 'd');
        std::thread sending(
            [&] { EXPECT_EQ(sender.WriteMessage(0xFFFE, data.data(), static_cast<unsigned long>(size)), 0); });
        MESSAGE* message = nullptr;
        ASSERT_EQ(Read(connection, got, &message), 0);
        sending.join();
        EXPECT_TRUE(got == data) << size;
        EXPECT_EQ(message->usType, 0xFFFE);
        EXPECT_EQ(message->ulTotalLength, size + 10);
        EXPECT_EQ(message == last, size == 5 || size == 5120 || size == 100) << size << ": it never shrinks";
        last = message;
    }
}

TEST(SocketMessages, ARecordInPartsIsAwaited) {
    const Connection connection(CSocket::MODE_EVENT);
    const std::string record = Record(13, 3, "abc");
    connection.Send(record.substr(0, 6));
    std::thread sending([&] { connection.Send(record.substr(6)); });
    std::string got;
    MESSAGE* message = nullptr;
    EXPECT_EQ(Read(connection, got, &message), 0);
    sending.join();
    EXPECT_EQ(got, "abc");
}

TEST(SocketMessages, IncompleteOrContradictoryRecordsFailButGiveTheirLength) {
    constexpr unsigned long kUnset = 77;
    constexpr unsigned int kTooLong = 0x7FFFFFFF;
    const std::tuple<std::string, unsigned int, unsigned long, bool> rows[] = {
        {"", 0, kUnset, false},
        {"short", 9, kUnset, false},
        {Record(13, 3, "").substr(0, 8), 9, 3, false},
        {Record(0, 0, ""), 0, 0, false},
        {Record(9, 0, "x"), 0, 0, false},
        {Record(13, 4, "abc"), 0, 4, false},
        {Record(13, 0xFFFFFFFF, "abc"), 0, 0xFFFFFFFF, false},
        {Record(13, 3, "ab"), 9, 3, false},
        {Record(0xFFFFFFFF, kTooLong, "abc"), 0, kTooLong, false},
        {Record(13, 3, "ab"), 0, 3, true}};
    std::vector<DWORD> pauses;
    const ImportPatch patch("Sleep", &Sleep, [&](DWORD milliseconds) { pauses.push_back(milliseconds); });
    for (const auto& [bytes, expected, length, closed] : rows) {
        Connection connection(closed ? CSocket::MODE_BLOCKING : CSocket::MODE_EVENT);
        connection.Send(bytes);
        if (closed) connection.Close();
        pauses.clear();
        unsigned long claimed = kUnset;
        MESSAGE* message = nullptr;
        EXPECT_EQ(CSocket().ReadMessage(connection.handle, &message, claimed), 1);
        EXPECT_EQ(claimed, length) << testing::PrintToString(bytes);
        const std::vector<DWORD> awaited(claimed == kTooLong ? pauses.size() : expected, 100); // memory may allow it
        EXPECT_EQ(pauses, awaited) << testing::PrintToString(bytes);
    }
}

TEST(SocketMessages, Odd83WhatASocketDoesNotTakeAtOnceIsLost) {
    const Connection connection(CSocket::MODE_EVENT);
    int ready = 1;
    const ImportPatch patch("select", &select, [&](auto...) { return ready; }); // the peer reads nothing
    const std::vector<char> large(50000000);
    EXPECT_EQ(connection.own->WriteMessage(1, large.data(), static_cast<unsigned long>(large.size())), 0);
    EXPECT_EQ(connection.own->WriteMessage(1, large.data(), 0xFFFFFFF8), WSAENOBUFS);
    EXPECT_TRUE(connection.own->IsConnected());
    ready = SOCKET_ERROR;
    WSASetLastError(WSAENETDOWN);
    EXPECT_EQ(connection.own->WriteMessage(1, "x", 1), WSAENETDOWN);
    EXPECT_FALSE(connection.own->IsConnected());
}
