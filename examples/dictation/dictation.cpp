#include "Dictation.h"
#include "Conversion.h"
#include "Level.h"
#include "common/Arguments.h"

#include <tesselgsm/driver.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <filesystem>

namespace {

constexpr char kUsage[] =
    "usage: dictation record FILE [SECONDS [FROM]]\n"
    "       dictation play FILE [FROM]\n"
    "       dictation step FILE [FROM [STEPS]]\n"
    "       dictation convert FILE NEWFILE\n"
    "FILE.gsm holds GSM 6.10 data, any other FILE 8-bit PCM data; NEWFILE may be a .wav. FROM is in\n"
    "seconds, a step is 0.2 s long. Control-C ends a recording or a playback.\n";

Dictation* running = nullptr;

BOOL WINAPI StopOnControlC(DWORD event) {
    if (event == CTRL_C_EVENT) running->Stop();
    return event == CTRL_C_EVENT;
}

void PrintLevel(double seconds, const unsigned char* samples, unsigned long count) {
    std::printf("%6.1f s |%-10s|\n", seconds, LevelLine(samples, count).c_str());
    std::fflush(stdout);
}

/// Whether a text is a number, and not one below zero.
bool IsAmount(const std::wstring& text) {
    wchar_t* end = nullptr;
    const double number = std::wcstod(text.c_str(), &end);
    return !text.empty() && *end == L'\0' && number >= 0;
}

/// A number of the command line.
double Number(const std::vector<std::wstring>& arguments, std::size_t index, double otherwise) {
    constexpr double kMost = 1500; // steps of five minutes
    return std::min(index < arguments.size() ? std::wcstod(arguments[index].c_str(), nullptr) : otherwise, kMost);
}

bool PlaySteps(Dictation& dictation, unsigned long count) {
    bool played = true;
    for (unsigned long step = 0; step < count && played && dictation.Position() < dictation.Length(); ++step) {
        played = dictation.Step();
        std::printf("%.1f s\n", dictation.Position());
    }
    return played;
}

bool Execute(const std::wstring& order, const std::vector<std::wstring>& arguments) {
    std::error_code none; // a file that cannot be checked cannot be played
    if (order != L"record" && !std::filesystem::exists(arguments[1], none)) return false; // would create it
    Dictation dictation(arguments[1], EndsIn(arguments[1], L".gsm"));
    if (!dictation.IsReady()) return false;
    running = &dictation;
    SetConsoleCtrlHandler(&StopOnControlC, TRUE);
    bool done = false;
    if (order == L"record") {
        dictation.Seek(Number(arguments, 3, dictation.Length()));
        done = dictation.Record(Number(arguments, 2, 300), &PrintLevel);
    } else {
        dictation.Seek(Number(arguments, 2, 0));
        const auto steps = static_cast<unsigned long>(Number(arguments, 3, 1));
        done = order == L"play" ? dictation.Play() : PlaySteps(dictation, steps);
    }
    SetConsoleCtrlHandler(&StopOnControlC, FALSE);
    std::printf("%.1f of %.1f s\n", dictation.Position(), dictation.Length());
    return done;
}

int Fail(const char* text) {
    std::fputs(text, stderr);
    return 1;
}

} // namespace

int main() {
    const std::vector<std::wstring> arguments = Arguments();
    const std::wstring order = arguments.size() < 2 ? L"" : arguments[0];
    const bool runs = order == L"record" || order == L"play" || order == L"step";
    const bool isOrder = runs ? std::all_of(arguments.begin() + 2, arguments.end(), &IsAmount)
                              : order == L"convert" && arguments.size() == 3;
    if (!isOrder) return Fail(kUsage);
    (void)TesselGsmInstall(); // without any codec, compressing fails later
    const bool done = runs ? Execute(order, arguments) : ConvertFile(arguments[1], arguments[2]);
    return done ? 0 : Fail("dictation: it did not work: is there the file, a device, a codec, room on the disk?\n");
}
