#pragma once

#include <tessel/foundation/platform.h>
#include <winsock2.h>

#include <cstddef>
#include <cstdlib>
#include <cwchar>

namespace tessel {

/// Reads a dotted address from wide text.
/// @tparam limit  characters that count
/// @param text    the text
/// @return address in network byte order; INADDR_NONE when the text is not an address
template <std::size_t limit> unsigned long ReadDotted(const wchar_t* text) {
    char narrow[limit + 1] = {};
    for (std::size_t i = 0; i < limit && text[i] != L'\0'; ++i) {
        narrow[i] = text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    return inet_addr(narrow);
}

/// Numbers of a dotted address, of 8 bits each.
constexpr int kOctets = 4;

/// Reads the next number between dots.
/// @param rest  text; moves past the number
/// @return the number; 0 when there is none
inline unsigned long NextNumber(const wchar_t*& rest) {
    rest += std::wcsspn(rest, L".");
    const int number = _wtoi(rest);
    rest += std::wcscspn(rest, L".");
    return static_cast<unsigned long>(number);
}

/// Characters that count in the address texts of socket operations.
constexpr std::size_t kSocketText = 16;

} // namespace tessel
