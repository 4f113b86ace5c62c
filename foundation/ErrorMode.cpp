#include <foundation/ErrorMode.h>
#include <foundation/Report.h>
#include <tessel/foundation/errormode.h>

namespace {

constexpr tessel::ReportSite kEndWithoutBegin{"ErrorMode", 34};

/// Calls of Begin minus calls of End.
long nesting = 0;
UINT savedMode = 0;

} // namespace

void BeginErrorModeFailCritical() {
    (void)tessel::errorModeMutex.Lock(); // if it fails, set the mode without the lock
    if (nesting == 0) savedMode = SetErrorMode(SEM_FAILCRITICALERRORS);
    nesting += 1;
    (void)tessel::errorModeMutex.Unlock();
}

void EndErrorMode() {
    (void)tessel::errorModeMutex.Lock();
    tessel::ReportUnless(nesting >= 1, "s_iCount > 0", kEndWithoutBegin);
    nesting -= 1; // ODD-01: an unbalanced End counts, and the next Begin only balances it
    if (nesting == 0) (void)SetErrorMode(savedMode);
    (void)tessel::errorModeMutex.Unlock();
}
