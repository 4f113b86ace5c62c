#include <tessel/system/registry.h>

int CReg::FindFirstValue(HKEY key, wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                         unsigned long& dataLen) {
    m_hValueEnum = key;
    m_ulValueIndex = 0;
    m_ulFindDataLen = dataLen;
    return EnumValue(name, nameLen, type, data, dataLen);
}

int CReg::FindNextValue(wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data,
                        unsigned long& dataLen) {
    dataLen = m_ulFindDataLen;
    ++m_ulValueIndex;
    return EnumValue(name, nameLen, type, data, dataLen);
}

int CReg::EnumValue(wchar_t* name, unsigned long nameLen, KEY_TYPE& type, unsigned char* data, unsigned long& dataLen) {
    unsigned long registryType = REG_NONE;
    const long result =
        RegEnumValueW(m_hValueEnum, m_ulValueIndex, name, &nameLen, nullptr, &registryType, data, &dataLen);
    m_ulStatus =
        static_cast<unsigned long>(result); // ODD-73: its numbers overlap with those of the other status values
    type = ConvertType(registryType);
    return result;
}

int CReg::FindFirstKey(HKEY key, wchar_t* name, unsigned long len) {
    m_hKeyEnum = key;
    m_ulKeyIndex = 0;
    m_ulFindNameLen = len;
    return EnumKey(name);
}

int CReg::FindNextKey(wchar_t* name) {
    ++m_ulKeyIndex;
    return EnumKey(name);
}

int CReg::EnumKey(wchar_t* name) const {
    if (name == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-60
    return RegEnumKeyW(m_hKeyEnum, m_ulKeyIndex, name, m_ulFindNameLen);
}
