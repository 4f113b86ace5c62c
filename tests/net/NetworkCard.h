#pragma once

#include "support/ImportPatch.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// HKEY_LOCAL_MACHINE as this process sees it for as long as the object lives: a tree of the test's own.
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
    OwnLocalMachine(const OwnLocalMachine&) = delete;
    OwnLocalMachine& operator=(const OwnLocalMachine&) = delete;

    /// Sets a value and makes its key; a text ends with what terminates it.
    void Set(const std::wstring& path, const wchar_t* value, DWORD type, std::wstring_view data) {
        const HKEY key = Create(m_root, path);
        const auto size = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        RegSetValueExW(key, value, 0, type, reinterpret_cast<const BYTE*>(data.data()), size);
        RegCloseKey(key);
    }
    /// @return the type's number and the whole value, terminators included; "none" when there is no value
    std::wstring Get(const std::wstring& path, const wchar_t* value) {
        wchar_t data[256];
        DWORD size = sizeof data;
        DWORD type = 0;
        if (RegGetValueW(m_root, path.c_str(), value, RRF_RT_ANY, &type, data, &size) != 0) return L"none";
        return std::to_wstring(type) + L":" + std::wstring(data, size / sizeof(wchar_t));
    }

private:
    static HKEY Create(HKEY parent, const std::wstring& path) {
        HKEY key = nullptr;
        RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        return key;
    }
    std::wstring m_path = L"Software\\TesselTest\\";
    HKEY m_root;
};

/// Stands in for the devices' names and for the driver of every card, for as long as the object lives.
class CardDriver {
public:
    CardDriver() { s_self = this; }
    CardDriver(const CardDriver&) = delete;
    CardDriver& operator=(const CardDriver&) = delete;

    struct Behaviour {
        DWORD queryError = 0; // 0: the name is known
        bool canDefine = true;
        bool canRemove = true;
        bool canOpen = true;
        std::vector<unsigned char> answer{0x00, 0xA0, 0xC9, 0x14, 0xC8, 0x29}; // empty: the driver refuses
    } does;
    std::vector<std::wstring> calls;
    HANDLE handle = nullptr; // open while the driver is asked

private:
    static DWORD WINAPI Query(const wchar_t*, wchar_t* target, DWORD) {
        *target = L'\0';
        SetLastError(s_self->does.queryError);
        return s_self->does.queryError == 0 ? 1 : 0;
    }
    static BOOL WINAPI Define(DWORD flags, const wchar_t* name, const wchar_t* target) {
        s_self->calls.push_back(std::to_wstring(flags) + L" " + name + L" " + target);
        return (flags & DDD_REMOVE_DEFINITION) != 0 ? s_self->does.canRemove : s_self->does.canDefine;
    }
    static HANDLE WINAPI Open(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD, DWORD,
                              HANDLE) {
        s_self->calls.push_back(std::to_wstring(access >> 28) + std::to_wstring(share) + L" " + path);
        if (!s_self->does.canOpen) return INVALID_HANDLE_VALUE;
        return s_self->handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    static BOOL WINAPI Ask(HANDLE, DWORD code, void* in, DWORD, void* out, DWORD room, DWORD* length, OVERLAPPED*) {
        s_self->calls.push_back(std::to_wstring(code) + L" " + std::to_wstring(*static_cast<DWORD*>(in)));
        *length = static_cast<DWORD>(std::min<std::size_t>(s_self->does.answer.size(), room));
        std::copy_n(s_self->does.answer.begin(), *length, static_cast<unsigned char*>(out));
        return *length != 0;
    }

    static inline CardDriver* s_self = nullptr;
    ImportPatch m_query{L"Tessel.dll", "QueryDosDeviceW", Query};
    ImportPatch m_define{L"Tessel.dll", "DefineDosDeviceW", Define};
    ImportPatch m_open{L"Tessel.dll", "CreateFileW", Open};
    ImportPatch m_ask{L"Tessel.dll", "DeviceIoControl", Ask};
};

inline constexpr wchar_t kCardsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\";
