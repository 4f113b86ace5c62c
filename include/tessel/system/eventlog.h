#pragma once

#include <tessel/foundation/platform.h>

/// The event logs whose settings can be changed.
enum EVENT_LOG_TYPE : int {
    APPLICATION_LOG = 0, ///< "Application"
    SECURITY_LOG = 1,    ///< "Security"
    SYSTEM_LOG = 2       ///< "System"
};

/// Size and retention of one of the machine's event logs. To write events, see CNtEventLogSource.
///
/// The settings are in the registry; the system applies them some time later. Changing them requires administrator
/// rights. Failures are not reported.
/// Threads: only one thread at a time may use an object.
class TESSEL_API CNtEventLog {
public:
    /// Argument of SetRetention() for events that are never overwritten.
    enum : unsigned long { NEVER_OVERWRITE = 0xFFFFFFFF };

    /// Chooses the log, as SetLog() does.
    /// @param type  the log; any other value is reported and leaves the object without one
    explicit CNtEventLog(EVENT_LOG_TYPE type);

    /// Copies the choice of log.
    CNtEventLog(const CNtEventLog&) = default;

    /// Copies the choice of log.
    /// @return this object
    CNtEventLog& operator=(const CNtEventLog&) = default;

    /// Does nothing.
    virtual ~CNtEventLog() = default;

    /// Chooses the log.
    /// @param type  the log; any other value is reported and changes nothing
    void SetLog(EVENT_LOG_TYPE type);

    /// Sets how old an event must be to be overwritten when the log is full.
    /// @param days  up to 49,710, as the number of seconds wraps at 32 bits; or NEVER_OVERWRITE
    void SetRetention(unsigned long days);

    /// Sets the maximum size of the log.
    /// @param bytes  bytes; the system uses units of 64 KB
    void SetMaxSize(unsigned long bytes);

private:
    friend struct CNtEventLogLayout;

    void SetParameter(const wchar_t* value, unsigned long data);

    wchar_t m_szLog[20];
};

/// A source of events: writes them to the event log under its name, with the user who caused them.
///
/// Derive from it and add an operation for each event. The texts of the events are in message files, which Install()
/// registers once; only that requires administrator rights.
/// Copies share the registration with the system; the last one ends it.
/// Threads: any number of threads may report at the same time.
class TESSEL_API CNtEventLogSource {
public:
    /// What the system needs to show the events.
    struct InstallData {
        unsigned long CategoryCount;         ///< categories in the category file
        unsigned long TypesSupported;        ///< types of events: sum of 1 (error), 2 (warning) and 4 (information)
        const wchar_t* EventMessageFile;     ///< path of the module with the texts of events; null: not written
        const wchar_t* CategoryMessageFile;  ///< path of the module with the names of categories; null: not written
        const wchar_t* ParameterMessageFile; ///< path of the module with the texts of parameters; null: not written
    };

    /// Registers the source on this machine. If the name is null or the system refuses, every report fails.
    /// @param name      name of the source; the object keeps a copy
    /// @param category  category of all its events; 0: none
    CNtEventLogSource(const wchar_t* name, unsigned short category);

    /// Shares the registration. If memory is short, the copy has none.
    /// @param other  object to copy
    CNtEventLogSource(const CNtEventLogSource& other);

    /// Releases the registration and shares that of the other object. If memory is short, there is none.
    /// @param other  object to copy
    /// @return this object
    CNtEventLogSource& operator=(const CNtEventLogSource& other);

    /// Releases the registration.
    virtual ~CNtEventLogSource();

protected:
    /// Registers the message files, always under the "Application" log, whose key must exist. Failures are not
    /// reported.
    /// @param data  the files; needed only during the call
    void Install(const InstallData& data);

    /// Writes an event.
    /// @param type         EVENTLOG_ERROR_TYPE (1), EVENTLOG_WARNING_TYPE (2), EVENTLOG_INFORMATION_TYPE (4) or another
    ///                     type of the system
    /// @param eventId      number of its text in the message file
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      security identifier of the user: the identifier itself, not the address of a pointer to it.
    ///                     It must be allocated with malloc() of the C runtime that this library uses (msvcrt.dll);
    ///                     this call frees it. Null: the user of the thread, looked up for each event, possibly at a
    ///                     domain controller; if that fails, the event has no user
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventW(unsigned short type, unsigned long eventId, unsigned short stringCount,
                               const wchar_t** strings, unsigned long dataSize, void* data, void** userSid);

    /// Writes an error.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(); freed by this call
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventError(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                   unsigned long dataSize, void* data, void** userSid);

    /// Writes a warning.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(); freed by this call
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventWarning(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                     unsigned long dataSize, void* data, void** userSid);

    /// Writes an informational event.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(); freed by this call
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventInfo(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                  unsigned long dataSize, void* data, void** userSid);

    /// Writes an error with one text: the system's text of an error code or, if there is none, the code in hexadecimal
    /// digits followed by an 8.
    /// @param eventId     number of the event's text
    /// @param systemCode  Win32 error
    /// @return 0: written; else the Win32 error of writing
    unsigned long ReportEventErrorSystemCode(unsigned long eventId, unsigned long systemCode);

private:
    friend struct CNtEventLogSourceLayout;

    static void* GetUserSid();
    static void FreeUserSid(void* sid);
    void Release();

    wchar_t* m_szName;
    HANDLE m_hSource;
    unsigned short m_usCategory;
};
