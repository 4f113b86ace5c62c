#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/foundation/semaphore.h>
#include <ui/GrowingArray.h>

#include <cstdint>
#include <optional>

namespace tessel {

/// One brush of the table. The last five fields are 0 unless the brush was made from bitmaps.
struct BrushEntry {
    std::uint32_t Key;       ///< RGB value, palette index, the caller's id, 1234 for a pattern, or resource id
    std::uint32_t Reserved;  ///< 0
    HBRUSH hBrush;           ///< owned by the table
    std::uint32_t Color;     ///< RGB value of a colour brush, else 0
    std::uint32_t NotColor;  ///< 0 for a colour brush, else 1
    HINSTANCE hInstance;     ///< module of the bitmaps
    std::uint32_t Resources; ///< low half: the bitmap's resource id; high half: the second one's, or 0
    std::uint32_t Size;      ///< pixels of the pattern: width in the low half, height in the high half
    std::uint32_t Offset;    ///< origin of the pattern, within its size: x in the low half, y in the high half
    std::uint32_t
        IconOffset; ///< position of the second bitmap on the first, signed: x in the low half, y in the high half
};

/// The brushes of the process.
class BrushTable : public GrowingArray<BrushEntry> {
public:
    /// Returns an entry.
    /// @return a copy; empty outside the table
    std::optional<BrushEntry> At(int index) const {
        const Reader reader(*this);
        const auto entries = reader.Elements();
        if (index < 0 || static_cast<std::size_t>(index) >= entries.size()) return std::nullopt;
        return entries[static_cast<std::size_t>(index)];
    }
};

/// Appends an entry under the table's lock or, if the lock is not available in time, without it.
/// @param entry  the table takes over its brush, unless the result is -1
/// @return the index; -1: no memory
int AppendBrush(const BrushEntry& entry);

/// Serialises additions to the brush table.
extern CThreadLock brushTableLock;

/// The brushes that all parts of the process share.
extern BrushTable brushTable;

} // namespace tessel
