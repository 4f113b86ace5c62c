#pragma once

#include <tessel/audio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Handles the calling thread's messages until a condition holds.
template <class Condition> void PumpUntil(Condition holds) {
    MSG message;
    while (!holds() && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
}

/// The bytes of a file.
inline std::string BytesOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A CAudio as a program derives it: with a window that forwards the notifications, and a file. Its fields are open.
class Recorder : public CAudio {
public:
    using AUDIO_DATA::m_bConvert;
    using AUDIO_DATA::m_bStop;
    using AUDIO_DATA::m_bTimer;
    using AUDIO_DATA::m_hFile;
    using AUDIO_DATA::m_hStream;
    using AUDIO_DATA::m_hWaveIn;
    using AUDIO_DATA::m_hWaveOut;
    using AUDIO_DATA::m_nMode;
    using AUDIO_DATA::m_Play;
    using AUDIO_DATA::m_Record;
    using AUDIO_DATA::m_StreamHeader;
    using AUDIO_DATA::m_StreamHeaderStep;
    using AUDIO_DATA::m_szError;
    using AUDIO_DATA::m_szPath;
    using AUDIO_DATA::m_ulBlockCompress;
    using AUDIO_DATA::m_ulDataRead;
    using AUDIO_DATA::m_ulDataWrite;
    using AUDIO_DATA::m_ulMaxCompress;
    using AUDIO_DATA::m_WaveHeader;
    using AUDIO_DATA::m_WaveHeaderStep;
    using CAudio::AddWaveBuffers;
    using CAudio::ClearError;
    using CAudio::ClearFile;
    using CAudio::CompressBuffers;
    using CAudio::GetError;
    using CAudio::GetTimeCurrent;
    using CAudio::GetTimeTotal;
    using CAudio::InitWaveFormatGSM;
    using CAudio::InitWaveFormatPCM;
    using CAudio::OpenFile;
    using CAudio::ProcessTimer;
    using CAudio::ProcessWimClose;
    using CAudio::ProcessWimData;
    using CAudio::ProcessWomClose;
    using CAudio::ProcessWomDone;
    using CAudio::ReadBuffer;
    using CAudio::ReadBuffers;
    using CAudio::SeekFile;
    using CAudio::SetCompressUse;
    using CAudio::SetUncompressUse;
    using CAudio::SizeFile;
    using CAudio::TruncateFile;
    using CAudio::UpdateDeviceTime;
    using CAudio::WriteBuffer;
    using CAudio::WriteBuffers;

    /// @param file  made when it is missing; its data count
    Recorder(int bConvert, const std::filesystem::path& file) : CAudio(bConvert) {
        m_window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, GetModuleHandleW(nullptr),
                                   nullptr);
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Forward));
        SetParentWindow(m_window);
        file.wstring().copy(GetPath(), MAX_PATH - 1);
        AttachToFile();
    }
    ~Recorder() override { DestroyWindow(m_window); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Starts a run at m_ulDataRead. @return what the start returned
    unsigned long Record() {
        SetUp(MODE_RECORD, m_Record, m_ulMaxAudio);
        return Follow(StartRecord());
    }
    unsigned long Play() {
        SetUp(MODE_PLAY, m_Play, InPcm(m_ulDataWrite));
        return Follow(StartPlay());
    }
    unsigned long PlayStep() {
        SetUp(MODE_PLAY_STEP, m_Play, InPcm(m_ulDataWrite));
        return Follow(StartPlayStep());
    }

    /// Waits until a run has come that far. @param bytes  PCM bytes of the file
    void WaitFor(unsigned long bytes) const {
        PumpUntil([&] { return std::max(m_Record.ulPosition, m_Play.ulPosition) >= bytes || m_nMode == MODE_IDLE; });
    }
    /// Stops the run.
    void Stop() { OnStop(); }
    /// Waits for its end.
    void Finish() {
        PumpUntil([&] { return quits > 0; });
        quits = 0;
    }

    HWND Window() const { return m_window; }

    int stops = 0;     ///< calls of OnStop
    int quits = 0;     ///< calls of OnQuit since Finish()
    int controls = 0;  ///< calls of SetControls
    std::string drawn; ///< the last call of UpdateDisplay
    bool obeys = true; ///< false: OnStop only counts

private:
    unsigned long InPcm(unsigned long bytes) const { return bytes * m_ulRatioAudio / m_ulRatioCompress; }
    void SetUp(MODE mode, AUDIO_TIME& time, unsigned long limit) {
        m_nMode = mode;
        time = {InPcm(m_ulDataRead), InPcm(m_ulDataRead), limit};
    }
    unsigned long Follow(unsigned long started) {
        if (started == 0) (void)StartDeviceTimer();
        return started;
    }
    void OnStop() override {
        ++stops;
        if (!obeys) return;
        m_bStop = 1;
        StopWave();
    }
    void OnQuit() override { ++quits; }
    void SetControls(int update) override { controls += update; }
    void UpdateDisplay(int position, int all) override { drawn = std::to_string(position) + " " + std::to_string(all); }

    static LRESULT CALLBACK Forward(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto& self = *reinterpret_cast<Recorder*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        auto* const header = reinterpret_cast<WAVEHDR*>(lParam);
        switch (message) {
        case MM_WIM_DATA: self.ProcessWimData(reinterpret_cast<HWAVEIN>(wParam), header); break;
        case MM_WIM_CLOSE: self.ProcessWimClose(reinterpret_cast<HWAVEIN>(wParam)); break;
        case MM_WOM_DONE: self.ProcessWomDone(reinterpret_cast<HWAVEOUT>(wParam), header); break;
        case MM_WOM_CLOSE: self.ProcessWomClose(reinterpret_cast<HWAVEOUT>(wParam)); break;
        case WM_TIMER: self.ProcessTimer(static_cast<unsigned int>(wParam)); break;
        default: return DefWindowProcW(window, message, wParam, lParam);
        }
        return 0;
    }

    HWND m_window;
};
