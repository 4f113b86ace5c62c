#include <messaging/office/Census.h>

#include <algorithm>

namespace tessel {

const Census::Answer* Census::Find(Identity process) const {
    const auto* const end = m_answers.data() + m_count;
    const auto* const found =
        std::find_if(m_answers.data(), end, [process](const Answer& answer) { return answer.process == process; });
    return found == end ? nullptr : found;
}

void Census::Ask(std::uint64_t process) {
    const Identity identity = IdentityIn(process);
    if (m_count == m_answers.size() || Find(identity) != nullptr) return;
    m_answers[m_count++] = {identity, identity != ThisProcess() && HasProcessEnded(identity)};
}

bool Census::HasEnded(std::uint64_t process) const {
    const Answer* const answer = Find(IdentityIn(process));
    return answer != nullptr && answer->ended;
}

} // namespace tessel
