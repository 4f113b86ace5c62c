#include "Kill.h"

#include "messaging/KilledOperations.h"
#include "messaging/KilledPrograms.h"

#include <algorithm>
#include <cstdio>

namespace {

struct Figures {
    std::vector<double> recoveriesMs;
    unsigned long faults = 0;

    void Add(const Death& death) {
        recoveriesMs.push_back(death.recoveryMs);
        if (!death.fault.empty()) ++faults;
    }
    void Print(const std::string& name, unsigned long length) {
        std::sort(recoveriesMs.begin(), recoveriesMs.end());
        const bool none = recoveriesMs.empty();
        std::printf("%-28s %4u %12lu %7zu %10.1f %10.1f %7lu\n", name.c_str(), static_cast<unsigned>(sizeof(void*) * 8),
                    length, recoveriesMs.size(), none ? 0 : recoveriesMs[recoveriesMs.size() / 2],
                    none ? 0 : recoveriesMs.back(), faults);
    }
};

struct Row {
    std::string name;
    unsigned long length;
    Figures figures;
};

constexpr double kMostMs = 1000;

void KillEach(Row& row, unsigned long stride, unsigned long offset) {
    Killing killing(row.name);
    const Course course = killing.Observe(true);
    row.length = course.length;
    const std::vector<unsigned long> all = course.Instructions();
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (i % stride != offset % stride && !course.IsVisible(all[i])) continue;
        for (const Contention contention : course.Contentions(all[i])) {
            Death death = killing.Kill(all[i], course, contention);
            if (death.recoveryMs > kMostMs) death.fault += " late";
            row.figures.Add(death);
            if (!death.fault.empty())
                std::printf("\n%s, killed after instruction %lu (%d): %s, %.1f ms\n", row.name.c_str(), all[i],
                            static_cast<int>(contention), death.fault.c_str(), death.recoveryMs);
            std::fprintf(stderr, "\r%s: %zu of %zu ", row.name.c_str(), i + 1, all.size());
        }
    }
    std::fputs("\n", stderr);
}

/// @return whether nothing went wrong
bool PrintOutcome(const char* what, const std::string& fault) {
    std::printf("%s (%u bits): %s\n", what, static_cast<unsigned>(sizeof(void*) * 8),
                fault.empty() ? "nothing lost" : fault.c_str());
    std::fflush(stdout);
    return fault.empty();
}

/// @return how many went wrong
unsigned long PrintTable(std::vector<Row>& rows) {
    std::printf("%-28s %4s %12s %7s %10s %10s %7s\n", "operation", "bits", "instructions", "killed", "median ms",
                "longest ms", "faults");
    unsigned long faults = 0;
    for (Row& row : rows) {
        row.figures.Print(row.name, row.length);
        faults += row.figures.faults;
    }
    return faults;
}

} // namespace

bool KillEverywhere(unsigned long stride, unsigned long offset, const std::string& name) {
    std::vector<Row> rows;
    for (const std::string& operation : Killing::Names()) {
        if (!name.empty() && operation != name) continue;
        rows.push_back({operation, 0, {}});
        KillEach(rows.back(), stride, offset);
        std::fflush(stdout);
    }
    return PrintTable(rows) == 0;
}

bool KillAtRandom(unsigned int seed) {
    const bool kept =
        PrintOutcome("500 killed while 20,000 messages are exchanged", KillBusyPrograms(500, 20000, seed));
    return PrintOutcome("200 returned from main() while sending", ReturnWhileSending(200)) && kept;
}
