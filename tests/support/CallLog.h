#pragma once

#include "ImportPatch.h"

#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

/// The arguments of a call, each after a space: numbers, constant texts, "*" for any other address, "-" for null.
template <class... Arguments> std::wstring ArgumentText(const Arguments&... arguments) {
    std::wostringstream text;
    const auto add = [&text](auto argument) {
        using Argument = decltype(argument);
        if constexpr (!std::is_pointer_v<Argument>) {
            text << L' ' << argument;
        } else if (argument == Argument{}) {
            text << L" -";
        } else if constexpr (std::is_same_v<Argument, const wchar_t*>) {
            text << L' ' << argument;
        } else {
            text << L" *";
        }
    };
    (add(arguments), ...);
    return text.str();
}

/// Records the calls of replaced functions, such as L"CancelIo *".
class CallLog : public std::vector<std::wstring> {
public:
    template <class... Arguments> void Add(const wchar_t* name, const Arguments&... arguments) {
        push_back(name + ArgumentText(arguments...));
    }

    /// A stub that records its calls, sets the last error and returns a value.
    template <class R, class Function, class Tag = decltype([] {})>
    Stub Adding(const char* name, Function* real, R result, DWORD error = 0) {
        auto add = [this, result, error,
                    wide = std::wstring(name, name + std::char_traits<char>::length(name))](auto... arguments) {
            this->Add(wide.c_str(), arguments...);
            SetLastError(error);
            return result;
        };
        return Replacing<Function, decltype(add), Tag>(name, real, add);
    }

    /// The calls since the last query, one per line.
    std::wstring Take() {
        std::wstring all;
        for (const std::wstring& call : *this) all += call + L'\n';
        clear();
        return all;
    }
};
