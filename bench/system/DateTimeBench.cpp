#include <benchmark/benchmark.h>
#include <tessel/system/datetime.h>

#include <cctype>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <string>

namespace {

constexpr std::size_t kTextSize = 32;
constexpr SYSTEMTIME kTime = {2004, 2, 0, 29, 20, 5, 9, 7};
constexpr int kHour12 = 8;

using WriteBare = int (*)(wchar_t* text, const SYSTEMTIME& time);

/// The format that a program without the library would use for a layout, and a mask of the fields in the text: each run
/// of one letter is a field. Layouts that cannot be read have no mask.
constexpr struct {
    FORMAT_ID id;
    const char* mask;
    WriteBare write;
} kLayouts[] = {
    {FID_DATE_PACKED, "yyyyMMdd",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%04d%02d%02d", t.wYear, t.wMonth, t.wDay);
     }},
    {FID_DATE_SLASH, "MM/dd/yyyy",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d/%02d/%04d", t.wMonth, t.wDay, t.wYear);
     }},
    {FID_DATE_DASH, "dd-MM-yyyy",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d-%02d-%04d", t.wDay, t.wMonth, t.wYear);
     }},
    {FID_DATE_NAME, "",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d %ls %04d", t.wDay, L"Feb", t.wYear);
     }},
    {FID_DATE_NAME_TIME, "",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d %ls %04d %02d:%02d", t.wDay, L"Feb", t.wYear, t.wHour, t.wMinute);
     }},
    {FID_DATE_NAME_TIME12, "",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d %ls %04d %02d:%02d %ls", t.wDay, L"Feb", t.wYear, kHour12,
                              t.wMinute, L"PM");
     }},
    {FID_DATE_DASH_TIME, "dd-MM-yyyy HH:mm",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d-%02d-%04d %02d:%02d", t.wDay, t.wMonth, t.wYear, t.wHour,
                              t.wMinute);
     }},
    {FID_DATE_SLASH_TIME, "MM/dd/yyyy HH:mm",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d/%02d/%04d %02d:%02d", t.wMonth, t.wDay, t.wYear, t.wHour,
                              t.wMinute);
     }},
    {FID_DATE_DASH_TIME12, "dd-MM-yyyy hh:mm",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d-%02d-%04d %02d:%02d %ls", t.wDay, t.wMonth, t.wYear, kHour12,
                              t.wMinute, L"PM");
     }},
    {FID_DATE_SLASH_SECONDS, "MM/dd/yyyy HH:mm:ss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d/%02d/%04d %02d:%02d:%02d", t.wMonth, t.wDay, t.wYear, t.wHour,
                              t.wMinute, t.wSecond);
     }},
    {FID_DATE_SLASH_MILLISECONDS, "MM/dd/yyyy HH:mm:ss.fff",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d/%02d/%04d %02d:%02d:%02d.%03d", t.wMonth, t.wDay, t.wYear,
                              t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
     }},
    {FID_DATE_DASH_SECONDS, "dd-MM-yyyy HH:mm:ss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d-%02d-%04d %02d:%02d:%02d", t.wDay, t.wMonth, t.wYear, t.wHour,
                              t.wMinute, t.wSecond);
     }},
    {FID_DATE_TIME_PACKED, "yyyyMMddHHmmss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%04d%02d%02d%02d%02d%02d", t.wYear, t.wMonth, t.wDay, t.wHour,
                              t.wMinute, t.wSecond);
     }},
    {FID_TIME_PACKED, "HHmmss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d%02d%02d", t.wHour, t.wMinute, t.wSecond);
     }},
    {FID_TIME, "HH:mm",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d:%02d", t.wHour, t.wMinute);
     }},
    {FID_TIME12, "hh:mm",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d:%02d %ls", kHour12, t.wMinute, L"PM");
     }},
    {FID_TIME_SECONDS, "HH:mm:ss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d:%02d:%02d", t.wHour, t.wMinute, t.wSecond);
     }},
    {FID_TIME12_SECONDS, "hh:mm:ss",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%02d:%02d:%02d %ls", kHour12, t.wMinute, t.wSecond, L"PM");
     }},
    {FID_RECORD_MILLISECONDS, "yyyyMMddHHmmssfff",
     [](wchar_t* text, const SYSTEMTIME& t) {
         return std::swprintf(text, kTextSize, L"%04d%02d%02d%02d%02d%02d%03d", t.wYear, t.wMonth, t.wDay, t.wHour,
                              t.wMinute, t.wSecond, t.wMilliseconds);
     }},
    {FID_DAY, "", [](wchar_t* text, const SYSTEMTIME&) { return std::swprintf(text, kTextSize, L"%ls", L"Sunday"); }},
};

/// The sum of a text's fields.
int ReadBare(const wchar_t* text, const char* mask) {
    int sum = 0;
    for (std::size_t at = 0; mask[at] != '\0';) {
        wchar_t field[5] = {};
        std::size_t digits = 0;
        while (mask[at + digits] == mask[at]) {
            field[digits] = text[at + digits];
            ++digits;
        }
        if (std::isalpha(static_cast<unsigned char>(mask[at]))) sum += _wtoi(field);
        at += digits;
    }
    return sum;
}

template <class DateTime> void FormatByTessel(benchmark::State& state, int layout) {
    const auto& row = kLayouts[layout];
    SetThreadLocale(MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT), SORT_DEFAULT));
    const DateTime time(kTime);
    wchar_t expected[kTextSize];
    row.write(expected, kTime);
    for (auto _ : state) benchmark::DoNotOptimize(time.Format(row.id));
    if (std::wcscmp(time.Format(row.id), expected) != 0) state.SkipWithError("other text");
}

void FormatBare(benchmark::State& state, int layout) {
    wchar_t text[kTextSize];
    for (auto _ : state) benchmark::DoNotOptimize(kLayouts[layout].write(text, kTime));
}

void ReadByTessel(benchmark::State& state, int layout) {
    const FORMAT_ID id = kLayouts[layout].id;
    CDateTimeEnglish time(kTime);
    const std::wstring text = time.Format(id);
    for (auto _ : state) benchmark::DoNotOptimize(time.SetDateTime(id, text.c_str()));
    if (time.Format(id) != text) state.SkipWithError("not read");
}

void ReadBare(benchmark::State& state, int layout) {
    const auto& row = kLayouts[layout];
    wchar_t text[kTextSize];
    row.write(text, kTime);
    for (auto _ : state) benchmark::DoNotOptimize(ReadBare(text, row.mask));
}

using Measurement = void(benchmark::State&, int);

void Register(const std::string& name, int layout, Measurement byTessel, Measurement bare) {
    constexpr double kSeconds = 0.01; // enough for nanoseconds; there are many of these
    benchmark::RegisterBenchmark((name + "/Tessel").c_str(), byTessel, layout)->UseRealTime()->MinTime(kSeconds);
    benchmark::RegisterBenchmark((name + "/Bare").c_str(), bare, layout)->UseRealTime()->MinTime(kSeconds);
}

const bool registered = [] {
    for (int layout = 0; layout < static_cast<int>(std::size(kLayouts)); ++layout) {
        const std::string id = " layout " + std::to_string(kLayouts[layout].id);
        Register("Date, write" + id, layout, FormatByTessel<CDateTimeEnglish>, FormatBare);
        if (*kLayouts[layout].mask == '\0') {
            Register("Date, write in the user's language" + id, layout, FormatByTessel<CDateTime>, FormatBare);
        }
        if (*kLayouts[layout].mask != '\0') Register("Date, read" + id, layout, ReadByTessel, ReadBare);
    }
    return true;
}();

} // namespace
