#pragma once

#include <windows.h>

#include <shellapi.h>

#include <cwchar>
#include <string>
#include <vector>

/// The program's arguments, without its name.
inline std::vector<std::wstring> Arguments() {
    int count = 0;
    wchar_t** const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(texts + 1, texts + count);
    LocalFree(texts);
    return arguments;
}

/// Where the program itself is.
inline std::wstring OwnProgram() {
    constexpr DWORD longest = 32768;
    std::wstring path(longest, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), longest));
    return path;
}

/// Whether a text is a number that fits into 32 bits.
inline bool IsNumber(const std::wstring& text) {
    return !text.empty() && text.size() < 10 && text.find_first_not_of(L"0123456789") == std::wstring::npos;
}

/// The value of a text of digits.
inline unsigned long Number(const std::wstring& text) {
    return std::wcstoul(text.c_str(), nullptr, 10);
}
