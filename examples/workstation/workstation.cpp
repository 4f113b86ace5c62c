#include "Workstation.h"

#include <common/Arguments.h>

#include <cstdio>

namespace {

constexpr char kUsage[] = "usage: workstation [--hidden] [--run IMAGES] [--folder FOLDER] [--movie FILE]\n"
                          "                   [--console PROGRAM]\n"
                          "A workstation with two managers: one acquires images, one saves them.\n"
                          "  --hidden           show no window\n"
                          "  --run IMAGES       have the console acquire so many, then exit\n"
                          "  --folder FOLDER    where images are saved (default: images)\n"
                          "  --movie FILE       an AVI file that all images go into (default: none)\n"
                          "  --console PROGRAM  the console (default: console.exe beside this program)\n";

bool Parse(const std::vector<std::wstring>& arguments, Options& options) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == L"--hidden") {
            options.hidden = true;
        } else if (arguments[i] == L"--run" && hasValue && IsNumber(arguments[i + 1])) {
            options.images = Number(arguments[++i]);
        } else if (arguments[i] == L"--folder" && hasValue) {
            options.folder = arguments[++i];
        } else if (arguments[i] == L"--movie" && hasValue) {
            options.movie = arguments[++i];
        } else if (arguments[i] == L"--console" && hasValue) {
            options.console = arguments[++i];
        } else {
            return false;
        }
    }
    return true;
}

int Run(const Options& options) {
    if (SingleInstance(L"Tessel workstation") != 0) {
        std::fputs("workstation: it runs already\n", stderr);
        return 1;
    }
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (error) {
        std::fputs("workstation: the folder cannot be made\n", stderr);
        return 1;
    }
    CPostOffice::CreateGlobalPostOffice();
    const int exitCode = Workstation(options).Run();
    CPostOffice::DestroyGlobalPostOffice();
    return exitCode;
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // lines of both processes appear as they are written
    Options options;
    options.folder = std::filesystem::current_path() / "images";
    options.console = std::filesystem::path(OwnProgram()).replace_filename("console.exe").wstring();
    if (Parse(Arguments(), options)) return Run(options);
    std::fputs(kUsage, stderr);
    return 1;
}
