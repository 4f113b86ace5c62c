#include <foundation/Report.h>
#include <system/DateTimeFields.h>
#include <tessel/foundation/strings.h>
#include <tessel/system/datetime.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <iterator>

using namespace tessel;

namespace {

// Letters of layouts beside those of kDateTimeFields. All other characters stand for themselves.
constexpr wchar_t kHour12 = L'h';
constexpr wchar_t kMonthName = L'N';
constexpr wchar_t kDayName = L'W';
constexpr wchar_t kMeridian = L'P';

constexpr tessel::ReportSite kUnknownLayout{"DateTimeEnglish", 427};

constexpr unsigned int kMonthNameSize = 4;
constexpr unsigned int kMeridianSize = 3;

struct Layout {
    const wchar_t* pattern;
    unsigned int size;
};

// In the order of FORMAT_ID. ODD-171: with "/" the month comes first, with "-" the day.
constexpr Layout kLayouts[] = {
    {L"yod", 9},
    {L"o/d/y", 11},
    {L"d-o-y", 11},
    {L"d N y", 12},
    {L"d N y H:m", 19},
    {L"d N y h:m P", 22},
    {L"d-o-y H:m", 18},
    {L"o/d/y H:m", 18},
    {L"d-o-y h:m P", 21},
    {L"o/d/y H:m:s", 21},
    {L"o/d/y H:m:s.l", 25},
    {L"d-o-y H:m:s", 21},
    {L"yodHms", 15},
    {L"Hms", 7},
    {L"H:m", 6},
    {L"h:m P", 9},
    {L"H:m:s", 9},
    {L"h:m:s P", 12},
    {L"yod", 9},
    {L"Hms", 7},
    {L"yodHms", 15},
    {L"yodHmsl", 18},
    {L"W", 20},
    {L"W", 10},
};

constexpr const wchar_t* kMonthNames[] = {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun",
                                          L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"};
constexpr const wchar_t* kDayNames[] = {L"Sunday",   L"Monday", L"Tuesday", L"Wednesday",
                                        L"Thursday", L"Friday", L"Saturday"};

/// @return null: there is no such layout
const Layout* LayoutOf(FORMAT_ID id) {
    return id >= 0 && id < static_cast<int>(std::size(kLayouts)) ? &kLayouts[id] : nullptr;
}

/// @return the component that a letter stands for; null: none
const DateTimeField* FieldOf(wchar_t letter) {
    if (letter == kHour12) return &kDateTimeFields[kHour];
    const auto* const found = std::find_if(std::begin(kDateTimeFields), std::end(kDateTimeFields),
                                           [=](const DateTimeField& field) { return field.letter == letter; });
    return found != std::end(kDateTimeFields) ? found : nullptr;
}

bool IsRead(const Layout& layout) {
    return std::wcschr(layout.pattern, kMonthName) == nullptr && std::wcschr(layout.pattern, kDayName) == nullptr;
}

bool HasDate(const Layout& layout) {
    return std::wcschr(layout.pattern, kDateTimeFields[kYear].letter) != nullptr;
}

bool HasMeridian(const Layout& layout) {
    return std::wcschr(layout.pattern, kMeridian) != nullptr;
}

void Copy(wchar_t* buffer, unsigned int size, const wchar_t* text) {
    if (buffer != nullptr && size > 0) (void)CopyString(buffer, text, size); // may be truncated
}

/// GUARD-161: an index outside the table gives an empty text.
template <std::size_t Count> const wchar_t* TextAt(const wchar_t* const (&table)[Count], int index) {
    return index >= 0 && index < static_cast<int>(Count) ? table[index] : L"";
}

/// Appends to a text. GUARD-164: what does not fit is left out.
class Writer {
public:
    Writer(wchar_t* text, unsigned int size) : m_at(text), m_last(text + size - 1) {}

    void Put(wchar_t character) {
        if (m_at == m_last) return;
        *m_at++ = character;
        *m_at = L'\0';
    }

    void Put(const wchar_t* text) {
        while (*text != L'\0') Put(*text++);
    }

    void Put(unsigned int number, unsigned int minDigits) {
        constexpr unsigned int kBase = 10;
        if (minDigits > 1 || number >= kBase) Put(number / kBase, minDigits > 1 ? minDigits - 1 : 1);
        Put(static_cast<wchar_t>(L'0' + number % kBase));
    }

private:
    wchar_t* m_at;
    wchar_t* m_last;
};

/// @param digits  width of the field
int NumberAt(const wchar_t* text, unsigned int digits) {
    constexpr std::size_t kLongestField = 4;
    wchar_t field[kLongestField + 1] = {};
    std::copy_n(text, digits, field);
    return _wtoi(field);
}

/// @return length of the layout's texts up to the meridian indicator
std::size_t LengthOf(const Layout& layout) {
    std::size_t length = 0;
    for (const wchar_t* at = layout.pattern; *at != L'\0' && *at != kMeridian; ++at) {
        const DateTimeField* const field = FieldOf(*at);
        length += field != nullptr ? field->digits : 1;
    }
    return length;
}

/// ODD-172: separators are not checked, and a field without a number counts as 0.
void ReadFields(const Layout& layout, const wchar_t* text, int (&values)[kDateTimeFieldCount]) {
    for (const wchar_t* at = layout.pattern; *at != L'\0' && *at != kMeridian; ++at) {
        const DateTimeField* const field = FieldOf(*at);
        if (field != nullptr) values[field - kDateTimeFields] = NumberAt(text, field->digits);
        text += field != nullptr ? field->digits : 1;
    }
}

} // namespace

void CDateTimeEnglish::GetMonthText(int month, wchar_t* buffer, unsigned int size) const {
    Copy(buffer, size, TextAt(kMonthNames, month < 1 ? -1 : month - 1));
}

void CDateTimeEnglish::GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const {
    Copy(buffer, size, GetDayOfWeekText(dayOfWeek));
}

void CDateTimeEnglish::GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const {
    Copy(buffer, size, hour < kNoon ? L"AM" : L"PM");
}

const wchar_t* CDateTimeEnglish::GetDayOfWeekText(int dayOfWeek) {
    return TextAt(kDayNames, dayOfWeek);
}

unsigned int CDateTimeEnglish::MaxFormatSize(FORMAT_ID id) {
    const Layout* const layout = LayoutOf(id);
    return layout != nullptr ? layout->size : 1;
}

int CDateTimeEnglish::ModifyFor12HourClock(int hour) {
    if (hour == 0) return kNoon;
    return hour > kNoon ? hour - kNoon : hour;
}

void CDateTimeEnglish::GetTextOf(wchar_t letter, wchar_t* text, unsigned int size) const {
    if (letter == kMonthName) {
        GetMonthText(GetMonth(), text, kMonthNameSize);
    } else if (letter == kDayName) {
        GetDayText(GetDayOfWeek(), text, size);
    } else if (letter == kMeridian) {
        GetMeridianIndicator(GetHour(), text, kMeridianSize);
    } else {
        *text = letter;
    }
}

void CDateTimeEnglish::Write(FORMAT_ID id, wchar_t (&text)[TEXT_SIZE]) const {
    text[0] = L'\0';
    if (m_Status != DTS_VALID) return; // ODD-174: nor is a missing layout reported
    const Layout* const layout = LayoutOf(id);
    ReportUnless(layout != nullptr, "CDateTimeEnglish::Format(): Invalid Format Type", kUnknownLayout);
    Writer writer(text, TEXT_SIZE);
    for (const wchar_t* at = layout != nullptr ? layout->pattern : L""; *at != L'\0'; ++at) {
        if (const DateTimeField* const field = FieldOf(*at)) {
            const int value = m_SystemTime.*field->component;
            writer.Put(static_cast<unsigned int>(*at == kHour12 ? ModifyFor12HourClock(value) : value), field->digits);
        } else {
            wchar_t part[TEXT_SIZE] = {}; // longer than any name, so that it is terminated in any case
            GetTextOf(*at, part, layout->size);
            writer.Put(part);
        }
    }
}

const wchar_t* CDateTimeEnglish::Format(FORMAT_ID id) const {
    Write(id, m_szText);
    return m_szText;
}

unsigned long CDateTimeEnglish::GetFormattedString(FORMAT_ID id, wchar_t* buffer, unsigned int size) const {
    if (buffer == nullptr || size == 0) return 0; // ODD-175: a missing buffer is a success
    buffer[0] = L'\0';
    wchar_t text[TEXT_SIZE];
    Write(id, text);
    const std::size_t length = std::wcslen(text);
    if (size <= length) return 1;
    std::copy_n(text, length + 1, buffer);
    return 0;
}

bool CDateTimeEnglish::ReadMeridian(const wchar_t* text, int& hour) const {
    if (hour < 1 || hour > kNoon) return false;
    wchar_t morning[TEXT_SIZE] = {};
    wchar_t afternoon[TEXT_SIZE] = {};
    // NOLINTBEGIN(clang-analyzer-optin.cplusplus.VirtualCall): a constructor uses the texts of its own class.
    GetMeridianIndicator(0, morning, kMeridianSize);
    GetMeridianIndicator(kNoon, afternoon, kMeridianSize);
    // NOLINTEND(clang-analyzer-optin.cplusplus.VirtualCall)
    const bool isAfternoon = _wcsicmp(text, afternoon) == 0;
    if (isAfternoon == (_wcsicmp(text, morning) == 0)) return false; // neither, or both are the same
    hour = hour % kNoon + (isAfternoon ? kNoon : 0);
    return true;
}

CDateTimeEnglish::CDateTimeEnglish(FORMAT_ID id, const wchar_t* text) : CDateTimeEnglish(0, 0, 0, 0, 0, 0, 0) {
    const Layout* const layout = LayoutOf(id);
    if (layout != nullptr && IsRead(*layout) && !HasDate(*layout)) {
        SYSTEMTIME today;
        GetDateTime(today);
        (void)SetDate(today.wYear, today.wMonth, today.wDay);
    }
    (void)CDateTimeEnglish::SetDateTime(id, text); // GetStatus() has the result
}

DateTimeStatus CDateTimeEnglish::SetDateTime(FORMAT_ID id, const wchar_t* text) {
    const Layout* const layout = LayoutOf(id);
    // ODD-173: a layout with names, or a missing one, empties the object, whatever the text
    if (layout == nullptr || !IsRead(*layout)) return SetDateTime(0, 0, 0, 0, 0, 0, 0);
    const std::size_t length = LengthOf(*layout);
    if (text == nullptr || wcsnlen(text, length) < length) return m_Status = DTS_INVALID;
    int values[kDateTimeFieldCount] = {};
    if (!HasDate(*layout)) {
        values[kYear] = GetYear();
        values[kMonth] = GetMonth();
        values[kDay] = GetDay();
    }
    ReadFields(*layout, text, values);
    const wchar_t* const rest = text + length;
    const bool isComplete = HasMeridian(*layout) ? ReadMeridian(rest, values[kHour]) : *rest == L'\0';
    if (!isComplete) return m_Status = DTS_INVALID;
    return SetDateTime(values[kYear], values[kMonth], values[kDay], values[kHour], values[kMinute], values[kSecond],
                       values[kMillisecond]);
}
