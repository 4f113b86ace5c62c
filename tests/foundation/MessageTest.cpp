#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/message.h>

#include <utility>
#include <vector>

namespace {

int ticks = 0;

void CALLBACK QuitOnTick(HWND, UINT, UINT_PTR, DWORD) {
    ++ticks;
    QuitManager();
}

} // namespace

TEST(MessageFunctions, Odd27AKeypressUsesTheCharacterAsScanCode) {
    for (const auto& [flags, expected] : {std::pair{0, 0u}, {1 | 2, 0}, {8, 1}, {16, 2}, {8 | 16, 3}}) {
        std::vector<DWORD> key;
        const ImportPatch press("keybd_event", &keybd_event, [&key](BYTE code, BYTE scan, DWORD sent, ULONG_PTR) {
            key = {code, scan, sent};
        });
        EXPECT_EQ(SimulatedKeypress('A', flags), 0);
        EXPECT_EQ(key, (std::vector<DWORD>{'A', 'A', expected})) << flags;
    }
}

TEST(MessageFunctions, TheBarePumpDispatchesUntilQuit) {
    const UINT_PTR timer = SetATimer(nullptr, 0, 0, QuitOnTick);
    EXPECT_EQ(Dispatch_Pump(), 0);
    EXPECT_EQ(ticks, 1);
    EXPECT_NE(KillATimer(nullptr, timer), 0);
    MSG message;
    EXPECT_NE(PostAThreadMessage(GetCurrentThreadId(), WM_APP, 2, 3), 0);
    EXPECT_NE(PeekMessageW(&message, nullptr, WM_APP, WM_APP, PM_REMOVE), 0);
    EXPECT_EQ(std::pair(message.wParam, message.lParam), std::pair(WPARAM{2}, LPARAM{3}));
}
