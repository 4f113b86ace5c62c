#include <system/RegistryKey.h>
#include <tessel/net/securityfilter.h>
#include <tessel/system/registry.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

namespace {

constexpr wchar_t kServices[] = L"SYSTEM\\CurrentControlSet\\Services\\";
constexpr wchar_t kLinkage[] = L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Linkage";
constexpr wchar_t kParameters[] = L"SYSTEM\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr wchar_t kSwitch[] = L"EnableSecurityFilters";
constexpr wchar_t kTcpPorts[] = L"TCPAllowedPorts";
constexpr wchar_t kUdpPorts[] = L"UDPAllowedPorts";
constexpr wchar_t kProtocols[] = L"RawIPAllowedProtocols";
constexpr wchar_t kDevice[] = L"\\Device\\";

constexpr unsigned long kAllPorts = CSecurityFilterNT::ALL_PORTS;
constexpr unsigned long kIcmp = 1;
constexpr unsigned long kRawIp = 255;

/// A value of a key under HKEY_LOCAL_MACHINE.
class Setting {
public:
    Setting(const wchar_t* path, const wchar_t* value) : m_key(m_registry, HKEY_LOCAL_MACHINE, path), m_value(value) {}

    /// @param data  receives the number or the texts, which are valid as long as this object
    /// @return 0 or a Win32 error
    template <class Data> long Read(Data& data) {
        if (m_key.Get() == nullptr) return ERROR_CANTOPEN;
        unsigned long size = 0;
        const long result = m_registry.ReadKey(m_key.Get(), m_value, 0, &size);
        if (result != ERROR_SUCCESS) return result;
        return m_registry.GetData(data) == 0 ? ERROR_SUCCESS : ERROR_CANTREAD;
    }

    template <class Data> bool Write(Data& data) {
        return m_registry.SaveKey(m_key.Get(), m_value, data) == ERROR_SUCCESS;
    }

private:
    CReg m_registry;
    tessel::RegistryKey m_key;
    const wchar_t* m_value;
};

using Texts = CList<const wchar_t*>;

/// A number in the form that the lists contain.
struct Decimal {
    explicit Decimal(unsigned long number) { _itow(static_cast<int>(number), text, 10); }
    bool operator()(const wchar_t* entry) const { return std::wstring_view(entry) == text; }
    wchar_t text[12];
};

bool Holds(const Texts& texts, const Decimal& number) {
    return std::any_of(texts.begin(), texts.end(), number);
}

int Contains(const wchar_t* path, const wchar_t* value, unsigned long number) {
    Setting setting(path, value);
    Texts texts;
    return setting.Read(texts) == ERROR_SUCCESS && Holds(texts, Decimal(number)) ? 1 : 0;
}

int Add(const wchar_t* path, const wchar_t* value, unsigned long number) {
    Setting setting(path, value);
    Texts texts;
    const Decimal added(number);
    if (setting.Read(texts) != ERROR_SUCCESS || Holds(texts, added)) return 0;
    texts.AddHead(added.text);
    return setting.Write(texts) ? 1 : 0;
}

int Remove(const wchar_t* path, const wchar_t* value, unsigned long number) {
    Setting setting(path, value);
    Texts texts;
    if (setting.Read(texts) != ERROR_SUCCESS) return 0;
    const Decimal removed(number);
    if (texts.RemoveIf([&](const wchar_t* entry) { return number == kAllPorts || removed(entry); }) == 0) return 0;
    return setting.Write(texts) ? 1 : 0;
}

using ListOperation = int (*)(const wchar_t* path, const wchar_t* value, unsigned long number);

/// Applies an operation to the port list of each protocol.
int OnPorts(ListOperation operation, const wchar_t* path, unsigned long port, PROTOCOL protocols) {
    int result = 0;
    if ((protocols & PROTOCOL_TCP) != 0) result |= operation(path, kTcpPorts, port);
    if ((protocols & PROTOCOL_UDP) != 0) result |= operation(path, kUdpPorts, port);
    return result;
}

bool AllowsPort(const wchar_t* path, unsigned long port, PROTOCOL protocols) {
    if ((protocols & PROTOCOL_TCP) != 0 && Contains(path, kTcpPorts, port) == 0) return false;
    return (protocols & PROTOCOL_UDP) == 0 || Contains(path, kUdpPorts, port) != 0;
}

} // namespace

/// The names of the adapters.
class CSecurityFilterNT::Implementation {
public:
    Implementation() {
        Setting setting(kLinkage, L"Bind");
        Texts bound;
        if (setting.Read(bound) != ERROR_SUCCESS) return;
        for (const std::wstring_view entry : bound) {
            if (entry.starts_with(kDevice)) m_names.AddTail(std::wstring(entry.substr(std::size(kDevice) - 1)));
        }
    }
    virtual ~Implementation() = default;

    /// Calls an operation with the key of each adapter until one returns false.
    /// @return true: all returned true; false: one did not, or memory ran out
    template <class Operation> static bool AllOf(const Implementation* adapters, Operation operation) {
        if (adapters == nullptr) return true;
        try {
            return std::all_of(adapters->m_names.begin(), adapters->m_names.end(), [&](const std::wstring& name) {
                return operation((kServices + name + L"\\Parameters\\Tcpip").c_str());
            });
        } catch (const std::bad_alloc&) {
            return false;
        }
    }

    /// Calls an operation with the key of each adapter.
    /// @return the results, combined by OR
    template <class Operation> static int ForEach(const Implementation* adapters, Operation operation) {
        int result = 0;
        (void)AllOf(adapters, [&](const wchar_t* path) {
            result |= operation(path);
            return true;
        });
        return result;
    }

private:
    CList<std::wstring> m_names;
};

CSecurityFilterNT::CSecurityFilterNT() : m_pImplementation(nullptr) {
    try {
        m_pImplementation = new Implementation;
    } catch (const std::bad_alloc&) { // without adapters every operation does nothing
    }
}

CSecurityFilterNT::CSecurityFilterNT(const CSecurityFilterNT& other) : m_pImplementation(nullptr) {
    CopyFrom(other);
}

CSecurityFilterNT& CSecurityFilterNT::operator=(const CSecurityFilterNT& other) {
    if (this != &other) CopyFrom(other);
    return *this;
}

CSecurityFilterNT::~CSecurityFilterNT() {
    delete m_pImplementation;
}

// GUARD-65: each copy has its own names; shared ones would be freed twice.
void CSecurityFilterNT::CopyFrom(const CSecurityFilterNT& other) {
    delete m_pImplementation;
    m_pImplementation = nullptr;
    try {
        if (other.m_pImplementation != nullptr) m_pImplementation = new Implementation(*other.m_pImplementation);
    } catch (const std::bad_alloc&) { // without adapters every operation does nothing
    }
}

int CSecurityFilterNT::Enable(int on) {
    Setting setting(kParameters, kSwitch);
    unsigned long value = 0;
    if (setting.Read(value) != ERROR_SUCCESS) return 0;
    const auto wanted = static_cast<unsigned long>(on);
    const int changed = static_cast<int>(wanted ^ value);
    if (!setting.Write(wanted)) return changed;
    return changed | Implementation::ForEach(m_pImplementation, [on](const wchar_t* path) {
               if (on == 0) return Remove(path, kProtocols, kAllPorts);
               return Add(path, kProtocols, kIcmp) | Add(path, kProtocols, kRawIp);
           });
}

int CSecurityFilterNT::IsEnabled() {
    unsigned long value = 0;
    return Setting(kParameters, kSwitch).Read(value) == ERROR_SUCCESS && value != 0 ? 1 : 0;
}

int CSecurityFilterNT::AllowPort(unsigned short port, PROTOCOL protocols) {
    return Implementation::ForEach(m_pImplementation,
                                   [=](const wchar_t* path) { return OnPorts(Add, path, port, protocols); });
}

int CSecurityFilterNT::BlockPort(unsigned long port, PROTOCOL protocols) {
    (void)Implementation::ForEach(m_pImplementation,
                                  [=](const wchar_t* path) { return OnPorts(Remove, path, port, protocols); });
    return 0; // ODD-74: always, unlike AllowPort()
}

int CSecurityFilterNT::IsAllowed(unsigned short port, PROTOCOL protocols) {
    if (IsEnabled() == 0) return 1;
    const auto allowed = [=](const wchar_t* path) { return AllowsPort(path, port, protocols); };
    return Implementation::AllOf(m_pImplementation, allowed) ? 1 : 0;
}
