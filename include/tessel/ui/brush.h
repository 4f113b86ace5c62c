#pragma once

#include <facet/palette.h>
#include <tessel/foundation/platform.h>

/// The table of GDI brushes that all parts of a process share: a colour, a pattern or a bitmap becomes a brush once and
/// is then addressed by a small index.
///
/// Objects have no data: all of them use the one table, which exists for as long as the library is loaded. An index is
/// a position in the table and stays valid until RemoveAll(); single brushes are never removed. The table owns its
/// brushes: do not delete what GetBrush() returns.
///
/// Bitmaps are loaded from a module's resources and tiled over the painted area. Their offsets move the origin of the
/// tiling: with an offset of (2, 3), the bitmap's top left pixel is painted at (2, 3). Offsets wrap around: adding the
/// width or height changes nothing. A monochrome bitmap becomes black and white.
///
/// Until RemoveAll(), every new pair of offsets and every new place of a second bitmap uses one of the 10,000 GDI
/// objects that a process may have. Dragging a picture would exhaust them.
///
/// The key CI_TRANSPARENT (30) means that nothing is painted. The colour RGB(30, 0, 0) has the same key, so the host
/// paints no background with it: use RGB(31, 0, 0) instead.
///
/// Threads: any thread may add; an addition waits at most 1 second for others and then proceeds without the lock.
/// Lookups take no lock and may run during additions. Call RemoveAll() only while no other thread uses the table. Two
/// threads that add the same new colour at the same time can create two entries for it.
class TESSEL_API CBrush {
public:
    /// Does not affect the table.
    CBrush() = default;

    /// Does not affect the table.
    CBrush(const CBrush&) = default;

    /// Does not affect the table.
    /// @return this object
    CBrush& operator=(const CBrush&) = default;

    /// Does not affect the table.
    virtual ~CBrush() = default;

    /// Adds a solid brush, unless the table has one of that colour.
    /// @param color  RGB value
    /// @return the index; -1: no memory. If the system cannot create the brush, this is reported and the entry holds
    ///         null.
    int Add(unsigned long color);

    /// Adds a solid brush in a colour of the palette, unless the table has one of that RGB value.
    /// @param index  position of the colour in the palette, which becomes the key of a new entry
    /// @return the index; -1: no memory. If the system cannot create the brush, this is reported and the entry holds
    ///         null.
    int Add(COLOR_IDX index);

    /// Adds a brush, always as a new entry.
    /// @param brush  owned by the table after the call, unless the result is -1
    /// @param id     key of the entry
    /// @return the index; -1: no memory
    int Add(HBRUSH brush, unsigned int id);

    /// Adds a pattern brush, always as a new entry, with the key 1234.
    /// @param width   pixels
    /// @param height  pixels
    /// @param bits    rows of one byte per pixel (1 plane, 8 bits), each an even number of bytes long; copied
    /// @return the index; -1: no memory. If the system cannot create the brush, the entry holds null.
    int Add(int width, int height, const void* bits);

    /// Adds a brush made of a bitmap, always as a new entry, with the resource id as its key.
    /// @param instance  module with the bitmap; must stay loaded for as long as copies are requested
    /// @param id        the bitmap's resource id
    /// @param x         origin of the pattern, pixels to the right
    /// @param y         origin of the pattern, pixels down
    /// @return the index; -1: the bitmap cannot be loaded, or no memory
    int AddBitmap(HINSTANCE instance, unsigned int id, int x, int y);

    /// Adds a brush made of two bitmaps, always as a new entry, with the first one's resource id as its key.
    ///
    /// The second bitmap is drawn over the first one and clipped at its borders; the result is shifted to the origin of
    /// the pattern. This uses two memory device contexts of the display. A caller's contexts must have the origins,
    /// mapping mode and colours of a new one; the objects selected into them are restored.
    /// @param instance   module with the bitmaps; must stay loaded for as long as copies are requested
    /// @param id         resource id of the first bitmap
    /// @param x          origin of the pattern, pixels to the right
    /// @param y          origin of the pattern, pixels down
    /// @param iconId     resource id of the second bitmap, which is not transparent
    /// @param iconX      left edge of the second bitmap on the first, pixels
    /// @param iconY      top edge of the second bitmap on the first, pixels
    /// @param hdcDest    the caller's memory device context to compose in; null: one is created on "DISPLAY"
    /// @param hdcSource  the caller's memory device context to copy from; null: one is created on "DISPLAY"
    /// @return the index; -1: a bitmap cannot be loaded, a context cannot be created (reported), the caller's contexts
    ///         are not memory device contexts or are the same, or no memory
    int AddBitmapIcon(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX, int iconY,
                      HDC hdcDest, HDC hdcSource);

    /// Finds the brush of a bitmap. If the table has it at other offsets only, a copy at these offsets is appended.
    /// @param instance  module with the bitmap
    /// @param id        the bitmap's resource id
    /// @param x         origin of the pattern, pixels to the right
    /// @param y         origin of the pattern, pixels down
    /// @return the index of the entry or of the new copy; -1: no entry of that bitmap, or the copy failed
    int GetBitmapBrushIndex(HINSTANCE instance, unsigned int id, int x, int y);

    /// Finds the brush of two bitmaps. If the table has it at other offsets only, it is composed again at these offsets
    /// and appended.
    /// @param instance   module with the bitmaps
    /// @param id         resource id of the first bitmap
    /// @param x          origin of the pattern, pixels to the right
    /// @param y          origin of the pattern, pixels down
    /// @param iconId     resource id of the second bitmap
    /// @param iconX      left edge of the second bitmap on the first, pixels
    /// @param iconY      top edge of the second bitmap on the first, pixels
    /// @param hdcDest    as for AddBitmapIcon()
    /// @param hdcSource  as for AddBitmapIcon()
    /// @return the index of the entry or of the new copy; -1: no entry of these bitmaps, or the copy failed
    int GetBitmapIconBrushIndex(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX,
                                int iconY, HDC hdcDest, HDC hdcSource);

    /// Finds an entry by its key.
    /// @param key  RGB value, palette index, the caller's id, 1234 for a pattern, or a bitmap's resource id
    /// @return the index of the first; -1: there is none
    int GetBrushIndex(unsigned long key) const;

    /// Returns the brush of an entry.
    /// @param index  position in the table
    /// @return the brush, owned by the table; null outside the table
    HBRUSH GetBrush(int index) const;

    /// Returns the colour of an entry.
    /// @param index  position in the table
    /// @return the RGB value; 0 for other brushes and outside the table
    unsigned long GetColor(int index) const;

    /// Returns whether an entry is a colour brush.
    /// @param index  position in the table
    /// @return 1: a colour brush, or the index is outside the table; 0: another brush
    int IsColor(int index) const;

    /// Returns the key of an entry as a position in the palette. Useful for entries added with a position or an id.
    /// @param index  position in the table
    /// @return the entry's key; 0 outside the table
    COLOR_IDX GetRefId(int index) const;

    /// Deletes every brush and empties the table; no brush may be selected into a device context.
    void RemoveAll();

private:
    int Find(unsigned long color) const;
    int AddColor(unsigned long color, unsigned long key);
    int AddBitmapCopies(int index, int x, int y);
    int AddBitmapIconCopies(int index, int x, int y, int iconX, int iconY, HDC hdcDest, HDC hdcSource);
};
