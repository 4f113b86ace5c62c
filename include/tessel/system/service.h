#pragma once

#include <tessel/foundation/platform.h>

#include <fenestra/mutex.h>

/// How a service is started.
enum START_MODE : int {
    START_AUTO = 0,  ///< by the service manager, with the machine
    START_MANUAL = 1 ///< on demand
};

/// A program that runs as a service of the machine: derive from it and say what the service does.
///
/// One object a process: construct it at the start, then call one of Install(), Remove() and Run(). The service manager
/// starts the program and expects Run() within seconds. Run() returns when the service has stopped; meanwhile
/// OnServiceRun() works on the service's thread, and OnServiceStop(), called on the thread of Run(), makes it return.
/// The library reports that the service is about to start or to stop; that it runs, and that it has stopped, is
/// reported by the derived class with ReportStatus().
///
/// All state is the process's: a copy stands for the same service, and the first one that is destroyed ends it for all.
/// The texts given to the constructor stay the caller's and must outlive the object.
/// Operations that fail tell it by their result alone, and by a message box once EnableErrorReports() asked for that.
/// Install() and Remove() have none: ask IsInstalled() afterwards. A removed service counts as installed until its
/// process has ended and whoever asked for it has closed it.
/// Threads: the static operations may be called by any, once the object is constructed. What was last known of the
/// service's status is shared without a lock: do not call Stop() or Remove() in the service's own process. A service
/// that reports its own end at the moment in which it is asked to stop may be left as one that is stopping.
class TESSEL_API CNtService {
public:
    /// Makes this object the process's service; nothing is done to the machine.
    /// @param name         the service's name
    /// @param displayName  the name that people see
    /// @param deps         names of the services that it needs, each terminated, and an empty one; null: none
    /// @param exePath      the program to install; null: the running one
    /// @param args         arguments that the program is to be started with; null: none
    CNtService(const wchar_t* name, const wchar_t* displayName, const wchar_t* deps, const wchar_t* exePath,
               const wchar_t* args);

    /// Stands for the same service.
    CNtService(const CNtService&) = default;

    /// Stands for the same service.
    /// @return this object
    CNtService& operator=(const CNtService&) = default;

    /// Leaves the process without a service object and without its texts.
    virtual ~CNtService();

    /// Connects the process to the service manager and returns when the service has stopped. When the process was not
    /// started by the service manager, that goes to the event log and the call returns after some seconds.
    void Run();

    /// Enters the service with the service manager: a process of its own, started on demand, under the local system
    /// account and allowed to show windows. Needs the administrator rights.
    ///
    /// The path is entered without quotation marks, so give a path with blanks in marks of its own. The path of the
    /// running program may have 1,023 characters, and a path with its arguments 2,047: what is longer is not installed.
    void Install();

    /// Stops the service, as Stop() does, and takes it out of the service manager. A service that cannot be stopped
    /// stays.
    void Remove();

    /// Whether a service is installed, and may be changed by the caller.
    /// @param name  the service; null: this one
    /// @return true: it is; false: it is not, or the caller has no right to it
    static bool IsInstalled(const wchar_t* name);

    /// Whether this service is running. Another name only has to be that of an installed service.
    /// @param name  a service that must be installed; null: this one
    /// @return true: that one is installed and this one is running; false: not, or that cannot be found out
    static bool IsRunning(const wchar_t* name);

    /// Has the service manager start the service, with the text that GetStartArgs() gives.
    /// @return true: it is being started; false: it runs already, is not installed or cannot be started
    static bool Start();

    /// Has the service stop, and waits for it: as long as it says that it is stopping, without an end. It is asked once
    /// a second, so that stopping takes a second at least. A service that had stopped before is a success.
    /// @return true: it has stopped; false: it runs on, or is not installed
    static bool Stop();

    /// Sets how the service is started.
    /// @param mode  START_AUTO; any other value counts as START_MANUAL
    /// @return true: set; false: it is not installed or cannot be changed
    static bool SetStartMode(START_MODE mode);

    /// How the service is started. The query has room only for the fixed record. An installed service also has texts,
    /// so the query normally fails and the result is START_MANUAL.
    /// @return START_AUTO: the system reported it; START_MANUAL: it did not
    static START_MODE GetStartMode();

    /// Sets whether what the operations did and what failed is shown in a message box, each message in one. The
    /// operation waits until the user has closed it.
    /// @param enable  true: it is; false, as at the start: it is not
    void EnableErrorReports(bool enable);

protected:
    /// The service's work, on the service's thread; returning from it ends that thread. SERVICE_STOPPED is the last
    /// thing to report: from then on Run() may return and the object may go.
    virtual void OnServiceRun() = 0;

    /// Makes OnServiceRun() return; on the thread of Run().
    virtual void OnServiceStop() = 0;

    /// What Start() hands to the service.
    /// @return an array of one text, which stays the object's; null, or without a text: Start() fails
    virtual const wchar_t** GetStartArgs() = 0;

    /// Tells the service manager about the service. While it is about to start it accepts no requests, else the one to
    /// stop. A failure goes to the event log.
    /// @param state     SERVICE_RUNNING, SERVICE_STOPPED or another of the system's states
    /// @param exitCode  a Win32 error, 0 for none
    /// @param waitHint  milliseconds until the next report, for a state that is about to change; else 0
    /// @return true: told; false: the service manager refused
    static bool ReportStatus(unsigned long state, unsigned long exitCode, unsigned long waitHint);

    /// Writes an error into the event log, under the service's name, with two texts: "NAME error." and the given one.
    /// @param text       what to write
    /// @param withError  true: the first text also says what the thread's last Win32 error is
    static void AddToMessageLog(const wchar_t* text, bool withError);

private:
    static void WINAPI ServiceMain(unsigned long argumentCount, wchar_t** arguments);
    static void WINAPI ServiceCtrl(unsigned long control);
    static bool OpenHandles();
    static const wchar_t* OpenMissingHandles();
    static void CloseHandles();
    static bool ProgramCommand(wchar_t* command, unsigned long size);
    static wchar_t* GetLastErrorText(wchar_t* buffer, unsigned long size);
    static void ReportError(const wchar_t* format);
    static void ReportError(const wchar_t* format, const wchar_t* text);
    static void ReportError(const wchar_t* format, const wchar_t* text, const wchar_t* text2);
    static void ReportFailure(const wchar_t* format, unsigned long error);

    static CMutex mHandleMutex;
    static SERVICE_STATUS mStatus;
    static bool mSingleInstance;
    static CNtService* mpThis;
    static SERVICE_STATUS_HANDLE mStatusHandle;
    static const wchar_t* mpServiceName;
    static const wchar_t* mpDisplayName;
    static const wchar_t* mpDeps;
    static const wchar_t* mpExePath;
    static const wchar_t* mpArgs;
    static bool mReportErrors;
    static SC_HANDLE mhSCManager;
    static SC_HANDLE mhService;
    static unsigned int mHandleCount;
};
