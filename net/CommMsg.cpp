#include <tessel/net/commmsg.h>

#include <limits>
#include <new>

namespace {

/// The block that operator new made last in this thread, until a constructor takes it. A constructor may not read what
/// operator new wrote into the object's memory, so this passes the length to it.
struct Pending {
    const void* block = nullptr;
    unsigned int length = 0;
};
thread_local Pending pending;

} // namespace

void* CCommMsg::operator new(std::size_t size, unsigned int n) noexcept {
    // GUARD-66: a wrapped sum would give a block without room for the data.
    if (n > std::numeric_limits<std::size_t>::max() - size) return nullptr;
    void* const block = ::operator new(size + n, std::nothrow);
    if (block == nullptr) return nullptr;
    pending = {block, n};
    return ::new (block) CCommMsg(n);
}

// NOLINTNEXTLINE(misc-new-delete-overloads): it belongs to new (n), as does the next one.
void CCommMsg::operator delete(void* block) noexcept {
    if (pending.block == block) pending = {};
    ::operator delete(block);
}

void CCommMsg::operator delete(void* block, unsigned int) noexcept {
    CCommMsg::operator delete(block);
}

CCommMsg::CCommMsg() noexcept {
    if (pending.block != this) return;
    m_ulLength = pending.length;
    pending = {};
}

CCommMsg::CCommMsg(unsigned int n) noexcept : m_ulLength(n) {}

CCommMsg::CCommMsg(const CCommMsg& other) noexcept : m_ulLength(other.m_ulLength) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): there is nothing to release.
CCommMsg& CCommMsg::operator=(const CCommMsg& other) noexcept {
    m_ulLength = other.m_ulLength;
    return *this;
}

CCommMsg::~CCommMsg() = default;
