#pragma once

#include <stdexcept>
#include <vector>

/// Something that the programs of a workstation do all day, in rounds: one of these for each, at namespace scope.
struct Subject {
    using Round = void (*)();
    Subject(const char* subjectName, Round oneRound) : name(subjectName), round(oneRound) { All().push_back(*this); }

    static std::vector<Subject>& All() {
        static std::vector<Subject> all;
        return all;
    }

    const char* name;
    Round round;
};

/// Ends the run when something is not as it must be.
/// @param what  what must be
inline void Require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}
