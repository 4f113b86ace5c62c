#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/foundation/semaphore.h>
#include <ui/GrowingArray.h>

#include <cstdint>
#include <optional>

namespace tessel {

/// One brush of the table. The last five fields are 0 unless it was made of bitmaps.
struct BrushEntry {
    std::uint32_t Key;        ///< what it was added under: RGB value, palette index, the caller's id, resource id
    std::uint32_t Reserved;   ///< 0
    HBRUSH hBrush;            ///< the table's
    std::uint32_t Color;      ///< RGB value of a colour brush, else 0
    std::uint32_t NotColor;   ///< 0 for a colour brush, else 1
    HINSTANCE hInstance;      ///< module of the bitmaps
    std::uint32_t Resources;  ///< low half: the bitmap's resource id; high half: the second one's, or 0
    std::uint32_t Size;       ///< pixels of the pattern: width in the low half, height in the high half
    std::uint32_t Offset;     ///< origin of the pattern, wrapped into its size: x low, y high
    std::uint32_t IconOffset; ///< place of the second bitmap on the first, signed: x low, y high
};

/// The brushes of the process.
class BrushTable : public GrowingArray<BrushEntry> {
public:
    /// An entry by its position.
    /// @return a copy; empty outside the table
    std::optional<BrushEntry> At(int index) const {
        const Reader reader(*this);
        const auto entries = reader.Elements();
        if (index < 0 || static_cast<std::size_t>(index) >= entries.size()) return std::nullopt;
        return entries[static_cast<std::size_t>(index)];
    }
};

/// Appends under the table's lock or, when that is not to be had in time, without it.
/// @param entry  its brush becomes the table's; it stays the caller's when nothing is appended
/// @return the index; -1: no memory
int AppendBrush(const BrushEntry& entry);

/// Serialises appending to the brush table.
extern CThreadLock brushTableLock;

/// The brushes that all parts of the process share.
extern BrushTable brushTable;

} // namespace tessel
