#pragma once

#include <tessel/messaging/postoffice.h>

#include <span>

namespace tessel {

/// Key of the dialogs that threads request of their host, in the resource table; the owner is the dialog's number.
inline constexpr RESOURCE_TYPE kDialogType{2};
/// Which of the resources of that type.
inline constexpr RESOURCE_ID kDialogId{0};

/// Enters a requested dialog in the resource table, from which those of this process that are gone are removed first.
/// @param dialog    the dialog; null when it could not be made
/// @param dialogId  resource number of its template
void AddDialogEntry(HWND dialog, unsigned long dialogId);

/// Removes the entry of a dialog that is being destroyed, if it has one.
/// @param dialog  the dialog, of this process
void RemoveDialogEntry(HWND dialog);

/// Removes the entries of dialogs whose process has ended. To be called under the ResourceTableLock.
/// @param records  the whole resource table
void RemoveDialogsOfEndedProcesses(std::span<RESOURCE> records);

} // namespace tessel
