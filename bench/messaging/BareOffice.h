#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

/// The mailboxes' bare sequence of Windows calls, which the library's cost is compared with: wait, release and post to
/// send; get, copy, wait and release to receive.
class BareOffice {
public:
    static constexpr UINT kNotification = WM_APP + 20;

    BareOffice();
    ~BareOffice();
    BareOffice(const BareOffice&) = delete;
    BareOffice& operator=(const BareOffice&) = delete;

    void Send(HWND to, const void* data, std::size_t size);
    /// Takes the window's next message.
    void Receive(HWND window, void* data, std::size_t size);

private:
    static constexpr std::uint32_t kCount = 500;
    struct Block {
        std::uint32_t inUse;
        std::uint32_t length;
        unsigned char data[5120];
    };

    HANDLE m_lock;
    HANDLE m_mapping;
    Block* m_blocks;
    std::uint32_t m_cursor = 0;
};
