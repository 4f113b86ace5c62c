#include <fenestra/mutex.h>

CSyncObject::~CSyncObject() {
    if (m_hObject != nullptr) (void)CloseHandle(m_hObject); // nothing can be done about a failure
}

bool CSyncObject::Lock(unsigned long timeoutMs) {
    switch (WaitForSingleObject(m_hObject, timeoutMs)) {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED: return true;
    default: return false;
    }
}

CMutex::CMutex(bool initiallyOwned, const wchar_t* name) : CSyncObject(CreateMutexW(nullptr, initiallyOwned, name)) {}

bool CMutex::Unlock() {
    return ReleaseMutex(GetHandle()) != 0;
}
