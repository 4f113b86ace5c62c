#pragma once

#include "Protocol.h"

/// A receiver of messages with its own thread: a hidden window, a mailbox and a message loop. The managers and the
/// console derive from it. Create, run and destroy it on one thread.
class Station {
public:
    /// Opens the window and the mailbox.
    explicit Station(ORCAOBJID id);
    virtual ~Station();
    Station(const Station&) = delete;
    Station& operator=(const Station&) = delete;

    /// @return whether the mailbox is registered
    bool IsOpen() const { return m_open; }

    /// Handles messages until Leave(), then releases the blocks of late ones.
    void Run();

protected:
    /// A message has arrived; its block is released afterwards.
    virtual void OnMail(const CMail& mail) = 0;
    /// The time of TickEvery() has passed.
    virtual void OnTick() = 0;
    /// Run() has ended: this thread holds no block any more, so it may wait for room to send its last messages.
    virtual void OnLeft() {}

    /// Starts the ticks.
    /// @param ms  milliseconds
    void TickEvery(unsigned int ms);

    /// Ends Run(). The mailbox is closed, but messages can still be sent.
    void Leave();

    /// Sends a message of two parts.
    /// @return the result of CMailBox::Send()
    int Send(ORCAOBJID to, WORK_MESSAGE message, std::span<const unsigned char> first,
             std::span<const unsigned char> second = {});

    /// @return whether somebody receives messages to an id, in a window that still exists
    bool IsThere(ORCAOBJID id);

    /// @return the heartbeats of the workstation that were heard so far
    std::uint32_t Heartbeats() const { return m_heartbeats; }

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    ORCAOBJID m_id;
    CMailBox m_mailbox;
    UINT m_heartbeat;
    HWND m_window;
    bool m_open;
    std::uint32_t m_heartbeats = 0;
};
