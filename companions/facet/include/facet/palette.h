#pragma once

#include <facet/export.h>

/// Index of a colour in COrcaPalette, 0 to 255. Only some have names; compute the others from the first one of their
/// range.
enum COLOR_IDX : unsigned int {
    CI_BLACK = 0,        ///< 0, 0, 0; the first of the 16 standard colours
    CI_MAROON = 1,       ///< 128, 0, 0
    CI_GREEN = 2,        ///< 0, 128, 0
    CI_OLIVE = 3,        ///< 128, 128, 0
    CI_NAVY = 4,         ///< 0, 0, 128
    CI_PURPLE = 5,       ///< 128, 0, 128
    CI_TEAL = 6,         ///< 0, 128, 128
    CI_SILVER = 7,       ///< 192, 192, 192
    CI_GREY = 8,         ///< 128, 128, 128
    CI_RED = 9,          ///< 255, 0, 0
    CI_LIME = 10,        ///< 0, 255, 0
    CI_YELLOW = 11,      ///< 255, 255, 0
    CI_BLUE = 12,        ///< 0, 0, 255
    CI_FUCHSIA = 13,     ///< 255, 0, 255
    CI_AQUA = 14,        ///< 0, 255, 255
    CI_WHITE = 15,       ///< 255, 255, 255; the last of the 16 standard colours
    CI_INTERFACE = 16,   ///< the first of 16 muted colours for the user interface, dark to light
    CI_TRANSPARENT = 30, ///< one of these: means no painting; its colour is that of CI_SILVER
    CI_GREY_RAMP = 32,   ///< the first of 64 even steps of grey from black to white: step i is 255 * i / 63
    CI_CUBE = 96,        ///< the first of 144 colours: 96 + 24 * red + 4 * green + blue, with red and green from
                         ///< 0 to 5 in steps of 51 and blue from 0 to 3 in steps of 85
    CI_OVERLAY = 240,    ///< the first of 16 saturated hues around the colour circle, for marks on images
    CI_COUNT = 256       ///< number of colours
};

/// The workstation's palette of 256 colours: a fixed table, and a system palette created from it.
///
/// The palette handle is the object's first member; the class has no virtual function table before it.
/// Each object, copies included, owns its own handle and deletes it; by then it must not be selected anywhere.
/// Threads: any thread may read; use a handle on one thread at a time.
class FACET_API COrcaPalette {
public:
    /// Creates the system palette; the handle is null when that fails.
    COrcaPalette();

    /// Creates another system palette with the same colours.
    /// @param other  the palette to copy
    COrcaPalette(const COrcaPalette& other);

    /// Keeps its own system palette, because all have the same colours.
    /// @param other  the palette to copy
    /// @return this object
    COrcaPalette& operator=(const COrcaPalette& other);

    /// Deletes the system palette.
    ~COrcaPalette();

    /// Returns a colour by its index.
    /// @param index  0 to 255
    /// @return the RGB value; black (0) for any other index
    COLORREF GetColor(COLOR_IDX index) const;

    /// The system palette; this object still owns it.
    /// @return the handle; null if it could not be created
    HPALETTE GetPalette() const { return m_hPalette; }

private:
    friend struct COrcaPaletteLayout;

    HPALETTE m_hPalette;
};
