#pragma once

#include <tessel/foundation/platform.h>

#include <commctrl.h>

namespace tessel {

/// Destroys an image list and removes it from the current thread's list views.
/// @param images  the image list, which no object uses any longer
void DestroyImages(HIMAGELIST images);

/// Hands an image list to the list view that shows it, which then frees it; if none shows it, destroys it at once.
/// @param images  the image list, which no object uses any longer
/// @param dialog  the object's dialog; if it belongs to another thread, the image list is never freed
void HandOverImages(HIMAGELIST images, HWND dialog);

/// Sets the small image list of a list view and destroys the one that was handed to the list view.
/// @param listView  the list view, which shares the image list from then on
/// @param images    the image list, still owned by its object
/// @return the previous image list; null if it was destroyed
HIMAGELIST ShowImages(HWND listView, HIMAGELIST images);

} // namespace tessel
