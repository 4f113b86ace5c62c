#pragma once

#include "support/MessageWindow.h"

#include <gtest/gtest.h>
#include <tessel/media/audio.h>

#include <algorithm>
#include <filesystem>

/// A CAudio with a file and a window that forwards the notifications, as a program derives it.
class Recorder : public CAudio {
public:
    using CAudio::ClearFile, CAudio::CompressBuffers, CAudio::GetError, CAudio::GetTimeCurrent, CAudio::GetTimeTotal,
        CAudio::OpenFile, CAudio::OpenStream, CAudio::OpenWaveDevice, CAudio::ProcessTimer, CAudio::ProcessWimClose,
        CAudio::ProcessWimData, CAudio::ProcessWomDone, CAudio::ReadBuffer, CAudio::ReadBuffers,
        CAudio::SetUncompressUse, CAudio::UnprepareStreamHeader, CAudio::UpdateDeviceTime, CAudio::WriteBuffer,
        CAudio::WriteBuffers;

    /// @param file  created if it is missing
    Recorder(int bConvert, const std::filesystem::path& file) : CAudio(bConvert) {
        SetWindowLongPtrW(m_window.Get(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(m_window.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Forward));
        SetParentWindow(m_window.Get());
        file.wstring().copy(GetPath(), MAX_PATH - 1);
        AttachToFile();
    }
    /// A copy has no notifications.
    Recorder(const Recorder& other) : CAudio(other) {}
    Recorder& operator=(const Recorder&) = delete;

    AUDIO_DATA* operator->() { return this; }

    /// Starts a run at m_ulDataRead. @return result of the start
    unsigned long Record() { return Run(MODE_RECORD, m_Record, m_ulMaxAudio, &CAudio::StartRecord); }
    unsigned long Play() { return Run(MODE_PLAY, m_Play, InPcm(m_ulDataWrite), &CAudio::StartPlay); }
    unsigned long PlayStep() { return Run(MODE_PLAY_STEP, m_Play, InPcm(m_ulDataWrite), &CAudio::StartPlayStep); }

    /// Dispatches messages until a run reaches a position, or ends. @param bytes  PCM bytes of the file
    void WaitFor(unsigned long bytes) const {
        MSG message;
        while (m_nMode != MODE_IDLE && std::max(m_Record.ulPosition, m_Play.ulPosition) < bytes &&
               GetMessageW(&message, nullptr, 0, 0) > 0)
            DispatchMessageW(&message);
    }
    /// Waits for the end of the run.
    void Finish() const { WaitFor(0xFFFFFFFF); }
    void End() {
        if (m_nMode != MODE_IDLE) OnStop();
        Finish();
    }
    void OnStop() override {
        ++stops;
        m_bStop = 1;
        StopWave();
    }
    /// Prepares for notifications without a device.
    void Pretend(MODE mode) {
        m_nMode = mode;
        EXPECT_EQ(OpenFile() | SeekFile(), 0u);
        InitStreamHeadersConvert();
    }
    /// Receives a recorded buffer without a device.
    void Receive(int buffer, unsigned long recorded) {
        Pretend(MODE_RECORD);
        m_WaveHeader[buffer].dwBytesRecorded = recorded;
        ProcessWimData(nullptr, &m_WaveHeader[buffer]);
    }

    int stops = 0;     ///< calls of OnStop
    int quits = 0;     ///< calls of OnQuit
    int controls = 0;  ///< calls of SetControls
    std::string drawn; ///< the last call of UpdateDisplay

private:
    unsigned long InPcm(unsigned long bytes) const { return bytes * m_ulRatioAudio / m_ulRatioCompress; }
    unsigned long Run(MODE mode, AUDIO_TIME& time, unsigned long limit, unsigned long (CAudio::*start)()) {
        m_nMode = mode;
        time = {InPcm(m_ulDataRead), InPcm(m_ulDataRead), limit};
        const unsigned long failed = (this->*start)();
        if (!failed) (void)StartDeviceTimer();
        return failed;
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

    MessageWindow m_window;
};
