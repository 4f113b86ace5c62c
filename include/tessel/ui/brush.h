#pragma once

#include <facet/palette.h>
#include <tessel/foundation/platform.h>

/// The brushes of the process: a colour, a pattern or a bitmap is turned into a GDI brush once and then addressed by
/// a small index.
///
/// Objects carry no data: all of them, in every part of the process, see the one table, which lives as long as the
/// library is loaded. An index is a position in it and stays valid until RemoveAll(); single brushes are never removed.
/// The table owns its brushes: do not delete what GetBrush() returns.
///
/// Bitmaps come from a module's resources and are repeated over the painted area. Their offsets move the origin of
/// the repetition: with an offset of (2, 3) the bitmap's top left pixel is painted at (2, 3), and what is pushed out
/// on one side comes in on the other, so that an offset is worth the same as one that is larger by the width or
/// height. A monochrome bitmap becomes black and white.
///
/// Every new pair of offsets and every new place of a second bitmap takes one more of the 10,000 GDI objects that a
/// process may have, until RemoveAll(): a picture that is dragged about uses them up.
///
/// The key CI_TRANSPARENT (30) stands for no painting. The colour RGB(30, 0, 0) has the same key, so the host paints no
/// background with it: use RGB(31, 0, 0) instead.
///
/// Threads: any thread may add; appending waits for at most 1 second for the others and then goes on without them.
/// Looking up takes no lock, also while others add; RemoveAll() is called when nobody looks or adds. Two threads that
/// add one new colour at the same time can make two entries of it.
class TESSEL_API CBrush {
public:
    /// Leaves the table as it is.
    CBrush() = default;

    /// Leaves the table as it is.
    CBrush(const CBrush&) = default;

    /// Leaves the table as it is.
    /// @return this object
    CBrush& operator=(const CBrush&) = default;

    /// Leaves the table as it is.
    virtual ~CBrush() = default;

    /// Adds a solid brush, unless the table has one of that colour.
    /// @param color  RGB value
    /// @return the index; -1: no memory. A brush that the system does not give is reported, and its entry holds null.
    int Add(unsigned long color);

    /// Adds a solid brush in a colour of the palette, unless the table has one of that RGB value.
    /// @param index  the palette's colour, which becomes the key of a new entry
    /// @return the index; -1: no memory. A brush that the system does not give is reported, and its entry holds null.
    int Add(COLOR_IDX index);

    /// Adds a brush, always as a new entry.
    /// @param brush  becomes the table's, unless the result is -1
    /// @param id     key of the entry
    /// @return the index; -1: no memory
    int Add(HBRUSH brush, unsigned int id);

    /// Adds a pattern brush, always as a new entry, with the key 1234.
    /// @param width   pixels
    /// @param height  pixels
    /// @param bits    rows of one byte a pixel (1 plane, 8 bits), each of an even number of bytes; they are copied
    /// @return the index; -1: no memory. A brush that the system does not give leaves null in its entry.
    int Add(int width, int height, const void* bits);

    /// Adds a brush made of a bitmap, always as a new entry, with the resource id as its key.
    /// @param instance  module with the bitmap; stays loaded for as long as copies are asked for
    /// @param id        the bitmap's resource id
    /// @param x         origin of the pattern, pixels to the right
    /// @param y         origin of the pattern, pixels down
    /// @return the index; -1: the bitmap cannot be loaded, or no memory
    int AddBitmap(HINSTANCE instance, unsigned int id, int x, int y);

    /// Adds a brush made of two bitmaps, always as a new entry, with the first one's resource id as its key.
    ///
    /// The first bitmap is copied, the second one is laid on it and cut at its borders, and the whole is shifted
    /// to the origin of the pattern. The work is done in two memory device contexts of the display. Those that a
    /// caller lends are to have the origins, mapping and colours of a new one; on return they have the objects that
    /// were selected in them again.
    /// @param instance   module with the bitmaps; stays loaded for as long as copies are asked for
    /// @param id         resource id of the first bitmap
    /// @param x          origin of the pattern, pixels to the right
    /// @param y          origin of the pattern, pixels down
    /// @param iconId     resource id of the second bitmap, which is not transparent
    /// @param iconX      its left edge on the first bitmap, pixels
    /// @param iconY      its top edge on the first bitmap, pixels
    /// @param hdcDest    memory device context to compose in, the caller's; null: one is made on "DISPLAY"
    /// @param hdcSource  another one to copy from, the caller's; null: one is made on "DISPLAY"
    /// @return the index; -1: a bitmap cannot be loaded, a context cannot be made (reported), those lent are no
    ///         memory device contexts or one and the same, or no memory
    int AddBitmapIcon(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX, int iconY,
                      HDC hdcDest, HDC hdcSource);

    /// Finds the brush of a bitmap. When the table has it at other offsets only, a copy at these is appended.
    /// @param instance  module with the bitmap
    /// @param id        the bitmap's resource id
    /// @param x         origin of the pattern, pixels to the right
    /// @param y         origin of the pattern, pixels down
    /// @return the index of the entry or of the new copy; -1: no entry of that bitmap, or the copy failed
    int GetBitmapBrushIndex(HINSTANCE instance, unsigned int id, int x, int y);

    /// Finds the brush of two bitmaps. When the table has it at other offsets only, it is composed anew at these and
    /// appended.
    /// @param instance   module with the bitmaps
    /// @param id         resource id of the first bitmap
    /// @param x          origin of the pattern, pixels to the right
    /// @param y          origin of the pattern, pixels down
    /// @param iconId     resource id of the second bitmap
    /// @param iconX      its left edge on the first bitmap, pixels
    /// @param iconY      its top edge on the first bitmap, pixels
    /// @param hdcDest    as for AddBitmapIcon()
    /// @param hdcSource  as for AddBitmapIcon()
    /// @return the index of the entry or of the new copy; -1: no entry of these bitmaps, or the copy failed
    int GetBitmapIconBrushIndex(HINSTANCE instance, unsigned int id, int x, int y, unsigned int iconId, int iconX,
                                int iconY, HDC hdcDest, HDC hdcSource);

    /// Finds an entry by what it was added under.
    /// @param key  RGB value, palette index, the caller's id, 1234 for a pattern, or a bitmap's resource id
    /// @return the index of the first; -1: there is none
    int GetBrushIndex(unsigned long key) const;

    /// The brush of an entry.
    /// @param index  position in the table
    /// @return the brush, still the table's; null outside the table
    HBRUSH GetBrush(int index) const;

    /// The colour of an entry.
    /// @param index  position in the table
    /// @return the RGB value; 0 for what is no colour brush and outside the table
    unsigned long GetColor(int index) const;

    /// Whether an entry is a plain colour.
    /// @param index  position in the table
    /// @return 1: it is, or the index is outside the table; 0: it is another brush
    int IsColor(int index) const;

    /// What an entry was added under, as a position in the palette; of use where it was added with one, or with an id.
    /// @param index  position in the table
    /// @return the entry's key; 0 outside the table
    COLOR_IDX GetRefId(int index) const;

    /// Deletes every brush and empties the table; none of them may be selected in a device context.
    void RemoveAll();

private:
    int Find(unsigned long color) const;
    int AddColor(unsigned long color, unsigned long key);
    int AddBitmapCopies(int index, int x, int y);
    int AddBitmapIconCopies(int index, int x, int y, int iconX, int iconY, HDC hdcDest, HDC hdcSource);
};
