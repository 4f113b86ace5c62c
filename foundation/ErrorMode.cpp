#include <foundation/ErrorMode.h>
#include <foundation/Report.h>
#include <tessel/foundation/errormode.h>

namespace {

long s_iCount = 0;
UINT savedMode = 0;

} // namespace

void BeginErrorModeFailCritical() {
    (void)tessel::errorModeMutex.Lock(); // waits for ever; a lock that cannot work leaves the mode to be set anyway
    if (s_iCount == 0) savedMode = SetErrorMode(SEM_FAILCRITICALERRORS);
    s_iCount += 1;
    (void)tessel::errorModeMutex.Unlock();
}

void EndErrorMode() {
    (void)tessel::errorModeMutex.Lock();
    tessel::ReportUnless(s_iCount >= 1, "s_iCount > 0", "ErrorMode", 34);
    s_iCount -= 1; // ODD-01: an unbalanced End counts too, and the next Begin only evens it out
    if (s_iCount == 0) (void)SetErrorMode(savedMode);
    (void)tessel::errorModeMutex.Unlock();
}
