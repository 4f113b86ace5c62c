#pragma once

#include <stdexcept>
#include <vector>

/// One kind of work that the programs of a workstation do all day, in rounds; each is an object at namespace scope.
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

/// Ends the run if a condition does not hold.
/// @param what  describes the condition
inline void Require(bool condition, const char* what) {
    if (!condition) throw std::runtime_error(what);
}
