#include <system/RegistryKey.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <new>

namespace tessel {

bool RegistryKey::Read(const wchar_t* name) const {
    unsigned long size = 0; // requested so that the accessor grows with the value
    return m_key != nullptr && m_registry.ReadKey(m_key, name, 0, &size) == ERROR_SUCCESS &&
           m_registry.GetStatus() != CReg::NO_BUFFER; // the only sign of missing memory
}

void RegistryKey::SaveText(const wchar_t* name, const wchar_t* text) const {
    const std::size_t length = std::wcslen(text);
    // GUARD-84: terminated twice, as the accessor searches for the end of a list if its current type is one.
    const std::unique_ptr<wchar_t[]> list(new (std::nothrow) wchar_t[length + 2]{});
    if (m_key == nullptr || list == nullptr) return;
    std::copy_n(text, length, list.get());
    (void)m_registry.SaveKey(m_key, name, list.get()); // failures are ignored
}

} // namespace tessel
