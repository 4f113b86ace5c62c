#include "messaging/RoundTripBench.h"
#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr int kSlowTrips = 300;

/// The number after an option; the other options are those of the benchmark library.
int Number(int argc, char** argv, const std::string& option, int otherwise) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with(option)) return std::stoi(argument.substr(option.size()));
    }
    return otherwise;
}

} // namespace

int main(int argc, char** argv) {
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    benchmark::Initialize(&argc, argv);
    RegisterTails(Number(argc, argv, "--slow_trips=", kSlowTrips));
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
