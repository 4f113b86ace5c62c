#include "Recorder.h"
#include "support/ChildProcess.h"
#include "support/ImportPatch.h"
#include "support/Reports.h"
#include "support/TemporaryFolder.h"
#include "support/UnixTool.h"

#include <gtest/gtest.h>
#include <tessel/media/avifile.h>

#include <vfw.h>

#include <cwchar>

// Behaviour common to WAVE files and video files.

namespace {

namespace fs = std::filesystem;

unsigned long WriteWave(const wchar_t* path) {
    const std::string sound(3000, 'x');
    return CAudio::CreateWAV(path, sound.data(), 3000, 0);
}

unsigned long WriteMovie(const wchar_t* path) {
    unsigned long palette[256]{};
    void* frame = nullptr;
    CAviFile movie;
    if (const unsigned long result = movie.Open(path)) return result;
    EXPECT_EQ(movie.InitializeStream(16, 16, palette, frame), 0u);
    for (long image = 0; image < 5; ++image) EXPECT_EQ(movie.WriteFrame(image), 0u);
    return 0;
}

struct Kind {
    unsigned long (*write)(const wchar_t* path);
    unsigned long refused; ///< result if the path cannot be opened
};
const Kind kKinds[] = {{WriteWave, 1}, {WriteMovie, static_cast<unsigned long>(AVIERR_FILEOPEN)}};

/// Prints the result and the number of reports.
const Role writes("write", [](const std::vector<std::string>& arguments) {
    Reports reports;
    const unsigned long result = kKinds[std::stoi(arguments[0])].write(fs::path(arguments[1]).c_str());
    Say(std::to_string(result) + " " + std::to_string(reports.Take().size()));
    return 0;
});

} // namespace

TEST(WrittenFile, GoesToItsOwnPathWhateverItsLetters) {
    for (const Kind& kind : kKinds) {
        const TemporaryFolder folder;
        const fs::path other = folder / L"a.avi";
        const fs::path old = folder / L"\u0101 old.avi";
        std::ofstream(other) << "other";
        std::ofstream(old) << "old";
        for (const wchar_t* const name : {L"\u0101.avi", L"\u0101\u65E5\u672C long.avi", L"\u03B1.avi"}) {
            EXPECT_EQ(kind.write((folder / name).c_str()), 0u);
            EXPECT_EQ(BytesOf(folder / name).substr(0, 4), "RIFF");
        }
        const ImportPatch foreign("GetShortPathNameW", &GetShortPathNameW, [&](LPCWSTR, LPWSTR path, DWORD) {
            return static_cast<DWORD>(std::wcslen(std::wcscpy(path, other.c_str())));
        });
        EXPECT_EQ(kind.write((folder / L"\u0101 new.avi").c_str()), kind.refused) << "it leads to another file";
        EXPECT_EQ(kind.write(old.c_str()), kind.refused);
        EXPECT_FALSE(fs::exists(folder / L"\u0101 new.avi"));
        EXPECT_EQ(BytesOf(other) + BytesOf(old), "otherold");
    }
}

TEST(WrittenFile, IsRemovedAndReportedWhenTheDiskIsFull) {
    const TemporaryFolder folder;
    if (UnixPath(folder).empty()) GTEST_SKIP() << "needs a Unix shell that limits the size of files";
    const std::tuple<int, int, std::string> rows[] = {{0, 3, "0 0"}, {0, 2, "1 0"}, {1, 4, "0 0"}, {1, 3, "0 1"}};
    for (const auto& [kind, kilobytes, said] : rows) {
        const fs::path file = folder / L"full.avi";
        const std::wstring command = L"trap '' XFSZ; ulimit -f " + std::to_wstring(kilobytes) + L"; wine '" +
                                     UnixPath(OwnProgram()) + L"' --role write " + std::to_wstring(kind) + L" '" +
                                     file.generic_wstring() + L"' 2>/dev/null | tr -d '\\r\\n'";
        EXPECT_EQ(RunUnix(command).output, said) << kind << " " << kilobytes;
        EXPECT_EQ(fs::exists(file), said == "0 0") << kind << " " << kilobytes;
        fs::remove(file);
    }
}
