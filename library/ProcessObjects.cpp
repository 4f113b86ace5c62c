#include <foundation/ErrorMode.h>
#include <messaging/office/ResourceTable.h>
#include <tessel/foundation/identifier.h>
#include <tessel/system/service.h>
#include <tessel/system/version.h>
#include <tessel/ui/notify.h>
#include <ui/BrushTable.h>

#include <cstddef>

namespace {

constexpr std::size_t kLeastBuckets = 17;

} // namespace

namespace tessel {

// They are constructed in this order before the entry point runs on attach, and destroyed after it has run on detach.
// Except where stated they are unnamed, so no other process shares them.
CMutex errorModeMutex;
CThreadLock brushTableLock;
BrushTable brushTable;

} // namespace tessel

// At unload the map is destroyed without the records of list boxes that are still registered.
CMap<HWND, hWndStore*, FormatSysMsg::WindowHash> FormatSysMsg::ListBoxMoveMap(kLeastBuckets);
CSemaphore FormatSysMsg::ListBoxLock(nullptr, 1, 1);

namespace tessel {

CSemaphore resourceTableLock(nullptr, 1, 1);

} // namespace tessel

COCuid COCuid::oInit;

/// Guards the handles that the operations on the service share.
CMutex CNtService::mHandleMutex;

CArray<CSwFile, CSwFile> CSwVersion::mSwFileTable;
// ODD-190: the only named lock here; all processes share it, although each has its own table.
CThreadLock CSwVersion::mRefLock(L"CSwVersionRefLock");
