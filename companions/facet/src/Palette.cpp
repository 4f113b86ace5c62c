#include <facet/palette.h>

#include <algorithm>
#include <array>
#include <cstddef>

struct COrcaPaletteLayout {
    static_assert(offsetof(COrcaPalette, m_hPalette) == 0);
};

namespace {

constexpr COLORREF Colour(unsigned red, unsigned green, unsigned blue) {
    return red | green << 8 | blue << 16;
}

constexpr COLORREF kStandard[] = {
    Colour(0, 0, 0),       Colour(128, 0, 0),   Colour(0, 128, 0),   Colour(128, 128, 0),
    Colour(0, 0, 128),     Colour(128, 0, 128), Colour(0, 128, 128), Colour(192, 192, 192),
    Colour(128, 128, 128), Colour(255, 0, 0),   Colour(0, 255, 0),   Colour(255, 255, 0),
    Colour(0, 0, 255),     Colour(255, 0, 255), Colour(0, 255, 255), Colour(255, 255, 255),
};

constexpr COLORREF kInterface[] = {
    Colour(16, 24, 32),    Colour(32, 40, 56),    Colour(48, 60, 80),    Colour(64, 80, 104),
    Colour(80, 100, 128),  Colour(96, 120, 152),  Colour(112, 140, 176), Colour(128, 160, 200),
    Colour(144, 150, 156), Colour(160, 164, 168), Colour(176, 180, 184), Colour(200, 204, 208),
    Colour(212, 216, 220), Colour(224, 228, 232), Colour(192, 192, 192), Colour(240, 244, 248),
};

constexpr COLORREF kOverlay[] = {
    Colour(255, 0, 0),   Colour(255, 96, 0),  Colour(255, 191, 0), Colour(223, 255, 0),
    Colour(128, 255, 0), Colour(32, 255, 0),  Colour(0, 255, 64),  Colour(0, 255, 159),
    Colour(0, 255, 255), Colour(0, 159, 255), Colour(0, 64, 255),  Colour(32, 0, 255),
    Colour(128, 0, 255), Colour(223, 0, 255), Colour(255, 0, 191), Colour(255, 0, 96),
};

constexpr unsigned kBrightest = 255;
constexpr unsigned kGreys = CI_CUBE - CI_GREY_RAMP;
constexpr unsigned kCubeColours = CI_OVERLAY - CI_CUBE;
constexpr unsigned kReds = 6;
constexpr unsigned kGreens = 6;
constexpr unsigned kBlues = 4;
static_assert(kReds * kGreens * kBlues == kCubeColours);

constexpr unsigned Step(unsigned number, unsigned count) {
    return kBrightest * number / (count - 1);
}

constexpr COLORREF Grey(unsigned number) {
    return Colour(Step(number, kGreys), Step(number, kGreys), Step(number, kGreys));
}

constexpr COLORREF Cube(unsigned number) {
    return Colour(Step(number / (kGreens * kBlues), kReds), Step(number / kBlues % kGreens, kGreens),
                  Step(number % kBlues, kBlues));
}

constexpr std::array<COLORREF, CI_COUNT> MakeColours() {
    std::array<COLORREF, CI_COUNT> colours{};
    std::ranges::copy(kStandard, colours.begin());
    std::ranges::copy(kInterface, colours.begin() + CI_INTERFACE);
    for (unsigned i = 0; i < kGreys; ++i) colours[CI_GREY_RAMP + i] = Grey(i);
    for (unsigned i = 0; i < kCubeColours; ++i) colours[CI_CUBE + i] = Cube(i);
    std::ranges::copy(kOverlay, colours.begin() + CI_OVERLAY);
    return colours;
}

constexpr std::array<COLORREF, CI_COUNT> kColours = MakeColours();
static_assert(kColours[CI_TRANSPARENT] == kColours[CI_SILVER]);
static_assert(kColours[CI_OVERLAY - 1] == kColours[CI_WHITE]);

HPALETTE CreateSystemPalette() {
    constexpr WORD kPaletteVersion = 0x300; // required by CreatePalette
    struct {
        WORD version = kPaletteVersion;
        WORD count = CI_COUNT;
        PALETTEENTRY entries[CI_COUNT];
    } description;
    std::transform(kColours.begin(), kColours.end(), description.entries, [](COLORREF colour) {
        return PALETTEENTRY{GetRValue(colour), GetGValue(colour), GetBValue(colour), 0};
    });
    return CreatePalette(reinterpret_cast<const LOGPALETTE*>(&description));
}

} // namespace

COrcaPalette::COrcaPalette() : m_hPalette(CreateSystemPalette()) {}

COrcaPalette::COrcaPalette(const COrcaPalette& /*other*/) : COrcaPalette() {}

COrcaPalette& COrcaPalette::operator=(const COrcaPalette& /*other*/) {
    return *this;
}

COrcaPalette::~COrcaPalette() {
    if (m_hPalette != nullptr) (void)DeleteObject(m_hPalette); // nothing can be done about a failure
}

COLORREF COrcaPalette::GetColor(COLOR_IDX index) const {
    return index < kColours.size() ? kColours[index] : 0;
}
