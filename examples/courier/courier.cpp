#include "Receiver.h"
#include "Sender.h"

#include <common/Arguments.h>

#include <cstdio>

namespace {

constexpr char kUsage[] = "usage: courier FILE COPY [--receiver PROGRAM] [--stall MS]\n"
                          "Carries FILE to a second process through the mailboxes; it writes COPY.\n"
                          "  --receiver PROGRAM  the courier.exe that receives (default: this one)\n"
                          "  --stall MS          pause before it takes the first message (default: 0)\n";

struct Options {
    std::vector<std::wstring> files;
    std::wstring receiver = OwnProgram();
    unsigned long stallMs = 0;
};

bool Parse(const std::vector<std::wstring>& arguments, Options& options) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool hasValue = i + 1 < arguments.size();
        if (arguments[i] == L"--receiver" && hasValue) {
            options.receiver = arguments[++i];
        } else if (arguments[i] == L"--stall" && hasValue && IsNumber(arguments[i + 1])) {
            options.stallMs = Number(arguments[++i]);
        } else if (arguments[i].starts_with(L"--")) {
            return false;
        } else {
            options.files.push_back(arguments[i]);
        }
    }
    return options.files.size() == 2;
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IONBF, 0); // lines of both processes appear as they are written
    const std::vector<std::wstring> arguments = Arguments();
    if (arguments.size() == 5 && arguments[0] == L"--receive") {
        return Receive(arguments[1], Number(arguments[2]), Number(arguments[3]), Number(arguments[4]));
    }
    Options options;
    if (Parse(arguments, options)) return Send(options.files[0], options.files[1], options.receiver, options.stallMs);
    const bool asked = arguments.size() == 1 && arguments[0] == L"--help";
    std::fputs(kUsage, asked ? stdout : stderr);
    return asked ? 0 : 1;
}
