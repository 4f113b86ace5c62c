#include <foundation/Report.h>
#include <tessel/net/networkid.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <new>

namespace {

using tessel::ReportUnless;

constexpr tessel::ReportSite kNullName{"NetworkId", 140};
constexpr std::size_t kLongestName = 32766; // 65,534 bytes with the terminator, the most that an LSA string holds

/// Opens the policy of this machine, and closes it at the end of the scope.
class Policy {
public:
    explicit Policy(ACCESS_MASK access) {
        LSA_OBJECT_ATTRIBUTES attributes{};
        m_status = LsaOpenPolicy(nullptr, &attributes, access, &m_handle);
    }
    ~Policy() {
        if (IsOpen()) (void)LsaClose(m_handle); // open until now, so it cannot fail
    }
    Policy(const Policy&) = delete;
    Policy& operator=(const Policy&) = delete;

    bool IsOpen() const { return m_status >= 0; }
    NTSTATUS Status() const { return m_status; }
    LSA_HANDLE Get() const { return m_handle; }

private:
    LSA_HANDLE m_handle = nullptr;
    NTSTATUS m_status;
};

void CopyName(const LSA_UNICODE_STRING& name, wchar_t* out) {
    const std::size_t length = name.Length / sizeof(wchar_t);
    if (length != 0) std::copy_n(name.Buffer, length, out);
    out[length] = L'\0'; // GUARD-85: the system need not terminate the name
}

} // namespace

unsigned long CNetworkId::GetWorkgroupName(wchar_t* out) {
    if (out == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    const Policy policy(POLICY_VIEW_LOCAL_INFORMATION);
    if (!policy.IsOpen()) return LsaNtStatusToWinError(policy.Status());
    void* information = nullptr;
    NTSTATUS status = LsaQueryInformationPolicy(policy.Get(), PolicyPrimaryDomainInformation, &information);
    if (status >= 0) {
        CopyName(static_cast<const POLICY_PRIMARY_DOMAIN_INFO*>(information)->Name, out);
        status = LsaFreeMemory(information);
    }
    return LsaNtStatusToWinError(status);
}

unsigned long CNetworkId::SetWorkgroupName(const wchar_t* name) {
    const Policy policy(POLICY_TRUST_ADMIN);
    ReportUnless(name != nullptr, "WorkgroupName", kNullName);
    if (name == nullptr) return ERROR_INVALID_PARAMETER; // GUARD-09
    if (!policy.IsOpen()) return LsaNtStatusToWinError(policy.Status());
    const std::size_t length = std::wcslen(name);
    if (length > kLongestName) return ERROR_INVALID_PARAMETER; // GUARD-86: its byte count would wrap
    const std::unique_ptr<wchar_t[]> copy(new (std::nothrow) wchar_t[length + 1]);
    if (copy == nullptr) return ERROR_NOT_ENOUGH_MEMORY;
    (void)std::wcscpy(copy.get(), name);
    POLICY_PRIMARY_DOMAIN_INFO information{};
    InitLsaString(&information.Name, copy.get(), static_cast<unsigned long>(length));
    return LsaNtStatusToWinError(LsaSetInformationPolicy(policy.Get(), PolicyPrimaryDomainInformation, &information));
}

void CNetworkId::InitLsaString(LSA_UNICODE_STRING* string, wchar_t* text, unsigned long length) {
    string->Buffer = text;
    string->Length = static_cast<USHORT>(length * sizeof(wchar_t));
    string->MaximumLength = static_cast<USHORT>((length + 1) * sizeof(wchar_t));
}
