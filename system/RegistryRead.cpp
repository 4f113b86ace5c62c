#include <tessel/system/registry.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <new>

namespace {

const wchar_t* Next(const wchar_t* text) {
    return text + std::wcslen(text) + 1;
}

} // namespace

long CReg::ReadKey(HKEY key, const wchar_t* name, unsigned long ulSize, unsigned long* pulSize) {
    if (!Prepare(name == nullptr ? L"" : name, ulSize)) { // GUARD-60
        m_ulStatus = NO_BUFFER;
        return ERROR_SUCCESS; // ODD-70: only the status shows that nothing was read
    }
    unsigned long registryType = REG_NONE;
    unsigned long length = 0;
    long result = Query(key, registryType, length);
    if (result == ERROR_MORE_DATA && length > 0 && pulSize != nullptr) {
        AllocateData(length);
        if (m_pData != nullptr) result = Query(key, registryType, length);
    }
    (void)Finish(result, registryType, length);
    if (m_pData == nullptr) m_ulStatus = NO_BUFFER;
    if (result == ERROR_SUCCESS && pulSize != nullptr) *pulSize = length;
    return result;
}

long CReg::ReadKey(HKEY key, int index) {
    if (m_pName == nullptr || m_pData == nullptr) {
        m_ulStatus = NO_BUFFER;
        return ERROR_SUCCESS; // ODD-70
    }
    unsigned long registryType = REG_NONE;
    unsigned long nameLength = m_ulNameLen;
    unsigned long length = m_ulDataLen;
    const long result =
        RegEnumValueW(key, static_cast<DWORD>(index), m_pName, &nameLength, nullptr, &registryType, m_pData, &length);
    return Finish(result, registryType, length);
}

/// Stores the name and allocates room for the data.
/// @return true: both have a buffer
bool CReg::Prepare(const wchar_t* name, unsigned long dataLength) {
    const std::size_t nameLength = std::wcslen(name);
    if (nameLength > m_ulNameLen || m_pName == nullptr) AllocateName(nameLength);
    // GUARD-88: stored before the data are freed, as it may point to a text that GetData() returned.
    if (m_pName != nullptr) std::wmemcpy(m_pName, name, nameLength + 1);
    if (dataLength > m_ulDataLen || m_pData == nullptr)
        AllocateData(dataLength == 0 ? DEFAULT_DATA_LENGTH : dataLength);
    return m_pName != nullptr && m_pData != nullptr;
}

long CReg::Query(HKEY key, unsigned long& registryType, unsigned long& length) {
    length = m_ulDataLen;
    return RegQueryValueExW(key, m_pName, nullptr, &registryType, m_pData, &length);
}

// GUARD-61: zeros follow the data, which may lack terminators or end with half a character.
long CReg::Finish(long result, unsigned long registryType, unsigned long length) {
    const bool read = result == ERROR_SUCCESS;
    if (read) std::memset(m_pData + std::min(length, m_ulDataLen), 0, ZEROS_BEHIND_DATA);
    m_Type = read ? MapType(registryType) : TYPE_UNKNOWN;
    m_ulStatus = 0;
    if (m_Type == TYPE_UNKNOWN) m_ulStatus = read ? UNKNOWN_VALUE : NOT_READ;
    return result;
}

/// @return the status of an operation before it reads the data
unsigned long CReg::Check(bool hasRightType) const {
    if (!hasRightType) return WRONG_TYPE;
    if (m_pData == nullptr) return NO_BUFFER; // a read without memory keeps the type
    return 0;
}

const wchar_t* CReg::FirstText() const {
    return reinterpret_cast<const wchar_t*>(m_pData);
}

unsigned long CReg::CopyText(wchar_t* dst, const wchar_t* src, unsigned long len) {
    if (dst == nullptr || len == 0) return m_ulStatus = BAD_BUFFER;
    const std::size_t length = std::wcslen(src);
    std::wmemcpy(dst, src, std::min<std::size_t>(length + 1, len));
    dst[len - 1] = L'\0';
    m_ulStatus = 0;
    if (length >= len) m_ulStatus = TEXT_CUT;
    return m_ulStatus;
}

unsigned long CReg::GetName(wchar_t* buf, unsigned long len) {
    if (m_pName == nullptr) return m_ulStatus = NO_BUFFER;
    return CopyText(buf, m_pName, len);
}

unsigned long CReg::GetData(wchar_t* buf, unsigned long len, int index) {
    m_ulStatus = Check(m_Type == TYPE_STRING || m_Type == TYPE_MULTI_STRING);
    if (m_ulStatus != 0) return m_ulStatus;
    const wchar_t* text = FirstText();
    if (m_Type == TYPE_MULTI_STRING) {
        for (int skipped = 0; skipped < index && *text != L'\0'; ++skipped) text = Next(text);
    }
    return CopyText(buf, text, len);
}

unsigned long CReg::GetData(unsigned long& value) {
    m_ulStatus = Check(m_Type == TYPE_DWORD);
    if (m_ulStatus == 0) std::memcpy(&value, m_pData, sizeof value);
    return m_ulStatus;
}

unsigned long CReg::GetData(CList<const wchar_t*>& texts) {
    m_ulStatus = Check(m_Type == TYPE_MULTI_STRING);
    if (m_ulStatus != 0) return m_ulStatus;
    texts.RemoveAll();
    try {
        for (const wchar_t* text = FirstText(); *text != L'\0'; text = Next(text)) texts.AddTail(text);
    } catch (const std::bad_alloc&) {
        texts.RemoveAll();
        m_ulStatus = NO_BUFFER;
    }
    return m_ulStatus;
}

unsigned long CReg::GetBinaryData(unsigned char* buf, unsigned long& len) {
    m_ulStatus = Check(m_Type == TYPE_BINARY || m_Type == TYPE_MULTI_STRING);
    if (m_ulStatus == 0 && buf == nullptr) m_ulStatus = BAD_BUFFER; // GUARD-60
    if (m_ulStatus != 0) return m_ulStatus;
    len = std::min(len, m_ulDataLen); // ODD-72: the capacity, not the value's length; GUARD-63: never more
    std::memcpy(buf, m_pData, len);
    return m_ulStatus;
}
