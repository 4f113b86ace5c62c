#pragma once

#include "support/CallLog.h"

#include <string>
#include <utility>
#include <vector>

using Lines = std::vector<std::wstring>;

/// Records what the library writes to the event log while the object exists: the name of each source opened, "end of
/// NAME" for each one closed, and "NAME TYPE CATEGORY ID USER DATA|TEXT|TEXT" for each event.
struct FakeEventLog {
    Lines lines;
    DWORD error = 0; ///< of every event
    void* lastSid = nullptr;

    Lines Take() { return std::exchange(lines, {}); }
    static std::wstring NameOf(PSID sid) {
        wchar_t name[200] = L"nobody", domain[200];
        DWORD sizes[] = {200, 200};
        SID_NAME_USE use;
        if (sid != nullptr) LookupAccountSidW(nullptr, sid, name, &sizes[0], domain, &sizes[1], &use);
        return name;
    }

private:
    BOOL Write(HANDLE source, WORD type, WORD category, DWORD id, PSID sid, WORD count, DWORD size,
               const wchar_t* const* texts, void* data) {
        std::wstring line = static_cast<wchar_t*>(source) + ArgumentText(type, category, id);
        line += L" " + NameOf(lastSid = sid) + L" " + std::wstring(static_cast<wchar_t*>(data), size / sizeof(wchar_t));
        for (WORD i = 0; i < count; ++i) line += std::wstring(L"|") + texts[i];
        lines.push_back(line);
        SetLastError(error);
        return error == 0;
    }

    ImportPatch m_open{"RegisterEventSourceW", &RegisterEventSourceW,
                       [this](const wchar_t*, const wchar_t* name) { return lines.push_back(name), _wcsdup(name); }};
    ImportPatch m_close{"DeregisterEventSource", &DeregisterEventSource, [this](HANDLE source) {
                            lines.push_back(std::wstring(L"end of ") + static_cast<wchar_t*>(source));
                            return free(source), TRUE;
                        }};
    ImportPatch m_write{"ReportEventW", &ReportEventW, [this](auto... a) { return Write(a...); }};
};
