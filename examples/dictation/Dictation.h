#pragma once

#include <tessel/media/audio.h>

#include <string>

/// Called with the samples of each recorded buffer: 8 bits each, 128 is silence.
using HearSamples = void (*)(double seconds, const unsigned char* samples, unsigned long count);

/// Records and plays speech in a file. Each operation returns when its run ends: at the end of the data, by Stop(), or
/// when the device stalls.
class Dictation : private CAudio {
public:
    /// Opens the file, or creates it if it is missing.
    /// @param file        path of up to 259 characters
    /// @param compressed  whether it holds GSM 6.10 data
    Dictation(const std::wstring& file, bool compressed);
    ~Dictation() override;
    Dictation(const Dictation&) = delete;
    Dictation& operator=(const Dictation&) = delete;

    /// Whether the file could be opened.
    bool IsReady() const { return m_ready; }
    /// Length of the data in seconds.
    double Length() const { return Seconds(m_ulDataWrite); }
    /// Where the next run starts: where the last one stopped.
    double Position() const { return Seconds(m_ulDataRead); }
    /// Moves to a block of 0.2 s, at most to the end.
    void Seek(double seconds);

    /// Records from the position on, replacing what follows it.
    /// @param seconds  longest duration
    /// @param hear     called with what was recorded; may be null
    /// @return whether the run ended without a failure
    bool Record(double seconds, HearSamples hear);
    /// Plays from the position to the end.
    bool Play();
    /// Plays the 0.2 s at the position and moves to the next block.
    bool Step();
    /// Ends the current run. Any thread may call it.
    void Stop();

private:
    static LRESULT CALLBACK WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool HandleNotification(UINT message, WPARAM wParam, LPARAM lParam);
    void Hear(const WAVEHDR* buffer);
    void Watch();
    void EndRun();
    const AUDIO_TIME& Progress() const;
    void OnStop() override;
    void OnQuit() override;
    double Seconds(unsigned long fileBytes) const;
    unsigned long DeviceBytes(unsigned long fileBytes) const;
    bool Run(unsigned long started);

    bool m_ready = false;
    bool m_running = false;
    bool m_failed = false;
    HearSamples m_hear = nullptr;
    unsigned long m_heard = 0; ///< bytes
    unsigned long m_lastPosition = 0;
    DWORD m_movedAt = 0; ///< tick count
    HWND m_window;
};
