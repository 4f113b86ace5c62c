#pragma once

#include <cstddef>
#include <initializer_list>

namespace tessel {

/// Joins the parts of a channel's name.
/// @param path   receives the text, truncated to fit
/// @param parts  texts in order
template <std::size_t Size> void JoinPath(wchar_t (&path)[Size], std::initializer_list<const wchar_t*> parts) {
    std::size_t used = 0;
    for (const wchar_t* part : parts) {
        while (*part != L'\0' && used < Size - 1) path[used++] = *part++;
    }
    path[used] = L'\0';
}

} // namespace tessel
