#include "Kill.h"
#include "Subject.h"
#include "Usage.h"

#include "support/ChildProcess.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string_view>

namespace {

namespace fs = std::filesystem;

constexpr unsigned long long kSliceMs = 200;

/// How much more a process may hold at the end than after the first round. Windows caches things, too: a leak is what
/// grows with the rounds, of which there are hundreds.
constexpr Usage kLimits = {32, 8, 64, 128LL * 1024, 16LL * 1024 * 1024};

struct Course {
    Subject subject;
    long long rounds = 0;
    Usage grown{};
};

Usage Difference(Usage after, const Usage& before) {
    for (unsigned int i = 0; i < USAGE_COUNT; ++i) after[i] -= before[i];
    return after;
}

void RunSlice(Course& course) {
    const Usage before = UsageNow();
    const unsigned long long start = GetTickCount64();
    do {
        course.subject.round();
        ++course.rounds;
    } while (GetTickCount64() - start < kSliceMs);
    const Usage grown = Difference(UsageNow(), before);
    for (unsigned int i = 0; i < USAGE_COUNT; ++i) course.grown[i] += grown[i];
}

/// @return whether all rounds succeeded
bool RunAll(std::vector<Course>& courses) {
    for (Course& course : courses) {
        try {
            RunSlice(course);
        } catch (const std::exception& problem) {
            std::printf("soak: %s: not so: %s (round %lld)\n", course.subject.name, problem.what(), course.rounds + 1);
            return false;
        }
    }
    return true;
}

void PrintRow(const char* name, long long rounds, const Usage& grown) {
    std::printf("%-18s %10lld %8lld %8lld %8lld %12lld %14lld\n", name, rounds, grown[HANDLES], grown[THREADS],
                grown[OBJECTS], grown[HEAP_BYTES], grown[ADDRESS_SPACE]);
}

void Print(const std::vector<Course>& courses, const Usage& total) {
    std::printf("%-18s %10s %8s %8s %8s %12s %14s\n", "more at the end of", "rounds", "handles", "threads", "objects",
                "heap bytes", "address space");
    long long rounds = 0;
    for (const Course& course : courses) {
        PrintRow(course.subject.name, course.rounds, course.grown);
        rounds += course.rounds;
    }
    PrintRow("all", rounds, total);
}

/// @return the program's exit code
int Soak(unsigned long long seconds) {
    std::vector<Course> courses;
    for (const Subject& subject : Subject::All()) courses.push_back({subject});
    std::sort(courses.begin(), courses.end(), [](const Course& left, const Course& right) {
        return std::string_view(left.subject.name) < right.subject.name;
    });
    if (!RunAll(courses)) return 1;
    for (Course& course : courses) course = {course.subject};

    const Usage before = UsageNow();
    const unsigned long long start = GetTickCount64();
    do {
        if (!RunAll(courses)) return 1;
    } while (GetTickCount64() - start < seconds * 1000);
    const Usage grown = Difference(UsageNow(), before);
    Print(courses, grown);
    const bool within = std::equal(grown.begin(), grown.end(), kLimits.begin(), std::less_equal<>());
    std::puts(within ? "soak: nothing is left behind" : "soak: something is left behind");
    return within ? 0 : 1;
}

/// @param arguments  stride, offset, and the name of an operation, "random", or "" for all, from the third on
/// @return the program's exit code
int Kill(char** arguments) {
    const std::string name = arguments[4];
    const unsigned long stride = std::strtoul(arguments[2], nullptr, 10);
    const unsigned long offset = std::strtoul(arguments[3], nullptr, 10);
    const bool random = name.empty() || name == "random";
    const bool atRandom = !random || KillAtRandom(static_cast<unsigned int>(offset));
    return (name == "random" || KillEverywhere(stride, offset, name)) && atRandom ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    int exitCode = 0;
    if (RunRole(argc, argv, exitCode)) return exitCode;
    if (argc == 5 && std::string_view(argv[1]) == "kill") return Kill(argv);
    const unsigned long long seconds = argc == 2 ? std::strtoull(argv[1], nullptr, 10) : 0;
    if (seconds == 0) {
        std::fputs("usage: tessel_soak SECONDS\n", stderr);
        return 1;
    }
    const fs::path folder = fs::temp_directory_path() / "tessel soak";
    fs::create_directories(folder);
    fs::current_path(folder);
    exitCode = Soak(seconds);
    fs::current_path(folder.parent_path());
    fs::remove_all(folder);
    return exitCode;
}
