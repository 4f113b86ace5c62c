#include "BoxResources.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/foundation/module.h>
#include <tessel/ui/brush.h>

#include <thread>
#include <tuple>

namespace {

const HINSTANCE kModule = GetModuleHandleW(nullptr);

/// Paints 4 x 2 pixels and returns their colours, one letter each, row by row.
std::string Paint(HBRUSH brush) {
    const HDC memory = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateBitmap(4, 2, 1, 32, nullptr);
    SelectObject(memory, bitmap);
    const RECT all{0, 0, 4, 2};
    FillRect(memory, &all, brush);
    std::string text;
    for (int i = 0; i < 8; ++i) {
        const COLORREF colour = GetPixel(memory, i % 4, i / 4);
        text += "kRGYB?AW"[(colour & 1) | (colour >> 7 & 2) | (colour >> 14 & 4)];
    }
    DeleteDC(memory);
    DeleteObject(bitmap);
    return text;
}

/// Starts with an empty table.
struct Brush : testing::Test {
    ~Brush() override { table.RemoveAll(); }
    CBrush table;
};

} // namespace

TEST_F(Brush, Odd57SharesOneEntryForOneColourWhoseValueIsItsKey) {
    CBrush other;
    EXPECT_EQ(table.Add(RGB(255, 0, 0)), 0);
    EXPECT_EQ(other.Add(RGB(255, 0, 0)), 0);
    EXPECT_EQ(other.Add(CI_RED), 0);
    EXPECT_EQ(Paint(table.GetBrush(0)), "RRRRRRRR");
    EXPECT_EQ(table.GetRefId(table.Add(RGB(30, 0, 0))), CI_TRANSPARENT);
    const int lime = other.Add(CI_LIME);
    EXPECT_EQ(table.GetBrushIndex(CI_LIME), lime);
    EXPECT_EQ(table.IsColor(lime), 1);
    const HBRUSH red = table.GetBrush(0);
    table.RemoveAll();
    EXPECT_EQ(GetObjectType(red), 0u);
    EXPECT_EQ(table.GetBrushIndex(CI_LIME), -1);
}

TEST_F(Brush, KeepsAddedBrushesAndPatternsApartFromColours) {
    const HBRUSH brush = CreateSolidBrush(RGB(0, 0, 0));
    EXPECT_EQ(table.Add(brush, CI_TRANSPARENT), 0);
    EXPECT_EQ(table.GetBrush(0), brush);
    EXPECT_EQ(table.IsColor(0), 0);
    EXPECT_EQ(table.Add(RGB(0, 0, 0)), 1);
    const unsigned char bits[] = {0, 255, 0, 0, 255, 255, 0, 255};
    EXPECT_EQ(table.Add(4, 2, bits), 2);
    EXPECT_EQ(Paint(table.GetBrush(2)), "kWkkWWkW");
    EXPECT_EQ(table.IsColor(2), 0);
    EXPECT_EQ(table.Add(4, 2, bits), 3);
    EXPECT_EQ(table.GetBrushIndex(1234), 2);
}

TEST_F(Brush, KeepsItsEntriesWhileItGrows) {
    for (int i = 0; i < 100; ++i) ASSERT_EQ(table.Add(static_cast<unsigned long>(i)), i);
    EXPECT_EQ(table.GetColor(0), 0u);
    const std::jthread adder([] {
        for (int i = 0; i < 3000; ++i) CBrush().Add(nullptr, 500);
    });
    while (table.IsColor(3099) == 1) EXPECT_EQ(table.GetBrushIndex(99), 99);
}

TEST_F(Brush, Odd50IndexOutsideTheTableCountsAsColour) {
    table.Add(nullptr, 7);
    for (const int index : {-1, 1}) {
        EXPECT_EQ(table.GetBrush(index), nullptr);
        EXPECT_EQ(table.GetColor(index), 0u);
        EXPECT_EQ(table.GetRefId(index), COLOR_IDX{0});
        EXPECT_EQ(table.IsColor(index), 1);
    }
}

TEST_F(Brush, Odd51IsAppendedWithoutTheLockAfterItsTimeout) {
    std::wstring calls;
    {
        const ImportPatch wait("WaitForSingleObjectEx", &WaitForSingleObjectEx, [&](HANDLE, DWORD timeoutMs, BOOL) {
            return (calls += std::to_wstring(timeoutMs)) == L"1000" ? WAIT_TIMEOUT : WAIT_OBJECT_0;
        });
        const ImportPatch release("ReleaseSemaphore", &ReleaseSemaphore,
                                  [&](auto...) { return calls += L" released", TRUE; });
        const ImportPatch debugger("OutputDebugStringW", &OutputDebugStringW,
                                   [&](const wchar_t* text) { calls = calls + L' ' + text + L' '; });
        EXPECT_EQ(table.Add(RGB(1, 2, 3)), 0);
        EXPECT_EQ(table.Add(RGB(4, 5, 6)), 1);
    }
    EXPECT_EQ(calls, L"1000 Brush Table Lock Timeout 1000 released");
    EXPECT_EQ(table.GetColor(0), RGB(1, 2, 3));
}

TEST_F(Brush, BitmapIsShiftedAndCopiedForOtherOffsets) {
    EXPECT_EQ(table.GetBitmapBrushIndex(kModule, IDB_BASE, 0, 0), -1);
    EXPECT_EQ(table.AddBitmap(kModule, 999, 0, 0), -1);
    const int shifted = table.AddBitmap(kModule, IDB_BASE, 1, 1);
    EXPECT_EQ(Paint(table.GetBrush(shifted)), "kkkkWRGB");
    EXPECT_EQ(table.GetBitmapBrushIndex(kModule, IDB_BASE, 5, -1), shifted);
    const int copy = table.GetBitmapBrushIndex(kModule, IDB_BASE, 0, 0);
    EXPECT_EQ(copy, shifted + 1);
    EXPECT_EQ(Paint(table.GetBrush(copy)), "RGBWkkkk");
    EXPECT_EQ(table.GetBitmapBrushIndex(TesselGetModuleInstance(), IDB_BASE, 0, 0), -1);
}

TEST_F(Brush, BitmapIconIsLaidOnItsBitmapAndShiftedWithIt) {
    const int plain = table.AddBitmapIcon(kModule, IDB_BASE, 0, 0, IDB_ICON, 1, 1, nullptr, nullptr);
    EXPECT_EQ(Paint(table.GetBrush(plain)), "RGBWkYAk");
    EXPECT_EQ(table.GetBitmapIconBrushIndex(kModule, IDB_BASE, 4, 0, IDB_ICON, 1, 1, nullptr, nullptr), plain);
    const int cut = table.GetBitmapIconBrushIndex(kModule, IDB_BASE, 1, 0, IDB_ICON, 3, 0, nullptr, nullptr);
    EXPECT_EQ(Paint(table.GetBrush(cut)), "YRGBkkkk");
    const int left = table.GetBitmapIconBrushIndex(kModule, IDB_BASE, 0, 0, IDB_ICON, -1, 0, nullptr, nullptr);
    EXPECT_EQ(Paint(table.GetBrush(left)), "AGBWkkkk");
}

TEST_F(Brush, BitmapIconIsComposedInLentMemoryContextsOnly) {
    const HDC lent = CreateCompatibleDC(nullptr);
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ former = GetCurrentObject(lent, OBJ_BITMAP);
    const std::tuple<HDC, HDC, int> rows[] = {
        {lent, nullptr, 0}, {nullptr, lent, 1}, {lent, lent, -1}, {lent, screen, -1}};
    for (const auto& [dest, source, index] : rows) {
        EXPECT_EQ(table.AddBitmapIcon(kModule, IDB_BASE, 0, 0, IDB_ICON, 1, 1, dest, source), index);
        EXPECT_EQ(table.GetBrush(index) == nullptr, index < 0);
        EXPECT_EQ(GetCurrentObject(lent, OBJ_BITMAP), former);
    }
    ReleaseDC(nullptr, screen);
    DeleteDC(lent);
}

TEST(Palette, CopiesHaveTheColoursAndTheirOwnHandle) {
    COrcaPalette first;
    {
        COrcaPalette copy(first);
        EXPECT_NE(copy.GetPalette(), first.GetPalette());
        first = copy;
    }
    PALETTEENTRY entry{};
    EXPECT_EQ(GetPaletteEntries(first.GetPalette(), CI_TEAL, 1, &entry), 1u);
    EXPECT_EQ(RGB(entry.peRed, entry.peGreen, entry.peBlue), first.GetColor(CI_TEAL));
    EXPECT_EQ(first.GetColor(CI_COUNT), 0u);
}

TEST_F(Brush, ReportsWhatTheSystemRefuses) {
    Reports reports;
    const ImportPatch solid(Failing("CreateSolidBrush", &CreateSolidBrush, nullptr));
    const ImportPatch display(Failing("CreateDCW", &CreateDCW, nullptr));
    EXPECT_EQ(table.AddBitmapIcon(kModule, IDB_BASE, 0, 0, IDB_ICON, 0, 0, nullptr, nullptr), -1);
    EXPECT_EQ(table.Add(RGB(9, 9, 9)), 0);
    const Texts texts = reports.Take();
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_TRUE(texts[0].ends_with(" hdcDest && hdcSource") && texts[1].ends_with(" data.hBrush"));
}
