#pragma once

#include <tessel/foundation/platform.h>

namespace tessel {

/// The system's text for an error, for as long as the object lives.
class SystemText {
public:
    /// Looks up the text. Its inserts are not expanded, because there are no arguments for them.
    /// @param error          error of Windows
    /// @param language       language of the text
    /// @param minimumLength  size of the text's buffer, in characters, if the text is shorter
    explicit SystemText(DWORD error, DWORD language = LANG_NEUTRAL, DWORD minimumLength = 0)
        : m_length(FormatMessageW(
              FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
              error, language, reinterpret_cast<wchar_t*>(&m_text), minimumLength, nullptr)) {}
    ~SystemText() { (void)LocalFree(m_text); } // allocated by the system
    SystemText(const SystemText&) = delete;
    SystemText& operator=(const SystemText&) = delete;

    /// The text, which the caller may change.
    /// @return null: there is none
    wchar_t* Get() { return m_text; }

    /// Length of the text in characters, without its terminator; 0: there is none.
    DWORD Length() const { return m_length; }

private:
    wchar_t* m_text = nullptr;
    DWORD m_length;
};

} // namespace tessel
