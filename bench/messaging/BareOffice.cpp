#include "BareOffice.h"

#include <cstring>

BareOffice::BareOffice()
    : m_lock(CreateSemaphoreW(nullptr, 1, 1, L"Tessel bench lock")),
      m_mapping(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, kCount * sizeof(Block),
                                   L"Tessel bench region")),
      m_blocks(static_cast<Block*>(MapViewOfFile(m_mapping, FILE_MAP_WRITE, 0, 0, 0))) {}

BareOffice::~BareOffice() {
    UnmapViewOfFile(m_blocks);
    CloseHandle(m_mapping);
    CloseHandle(m_lock);
}

void BareOffice::Send(HWND to, const void* data, std::size_t size) {
    WaitForSingleObjectEx(m_lock, INFINITE, FALSE);
    do {
        m_cursor = (m_cursor + 1) % kCount;
    } while (m_blocks[m_cursor].inUse != 0); // there is room: no benchmark fills the pool
    Block& block = m_blocks[m_cursor];
    block.inUse = 1;
    ReleaseSemaphore(m_lock, 1, nullptr);
    block.length = static_cast<std::uint32_t>(size);
    std::memcpy(block.data, data, size);
    PostMessageW(to, kNotification, 0, static_cast<LPARAM>(m_cursor));
}

void BareOffice::Receive(HWND window, void* data, std::size_t size) {
    MSG message;
    GetMessageW(&message, window, kNotification, kNotification);
    Block& block = m_blocks[message.lParam];
    std::memcpy(data, block.data, size);
    WaitForSingleObjectEx(m_lock, INFINITE, FALSE);
    block.inUse = 0;
    ReleaseSemaphore(m_lock, 1, nullptr);
}
