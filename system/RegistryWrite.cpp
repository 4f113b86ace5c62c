#include <tessel/system/registry.h>

#include <algorithm>
#include <cwchar>
#include <exception>
#include <limits>
#include <vector>

namespace {

/// @return characters, including the empty text that ends the list
std::size_t ListLength(const wchar_t* texts) {
    const wchar_t* text = texts;
    while (*text != L'\0') text += std::wcslen(text) + 1;
    return static_cast<std::size_t>(text - texts) + 1;
}

long Write(HKEY key, const wchar_t* name, unsigned long registryType, const void* data, std::size_t length) {
    if (length > std::numeric_limits<DWORD>::max()) return ERROR_INVALID_PARAMETER;
    return RegSetValueExW(key, name, 0, registryType, static_cast<const BYTE*>(data), static_cast<DWORD>(length));
}

/// Writes bytes as text. GUARD-64: the system looks for the terminator after the bytes and, for a single byte, before
/// them, so that they are written from the middle of a larger buffer.
long WriteTextBytes(HKEY key, const wchar_t* name, unsigned long registryType, const unsigned char* data,
                    std::size_t length) {
    try {
        constexpr std::size_t kMargin = sizeof(wchar_t);
        std::vector<unsigned char> bytes(length + 2 * kMargin, 1); // not 0, which would be a terminator
        std::copy_n(data, length, bytes.begin() + kMargin);
        return Write(key, name, registryType, bytes.data() + kMargin, length);
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

} // namespace

long CReg::SaveKey(HKEY key, const wchar_t* name, const wchar_t* text) {
    if (m_Type != TYPE_MULTI_STRING) m_Type = TYPE_STRING;
    if (text == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-60
    const std::size_t length = m_Type == TYPE_STRING ? std::wcslen(text) + 1 : ListLength(text);
    return Write(key, name, ConvertType(m_Type), text, length * sizeof(wchar_t));
}

long CReg::SaveKey(HKEY key, const wchar_t* name, unsigned long value) {
    return Write(key, name, REG_DWORD, &value, sizeof value);
}

// ODD-71: the type is that of the last read or write, so that bytes after a text are written as text.
long CReg::SaveKey(HKEY key, const wchar_t* name, unsigned char* data, short len) {
    if (m_Type == TYPE_UNKNOWN) m_Type = TYPE_BINARY;
    if (len < 0 || (data == nullptr && len > 0)) return ERROR_INVALID_PARAMETER; // GUARD-63
    const auto length = static_cast<std::size_t>(len);
    const bool isText = m_Type == TYPE_STRING || m_Type == TYPE_MULTI_STRING;
    return isText ? WriteTextBytes(key, name, ConvertType(m_Type), data, length)
                  : Write(key, name, ConvertType(m_Type), data, length);
}

unsigned long CReg::SaveKey(HKEY key, const wchar_t* name, CList<const wchar_t*>& texts) {
    try {
        std::vector<wchar_t> list;
        for (const wchar_t* text : texts) {
            if (text != nullptr) list.insert(list.end(), text, text + std::wcslen(text) + 1); // GUARD-60
        }
        list.push_back(L'\0');
        return static_cast<unsigned long>(Write(key, name, REG_MULTI_SZ, list.data(), list.size() * sizeof(wchar_t)));
    } catch (const std::exception&) { // no memory, or too long for a vector
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

long CReg::RemoveValue(HKEY key, const wchar_t* name) {
    return RegDeleteValueW(key, name);
}

long CReg::RemoveKey(HKEY key, const wchar_t* subkey) {
    return RegDeleteKeyW(key, subkey);
}
