#include <tessel/foundation/identifier.h>

#include <rpc.h>

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace {

/// Compares the identifiers without the reserved bytes.
bool AreEqual(const OCUID& left, const OCUID& right) {
    UUID first = left.Uuid;
    UUID second = right.Uuid;
    RPC_STATUS status = RPC_S_OK;
    return UuidCompare(&first, &second, &status) == 0;
}

} // namespace

COCuid::COCuid(int create) : m_Uid{}, m_szText{}, m_iPresent(0) {
    if (create == 1) (void)Create(); // IsPresent() returns the result
}

unsigned long COCuid::Create() {
    if (m_iPresent != 0) return OCUID_ALREADY_HELD;
    OCUID uid{};
    const RPC_STATUS created = UuidCreate(&uid.Uuid);
    if (created != RPC_S_OK && created != RPC_S_UUID_LOCAL_ONLY) return OCUID_NOT_CREATED;
    if (ToString(&uid, m_szText, TEXT_SIZE) != 0) return OCUID_NOT_CREATED;
    m_Uid = uid;
    m_iPresent = 1;
    return 0;
}

int COCuid::ToString(const OCUID* uid, wchar_t* text, unsigned long size) {
    if (uid == nullptr || text == nullptr) return 1; // GUARD-09
    UUID uuid = uid->Uuid;
    RPC_WSTR converted = nullptr;
    if (UuidToStringW(&uuid, &converted) != RPC_S_OK) return 1;
    std::wcsncpy(text, reinterpret_cast<const wchar_t*>(converted),
                 size);               // ODD-160: not terminated if it fills the buffer
    (void)RpcStringFreeW(&converted); // cannot fail for a text from UuidToStringW
    return 0;
}

int COCuid::ToUid(wchar_t* text, OCUID* uid) {
    if (uid == nullptr) return 1; // GUARD-09
    *uid = OCUID{};
    return UuidFromStringW(reinterpret_cast<RPC_WSTR>(text), &uid->Uuid) == RPC_S_OK ? 0 : 1;
}

int COCuid::operator==(const OCUID* other) const {
    if (m_iPresent == 0 || other == nullptr) return 0; // GUARD-09
    return std::memcmp(&m_Uid, other, sizeof m_Uid) == 0;
}

int COCuid::operator==(const COCuid* other) const {
    if (m_iPresent == 0 || other == nullptr) return 0; // GUARD-09
    return AreEqual(m_Uid, other->m_Uid);              // ODD-161: does not check whether the other holds one
}

int COCuid::operator==(const COCuid& other) const {
    return m_iPresent != 0 && other.m_iPresent != 0 && AreEqual(m_Uid, other.m_Uid);
}

int COCuid::SetUid(const COCuid* source, int overwrite) {
    if (m_iPresent != 0 && overwrite != 1) return 0;
    if (source != nullptr && source->m_iPresent != 0) {
        *this = *source;
        return 1;
    }
    Clear();
    return 0;
}

int COCuid::SetUid(const OCUID* source, int overwrite) {
    if (m_iPresent != 0 && overwrite != 1) return 0;
    if (source != nullptr) m_Uid = *source;
    if (source == nullptr || ToString(&m_Uid, m_szText, TEXT_SIZE) != 0) {
        Clear();
        return 0;
    }
    return m_iPresent = 1;
}

// NOLINTBEGIN(misc-unconventional-assign-operator): callers check the results.
int COCuid::operator=(const OCUID* source) {
    if (m_iPresent != 0 || source == nullptr) return 0; // GUARD-09
    m_Uid = *source;
    (void)ToString(&m_Uid, m_szText, TEXT_SIZE); // ODD-162: set even if the text cannot be generated
    m_iPresent = 1;
    return 1;
}

// ODD-163: returns 0 for success and replaces an identifier that is held; the assignment of a record does the reverse.
int COCuid::operator=(const COCuid* source) {
    if (source == nullptr || source->m_iPresent == 0) return 1; // GUARD-09
    *this = *source;
    return 0;
}

int COCuid::operator=(const wchar_t* text) {
    wchar_t copy[TEXT_SIZE]{}; // the text may be this object's own
    // GUARD-150: a text that fills the field loses its last character; otherwise reads would run past the field.
    if (text != nullptr) std::wcsncpy(copy, text, TEXT_SIZE - 1);
    std::copy_n(copy, TEXT_SIZE, m_szText);
    const int failed = ToUid(m_szText, &m_Uid);
    m_iPresent = failed == 0;
    return failed;
}
// NOLINTEND(misc-unconventional-assign-operator)

void COCuid::Clear() {
    constexpr std::size_t kCleared = 32;
    m_iPresent = 0;
    m_Uid = OCUID{};
    std::fill_n(m_szText, kCleared, L'\0'); // ODD-164: the last four characters of an identifier stay
}

void COCuid::SetToZero() {
    constexpr OCUID kNil{};
    m_iPresent = 0;
    *this = &kNil;
}
