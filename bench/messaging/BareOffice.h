#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

/// The mailboxes' sequence of Windows calls written out, with nothing around it: wait, release, post to
/// send; get, copy, wait, release to receive. What the library's cost is measured against.
class BareOffice {
public:
    static constexpr UINT kNotification = WM_APP + 20;

    BareOffice();
    ~BareOffice();
    BareOffice(const BareOffice&) = delete;
    BareOffice& operator=(const BareOffice&) = delete;

    void Send(HWND to, const void* data, std::size_t size);
    /// Takes the next message of the window.
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
