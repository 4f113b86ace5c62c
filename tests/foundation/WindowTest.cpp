#include "support/ControlWindow.h"
#include "support/ImportPatch.h"

#include <gtest/gtest.h>
#include <tessel/foundation/window.h>

#include <string>

TEST(WindowFunctions, Odd28ReadAndChangeAWindow) {
    const ControlWindow parent, other;
    const HWND edit = parent.Add(L"Edit", 1, 0);
    EXPECT_EQ(GetWindowHandle(parent.Handle(), 1), edit);
    EXPECT_EQ(IsVisibleWindow(edit) + IsThisWindowVisible(edit), 0) << "its parent is hidden";
    EXPECT_EQ(ShowAWindow(parent.Handle(), SW_SHOWNA), 0);
    EXPECT_EQ(IsVisibleWindow(edit) + IsThisWindowVisible(edit), 2);
    RECT area{};
    EXPECT_EQ(GetRect(edit, area), 0);
    EXPECT_EQ(area.bottom, 20);
    ValidateRect(edit, nullptr);
    EXPECT_EQ(SetRect(edit, area), 0);
    EXPECT_TRUE(GetUpdateRect(edit, nullptr, FALSE));
    EXPECT_NE(GetAWindowRect(edit, &area), 0);
    EXPECT_EQ(area.bottom, 40);
    ORCA_tagPOINT point{50, 30};
    EXPECT_EQ(ChildWindowFromAPoint(parent.Handle(), point), edit);
    EXPECT_NE(ScreenToClientConversion(edit, &point), 0);
    EXPECT_EQ(point.y, 10);
    EXPECT_EQ(SetAWindowLong(edit, GWL_ID, 7), 1);
    EXPECT_EQ(GetAWindowLong(edit, GWL_ID), 7);
    SetWindowFocus(edit);
    EXPECT_NE(HideCaret(edit), 0) << "it takes itself for focused";
    SetTheFocus(edit);
    EXPECT_EQ(GetFocus(), edit);
    const HDC context = GetThisDC(edit);
    EXPECT_EQ(WindowFromDC(context), edit);
    EXPECT_EQ(ReleaseThisDC(edit, context), 1);
    EXPECT_EQ(SetAParent(edit, other.Handle()), parent.Handle());
    EXPECT_EQ(GetParent(edit), other.Handle());
    wchar_t text[7];
    SetWindowTextW(parent.Handle(), L"Tessel test window");
    EXPECT_EQ(GetAWindowText(parent.Handle(), text, 7), 6);
    EXPECT_EQ(IsWindowFound(L"Static", L"Tessel test window", true), 1);
    EXPECT_EQ(IsWindowFound(nullptr, L"Tessel no such window", false), 0);
    EXPECT_EQ(CloseDialog(parent.Handle()), 0);
    EXPECT_EQ(GetRect(parent.Handle(), area), 1);
    EXPECT_EQ(SetRect(HWND_MESSAGE, area), 1);
    EXPECT_EQ(GetASystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CXSCREEN));
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
