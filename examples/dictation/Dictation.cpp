#include "Dictation.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr UINT kStopMessage = WM_APP;
constexpr DWORD kPatienceMs = 5000;
constexpr double kBytesPerSecond = 8000; // on the device's side

} // namespace

Dictation::Dictation(const std::wstring& file, bool compressed)
    : CAudio(compressed),
      m_window(CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr)) {
    if (m_window == nullptr || file.size() >= MAX_PATH) return;
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&WindowProc));
    SetParentWindow(m_window);
    std::wcscpy(GetPath(), file.c_str());
    m_ready = AttachToFile() == 0;
}

Dictation::~Dictation() {
    DestroyWindow(m_window);
}

void Dictation::Seek(double seconds) {
    const auto blocks = static_cast<unsigned long>(std::clamp(seconds, 0.0, 300.0) * kBytesPerSecond / m_ulBlockAudio);
    m_ulDataRead = std::min(blocks * m_ulBlockCompress, m_ulDataWrite);
}

bool Dictation::Record(double seconds, HearSamples hear) {
    m_hear = hear;
    m_heard = m_Record.ulPosition = m_Record.ulBase = DeviceBytes(m_ulDataRead);
    const double limit = std::min<double>(m_heard + std::max(0.0, seconds) * kBytesPerSecond, m_ulMaxAudio);
    m_Record.ulLimit = static_cast<unsigned long>(limit) / m_ulBlockAudio * m_ulBlockAudio;
    SetModeRecord();
    return Run(StartRecord());
}

bool Dictation::Play() {
    m_Play.ulPosition = m_Play.ulBase = DeviceBytes(m_ulDataRead);
    m_Play.ulLimit = DeviceBytes(m_ulDataWrite) / m_ulBlockAudio * m_ulBlockAudio;
    if (m_Play.ulBase >= m_Play.ulLimit) return true; // nothing is left to play
    SetModePlay();
    return Run(StartPlay());
}

bool Dictation::Step() {
    m_Play.ulPosition = m_Play.ulBase = DeviceBytes(m_ulDataRead);
    m_Play.ulLimit = DeviceBytes(m_ulDataWrite);
    if (m_Play.ulBase >= m_Play.ulLimit) return true;
    SetModePlayStep();
    return Run(StartPlayStep());
}

void Dictation::Stop() {
    PostMessageW(m_window, kStopMessage, 0, 0);
}

// The device sends messages to the window until the one about its close.
bool Dictation::Run(unsigned long started) {
    MSG message;
    if (started != 0) { // the next run must not get the messages of a device that was open briefly
        while (PeekMessageW(&message, m_window, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        return false;
    }
    m_running = true;
    m_failed = StartDeviceTimer() != 0;
    m_movedAt = GetTickCount();
    while (m_running && GetMessageW(&message, m_window, 0, 0) > 0) DispatchMessageW(&message);
    return !m_failed;
}

LRESULT CALLBACK Dictation::WindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const self = reinterpret_cast<Dictation*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    return self->HandleNotification(message, wParam, lParam) ? 0 : DefWindowProcW(window, message, wParam, lParam);
}

bool Dictation::HandleNotification(UINT message, WPARAM wParam, LPARAM lParam) {
    auto* const buffer = reinterpret_cast<WAVEHDR*>(lParam);
    switch (message) {
    case MM_WIM_DATA:
        Hear(buffer);
        ProcessWimData(reinterpret_cast<HWAVEIN>(wParam), buffer);
        return true;
    case MM_WIM_CLOSE: ProcessWimClose(reinterpret_cast<HWAVEIN>(wParam)); return true;
    case MM_WOM_DONE: ProcessWomDone(reinterpret_cast<HWAVEOUT>(wParam), buffer); return true;
    case MM_WOM_CLOSE: ProcessWomClose(reinterpret_cast<HWAVEOUT>(wParam)); return true;
    case WM_TIMER:
        ProcessTimer(static_cast<unsigned int>(wParam));
        Watch();
        return true;
    case kStopMessage: EndRun(); return true;
    default: return false;
    }
}

// Any program can post the message, with any address.
void Dictation::Hear(const WAVEHDR* buffer) {
    const bool own = buffer == &m_WaveHeader[0] || buffer == &m_WaveHeader[1];
    if (m_hear == nullptr || !own || buffer->dwBytesRecorded == 0) return;
    m_hear(m_heard / kBytesPerSecond, reinterpret_cast<const unsigned char*>(buffer->lpData), buffer->dwBytesRecorded);
    m_heard += buffer->dwBytesRecorded;
}

// An unplugged device may report nothing more, not even its close.
void Dictation::Watch() {
    const unsigned long position = Progress().ulPosition;
    const DWORD now = GetTickCount();
    if (position != m_lastPosition) m_movedAt = now;
    m_lastPosition = position;
    if (now - m_movedAt < kPatienceMs) return;
    if (m_bStop == 0) {
        OnStop();
    } else if (m_nMode == MODE_RECORD) {
        ProcessWimClose(nullptr);
    } else {
        ProcessWomClose(nullptr);
    }
}

const AUDIO_TIME& Dictation::Progress() const {
    return m_nMode == MODE_RECORD ? m_Record : m_Play;
}

// It is called at the end of a run and after a failure; after a failure the end has not been reached.
void Dictation::OnStop() {
    const AUDIO_TIME& progress = Progress();
    const unsigned long end = m_nMode == MODE_PLAY_STEP ? progress.ulBase + 1 : progress.ulLimit;
    if (m_bStop == 0 && progress.ulPosition < end) m_failed = true;
    EndRun();
}

void Dictation::EndRun() {
    if (m_nMode == MODE_IDLE || m_bStop != 0) return;
    m_bStop = 1;
    StopWave();
}

void Dictation::OnQuit() {
    m_running = false;
}

double Dictation::Seconds(unsigned long fileBytes) const {
    return DeviceBytes(fileBytes) / kBytesPerSecond;
}

unsigned long Dictation::DeviceBytes(unsigned long fileBytes) const {
    return static_cast<unsigned long>(fileBytes * 1ULL * m_ulRatioAudio / m_ulRatioCompress);
}
