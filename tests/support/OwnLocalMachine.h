#pragma once

#include <windows.h>

#include <string>
#include <string_view>

/// Redirects this process's HKEY_LOCAL_MACHINE to a tree of the test while the object exists.
class OwnLocalMachine {
public:
    OwnLocalMachine() {
        m_path += std::to_wstring(GetCurrentProcessId());
        m_root = Create(HKEY_CURRENT_USER, m_path);
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_root);
    }
    ~OwnLocalMachine() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegCloseKey(m_root);
        RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
    }
    OwnLocalMachine(OwnLocalMachine&&) = delete;

    /// Sets a value and creates its key; the data of a text include its terminators.
    void Set(const std::wstring& path, const wchar_t* value, DWORD type, std::wstring_view data) {
        const HKEY key = Create(m_root, path);
        const auto size = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        RegSetValueExW(key, value, 0, type, reinterpret_cast<const BYTE*>(data.data()), size);
        RegCloseKey(key);
    }
    void Remove(const std::wstring& path, const wchar_t* value) { RegDeleteKeyValueW(m_root, path.c_str(), value); }
    /// @return the type's number and the whole value, including terminators; "none" if there is no value
    std::wstring Get(const std::wstring& path, const wchar_t* value) {
        wchar_t data[2000];
        DWORD size = sizeof data;
        DWORD type = 0;
        if (RegGetValueW(m_root, path.c_str(), value, RRF_RT_ANY, &type, data, &size) != 0) return L"none";
        return std::to_wstring(type) + L":" + std::wstring(data, size / sizeof(wchar_t));
    }

private:
    static HKEY Create(HKEY parent, const std::wstring& path) {
        HKEY key = nullptr;
        RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        return key;
    }
    std::wstring m_path = L"Software\\TesselTest\\";
    HKEY m_root;
};
