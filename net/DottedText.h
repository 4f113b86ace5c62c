#pragma once

#include <tessel/foundation/platform.h>
#include <winsock2.h>

#include <cstddef>

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

/// Characters that count in the address texts of socket operations.
constexpr std::size_t kSocketText = 16;

} // namespace tessel
