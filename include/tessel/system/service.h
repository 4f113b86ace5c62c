#pragma once

#include <tessel/foundation/platform.h>

#include <fenestra/mutex.h>

/// How a service is started.
enum START_MODE : int {
    START_AUTO = 0,  ///< by the service manager, with the machine
    START_MANUAL = 1 ///< on demand
};

/// Base class of a Windows service.
///
/// A process has one object: construct it at the start, then call Install(), Remove() or Run(). The service manager
/// starts the program and expects it to call Run() within seconds. Run() returns when the service has stopped.
/// Meanwhile, OnServiceRun() works on the thread of the service; OnServiceStop() is called on the thread of Run() and
/// makes OnServiceRun() return. The library reports that the service is starting or stopping; the derived class
/// reports with ReportStatus() that it runs and that it has stopped.
///
/// The state belongs to the process: copies represent the same service, and destroying any of them ends it for all.
/// The texts given to the constructor belong to the caller and must outlive the object.
/// Failures show only in the results and, after EnableErrorReports(), in message boxes. Install() and Remove() have no
/// result: call IsInstalled() afterwards. A removed service counts as installed until its process has ended and all
/// handles to it are closed.
/// Threads: any thread may call the static operations once the object is constructed. The last known status is shared
/// without a lock: do not call Stop() or Remove() in the process of the service. If a service reports its end at the
/// very moment when it is asked to stop, it may remain in the state SERVICE_STOP_PENDING.
class TESSEL_API CNtService {
public:
    /// Makes this object the service of the process. Changes nothing on the machine.
    /// @param name         name of the service
    /// @param displayName  name for users
    /// @param deps         names of the services that it depends on, each terminated, then an empty one; null: none
    /// @param exePath      program to install; null: the running one
    /// @param args         arguments of the program; null: none
    CNtService(const wchar_t* name, const wchar_t* displayName, const wchar_t* deps, const wchar_t* exePath,
               const wchar_t* args);

    /// Represents the same service.
    CNtService(const CNtService&) = default;

    /// Represents the same service.
    /// @return this object
    CNtService& operator=(const CNtService&) = default;

    /// Ends the service object of the process and forgets its texts.
    virtual ~CNtService();

    /// Connects the process to the service manager and returns when the service has stopped. If the service manager did
    /// not start the process, the call writes an error to the event log and returns after some seconds.
    void Run();

    /// Registers the service with the service manager: in a separate process, started on demand, under the local
    /// system account and allowed to show windows. Requires administrator rights.
    ///
    /// The path is registered without quotation marks: put them around a path with blanks. The path of the running
    /// program may have up to 1,023 characters, a path with arguments 2,047; nothing longer is installed.
    void Install();

    /// Stops the service, as Stop() does, and unregisters it. A service that cannot be stopped stays registered.
    void Remove();

    /// Whether a service is installed and the caller may change it.
    /// @param name  name of the service; null: this one
    /// @return true: it is; false: it is not, or access is denied
    static bool IsInstalled(const wchar_t* name);

    /// Whether this service is running. A name only adds the condition that the named service is installed.
    /// @param name  service that must be installed; null: this one
    /// @return true: the named service is installed and this one is running; false: not, or it cannot be determined
    static bool IsRunning(const wchar_t* name);

    /// Starts the service with the argument that GetStartArgs() returns.
    /// @return true: it is starting; false: it is already running, not installed or cannot be started
    static bool Start();

    /// Stops the service and waits without limit while it reports that it is stopping. Polls once a second, so that the
    /// call takes at least a second. If the service was not running, the call succeeds.
    /// @return true: it has stopped; false: it still runs or is not installed
    static bool Stop();

    /// Sets how the service is started.
    /// @param mode  START_AUTO; any other value counts as START_MANUAL
    /// @return true: set; false: the service is not installed or cannot be changed
    static bool SetStartMode(START_MODE mode);

    /// How the service is started. The query has room only for the fixed record. As an installed service has texts,
    /// too, the query normally fails and the result is START_MANUAL.
    /// @return START_AUTO: the system reported it; START_MANUAL: it did not
    static START_MODE GetStartMode();

    /// Sets whether operations show their progress and failures in message boxes. An operation waits until the user
    /// closes each box.
    /// @param enable  true: show them; initially false
    void EnableErrorReports(bool enable);

protected:
    /// Does the work of the service on its thread, which ends when this returns. Report SERVICE_STOPPED last: after it,
    /// Run() may return and the object may be destroyed.
    virtual void OnServiceRun() = 0;

    /// Makes OnServiceRun() return. Called on the thread of Run().
    virtual void OnServiceStop() = 0;

    /// The argument that Start() passes to the service.
    /// @return array of one text, owned by the object; if either is null, Start() fails
    virtual const wchar_t** GetStartArgs() = 0;

    /// Reports the state to the service manager. A service that is starting accepts no requests, later only the one to
    /// stop. Failures are written to the event log.
    /// @param state     SERVICE_RUNNING, SERVICE_STOPPED or another state of the system
    /// @param exitCode  Win32 error; 0: none
    /// @param waitHint  milliseconds until the next report, for a pending state; else 0
    /// @return true: reported; false: the service manager refused
    static bool ReportStatus(unsigned long state, unsigned long exitCode, unsigned long waitHint);

    /// Writes an error to the event log under the name of the service, with two texts: "NAME error." and the given one.
    /// @param text       second text
    /// @param withError  true: the first text includes the last Win32 error of the thread
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
