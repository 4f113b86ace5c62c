#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
