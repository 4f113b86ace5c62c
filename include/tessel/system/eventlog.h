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
/// The settings lie in the registry, and the system takes them over in its own time; to write them needs the rights of
/// an administrator. A failure is not reported.
/// Threads: only one thread at a time may use an object.
class TESSEL_API CNtEventLog {
public:
    /// What SetRetention() takes for events that are never overwritten.
    enum : unsigned long { NEVER_OVERWRITE = 0xFFFFFFFF };

    /// Chooses the log, as SetLog() does.
    /// @param type  the log; any other value is reported and leaves the object without one
    explicit CNtEventLog(EVENT_LOG_TYPE type);

    /// Copies the choice.
    CNtEventLog(const CNtEventLog&) = default;

    /// Copies the choice.
    /// @return this object
    CNtEventLog& operator=(const CNtEventLog&) = default;

    /// Does nothing.
    virtual ~CNtEventLog() = default;

    /// Chooses the log.
    /// @param type  the log; any other value is reported and changes nothing
    void SetLog(EVENT_LOG_TYPE type);

    /// Sets how old an event must be to be overwritten when the log is full.
    /// @param days  days, up to 49,710: the number of seconds has 32 bits and starts anew beyond; or NEVER_OVERWRITE
    void SetRetention(unsigned long days);

    /// Sets how large the log may become.
    /// @param bytes  bytes; the system counts in units of 64 KB
    void SetMaxSize(unsigned long bytes);

private:
    friend struct CNtEventLogLayout;

    void SetParameter(const wchar_t* value, unsigned long data);

    wchar_t m_szLog[20];
};

/// A source of events: writes them into the event log under a name, with the user who caused them.
///
/// Derive from it and give each event an operation of its own. The texts of the events lie in message files, which
/// Install() makes known to the system once; it needs the administrator rights, reporting does not.
/// Copies share the registration with the system, and the last one ends it.
/// Threads: any thread may report, also several at a time.
class TESSEL_API CNtEventLogSource {
public:
    /// What the system needs to know in order to show the events.
    struct InstallData {
        unsigned long CategoryCount;         ///< categories in the category file
        unsigned long TypesSupported;        ///< types of events: 1 error, 2 warning and 4 information, or a sum
        const wchar_t* EventMessageFile;     ///< path of the module with the texts of events; null: not written
        const wchar_t* CategoryMessageFile;  ///< path of the module with the names of categories; null: not written
        const wchar_t* ParameterMessageFile; ///< path of the module with the texts of parameters; null: not written
    };

    /// Registers the source on this machine. Without a name, or when the system refuses, every report fails.
    /// @param name      the source's name, of which the object keeps a copy
    /// @param category  category of all its events; 0: none
    CNtEventLogSource(const wchar_t* name, unsigned short category);

    /// Shares the registration. Without memory for that the copy has none.
    /// @param other  object to copy
    CNtEventLogSource(const CNtEventLogSource& other);

    /// Gives the own registration up and shares the other's. Without memory for that there is none.
    /// @param other  object to copy
    /// @return this object
    CNtEventLogSource& operator=(const CNtEventLogSource& other);

    /// Gives the registration up.
    virtual ~CNtEventLogSource();

protected:
    /// Describes the source in the registry, always as one of the "Application" log, and makes its key there; the log's
    /// own must exist. A failure is not reported.
    /// @param data  the description; read during the call only
    void Install(const InstallData& data);

    /// Writes an event.
    /// @param type         EVENTLOG_ERROR_TYPE (1), EVENTLOG_WARNING_TYPE (2), EVENTLOG_INFORMATION_TYPE (4) or another
    ///                     of the system's
    /// @param eventId      number of its text in the message file
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      the security identifier of the user, which is passed as it is, not by its address. It must
    ///                     come from malloc() of the C runtime that this library uses (msvcrt.dll), and this call frees
    ///                     it. Null: the user whom the thread works for, who is looked up for each event, which may
    ///                     ask the controller of a domain; when that fails, the event has no user
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventW(unsigned short type, unsigned long eventId, unsigned short stringCount,
                               const wchar_t** strings, unsigned long dataSize, void* data, void** userSid);

    /// Writes an error.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(), which frees it
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventError(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                   unsigned long dataSize, void* data, void** userSid);

    /// Writes a warning.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(), which frees it
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventWarning(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                     unsigned long dataSize, void* data, void** userSid);

    /// Writes an information.
    /// @param eventId      number of its text
    /// @param stringCount  texts in @p strings
    /// @param strings      texts to insert; null for none
    /// @param dataSize     bytes in @p data
    /// @param data         bytes to store with the event; null for none
    /// @param userSid      as for ReportEventW(), which frees it
    /// @return 0: written; else the Win32 error
    unsigned long ReportEventInfo(unsigned long eventId, unsigned short stringCount, const wchar_t** strings,
                                  unsigned long dataSize, void* data, void** userSid);

    /// Writes an error with one text: the system's text for an error code or, where it has none, the code in
    /// hexadecimal digits and an 8.
    /// @param eventId     number of the event's text
    /// @param systemCode  a Win32 error
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
