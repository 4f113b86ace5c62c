#pragma once

#include <foundation/WindowOwner.h>
#include <tessel/foundation/platform.h>

#include <optional>

namespace tessel {

/// Sends a message to a control. A window of another process, which may hang, gets 100 ms to answer. The windows of
/// this process are waited for: one that answers late would write to memory that its sender has left.
/// @param hWnd     the control
/// @param message  its number
/// @param wParam   as the message requires
/// @param lParam   as the message requires
/// @return the answer; empty when another process gives none in time
inline std::optional<LRESULT> QueryControl(HWND hWnd, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    constexpr UINT kAnswerMs = 100;
    if (IsWindowOfProcess(hWnd, GetCurrentProcessId())) return SendMessageW(hWnd, message, wParam, lParam);
    DWORD_PTR answer = 0;
    const LRESULT answered = SendMessageTimeoutW(hWnd, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerMs, &answer);
    if (answered == 0) return std::nullopt;
    return static_cast<LRESULT>(answer);
}

} // namespace tessel
