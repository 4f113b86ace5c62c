#include <foundation/Report.h>
#include <tessel/foundation/strings.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>

namespace {

using tessel::ReportSite;
using tessel::ReportUnless;

/// Each form of CopyString() makes three reports with consecutive lines; these are the first ones.
constexpr ReportSite kNarrowCopy{"StringConversions", 13};
constexpr ReportSite kNarrowingCopy{"StringConversions", 34};
constexpr ReportSite kWideningCopy{"StringConversions", 55};
constexpr ReportSite kWideCopy{"StringConversions", 76};

std::size_t Length(const char* text) {
    return std::strlen(text);
}

std::size_t Length(const wchar_t* text) {
    return std::wcslen(text);
}

/// Reports invalid arguments with consecutive lines from that of @p first.
/// @return true: valid; false: not, and an empty string was written if possible
template <class Target, class Source>
bool CanCopy(Target* dest, const Source* src, unsigned int size, ReportSite first) {
    ReportUnless(dest != nullptr, "pDest", first);
    ReportUnless(src != nullptr, "pSrc", {first.source, first.line + 1});
    ReportUnless(size > 0, "DestSizeInChars > 0", {first.source, first.line + 2});
    if (dest != nullptr && src != nullptr && size > 0) return true; // GUARD-01
    if (dest != nullptr && size > 0) dest[0] = 0;
    return false;
}

/// Terminates a truncated copy.
/// @return 1: truncated; 0: complete
template <class Target, class Source>
unsigned long TerminateIfTruncated(Target* dest, const Source* src, unsigned int size) {
    if (Length(src) < size) return 0;
    dest[size - 1] = 0;
    return 1;
}

/// Copies with one of the runtime's conversions. They do not terminate the text if a character cannot be converted, or
/// if the text grows to exactly the size of the destination.
template <class Target, class Source>
void Convert(std::size_t (*convert)(Target*, const Source*, std::size_t), Target* dest, const Source* src,
             unsigned int size) {
    constexpr auto kFailed = static_cast<std::size_t>(-1);
    std::size_t converted = convert(dest, src, size);
    if (converted == kFailed) { // GUARD-02: repeat into a cleared buffer, so that the text is terminated
        std::memset(dest, 0, size * sizeof(Target));
        converted = convert(dest, src, size); // fails at the same character
    }
    dest[std::min<std::size_t>(converted, size - 1)] = 0;
}

bool IsSpace(char character) {
    // GUARD-03: a negative index would read before the runtime's character table.
    return character >= 0 && std::isspace(character) != 0;
}

bool IsSpace(wchar_t character) {
    return std::iswspace(character) != 0;
}

template <class Char> Char* TrimLeftOf(Char* text) {
    if (text == nullptr) return text;
    const Char* start = text;
    while (IsSpace(*start)) ++start;
    if (start != text) std::memmove(text, start, (Length(start) + 1) * sizeof(Char));
    return text;
}

} // namespace

unsigned long CopyString(char* dest, const char* src, unsigned int destSizeInChars) {
    if (!CanCopy(dest, src, destSizeInChars, kNarrowCopy)) return 1;
    std::strncpy(dest, src, destSizeInChars);
    return TerminateIfTruncated(dest, src, destSizeInChars);
}

unsigned long CopyString(char* dest, const wchar_t* src, unsigned int destSizeInChars) {
    if (!CanCopy(dest, src, destSizeInChars, kNarrowingCopy)) return 1;
    Convert(std::wcstombs, dest, src, destSizeInChars);
    return TerminateIfTruncated(dest, src, destSizeInChars);
}

unsigned long CopyString(wchar_t* dest, const char* src, unsigned int destSizeInChars) {
    if (!CanCopy(dest, src, destSizeInChars, kWideningCopy)) return 1;
    Convert(std::mbstowcs, dest, src, destSizeInChars);
    return TerminateIfTruncated(dest, src, destSizeInChars);
}

unsigned long CopyString(wchar_t* dest, const wchar_t* src, unsigned int destSizeInChars) {
    if (!CanCopy(dest, src, destSizeInChars, kWideCopy)) return 1;
    std::wcsncpy(dest, src, destSizeInChars);
    return TerminateIfTruncated(dest, src, destSizeInChars);
}

void UNICODE_TO_ASCII(char* dest, const wchar_t* src) {
    if (dest == nullptr || src == nullptr) return; // GUARD-04
    do {
        *dest++ = static_cast<char>(*src & 0xFF);
    } while (*src++ != L'\0');
}

void ASCII_TO_UNICODE(wchar_t* dest, const char* src) {
    if (dest == nullptr || src == nullptr) return; // GUARD-04
    do {
        // ODD-02: bytes are signed, so 0xE9 becomes 0xFFE9.
        *dest++ = static_cast<wchar_t>(static_cast<signed char>(*src));
    } while (*src++ != '\0');
}

char* TrimLeft(char* text) {
    return TrimLeftOf(text);
}

wchar_t* TrimLeft(wchar_t* text) {
    return TrimLeftOf(text);
}

// ODD-03: if only white space follows the first character, nothing is removed.
char* TrimRight(char* text) {
    if (text == nullptr || *text == '\0') return text;
    for (char* last = text + std::strlen(text) - 1; last != text; --last) {
        if (IsSpace(*last)) continue;
        last[1] = '\0';
        break;
    }
    return text;
}

// ODD-04: removes white space as it goes; the first character is never tested.
wchar_t* TrimRight(wchar_t* text) {
    if (text == nullptr || *text == L'\0') return text;
    for (wchar_t* last = text + std::wcslen(text) - 1; last != text && IsSpace(*last); --last) *last = L'\0';
    return text;
}

char* Trim(char* text) {
    return TrimRight(TrimLeft(text));
}

wchar_t* Trim(wchar_t* text) {
    return TrimRight(TrimLeft(text));
}
