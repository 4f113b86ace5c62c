#pragma once

#include <tessel/system/registry.h>

namespace tessel {

/// A registry key that is open for as long as the object lives.
class RegistryKey {
public:
    /// Opens a key.
    /// @param registry  accessor that reads and writes its values; outlives this object
    /// @param parent    open key
    /// @param path      path below @p parent
    /// @param create    whether the key is created if it does not exist
    RegistryKey(CReg& registry, HKEY parent, const wchar_t* path, bool create = false)
        : RegistryKey(registry, CReg::OpenKey(parent, path, create)) {}

    /// Takes over an open key.
    /// @param registry  accessor that reads and writes its values; outlives this object
    /// @param key       the key, closed with this object; null for none
    RegistryKey(CReg& registry, HKEY key) : m_registry(registry), m_key(key) {}
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

    /// Writes a value. Failures are ignored.
    /// @param name  name of the value
    /// @param data  a text or a number
    template <class Data> void Save(const wchar_t* name, Data data) const {
        if (m_key != nullptr) (void)m_registry.SaveKey(m_key, name, data);
    }

    /// Writes a text in the accessor's current type: as a text or as a list with one text. Failures are ignored.
    /// @param name  name of the value
    /// @param text  text of any length
    void SaveText(const wchar_t* name, const wchar_t* text) const;

private:
    CReg& m_registry;
    HKEY m_key;
};

} // namespace tessel
