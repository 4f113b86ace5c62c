#include <messaging/office/DialogEntries.h>

#include <foundation/SharedField.h>
#include <foundation/WindowOwner.h>
#include <messaging/office/Identity.h>
#include <messaging/office/ResourceTable.h>
#include <messaging/office/WindowHandle.h>
#include <tessel/messaging/resource.h>

namespace tessel {

namespace {

bool HasEnded(unsigned long processId) {
    return HasProcessEnded(WithoutStartTime(processId));
}

/// Removes the entries of dialogs that satisfy a condition.
/// @param isGone  called with the window and the process id of an entry
template <class Condition> void RemoveDialogs(std::span<RESOURCE> records, Condition isGone) {
    for (RESOURCE& record : records) {
        const std::uint32_t holder = LoadShared(record.ThreadId);
        if (LoadShared(record.Type) != kDialogType || LoadShared(record.Id) != kDialogId) continue;
        if (!isGone(FromShared(LoadShared(record.hWnd)), LoadShared(record.ProcessId))) continue;
        // Another process may have removed the entry meanwhile, and a third may have filled the record again.
        if (ClaimResource(record, holder, GetCurrentThreadId())) ClearResource(record);
    }
}

} // namespace

// GUARD-280: entries of dialogs that no longer exist would fill the table for all programs.
void AddDialogEntry(HWND dialog, unsigned long dialogId) {
    const unsigned long own = GetCurrentProcessId();
    CResource table;
    {
        const ResourceTableLock lock;
        RemoveDialogs(ResourceRecords(table.GetResourceAddress()), [own](HWND window, unsigned long processId) {
            return processId == own ? !IsWindowOfProcess(window, own) : HasEnded(processId);
        });
    }
    (void)table.AddResource(kDialogType, kDialogId, dialog, dialogId); // a full table reports itself
}

void RemoveDialogEntry(HWND dialog) {
    const unsigned long own = GetCurrentProcessId();
    const ResourceTableLock lock;
    RemoveDialogs(ResourceRecords(CPostOffice().GetResourceAddr()),
                  [=](HWND window, unsigned long processId) { return window == dialog && processId == own; });
}

void RemoveDialogsOfEndedProcesses(std::span<RESOURCE> records) {
    RemoveDialogs(records, [](HWND, unsigned long processId) { return HasEnded(processId); });
}

} // namespace tessel
