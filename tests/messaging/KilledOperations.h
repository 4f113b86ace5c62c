#pragma once

#include "support/ChildProcess.h"

#include <deque>
#include <memory>
#include <span>
#include <string>
#include <vector>

struct KilledOperation;

/// When another program asks for the lock.
enum class Contention { AFTER_THE_DEATH, AT_THE_LAST_INSTRUCTION, AS_SOON_AS_LOCKED };

/// An operation's run to its end.
struct Course {
    unsigned long length = 0;           ///< instructions
    unsigned long locked = 0;           ///< the first with the lock; 0: none
    std::vector<unsigned long> visible; ///< those after which others may see something new
    bool IsVisible(unsigned long instruction) const;
    /// Those after which to kill: all, or of a long operation the visible ones and some of the others.
    std::vector<unsigned long> Instructions() const;
    /// Who is to ask for the lock when: every way in turn where others see something new, else one of them.
    std::vector<Contention> Contentions(unsigned long instruction) const;
};

/// What happened after a program's death.
struct Death {
    double recoveryMs = 0; ///< until another program had registered and sent a message, which was received and released
    std::string fault;     ///< what went wrong; empty: nothing
};

/// Kills programs in the midst of one operation and observes those that survive: this process, which receives, and
/// a sender of the other bitness. This process must not have a post office.
class Killing {
public:
    /// @param name  of the operation, one of Names()
    explicit Killing(const std::string& name);
    ~Killing();
    Killing(Killing&&) = delete;

    static std::vector<std::string> Names();
    /// Counts the operation's instructions.
    /// @param all  also those after which others may see something new; takes some seconds for a long operation
    Course Observe(bool all);
    /// Kills a program after an instruction.
    Death Kill(unsigned long instruction, const Course& course, Contention contention);

private:
    struct Survivor;
    using Child = std::unique_ptr<ChildProcess>;

    void Begin();
    Child NextVictim(const KilledOperation& operation);
    void SetScene();
    void StartContender();
    long long AwaitContender(std::string& fault);
    std::string Settle();

    const KilledOperation& m_operation;
    std::deque<Child> m_spares; ///< victims that have started, as starting takes longest
    std::unique_ptr<Survivor> m_survivor;
    Child m_contender;
};
