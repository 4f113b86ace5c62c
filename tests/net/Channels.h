#pragma once

#include "support/CallLog.h"

inline constexpr wchar_t kName[] = L"Tessel test";

constexpr unsigned long Code(long error) {
    return static_cast<unsigned long>(error);
}

struct Event {
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ~Event() { CloseHandle(handle); }
    bool Comes(DWORD within = 10000) const { return WaitForSingleObject(handle, within) == WAIT_OBJECT_0; }
};

/// Replaces what the system answers to a read and to a question about one.
struct SystemAnswers {
    long answer = 0;
    BOOL Give() const {
        SetLastError(Code(answer));
        return answer == 0;
    }
    const ImportPatch read{"ReadFile", &ReadFile, [this](auto...) { return Give(); }};
    const ImportPatch about{"GetOverlappedResult", &GetOverlappedResult,
                            [this](HANDLE, auto, DWORD* transferred, BOOL) { return *transferred = 7, Give(); }};
};
