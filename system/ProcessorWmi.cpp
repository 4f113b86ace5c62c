#include <tessel/foundation/strings.h>
#include <tessel/system/processor.h>

#include <oleauto.h>
#include <wbemidl.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace {

constexpr auto kNotFound = static_cast<long>(WBEM_E_NOT_FOUND);
constexpr auto kTypeMismatch = static_cast<long>(WBEM_E_TYPE_MISMATCH);
constexpr auto kForEver = static_cast<long>(WBEM_INFINITE);

constexpr VARTYPE kNumbers[] = {VT_NULL, VT_BOOL, VT_I1, VT_UI1, VT_I2, VT_UI2, VT_I4, VT_UI4, VT_INT, VT_UINT};

using SystemText = std::unique_ptr<wchar_t, decltype(&SysFreeString)>;

SystemText MakeText(const wchar_t* text) {
    return {SysAllocString(text), &SysFreeString};
}

/// A value that clears itself.
struct Value : VARIANT {
    Value() : VARIANT{} {}
    ~Value() { (void)VariantClear(this); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
};

template <class Interface> Interface* AddReference(Interface* shared) {
    if (shared != nullptr) shared->AddRef();
    return shared;
}

template <class Interface> void ReleaseAndClear(Interface*& field) {
    if (auto* const released = std::exchange(field, nullptr)) released->Release();
}

long ReadNumber(CWmiClass& reader, const wchar_t* name, unsigned long& number) {
    Value value;
    const long result = reader.GetProperty(name, value);
    if (FAILED(result)) return result;
    if (std::ranges::find(kNumbers, value.vt) == std::end(kNumbers)) return kTypeMismatch; // GUARD-196
    number = value.vt == VT_NULL ? 0 : value.ulVal;
    return result;
}

template <class Character>
long ReadText(CWmiClass& reader, const wchar_t* name, Character* buffer, unsigned int length) {
    Value value;
    const long result = reader.GetProperty(name, value);
    if (FAILED(result)) return result;
    if (value.vt != VT_BSTR && value.vt != VT_NULL) return kTypeMismatch; // GUARD-196
    const bool isNull = value.vt == VT_NULL || value.bstrVal == nullptr;
    // GUARD-197: terminated even when the conversion fills the buffer.
    (void)CopyString(buffer, isNull ? L"" : value.bstrVal, length); // reports a missing buffer
    return buffer == nullptr || length == 0 ? E_INVALIDARG : result;
}

} // namespace

CWmiClass::CWmiClass(const wchar_t* ns, const wchar_t* cls, unsigned int instance)
    : m_lResult(E_INVALIDARG), m_pLocator(nullptr), m_pServices(nullptr), m_pEnum(nullptr), m_pInstance(nullptr) {
    if (ns == nullptr || cls == nullptr) return; // GUARD-09
    Locate();
    if (m_pLocator != nullptr) Connect(ns, cls);
    if (m_pEnum != nullptr) (void)GetInstance(instance); // GetResult() has the result
}

CWmiClass::CWmiClass(const CWmiClass& other) {
    ShareWith(other);
}

CWmiClass& CWmiClass::operator=(const CWmiClass& other) {
    if (this == &other) return *this;
    Release();
    ShareWith(other);
    return *this;
}

CWmiClass::~CWmiClass() {
    Release();
}

// GUARD-195: each copy has its own references; otherwise the first to go would release those of the other and
// uninitialise COM.
void CWmiClass::ShareWith(const CWmiClass& other) {
    m_lResult = other.m_lResult;
    const bool shared = other.m_pLocator != nullptr && Succeeded(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    if (shared) m_lResult = other.m_lResult;
    m_pLocator = shared ? AddReference(other.m_pLocator) : nullptr;
    m_pServices = shared ? AddReference(other.m_pServices) : nullptr;
    m_pEnum = shared ? AddReference(other.m_pEnum) : nullptr;
    m_pInstance = shared ? AddReference(other.m_pInstance) : nullptr;
}

void CWmiClass::Release() {
    ReleaseAndClear(m_pInstance);
    ReleaseAndClear(m_pEnum);
    ReleaseAndClear(m_pServices);
    if (m_pLocator == nullptr) return; // COM stays initialised as long as there is a locator
    ReleaseAndClear(m_pLocator);
    CoUninitialize();
}

bool CWmiClass::Succeeded(long result) {
    m_lResult = result;
    return SUCCEEDED(result);
}

// ODD-205: if the process has set COM's security before, that counts as a failure, and nothing is read.
void CWmiClass::Locate() {
    // GUARD-198: without this initialisation there is nothing to undo; other users of the thread need COM.
    if (!Succeeded(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return;
    if (Succeeded(CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_CONNECT,
                                       RPC_C_IMP_LEVEL_IDENTIFY, nullptr, EOAC_NONE, nullptr))) {
        (void)Succeeded(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                         reinterpret_cast<void**>(&m_pLocator)));
    }
    if (m_pLocator == nullptr) CoUninitialize();
}

void CWmiClass::Connect(const wchar_t* ns, const wchar_t* cls) {
    const SystemText space = MakeText(ns);
    const SystemText name = MakeText(cls);
    if (space == nullptr || name == nullptr) {
        m_lResult = E_OUTOFMEMORY;
        return;
    }
    if (!Succeeded(
            m_pLocator->ConnectServer(space.get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr, &m_pServices)) ||
        !Succeeded(CoSetProxyBlanket(m_pServices, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                                     RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE))) {
        return;
    }
    // Not forward-only, as GetInstance() resets the enumerator.
    (void)Succeeded(m_pServices->CreateInstanceEnum(name.get(), WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &m_pEnum));
}

/// Takes the next instance; none after the last one.
bool CWmiClass::ReadNext() {
    ReleaseAndClear(m_pInstance);
    ULONG count = 0;
    if (!Succeeded(m_pEnum->Next(kForEver, 1, &m_pInstance, &count))) return false;
    if (count < 1) m_lResult = kNotFound;
    return count == 1;
}

long CWmiClass::GetInstance(unsigned int index) {
    if (m_pEnum == nullptr) return m_lResult;
    ReleaseAndClear(m_pInstance);
    if (!Succeeded(m_pEnum->Reset())) return m_lResult;
    while (ReadNext() && index > 0) --index;
    return m_lResult;
}

long CWmiClass::GetProperty(const wchar_t* name, VARIANT& value) {
    VariantInit(&value);
    if (name == nullptr) return E_INVALIDARG; // GUARD-09
    return m_pInstance == nullptr ? m_lResult : m_pInstance->Get(name, 0, &value, nullptr, nullptr);
}

long CWmiClass::GetProperty(const wchar_t* name, unsigned short& value) {
    unsigned long number = value;
    const long result = ReadNumber(*this, name, number);
    value = static_cast<unsigned short>(number);
    return result;
}

long CWmiClass::GetProperty(const wchar_t* name, unsigned long& value) {
    return ReadNumber(*this, name, value);
}

long CWmiClass::GetProperty(const wchar_t* name, char* buffer, unsigned int length) {
    return ReadText(*this, name, buffer, length);
}

long CWmiClass::GetProperty(const wchar_t* name, wchar_t* buffer, unsigned int length) {
    return ReadText(*this, name, buffer, length);
}
