#include <resources/texts.h>
#include <system/DateTimeFields.h>
#include <tessel/foundation/module.h>
#include <tessel/foundation/status.h>
#include <tessel/foundation/strings.h>
#include <tessel/system/datetime.h>

#include <cwchar>
#include <iterator>

using namespace tessel;

namespace {

constexpr int kDays = 7;
constexpr int kMeridians = 2;
constexpr unsigned int kLongestText = 19;

constexpr struct {
    WORD language;
    unsigned int firstText;
} kLanguages[] = {
    {LANG_GERMAN, IDS_GERMAN},         {LANG_FRENCH, IDS_FRENCH},   {LANG_ITALIAN, IDS_ITALIAN},
    {LANG_PORTUGUESE, IDS_PORTUGUESE}, {LANG_SPANISH, IDS_SPANISH}, {LANG_SWEDISH, IDS_SWEDISH},
};

/// @return identifier of the first text in the language of the calling thread
unsigned int FirstText() {
    const WORD language = PRIMARYLANGID(LANGIDFROMLCID(GetThreadLocale()));
    for (const auto& row : kLanguages) {
        if (row.language == language) return row.firstText;
    }
    return IDS_ENGLISH;
}

struct Text {
    wchar_t characters[kLongestText + 1];
};

/// @param kind   first identifier of the kind, from the first text of a language on
/// @param count  texts of the kind
Text Load(unsigned int kind, int index, int count) {
    Text text{};
    // GUARD-162: the neighbours of a kind's texts are those of other kinds
    if (index < 0 || index >= count) return text;
    (void)TesselLoadString(FirstText() + kind + static_cast<unsigned int>(index),
                           text.characters, // a missing text is empty
                           static_cast<int>(std::size(text.characters)));
    return text;
}

/// Copies a text, truncated to fit.
/// @return true: the text was copied completely
bool CopyText(const Text& text, wchar_t* buffer, unsigned int size) {
    return buffer != nullptr && size != 0 && CopyString(buffer, text.characters, size) == 0;
}

/// @return true: the name or its abbreviation was copied completely
bool CopyDay(int dayOfWeek, wchar_t* buffer, unsigned int size) {
    const Text name = Load(IDS_DAYS, dayOfWeek, kDays);
    const bool fits = std::wcslen(name.characters) < size;
    return CopyText(fits ? name : Load(IDS_BRIEF_DAYS, dayOfWeek, kDays), buffer, size);
}

} // namespace

CDateTime::CDateTime(const SYSTEMTIME& time) : CDateTimeEnglish(time) {}

CDateTime::CDateTime(int year, int month, int day, int hour, int minute, int second, int millisecond)
    : CDateTimeEnglish(year, month, day, hour, minute, second, millisecond) {}

CDateTime::CDateTime(FORMAT_ID id, const wchar_t* text)
    : CDateTimeEnglish(id, nullptr) {              // it cannot call the texts of this class
    (void)CDateTimeEnglish::SetDateTime(id, text); // GetStatus() has the result
}

CDateTime::CDateTime(const CDateTimeEnglish& other) : CDateTimeEnglish(other) {}

CDateTime CDateTime::GetLocalTime() {
    return {};
}

void CDateTime::GetMonthText(int month, wchar_t* buffer, unsigned int size) const {
    (void)CopyText(Load(IDS_MONTHS, month < 1 ? -1 : month - 1, kMonths), buffer, size); // may be truncated
}

void CDateTime::GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const {
    (void)CopyDay(dayOfWeek, buffer, size); // may be truncated
}

void CDateTime::GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const {
    (void)CopyText(Load(IDS_MERIDIANS, hour < kNoon ? 0 : 1, kMeridians), buffer, size); // may be truncated
}

unsigned long CDateTime::GetDayOfWeekText(int dayOfWeek, wchar_t* buffer, unsigned int size) {
    const bool isComplete = CopyDay(dayOfWeek, buffer, size);
    if (buffer == nullptr || size == 0 || dayOfWeek < 0 || dayOfWeek >= kDays) return ERROR_INVALID_PARAMETER;
    return isComplete ? STATUS_OK : ERROR_INSUFFICIENT_BUFFER;
}

const wchar_t* CDateTime::GetDayOfWeekTextEnglish(int dayOfWeek) {
    return CDateTimeEnglish::GetDayOfWeekText(dayOfWeek);
}
