#include "support/Loopback.h" // Winsock, before windows.h

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>
#include <tessel/net/commmsg.h>
#include <tessel/net/socket.h>

#include <mswsock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

// Sends a file to a second process, which answers with a byte once it has received everything.

namespace {

constexpr int kFileSize = 50'000'000;
constexpr int kHeadData = 4;
constexpr int kRound = 4 + kHeadData + kFileSize;
constexpr std::size_t kChunk = 65536;

/// Takes files until the other side closes.
int TakeFiles(const std::vector<std::string>&) {
    const LoopbackListener listener;
    Say("listening " + std::to_string(listener.Port()));
    const SOCKET peer = listener.Accept();
    std::vector<char> chunk(kChunk);
    int missing = kRound;
    for (int got = 1; got > 0;) {
        got = recv(peer, chunk.data(), std::min(static_cast<int>(kChunk), missing), 0);
        missing -= got;
        if (missing != 0) continue;
        send(peer, "!", 1, 0);
        missing = kRound;
    }
    return 0;
}
const Role takeFiles("take-files", TakeFiles);

/// The file, the second process and a connection to it, by the library and by bare calls.
struct Transfer {
    Transfer() {
        std::ofstream(path, std::ios::binary) << std::string(kFileSize, 'x');
        const auto port = static_cast<unsigned short>(std::stoul(receiver.WaitUntil("listening ")));
        const sockaddr_in to = Endpoint(port);
        (void)connect(bare, reinterpret_cast<const sockaddr*>(&to), sizeof to); // else the first transfer fails
    }
    ~Transfer() {
        receiver.Kill();
        closesocket(bare);
        std::filesystem::remove(path);
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    bool IsTaken() const {
        char answer = 0;
        return recv(bare, &answer, 1, 0) == 1 && answer == '!';
    }

    const CSocket keepsWinsockStarted;
    std::filesystem::path path = std::filesystem::temp_directory_path() / "tessel-bench-file";
    ChildProcess receiver{"take-files"};
    SOCKET bare = socket(AF_INET, SOCK_STREAM, 0);
    std::unique_ptr<CCommMsg> head{new (kHeadData) CCommMsg};
};

/// A file for as long as the object lives.
struct SourceFile : std::unique_ptr<void, decltype(&CloseHandle)> {
    explicit SourceFile(const std::filesystem::path& path)
        : unique_ptr(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_SEQUENTIAL_SCAN, nullptr),
                     &CloseHandle) {}
};

void ByTessel(Transfer& transfer, CSocket& socket) {
    socket.WriteFile(transfer.head.get(), transfer.path.c_str());
}

void ByTransmitFile(Transfer& transfer, CSocket&) {
    const SourceFile file(transfer.path);
    TRANSMIT_FILE_BUFFERS buffers{transfer.head->GetMsg(), transfer.head->GetXmitLength(), nullptr, 0};
    TransmitFile(transfer.bare, file.get(), 0, 0, nullptr, &buffers, 0);
}

void ByLoop(Transfer& transfer, CSocket&) {
    static std::vector<char> chunk(kChunk);
    const SourceFile file(transfer.path);
    send(transfer.bare, reinterpret_cast<const char*>(transfer.head->GetMsg()),
         static_cast<int>(transfer.head->GetXmitLength()), 0);
    DWORD got = 0;
    while (ReadFile(file.get(), chunk.data(), static_cast<DWORD>(chunk.size()), &got, nullptr) && got > 0) {
        send(transfer.bare, chunk.data(), static_cast<int>(got), 0);
    }
}

void SendFiles(benchmark::State& state, void (*send)(Transfer&, CSocket&)) {
    Transfer transfer;
    CSocket socket(transfer.bare, CSocket::MODE_BLOCKING, nullptr);
    bool taken = true;
    for (auto _ : state) {
        send(transfer, socket);
        taken = taken && transfer.IsTaken();
    }
    socket.Create(INVALID_SOCKET, CSocket::MODE_BLOCKING, nullptr); // the transfer closes it
    if (!taken) state.SkipWithError("a file did not arrive");
    state.SetBytesProcessed(state.iterations() * kRound);
}

void Register(const std::string& name, void (*bare)(Transfer&, CSocket&)) {
    benchmark::RegisterBenchmark((name + "/Tessel").c_str(), SendFiles, ByTessel)->UseRealTime();
    benchmark::RegisterBenchmark((name + "/Bare").c_str(), SendFiles, bare)->UseRealTime();
}

const bool registered = [] {
    Register("File of 50 MB to a process, beside TransmitFile", ByTransmitFile);
    Register("File of 50 MB to a process, beside reading and sending", ByLoop);
    return true;
}();

} // namespace
