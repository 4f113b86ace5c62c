#pragma once

#include "support/CallLog.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>

#include <algorithm>

/// Replaces the devices' names and the driver of every card.
class CardDriver {
public:
    struct Behaviour {
        DWORD queryError = 0; // 0: the name is known
        bool canOpen = true, canDefine = true, canRemove = true;
        std::vector<unsigned char> answer{0x00, 0xA0, 0xC9, 0x14, 0xC8, 0x29}; // empty: the driver refuses
    } does;
    CallLog calls;

private:
    ImportPatch m_query{"QueryDosDeviceW", &QueryDosDeviceW, [this](LPCWSTR name, auto...) {
                            calls.Add(L"query", name);
                            SetLastError(does.queryError);
                            return does.queryError == 0 ? 1 : 0;
                        }};
    ImportPatch m_define{"DefineDosDeviceW", &DefineDosDeviceW, [this](DWORD flags, LPCWSTR name, LPCWSTR target) {
                             calls.Add(L"define", flags, name, target);
                             return (flags & DDD_REMOVE_DEFINITION) != 0 ? does.canRemove : does.canDefine;
                         }};
    ImportPatch m_open{"CreateFileW", &CreateFileW, [this](LPCWSTR path, DWORD access, DWORD share, auto...) {
                           calls.Add(L"open", path, access, share);
                           return does.canOpen ? CreateEventW(nullptr, 1, 0, nullptr) : INVALID_HANDLE_VALUE;
                       }};
    ImportPatch m_ask{"DeviceIoControl", &DeviceIoControl,
                      [this](HANDLE, DWORD code, void* in, DWORD, void* out, DWORD room, DWORD* length, auto) {
                          calls.Add(L"ask", code, *static_cast<DWORD*>(in));
                          *length = static_cast<DWORD>(std::min<std::size_t>(does.answer.size(), room));
                          std::copy_n(does.answer.begin(), *length, static_cast<unsigned char*>(out));
                          return *length != 0;
                      }};
};

inline constexpr wchar_t kCardsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards\\";

struct NetworkCardTest : testing::Test {
    void AddCard(const wchar_t* number, DWORD type, std::wstring_view serviceName) {
        machine.Set(kCardsKey + std::wstring(number), L"ServiceName", type, serviceName);
    }

    Reports reports;
    OwnLocalMachine machine;
    CardDriver driver;
};
