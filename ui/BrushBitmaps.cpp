#include <foundation/Report.h>
#include <tessel/ui/brush.h>
#include <ui/BrushTable.h>
#include <ui/GdiHandles.h>

#include <algorithm>
#include <limits>

namespace {

using tessel::BrushEntry;
using tessel::brushTable;

using Bitmap = tessel::GdiObject<HBITMAP>;
using Brush = tessel::GdiObject<HBRUSH>;
using tessel::DeviceContext;
using tessel::SelectedObject;

DeviceContext DisplayContext() {
    return DeviceContext(CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr));
}

/// A memory device context of the display; null if it cannot be created. Another device does not replace it.
DeviceContext MemoryContext() {
    const DeviceContext display = DisplayContext();
    return DeviceContext(display == nullptr ? nullptr : CreateCompatibleDC(display.get()));
}

Bitmap LoadBitmapResource(HINSTANCE instance, unsigned int id) {
    return Bitmap(
        static_cast<HBITMAP>(LoadImageW(instance, MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0, 0, LR_DEFAULTCOLOR)));
}

/// Width and height; zero for no bitmap.
SIZE SizeOf(const Bitmap& bitmap) {
    BITMAP description{};
    (void)GetObjectW(bitmap.get(), sizeof description, &description); // zeros remain after a failure
    return {description.bmWidth, description.bmHeight};
}

Bitmap EmptyBitmap(SIZE size) {
    const DeviceContext display = DisplayContext();
    return Bitmap(CreateCompatibleBitmap(display.get(), size.cx, size.cy));
}

bool Copy(const Bitmap& base, HDC hdcDest, HDC hdcSource) {
    const SIZE size = SizeOf(base);
    const SelectedObject source(hdcSource, base.get());
    return source && BitBlt(hdcDest, 0, 0, size.cx, size.cy, hdcSource, 0, 0, SRCCOPY);
}

bool DrawOver(const Bitmap& icon, POINT place, HDC hdcDest, HDC hdcSource) {
    const SIZE size = SizeOf(icon);
    const POINT corners[] = {place, {place.x + size.cx, place.y}, {place.x, place.y + size.cy}};
    const SelectedObject source(hdcSource, icon.get());
    return source && PlgBlt(hdcDest, corners, hdcSource, 0, 0, size.cx, size.cy, nullptr, 0, 0);
}

/// Draws one bitmap over another, in the given contexts.
/// @return null after a failure, also if a context accepts no bitmap or is passed twice
Bitmap Compose(const Bitmap& base, const Bitmap& icon, POINT place, HDC hdcDest, HDC hdcSource) {
    if (hdcDest == hdcSource) return nullptr;
    Bitmap canvas = EmptyBitmap(SizeOf(base));
    const SelectedObject target(hdcDest, canvas.get());
    if (!target || !Copy(base, hdcDest, hdcSource) || !DrawOver(icon, place, hdcDest, hdcSource)) return nullptr;
    return canvas;
}

/// The same pattern with its origin moved, as a new brush in the display's colours.
Brush Shift(HBRUSH pattern, SIZE size, POINT offset) {
    const DeviceContext context = MemoryContext();
    const Bitmap canvas = EmptyBitmap(size);
    if (pattern == nullptr || context == nullptr || canvas == nullptr) return nullptr;
    {
        const SelectedObject target(context.get(), canvas.get());
        (void)SetBrushOrgEx(context.get(), offset.x, offset.y, nullptr); // the context is valid
        const SelectedObject paint(context.get(), pattern);
        if (!PatBlt(context.get(), 0, 0, size.cx, size.cy, PATCOPY)) return nullptr;
    }
    return Brush(CreatePatternBrush(canvas.get()));
}

std::uint32_t Pack(LONG low, LONG high) {
    return static_cast<std::uint32_t>(MAKELONG(low, high));
}

SIZE UnpackSize(const BrushEntry& entry) {
    return {LOWORD(entry.Size), HIWORD(entry.Size)};
}

LONG Wrap(int offset, LONG size) {
    if (size == 0) return 0;
    const LONG rest = offset % size;
    return rest < 0 ? rest + size : rest;
}

/// The equivalent offset inside the pattern.
POINT Wrap(int x, int y, SIZE size) {
    return {Wrap(x, size.cx), Wrap(y, size.cy)};
}

/// A place that fits 16 bits; anything farther off would be clipped in any case.
POINT ClampTo16Bits(int x, int y) {
    using Half = std::numeric_limits<short>;
    return {std::clamp<LONG>(x, Half::min(), Half::max()), std::clamp<LONG>(y, Half::min(), Half::max())};
}

BrushEntry Describe(HINSTANCE instance, unsigned int id, unsigned int iconId, SIZE size) {
    BrushEntry entry{};
    entry.Key = id;
    entry.NotColor = 1;
    entry.hInstance = instance;
    entry.Resources = MAKELONG(id, iconId);
    entry.Size = Pack(size.cx, size.cy);
    return entry;
}

/// Appends an entry with its brush.
int Append(BrushEntry entry, Brush brush) {
    if (brush == nullptr) return -1;
    entry.hBrush = brush.get();
    const int index = tessel::AppendBrush(entry);
    if (index >= 0) (void)brush.release(); // owned by the table now
    return index;
}

struct Match {
    int exact = -1; ///< index of the entry with the same bitmaps and offsets
    int any = -1;   ///< index of the first entry with the same bitmaps
};

Match FindBitmapBrush(HINSTANCE instance, std::uint32_t resources, int x, int y, std::uint32_t iconOffset) {
    Match match;
    const tessel::BrushTable::Reader reader(brushTable);
    const auto all = reader.Elements();
    for (const BrushEntry& entry : all) {
        if (entry.Size == 0 || entry.hInstance != instance || entry.Resources != resources) continue;
        const int index = static_cast<int>(&entry - all.data());
        if (match.any < 0) match.any = index;
        const POINT offset = Wrap(x, y, UnpackSize(entry));
        if (entry.Offset != Pack(offset.x, offset.y) || entry.IconOffset != iconOffset) continue;
        match.exact = index;
        break;
    }
    return match;
}

} // namespace

int CBrush::AddBitmap(HINSTANCE instance, unsigned int id, int x, int y) {
    const Bitmap bitmap = LoadBitmapResource(instance, id);
    const SIZE size = SizeOf(bitmap);
    const POINT offset = Wrap(x, y, size);
    BrushEntry entry = Describe(instance, id, 0, size);
    entry.Offset = Pack(offset.x, offset.y);
    const Brush plain(bitmap == nullptr ? nullptr : CreatePatternBrush(bitmap.get()));
    return Append(entry, Shift(plain.get(), size, offset));
}

int CBrush::AddBitmapIcon(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX, int iconY,
                          HDC hdcDest, HDC hdcSource) {
    const DeviceContext ownDest = hdcDest == nullptr ? MemoryContext() : nullptr;
    const DeviceContext ownSource = hdcSource == nullptr ? MemoryContext() : nullptr;
    if (hdcDest == nullptr) hdcDest = ownDest.get();
    if (hdcSource == nullptr) hdcSource = ownSource.get();
    tessel::ReportUnless(hdcDest && hdcSource, "hdcDest && hdcSource", {"Brush", __LINE__});
    const Bitmap base = LoadBitmapResource(instance, id);
    const Bitmap icon = LoadBitmapResource(instance, iconId);
    if (!hdcDest || !hdcSource || !base || !icon) return -1;

    const SIZE size = SizeOf(base);
    const POINT offset = Wrap(x, y, size);
    const POINT place = ClampTo16Bits(iconX, iconY);
    BrushEntry entry = Describe(instance, id, iconId, size);
    entry.Offset = Pack(offset.x, offset.y);
    entry.IconOffset = Pack(place.x, place.y);
    const Bitmap composed = Compose(base, icon, place, hdcDest, hdcSource);
    const Brush plain(composed == nullptr ? nullptr : CreatePatternBrush(composed.get()));
    return Append(entry, Shift(plain.get(), size, offset));
}

int CBrush::GetBitmapBrushIndex(HINSTANCE instance, unsigned int id, int x, int y) {
    const Match match = FindBitmapBrush(instance, MAKELONG(id, 0), x, y, 0);
    return match.exact >= 0 || match.any < 0 ? match.exact : AddBitmapCopies(match.any, x, y);
}

int CBrush::GetBitmapIconBrushIndex(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX,
                                    int iconY, HDC hdcDest, HDC hdcSource) {
    const POINT place = ClampTo16Bits(iconX, iconY);
    const Match match = FindBitmapBrush(instance, MAKELONG(id, iconId), x, y, Pack(place.x, place.y));
    return match.exact >= 0 || match.any < 0 ? match.exact
                                             : AddBitmapIconCopies(match.any, x, y, iconX, iconY, hdcDest, hdcSource);
}

int CBrush::AddBitmapCopies(int index, int x, int y) {
    BrushEntry entry = *brushTable.At(index);
    const SIZE size = UnpackSize(entry);
    const POINT offset = Wrap(x, y, size);
    const POINT distance{offset.x - LOWORD(entry.Offset), offset.y - HIWORD(entry.Offset)};
    entry.Offset = Pack(offset.x, offset.y);
    return Append(entry, Shift(entry.hBrush, size, distance));
}

int CBrush::AddBitmapIconCopies(int index, int x, int y, int iconX, int iconY, HDC hdcDest, HDC hdcSource) {
    const BrushEntry entry = *brushTable.At(index);
    return AddBitmapIcon(entry.hInstance, LOWORD(entry.Resources), x, y, HIWORD(entry.Resources), iconX, iconY, hdcDest,
                         hdcSource);
}
