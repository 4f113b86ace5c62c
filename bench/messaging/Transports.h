#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// One way to carry messages between two processes.
class Transport {
public:
    static constexpr std::size_t kMaximum = 5000;

    Transport() = default;
    virtual ~Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;

    /// This side's address, which the other side receives before the first message.
    virtual std::string Address() = 0;
    virtual void Connect(const std::string& peer) = 0;
    virtual void Send(const void* data, std::size_t size) = 0;
    /// Waits for a message of that size.
    virtual void Receive(void* data, std::size_t size) = 0;
};

/// @param kind    Tessel, Reply (by the second side), Dialogue (of replies on both sides), Bare, WM_COPYDATA, Pipe,
/// Mailslot or TCP
/// @param server  whether this side was created first
std::unique_ptr<Transport> MakeTransport(const std::string& kind, bool server);
