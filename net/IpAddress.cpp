#include <net/DottedText.h>
#include <tessel/net/ipaddress.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <iterator>
#include <new>

namespace {

constexpr std::size_t kTextSize = 16; // "255.255.255.255" and its terminator
constexpr std::size_t kShortest = 7;  // "1.2.3.4"

/// Writes dotted text, the number's highest byte first.
void WriteDotted(unsigned long value, wchar_t (&text)[kTextSize]) {
    std::swprintf(text, kTextSize, L"%lu.%lu.%lu.%lu", value >> 24 & 0xFF, value >> 16 & 0xFF, value >> 8 & 0xFF,
                  value & 0xFF);
}

template <class Character> Character* WriteInto(Character*& cache, unsigned long address) {
    if (cache == nullptr) cache = new (std::nothrow) Character[kTextSize];
    if (cache == nullptr) return nullptr;
    wchar_t text[kTextSize] = {};
    WriteDotted(ntohl(address), text);
    std::transform(text, std::end(text), cache, [](wchar_t character) { return static_cast<Character>(character); });
    return cache;
}

} // namespace

CIpAddress::CIpAddress(unsigned long address) : m_ulAddress(address), m_pNarrow(nullptr), m_pWide(nullptr) {}

// GUARD-67: a null text is not an address.
CIpAddress::CIpAddress(const char* dotted) : CIpAddress(dotted == nullptr ? INADDR_NONE : inet_addr(dotted)) {}

CIpAddress::CIpAddress(const wchar_t* dotted)
    : CIpAddress(dotted == nullptr ? INADDR_NONE : tessel::ReadDotted<kTextSize - 1>(dotted)) {}

CIpAddress::CIpAddress(const CIpAddress& other) : CIpAddress(other.m_ulAddress) {}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): each object keeps its own texts.
CIpAddress& CIpAddress::operator=(const CIpAddress& other) {
    m_ulAddress = other.m_ulAddress;
    return *this;
}

CIpAddress::~CIpAddress() {
    delete[] m_pNarrow;
    delete[] m_pWide;
}

CIpAddress::operator char*() const {
    return WriteInto(m_pNarrow, m_ulAddress);
}

CIpAddress::operator wchar_t*() const {
    return WriteInto(m_pWide, m_ulAddress);
}

CIpAddress::operator unsigned short*() const {
    return reinterpret_cast<unsigned short*>(WriteInto(m_pWide, m_ulAddress));
}

void CIpAddress::Unpack(unsigned long value, wchar_t* out) {
    if (out == nullptr) return;
    wchar_t text[kTextSize];
    WriteDotted(value, text);
    // GUARD-68: one terminator; a second one would overrun a buffer that just fits the longest text.
    std::wcscpy(out, text);
}

unsigned long CIpAddress::Pack(const wchar_t* dotted) {
    if (dotted == nullptr || wcsnlen(dotted, kShortest) < kShortest) return 0;
    unsigned long value = 0;
    for (int octet = 0; octet < tessel::kOctets; ++octet) value = value << 8 | (tessel::NextNumber(dotted) & 0xFF);
    return value;
}
