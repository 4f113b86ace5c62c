#include <tessel/system/registry.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <exception>
#include <limits>
#include <string>

namespace {

constexpr struct {
    CReg::KEY_TYPE type;
    unsigned long registryType;
} kTypes[] = {
    {CReg::TYPE_STRING, REG_SZ},
    {CReg::TYPE_MULTI_STRING, REG_MULTI_SZ},
    {CReg::TYPE_DWORD, REG_DWORD},
    {CReg::TYPE_BINARY, REG_BINARY},
};

constexpr std::size_t kTerminator = 1;

/// @return @p count and @p spare elements, all 0; null without memory
template <class Element> Element* Allocate(std::size_t count, std::size_t spare) {
    constexpr std::size_t kMaxCount =
        std::min<std::size_t>(std::numeric_limits<unsigned long>::max(), SIZE_MAX / sizeof(Element));
    if (count > kMaxCount - spare) return nullptr;
    return static_cast<Element*>(std::calloc(count + spare, sizeof(Element)));
}

HKEY OpenUnderMachine(const wchar_t* folder, const wchar_t* name, const wchar_t* subkey, bool create) {
    if (name == nullptr) return nullptr; // GUARD-60
    try {
        std::wstring path = std::wstring(folder) + name;
        if (subkey != nullptr) path.append(L"\\").append(subkey);
        return CReg::OpenKey(HKEY_LOCAL_MACHINE, path.c_str(), create);
    } catch (const std::exception&) { // no memory, or too long for a string
        return nullptr;
    }
}

} // namespace

CReg::CReg(unsigned long ulNameLen, unsigned long ulDataLen)
    : m_Type(TYPE_UNKNOWN), m_pName(nullptr), m_pData(nullptr), m_ulNameLen(0), m_ulDataLen(0), m_ulStatus(0),
      m_ulKeyIndex(0), m_ulValueIndex(0), m_hKeyEnum(nullptr), m_hValueEnum(nullptr), m_ulFindNameLen(0),
      m_ulFindDataLen(0) {
    constexpr unsigned long kDefaultName = DEFAULT_NAME_LENGTH;
    constexpr unsigned long kDefaultData = DEFAULT_DATA_LENGTH;
    AllocateName(ulNameLen == 0 ? kDefaultName : ulNameLen);
    AllocateData(ulDataLen == 0 ? kDefaultData : ulDataLen);
    if (m_pName == nullptr || m_pData == nullptr) m_ulStatus = NO_BUFFER;
}

CReg::CReg(const CReg& other) : m_pName(nullptr), m_pData(nullptr) {
    CopyFrom(other);
}

CReg& CReg::operator=(const CReg& other) {
    if (this != &other) CopyFrom(other);
    return *this;
}

CReg::~CReg() {
    std::free(m_pName);
    std::free(m_pData);
}

// GUARD-62: each copy has its own buffers; shared ones would be freed twice.
void CReg::CopyFrom(const CReg& other) {
    m_Type = other.m_Type;
    m_ulStatus = other.m_ulStatus;
    m_ulKeyIndex = other.m_ulKeyIndex;
    m_ulValueIndex = other.m_ulValueIndex;
    m_hKeyEnum = other.m_hKeyEnum;
    m_hValueEnum = other.m_hValueEnum;
    m_ulFindNameLen = other.m_ulFindNameLen;
    m_ulFindDataLen = other.m_ulFindDataLen;
    AllocateName(other.m_ulNameLen);
    AllocateData(other.m_ulDataLen);
    if (m_pName == nullptr || m_pData == nullptr) m_ulStatus = NO_BUFFER;
    if (m_pName != nullptr && other.m_pName != nullptr) std::wmemcpy(m_pName, other.m_pName, m_ulNameLen);
    if (m_pData != nullptr && other.m_pData != nullptr) std::memcpy(m_pData, other.m_pData, m_ulDataLen);
}

void CReg::AllocateName(std::size_t characters) {
    std::free(m_pName);
    m_pName = Allocate<wchar_t>(characters, kTerminator);
    m_ulNameLen = m_pName == nullptr ? 0 : static_cast<unsigned long>(characters);
}

void CReg::AllocateData(std::size_t bytes) {
    std::free(m_pData);
    m_pData = Allocate<unsigned char>(bytes, ZEROS_BEHIND_DATA);
    m_ulDataLen = m_pData == nullptr ? 0 : static_cast<unsigned long>(bytes);
}

HKEY CReg::OpenVardaKey(const wchar_t* subkey, bool bCreate, const wchar_t* name) {
    return OpenUnderMachine(L"Software\\Varda\\", name, subkey, bCreate);
}

HKEY CReg::OpenVardaAutoStartKey(const wchar_t* name) {
    return OpenUnderMachine(L"Software\\Varda\\AutoStart\\", name, nullptr, true);
}

HKEY CReg::OpenKey(HKEY parent, const wchar_t* subkey, bool bCreate) {
    HKEY key = nullptr;
    if (RegOpenKeyW(parent, subkey, &key) == ERROR_SUCCESS) return key;
    if (bCreate && RegCreateKeyW(parent, subkey, &key) == ERROR_SUCCESS) return key;
    return nullptr;
}

void CReg::CloseKey(HKEY key) {
    (void)RegCloseKey(key); // fails only for what is not an open key
}

unsigned long CReg::ConvertType(KEY_TYPE type) {
    for (const auto& entry : kTypes) {
        if (entry.type == type) return entry.registryType;
    }
    return REG_NONE;
}

CReg::KEY_TYPE CReg::ConvertType(unsigned long registryType) {
    return MapType(registryType);
}

CReg::KEY_TYPE CReg::MapType(unsigned long registryType) {
    for (const auto& entry : kTypes) {
        if (entry.registryType == registryType) return entry.type;
    }
    return TYPE_UNKNOWN;
}
