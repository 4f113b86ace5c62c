#include <foundation/LastError.h>
#include <foundation/WaitResult.h>
#include <tessel/foundation/event.h>

namespace {

using tessel::kNotSignalled;
using tessel::LastErrorUnless;

HANDLE CreateOpenToAll(const wchar_t* name, int manualReset, int initialState) {
    SECURITY_DESCRIPTOR descriptor;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
    const bool described = InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION) != 0 &&
                           SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE) != 0;
    return CreateEventW(described ? &attributes : nullptr, manualReset, initialState, name);
}

void DispatchWaitingMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) { // ODD-06: a WM_QUIT is removed like any other
        (void)TranslateMessage(&message);
        (void)DispatchMessageW(&message);
    }
}

} // namespace

CEvent::CEvent(const wchar_t* name, int manualReset, int initialState, int openToAll) : m_hEvent(nullptr) {
    if (name != nullptr) {
        m_hEvent = OpenEventW(EVENT_ALL_ACCESS, TRUE, name);
        if (m_hEvent == nullptr && GetLastError() != ERROR_FILE_NOT_FOUND) m_hEvent = INVALID_HANDLE_VALUE;
    }
    if (m_hEvent != nullptr) return;
    m_hEvent = openToAll != 0 ? CreateOpenToAll(name, manualReset, initialState)
                              : CreateEventW(nullptr, manualReset, initialState, name);
}

CEvent::CEvent(unsigned long handle) : m_hEvent(nullptr) {
    if (handle != 0) {
        // ODD-07: passes the process id in place of a process handle, so this usually fails.
        const HANDLE process = ULongToHandle(GetCurrentProcessId());
        if (!DuplicateHandle(process, ULongToHandle(handle), process, &m_hEvent, 0, TRUE, DUPLICATE_SAME_ACCESS)) {
            m_hEvent = nullptr;
        }
    }
    if (m_hEvent == nullptr) m_hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

CEvent::~CEvent() {
    if (IsOpen()) (void)CloseHandle(m_hEvent); // a copy may have closed it
    m_hEvent = nullptr;
}

unsigned long CEvent::WaitOnEvent(unsigned long timeoutMs) {
    // ODD-08: INVALID_HANDLE_VALUE of a failed open is waited on like a handle.
    switch (WaitForSingleObjectEx(m_hEvent, timeoutMs, FALSE)) {
    case WAIT_OBJECT_0: return 0;
    case WAIT_FAILED: return GetLastError();
    default: return kNotSignalled;
    }
}

unsigned long CEvent::WaitOnEventMsg(unsigned long timeoutMs) {
    switch (MsgWaitForMultipleObjects(1, &m_hEvent, FALSE, timeoutMs, QS_ALLINPUT)) {
    case WAIT_OBJECT_0: return 0;
    case WAIT_OBJECT_0 + 1: DispatchWaitingMessages(); return kNotSignalled;
    case WAIT_FAILED: return GetLastError();
    default: return kNotSignalled;
    }
}

int CEvent::IsSignalled() {
    return WaitOnEvent(0) == 0 ? 1 : 0;
}

unsigned long CEvent::SetEvent() {
    return LastErrorUnless(::SetEvent(m_hEvent));
}

unsigned long CEvent::ResetEvent() {
    return LastErrorUnless(::ResetEvent(m_hEvent));
}

unsigned long CEvent::PulseEvent() {
    return LastErrorUnless(::PulseEvent(m_hEvent));
}
