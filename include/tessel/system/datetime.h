#pragma once

#include <tessel/foundation/platform.h>

/// Whether an object holds a date and time.
enum DateTimeStatus : int {
    DTS_VALID = 0,   ///< a date of the Gregorian calendar and a time of day
    DTS_INVALID = 1, ///< not an existing date and time
    DTS_NULL = 2     ///< no date: every component is 0
};

/// The layouts of texts. Layouts with "/" start with the month, those with "-" with the day. Y is the year, M the
/// month, D the day, MMM the name of the month, hh the hour of the 12-hour clock and AM the meridian indicator. Layouts
/// without a date keep the date of the object when they are read; layouts without a time set the time to 0.
/// MaxFormatSize() returns the buffer size that a layout needs.
enum FORMAT_ID : int {
    FID_DATE_PACKED = 0,              ///< YYYYMMDD
    FID_DATE_SLASH = 1,               ///< MM/DD/YYYY
    FID_DATE_DASH = 2,                ///< DD-MM-YYYY
    FID_DATE_NAME = 3,                ///< DD MMM YYYY; not read
    FID_DATE_NAME_TIME = 4,           ///< DD MMM YYYY HH:MM; not read
    FID_DATE_NAME_TIME12 = 5,         ///< DD MMM YYYY hh:MM AM; not read
    FID_DATE_DASH_TIME = 6,           ///< DD-MM-YYYY HH:MM
    FID_DATE_SLASH_TIME = 7,          ///< MM/DD/YYYY HH:MM
    FID_DATE_DASH_TIME12 = 8,         ///< DD-MM-YYYY hh:MM AM
    FID_DATE_SLASH_SECONDS = 9,       ///< MM/DD/YYYY HH:MM:SS
    FID_DATE_SLASH_MILLISECONDS = 10, ///< MM/DD/YYYY HH:MM:SS.mmm
    FID_DATE_DASH_SECONDS = 11,       ///< DD-MM-YYYY HH:MM:SS
    FID_DATE_TIME_PACKED = 12,        ///< YYYYMMDDHHMMSS
    FID_TIME_PACKED = 13,             ///< HHMMSS
    FID_TIME = 14,                    ///< HH:MM
    FID_TIME12 = 15,                  ///< hh:MM AM
    FID_TIME_SECONDS = 16,            ///< HH:MM:SS
    FID_TIME12_SECONDS = 17,          ///< hh:MM:SS AM
    FID_RECORD_DATE = 18,             ///< YYYYMMDD
    FID_RECORD_TIME = 19,             ///< HHMMSS
    FID_RECORD_DATE_TIME = 20,        ///< YYYYMMDDHHMMSS
    FID_RECORD_MILLISECONDS = 21,     ///< YYYYMMDDHHMMSSmmm
    FID_DAY = 22,                     ///< name of the day of the week, up to 19 characters; not read
    FID_DAY_BRIEF = 23                ///< name of the day of the week, up to 9 characters; not read
};

/// A calendar date and time of day, and its texts in the layouts of FORMAT_ID with English names.
///
/// The year is 1850 to 65535; the day of the week is computed. An object may hold an invalid time: see GetStatus().
/// CDateTime is the same with names in the user's language; to use other names, override the three text operations.
/// Copies take over time and status, but not the text that Format() returned, which belongs to its object.
/// Threads: not synchronised; only one thread at a time may use an object, as Format() writes into it although it is
/// const. Several threads may call GetFormattedString() of an object that does not change. Any thread may call the
/// static operations.
class TESSEL_API CDateTimeEnglish {
public:
    /// Sets the current local time.
    CDateTimeEnglish();

    /// Sets a time; the day of the week is computed.
    /// @param time  date and time of day; GetStatus() shows whether they are valid
    CDateTimeEnglish(const SYSTEMTIME& time);

    /// Sets the components; GetStatus() shows whether they are valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    CDateTimeEnglish(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text as SetDateTime() does, with "AM" and "PM"; GetStatus() has the result. A layout without a date
    /// gives a time of today. If a date cannot be read, there is none. Derived classes with other indicators must call
    /// SetDateTime() in their constructors.
    /// @param id    layout of the text
    /// @param text  text to read
    CDateTimeEnglish(FORMAT_ID id, const wchar_t* text);

    /// Copies time and status.
    /// @param other  object to copy
    CDateTimeEnglish(const CDateTimeEnglish& other);

    /// Copies time and status; the text that Format() returned stays.
    /// @param other  object to copy
    /// @return this object
    CDateTimeEnglish& operator=(const CDateTimeEnglish& other);

    /// Sets a time; the day of the week is computed, and GetStatus() shows whether the time is valid.
    /// @param time  date and time of day
    /// @return this object
    CDateTimeEnglish& operator=(const SYSTEMTIME& time);

    /// The name of a month, abbreviated to three characters, as the layouts use it.
    /// @param month   1 to 12; any other value gives an empty text
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetMonthText(int month, wchar_t* buffer, unsigned int size) const;

    /// The name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other value gives an empty text
    /// @param buffer     receives the text, terminated and truncated to fit; null writes nothing
    /// @param size       buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const;

    /// The meridian indicator of the 12-hour clock: "AM" before noon, else "PM". Layouts use two characters of it.
    /// @param hour    hour of the 24-hour clock
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const;

    /// Frees nothing.
    virtual ~CDateTimeEnglish() = default;

    /// Reads the clock.
    /// @return object with the current local time
    static CDateTimeEnglish GetLocalTime();

    /// Reads the clock.
    /// @param time  receives the current local time
    static void GetDateTime(SYSTEMTIME& time);

    /// Sets the machine's clock to this local time. Requires the privilege SE_SYSTEMTIME_NAME.
    /// @return 0: set; -1: the status is not DTS_VALID, or the system refused (see GetLastError())
    int SetLocalTime() const;

    /// The year.
    /// @return 1850 to 65535 in a valid object
    int GetYear() const { return m_SystemTime.wYear; }

    /// The month.
    /// @return 1 to 12 in a valid object
    int GetMonth() const { return m_SystemTime.wMonth; }

    /// The day of the month.
    /// @return 1 to 31 in a valid object
    int GetDay() const { return m_SystemTime.wDay; }

    /// The hour.
    /// @return 0 to 23 in a valid object
    int GetHour() const { return m_SystemTime.wHour; }

    /// The minute.
    /// @return 0 to 59 in a valid object
    int GetMinute() const { return m_SystemTime.wMinute; }

    /// The second.
    /// @return 0 to 59 in a valid object
    int GetSecond() const { return m_SystemTime.wSecond; }

    /// The millisecond.
    /// @return 0 to 999 in a valid object
    int GetMillisecond() const { return m_SystemTime.wMilliseconds; }

    /// The day of the week.
    /// @return 0 (Sunday) to 6
    int GetDayOfWeek() const { return m_SystemTime.wDayOfWeek; }

    /// All components.
    /// @return date and time as stored
    SYSTEMTIME GetSystemTime() const { return m_SystemTime; }

    /// Whether the object holds a date and time.
    /// @return result of the last check, or the status of SetStatus()
    DateTimeStatus GetStatus() const { return m_Status; }

    /// Sets the status without a check.
    /// @param status  new status
    void SetStatus(DateTimeStatus status) { m_Status = status; }

    /// Sets the components, valid or not, and computes the day of the week. A component that does not fit in 16 bits is
    /// stored as 0 in a date and as 65535 in a time, neither of which is valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    /// @return the new status; DTS_NULL when all seven are 0
    DateTimeStatus SetDateTime(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text with the fields at the positions of the layout. Separators are not checked, and the leading digits
    /// of a field count (_wtoi). With a meridian indicator, hours are 1 to 12 and the indicators those of this object,
    /// not case-sensitive. A layout without a time sets the time to 0; a layout without a date keeps the date.
    /// @param id    layout of the text
    /// @param text  text to read
    /// @return the new status. DTS_INVALID with the components unchanged: the text is null or has the wrong length,
    ///         hour or indicator are not those of the 12-hour clock, or both indicators of the object are the same.
    ///         DTS_INVALID: the date or time does not exist. DTS_NULL: every component is 0, or the layout has names or
    ///         does not exist, which sets all components to 0
    DateTimeStatus SetDateTime(FORMAT_ID id, const wchar_t* text);

    /// Sets the date; the time of day stays.
    /// @param year   1850 to 65535
    /// @param month  1 to 12
    /// @param day    1 to the month's length
    /// @return the new status of date and time together
    DateTimeStatus SetDate(int year, int month, int day);

    /// Sets the time of day; the date stays.
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    /// @return the new status of date and time together
    DateTimeStatus SetTime(int hour, int minute, int second, int millisecond);

    /// Whether the year has a 29th of February.
    /// @return true in a leap year of the Gregorian calendar, whatever the status
    bool IsLeapYear() const { return IsLeapYear(m_SystemTime.wYear); }

    /// Formats date and time.
    /// @param id  layout; one that does not exist is reported and gives an empty text
    /// @return text owned by the object, valid until its next Format(); empty unless the status is DTS_VALID
    const wchar_t* Format(FORMAT_ID id) const;

    /// Formats date and time into the caller's buffer.
    /// @param id      layout, as for Format()
    /// @param buffer  receives the text, terminated; emptied first
    /// @param size    buffer size in characters, including the terminator
    /// @return 0: the text was copied, is empty because the status is not DTS_VALID, or the buffer is null or has size
    ///         0; 1: the text does not fit, and the buffer is empty
    unsigned long GetFormattedString(FORMAT_ID id, wchar_t* buffer, unsigned int size) const;

    /// The buffer size that a layout needs. Years beyond 9999 need one character more.
    /// @param id  layout
    /// @return characters, including the terminator; 1 for a layout that does not exist
    static unsigned int MaxFormatSize(FORMAT_ID id);

    /// The English name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @return static string owned by the library
    static const wchar_t* GetDayOfWeekText(int dayOfWeek);

    /// Compares all components except the day of the week; the status is ignored.
    /// @param other  object to compare with
    /// @return true: they are equal
    bool operator==(const CDateTimeEnglish& other) const { return Compare(other) == 0; }

    /// Compares all components except the day of the week; the status is ignored.
    /// @param other  object to compare with
    /// @return true: they differ
    bool operator!=(const CDateTimeEnglish& other) const { return Compare(other) != 0; }

    /// Compares year, month, day, hour, minute, second and millisecond in this order; the status is ignored.
    /// @param other  object to compare with
    /// @return true: this object is earlier
    bool operator<(const CDateTimeEnglish& other) const { return Compare(other) < 0; }

    /// Compares as `<` does.
    /// @param other  object to compare with
    /// @return true: this object is later
    bool operator>(const CDateTimeEnglish& other) const { return Compare(other) > 0; }

    /// Compares as `<` does.
    /// @param other  object to compare with
    /// @return true: this object is not later
    bool operator<=(const CDateTimeEnglish& other) const { return Compare(other) <= 0; }

    /// Compares as `<` does.
    /// @param other  object to compare with
    /// @return true: this object is not earlier
    bool operator>=(const CDateTimeEnglish& other) const { return Compare(other) >= 0; }

private:
    friend struct CDateTimeEnglishLayout;

    /// Characters of the longest text, with a year of five digits and the terminator.
    static constexpr unsigned int TEXT_SIZE = 32;

    static bool IsLeapYear(int year);
    static DateTimeStatus CheckValidDate(int year, int month, int day, int hour, int minute, int second,
                                         int millisecond);
    static int ModifyFor12HourClock(int hour);
    int Compare(const CDateTimeEnglish& other) const;
    void Write(FORMAT_ID id, wchar_t (&text)[TEXT_SIZE]) const;
    /// Writes the text that a letter of a layout stands for.
    void GetTextOf(wchar_t letter, wchar_t* text, unsigned int size) const;
    /// Converts an hour of the 12-hour clock by the indicator in a text; false: neither of the indicators.
    bool ReadMeridian(const wchar_t* text, int& hour) const;

    SYSTEMTIME m_SystemTime;
    DateTimeStatus m_Status;
    mutable wchar_t m_szText[TEXT_SIZE];
};

/// A calendar date and time of day with the names of months and days and the meridian indicators in the user's
/// language. The layouts are the same.
///
/// The language is that of the calling thread's locale (GetThreadLocale()), as for dates of the system: the user's
/// regional format, unless the thread calls SetThreadLocale(). German, French, Italian, Portuguese, Spanish, Swedish
/// and English are available; any other language uses English names. The texts are in the library's string table. A
/// text of the 12-hour clock in one language cannot be read in another: use CDateTimeEnglish for texts that are stored
/// or sent. The operators of CDateTimeEnglish compare objects of both classes. Threads: as CDateTimeEnglish.
class TESSEL_API CDateTime : public CDateTimeEnglish {
public:
    /// Sets the current local time.
    CDateTime() = default;

    /// Sets a time; the day of the week is computed.
    /// @param time  date and time of day; GetStatus() shows whether they are valid
    CDateTime(const SYSTEMTIME& time);

    /// Sets the components; GetStatus() shows whether they are valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    CDateTime(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text as SetDateTime() does, with the meridian indicators of the user's language. A layout without a date
    /// gives a time of today. If a date cannot be read, there is none.
    /// @param id    layout of the text
    /// @param text  text to read
    CDateTime(FORMAT_ID id, const wchar_t* text);

    /// Copies time and status.
    /// @param other  object to copy
    CDateTime(const CDateTimeEnglish& other);

    using CDateTimeEnglish::operator=;

    /// The name of a month in the user's language, abbreviated to three characters.
    /// @param month   1 to 12; any other value gives an empty text
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    void GetMonthText(int month, wchar_t* buffer, unsigned int size) const override;

    /// The name of a day of the week in the user's language: in full if it fits, else abbreviated to two or three
    /// characters.
    /// @param dayOfWeek  0 (Sunday) to 6; any other value gives an empty text
    /// @param buffer     receives the text, terminated and truncated to fit; null writes nothing
    /// @param size       buffer size in characters, including the terminator; 0 writes nothing
    void GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const override;

    /// The meridian indicator of the 12-hour clock in the user's language, in two characters.
    /// @param hour    hour of the 24-hour clock; below 12 is before noon
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    void GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const override;

    /// Reads the clock.
    /// @return object with the current local time
    static CDateTime GetLocalTime();

    /// The name of a day of the week in the user's language, as GetDayText() returns it.
    /// @param dayOfWeek  0 (Sunday) to 6
    /// @param buffer     receives the text, terminated and truncated to fit
    /// @param size       buffer size in characters, including the terminator
    /// @return STATUS_OK; ERROR_INVALID_PARAMETER (87): no such day, or a null or empty buffer; the buffer, if any, is
    ///         empty; ERROR_INSUFFICIENT_BUFFER (122): even the abbreviated name was truncated
    static unsigned long GetDayOfWeekText(int dayOfWeek, wchar_t* buffer, unsigned int size);

    /// The English name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @return static string owned by the library
    static const wchar_t* GetDayOfWeekTextEnglish(int dayOfWeek);
};
