#include <foundation/Layout.h>
#include <messaging/host/HostRequest.h>
#include <tessel/messaging/host.h>

using tessel::kOn32Bits;

struct OSClassLayout {
    static constexpr std::size_t kPaletteOffset = 16008;
    static constexpr std::size_t kBehindPalette = kPaletteOffset + sizeof(COrcaPalette);
    static_assert(offsetof(OSClass, m_Notify) == sizeof(void*));
    static_assert(!kOn32Bits || offsetof(OSClass, m_iEntries) == 16004);
    static_assert(!kOn32Bits || offsetof(OSClass, m_Palette) == kPaletteOffset);
    static_assert(!kOn32Bits || offsetof(OSClass, m_pRegistry) == kBehindPalette);
    static_assert(!kOn32Bits || offsetof(OSClass, m_hInstance) == kBehindPalette + 8);
    static_assert(!kOn32Bits || offsetof(OSClass, m_ulProcessId) == kBehindPalette + 12);
    static_assert(!kOn32Bits || offsetof(OSClass, m_hFrame) == kBehindPalette + 16);
    static_assert(!kOn32Bits || offsetof(OSClass, m_hActiveDialog) == kBehindPalette + 24);
    static_assert(!kOn32Bits || offsetof(OSClass, m_szCommandLine) == kBehindPalette + 28);
    static_assert(!kOn32Bits || offsetof(OSClass, m_iExitCode) == kBehindPalette + 548);
};

static_assert(!kOn32Bits || sizeof(tessel::HostRequest) == 20);
