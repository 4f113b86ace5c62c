#pragma once

#include <tessel/system/registry.h>

namespace tessel {

/// A registry key that is open for as long as the object lives.
class RegistryKey {
public:
    /// Opens a key that exists.
    /// @param registry  accessor that reads and writes its values; outlives this object
    /// @param parent    open key
    /// @param path      path below @p parent
    RegistryKey(CReg& registry, HKEY parent, const wchar_t* path)
        : m_registry(registry), m_key(CReg::OpenKey(parent, path, false)) {}
    ~RegistryKey() {
        if (m_key != nullptr) CReg::CloseKey(m_key);
    }
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    /// The key.
    /// @return null: it could not be opened
    HKEY Get() const { return m_key; }

    /// Reads a value of any length into the accessor.
    /// @param name  name of the value
    /// @return true: the accessor has it; false: it cannot be read, or the key is not open
    bool Read(const wchar_t* name) const;

    /// Writes a text in the accessor's current type: as a text or as a list with one text. Failures are ignored.
    /// @param name  name of the value
    /// @param text  text of any length
    void SaveText(const wchar_t* name, const wchar_t* text) const;

private:
    CReg& m_registry;
    HKEY m_key;
};

} // namespace tessel
