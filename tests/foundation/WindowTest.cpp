#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/window.h>

#include <string>

TEST(WindowFunctions, Odd28RectanglesAreReadAndInvalidated) {
    const HWND window = CreateWindowExW(WS_EX_TOOLWINDOW, L"STATIC", L"Tessel test window", WS_POPUP | WS_VISIBLE, 10,
                                        20, 30, 40, nullptr, nullptr, nullptr, nullptr);
    RECT rectangle{};
    EXPECT_EQ(GetRect(window, rectangle), 0);
    EXPECT_EQ(rectangle.right, 30);
    ValidateRect(window, nullptr);
    EXPECT_EQ(SetRect(window, rectangle), 0);
    EXPECT_TRUE(GetUpdateRect(window, nullptr, FALSE));
    EXPECT_EQ(IsWindowFound(L"STATIC", L"Tessel test window", true), 1);
    EXPECT_EQ(IsWindowFound(nullptr, L"Tessel no such window", false), 0);
    EXPECT_EQ(CloseDialog(window), 0);
    EXPECT_EQ(GetRect(window, rectangle), 1);
    EXPECT_EQ(SetRect(HWND_MESSAGE, rectangle), 1);
}

TEST(WindowFunctions, TheForegroundIsTakenFromAnotherThreadWithItsInput) {
    HWND foreground = nullptr;
    DWORD owner = GetCurrentThreadId();
    BOOL attaches = TRUE;
    std::string steps;
    const ImportPatch get("GetForegroundWindow", &GetForegroundWindow, [&] { return foreground; });
    const ImportPatch thread("GetWindowThreadProcessId", &GetWindowThreadProcessId, [&](auto...) { return owner; });
    const ImportPatch attach("AttachThreadInput", &AttachThreadInput, [&](DWORD from, DWORD to, BOOL begins) {
        EXPECT_TRUE(from == GetCurrentThreadId() && to == owner);
        steps += begins ? "attach " : "detach ";
        return attaches;
    });
    const ImportPatch set("SetForegroundWindow", &SetForegroundWindow, [&](HWND) { return steps += "set ", 7; });
    const auto take = [&steps] {
        steps.clear();
        return std::to_string(SetForegroundWindowEx(nullptr)) + " " + steps;
    };
    EXPECT_EQ(take(), "0 ") << "no window has it";
    foreground = GetDesktopWindow();
    EXPECT_EQ(take(), "7 set ");
    owner = 77;
    EXPECT_EQ(take(), "7 attach set detach ");
    attaches = FALSE;
    EXPECT_EQ(take(), "0 attach ");
}
