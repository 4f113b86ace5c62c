#pragma once

#include <tessel/foundation/platform.h>

#include <commctrl.h>

namespace tessel {

/// Destroys an image list and takes it away from the current thread's list views that show it.
/// @param images  the image list, which no object holds
void DestroyImages(HIMAGELIST images);

/// Gives up an image list that its object needs no more: the list view that shows it frees it, or it goes at once.
/// @param images  the image list, which no object holds
/// @param dialog  the object's dialog; of another thread's dialogs it cannot be told what they show, so it stays
void LeaveImages(HIMAGELIST images, HWND dialog);

/// Makes an image list a list view's small one. One that was left to the list view is destroyed.
/// @param listView  the list view, which shares it from then on
/// @param images    the image list, which stays its object's
/// @return the image list before, unless that was destroyed
HIMAGELIST ShowImages(HWND listView, HIMAGELIST images);

} // namespace tessel
