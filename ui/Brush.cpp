#include <foundation/Report.h>
#include <tessel/ui/brush.h>
#include <ui/BrushTable.h>

#include <algorithm>

namespace {

using tessel::BrushEntry;
using tessel::brushTable;

constexpr std::uint32_t kPatternKey = 1234;
constexpr unsigned long kLockTimeoutMs = 1000;

template <class Condition> int IndexOf(Condition condition) {
    const tessel::BrushTable::Reader reader(brushTable);
    const auto all = reader.Elements();
    const auto found = std::find_if(all.begin(), all.end(), condition);
    return found == all.end() ? -1 : static_cast<int>(found - all.begin());
}

/// Appends a brush that was created for the table.
int AppendOwn(const BrushEntry& entry) {
    const int index = tessel::AppendBrush(entry);
    if (index < 0) (void)DeleteObject(entry.hBrush); // a null brush is refused, which does no harm
    return index;
}

} // namespace

int tessel::AppendBrush(const BrushEntry& entry) {
    const bool locked = brushTableLock.Lock(kLockTimeoutMs) == 0;
    // ODD-51: after the time-out the entry is appended without the lock.
    if (!locked) OutputDebugStringW(L"Brush Table Lock Timeout");
    const int index = brushTable.Append(entry);
    if (locked) (void)brushTableLock.Unlock(); // held until now
    return index;
}

int CBrush::Add(unsigned long color) {
    return AddColor(color, color);
}

int CBrush::Add(COLOR_IDX index) {
    const COrcaPalette palette;
    return AddColor(palette.GetColor(index), index);
}

int CBrush::AddColor(unsigned long color, unsigned long key) {
    const int existing = Find(color);
    if (existing >= 0) return existing;
    BrushEntry data{};
    data.Key = key; // ODD-57: RGB(30, 0, 0) has the key of CI_TRANSPARENT
    data.hBrush = CreateSolidBrush(color);
    data.Color = color;
    tessel::ReportUnless(data.hBrush != nullptr, "data.hBrush", {"Brush", __LINE__});
    return AppendOwn(data);
}

int CBrush::Add(HBRUSH brush, unsigned int id) {
    BrushEntry data{};
    data.Key = id;
    data.hBrush = brush;
    data.NotColor = 1;
    return tessel::AppendBrush(data);
}

int CBrush::Add(int width, int height, const void* bits) {
    constexpr UINT kPlanes = 1;
    constexpr UINT kBitsPerPixel = 8;
    const HBITMAP bitmap = CreateBitmap(width, height, kPlanes, kBitsPerPixel, bits);
    BrushEntry data{};
    data.Key = kPatternKey;
    data.hBrush = CreatePatternBrush(bitmap);
    data.NotColor = 1;
    (void)DeleteObject(bitmap); // the brush has a copy
    return AppendOwn(data);
}

int CBrush::Find(unsigned long color) const {
    return IndexOf([color](const BrushEntry& entry) { return entry.NotColor == 0 && entry.Color == color; });
}

int CBrush::GetBrushIndex(unsigned long key) const {
    return IndexOf([key](const BrushEntry& entry) { return entry.Key == key; });
}

HBRUSH CBrush::GetBrush(int index) const {
    const std::optional<BrushEntry> entry = brushTable.At(index);
    return !entry ? nullptr : entry->hBrush;
}

unsigned long CBrush::GetColor(int index) const {
    const std::optional<BrushEntry> entry = brushTable.At(index);
    return !entry ? 0 : entry->Color;
}

int CBrush::IsColor(int index) const {
    const std::optional<BrushEntry> entry = brushTable.At(index);
    return !entry || entry->NotColor == 0; // ODD-50: an index outside the table counts as a colour
}

COLOR_IDX CBrush::GetRefId(int index) const {
    const std::optional<BrushEntry> entry = brushTable.At(index);
    return !entry ? COLOR_IDX{0} : COLOR_IDX{entry->Key}; // GUARD-50: no entry, nothing to read
}

void CBrush::RemoveAll() {
    {
        const tessel::BrushTable::Reader reader(brushTable);
        for (const BrushEntry& entry : reader.Elements())
            (void)DeleteObject(entry.hBrush); // fails for a brush that is in use
    }
    brushTable.Clear();
}
