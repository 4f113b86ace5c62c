#pragma once

#include <tessel/messaging/postoffice.h>

#include <span>

namespace tessel {

/// Key of requested dialogs in the resource table; the owner is the dialog's resource number.
inline constexpr RESOURCE_TYPE kDialogType{2};
/// Which of the resources of that type.
inline constexpr RESOURCE_ID kDialogId{0};

/// Adds a requested dialog to the resource table, after removing the dialogs that no longer exist: those of this
/// process and those of processes that have ended.
/// @param dialog    the dialog; null if it could not be created
/// @param dialogId  resource number of its template
void AddDialogEntry(HWND dialog, unsigned long dialogId);

/// Removes the entry of a dialog that is being destroyed, if it has one.
/// @param dialog  the dialog, of this process
void RemoveDialogEntry(HWND dialog);

/// Removes the entries of dialogs whose process has ended. The caller holds the ResourceTableLock.
/// @param records  the whole resource table
void RemoveDialogsOfEndedProcesses(std::span<RESOURCE> records);

} // namespace tessel
