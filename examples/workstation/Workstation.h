#pragma once

#include "LineCount.h"
#include "SavedImages.h"
#include "Screen.h"

#include <filesystem>
#include <optional>

/// How the workstation is to run.
struct Options {
    bool hidden = false;          ///< without a window on the screen
    std::uint32_t images = 0;     ///< number that the console acquires before it exits; 0: the user decides
    std::filesystem::path folder; ///< where images are saved
    std::wstring movie;           ///< file that all images go into; empty: none
    std::wstring console;         ///< program of the console
};

/// The host of the workstation: it loads the managers, shows what they do, and forwards the orders of user and console.
class Workstation : public OSClass {
public:
    /// Makes the frame window and opens the mailbox.
    explicit Workstation(const Options& options);
    ~Workstation() override;
    Workstation(const Workstation&) = delete;
    Workstation& operator=(const Workstation&) = delete;

    /// Runs until the end and prints the result.
    /// @return the process's exit code: 0 if everything sent was received and saved as generated, and written to the
    ///         movie if there is one
    int Run();

private:
    /// A manager, and what is known of it.
    struct LoadedManager {
        ORCAOBJID id;
        const wchar_t* name;
        const wchar_t* module;
        bool ready = false;
        bool exitSent = false;
        bool gone = false;
        ManagerStatus status{};
    };

    void OnStart() override;
    void OnClose() override {}
    void OnMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnPumpExit(int code, const wchar_t* text) override;

    void OnFrameEvent(const NOTIFY& event, WPARAM wParam);
    void OnDialogEvent(const NOTIFY& event, LPARAM lParam);
    void OnButton(int id);
    void OnMail(const CMail& mail);
    void OnManager(LoadedManager& manager, const CMail& mail);
    void OnReady(const LoadedManager& manager);
    void OnSaved(std::uint32_t image);

    void LoadManagers();
    void TellConsole();
    void StartConsole();
    void WatchConsole();
    void Start(std::uint32_t images);
    void EndManagers();
    void Fail(const char* problem);
    int Send(ORCAOBJID to, WORK_MESSAGE message, std::span<const unsigned char> data = {});
    void TellArchive(WORK_MESSAGE message, const std::wstring& path);

    void ShowState();
    bool PrintResult() const;

    Options m_options;
    CMailBox m_mailbox;
    FormatSysMsg m_events;
    std::optional<Screen> m_screen;
    LoadedManager m_managers[2] = {{kAcquisitionId, L"Acquisition", L"acquisition.dll"},
                                   {kArchiveId, L"Archive", L"archive.dll"}};
    LineCount m_lines;
    std::optional<std::uint32_t> m_imagesToStart;
    std::uint32_t m_saved = 0;
    SavedImages m_toAnnounce; ///< to the console
    std::uint32_t m_different = 0;
    HANDLE m_console = nullptr;
    bool m_consoleEnded = false;
    bool m_leaving = false;
};
