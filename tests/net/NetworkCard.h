#pragma once

#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"

#include <algorithm>
#include <string>
#include <vector>

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
    std::wstring asked;      // the name whose target was looked up
    HANDLE handle = nullptr; // open while the driver is asked

private:
    static DWORD WINAPI Query(const wchar_t* name, wchar_t* target, DWORD) {
        s_self->asked = name;
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
