#include <foundation/Report.h>
#include <foundation/SharedOwners.h>
#include <foundation/SystemText.h>
#include <system/RegistryKey.h>
#include <tessel/system/eventlog.h>
#include <tessel/system/registry.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>

namespace {

using tessel::RegistryKey;

constexpr wchar_t kLogsKey[] = L"System\\CurrentControlSet\\Services\\EventLog";
constexpr wchar_t kApplicationLogKey[] = L"System\\CurrentControlSet\\Services\\EventLog\\Application";
constexpr const wchar_t* kLogs[] = {L"Application", L"Security", L"System"};
constexpr unsigned long kSecondsPerDay = 86400;
constexpr tessel::ReportSite kUnknownLogType{"NtEventLog", 39};

/// Opens a subkey of one of the machine's keys.
/// GUARD-172: without a name nothing is opened; the empty name gives the parent, which would be closed twice.
/// @return null: it could not be opened
HKEY OpenSubkey(CReg& registry, const wchar_t* parentPath, const wchar_t* name, bool create) {
    if (name == nullptr || name[0] == L'\0') return nullptr;
    const RegistryKey parent(registry, HKEY_LOCAL_MACHINE, parentPath);
    return parent.Get() == nullptr ? nullptr : CReg::OpenKey(parent.Get(), name, create);
}

} // namespace

CNtEventLog::CNtEventLog(EVENT_LOG_TYPE type) : m_szLog{} {
    SetLog(type);
}

void CNtEventLog::SetLog(EVENT_LOG_TYPE type) {
    const auto index = static_cast<std::size_t>(type);
    const bool known = index < std::size(kLogs);
    tessel::ReportUnless(known, "!_T(\"Invalid Nt Event Log type specified.\")", kUnknownLogType);
    if (known) std::wcscpy(m_szLog, kLogs[index]);
}

void CNtEventLog::SetRetention(unsigned long days) {
    // ODD-184: beyond 49,710 days the seconds wrap
    SetParameter(L"Retention", days == NEVER_OVERWRITE ? days : days * kSecondsPerDay);
}

void CNtEventLog::SetMaxSize(unsigned long bytes) {
    SetParameter(L"MaxSize", bytes);
}

void CNtEventLog::SetParameter(const wchar_t* value, unsigned long data) {
    CReg registry;
    RegistryKey(registry, OpenSubkey(registry, kLogsKey, m_szLog, false)).Save(value, data);
}

CNtEventLogSource::CNtEventLogSource(const wchar_t* name, unsigned short category)
    : m_szName(name != nullptr ? _wcsdup(name) : nullptr),
      m_hSource(m_szName != nullptr ? RegisterEventSourceW(nullptr, m_szName) : nullptr), m_usCategory(category) {}

// GUARD-173: copies share name and registration; without the count of owners each would release them.
CNtEventLogSource::CNtEventLogSource(const CNtEventLogSource& other)
    : m_szName(tessel::Share(other.m_szName)), m_hSource(m_szName != nullptr ? other.m_hSource : nullptr),
      m_usCategory(other.m_usCategory) {}

CNtEventLogSource& CNtEventLogSource::operator=(const CNtEventLogSource& other) {
    if (this == &other) return *this;
    Release();
    m_szName = tessel::Share(other.m_szName);
    m_hSource = m_szName != nullptr ? other.m_hSource : nullptr;
    m_usCategory = other.m_usCategory;
    return *this;
}

CNtEventLogSource::~CNtEventLogSource() {
    Release();
}

void CNtEventLogSource::Release() {
    if (m_szName == nullptr || !tessel::RemoveOwner(m_szName)) return;
    if (m_hSource != nullptr) (void)DeregisterEventSource(m_hSource); // a destructor cannot report
    std::free(m_szName);
}

void CNtEventLogSource::Install(const InstallData& data) {
    CReg registry;
    // ODD-187: always this log
    const RegistryKey key(registry, OpenSubkey(registry, kApplicationLogKey, m_szName, true));
    key.Save(L"CategoryCount", data.CategoryCount);
    key.Save(L"TypesSupported", data.TypesSupported);
    key.Save(L"EventMessageFile", data.EventMessageFile);
    key.Save(L"CategoryMessageFile", data.CategoryMessageFile);
    key.Save(L"ParameterMessageFile", data.ParameterMessageFile);
}

unsigned long CNtEventLogSource::ReportEventW(unsigned short type, unsigned long eventId, unsigned short stringCount,
                                              const wchar_t** strings, unsigned long dataSize, void* data,
                                              void** userSid) {
    // ODD-185: the pointer is the identifier itself, and the caller's is freed, too
    void* const sid = userSid != nullptr ? userSid : GetUserSid();
    const bool written =
        ::ReportEventW(m_hSource, type, m_usCategory, eventId, sid, stringCount, dataSize, strings, data) != FALSE;
    const unsigned long status = written ? 0 : GetLastError();
    FreeUserSid(sid);
    return status;
}

unsigned long CNtEventLogSource::ReportEventError(unsigned long eventId, unsigned short stringCount,
                                                  const wchar_t** strings, unsigned long dataSize, void* data,
                                                  void** userSid) {
    return ReportEventW(EVENTLOG_ERROR_TYPE, eventId, stringCount, strings, dataSize, data, userSid);
}

unsigned long CNtEventLogSource::ReportEventWarning(unsigned long eventId, unsigned short stringCount,
                                                    const wchar_t** strings, unsigned long dataSize, void* data,
                                                    void** userSid) {
    return ReportEventW(EVENTLOG_WARNING_TYPE, eventId, stringCount, strings, dataSize, data, userSid);
}

unsigned long CNtEventLogSource::ReportEventInfo(unsigned long eventId, unsigned short stringCount,
                                                 const wchar_t** strings, unsigned long dataSize, void* data,
                                                 void** userSid) {
    return ReportEventW(EVENTLOG_INFORMATION_TYPE, eventId, stringCount, strings, dataSize, data, userSid);
}

unsigned long CNtEventLogSource::ReportEventErrorSystemCode(unsigned long eventId, unsigned long systemCode) {
    constexpr unsigned long kMinLength = 20;
    wchar_t digits[10];                                            // of 32 bits, the 8 and the terminator
    tessel::SystemText text(systemCode, LANG_NEUTRAL, kMinLength); // GUARD-174: inserts stay
    (void)std::swprintf(digits, std::size(digits), L"%0X8",        // ODD-186: the 8 is printed
                        static_cast<unsigned int>(systemCode));
    const wchar_t* strings[] = {text.Length() != 0 ? text.Get() : digits};
    return ReportEventError(eventId, 1, strings, 0, nullptr, nullptr);
}

void* CNtEventLogSource::GetUserSid() {
    DWORD nameLength = 0;
    (void)GetUserNameW(nullptr, &nameLength); // fails, but returns the length
    const std::unique_ptr<wchar_t[]> name(new (std::nothrow) wchar_t[nameLength + 1]{});
    if (name == nullptr || !GetUserNameW(name.get(), &nameLength)) return nullptr;

    DWORD sidSize = 0;
    DWORD domainLength = 0;
    SID_NAME_USE use = SidTypeUnknown;
    (void)LookupAccountNameW(nullptr, name.get(), nullptr, &sidSize, nullptr, &domainLength,
                             &use); // the sizes, as above
    const std::unique_ptr<wchar_t[]> domain(new (std::nothrow) wchar_t[domainLength + 1]{});
    void* const sid = std::malloc(sidSize);
    if (sid != nullptr && domain != nullptr &&
        LookupAccountNameW(nullptr, name.get(), sid, &sidSize, domain.get(), &domainLength, &use)) {
        return sid;
    }
    std::free(sid);
    return nullptr;
}

void CNtEventLogSource::FreeUserSid(void* sid) {
    std::free(sid);
}
