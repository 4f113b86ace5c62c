#pragma once

#include <tessel/foundation/platform.h>

/// Whether an object holds a date and time.
enum DateTimeStatus : int {
    DTS_VALID = 0,   ///< a date of the Gregorian calendar and a time of day
    DTS_INVALID = 1, ///< something that is none
    DTS_NULL = 2     ///< every component is zero: no date
};

/// The layouts of texts. Layouts with "/" have the month first, those with "-" the day.
/// In the descriptions Y is the year, M the month, D the day, MMM the month's name, hh the hour of the 12-hour clock
/// and AM the meridian indicator. `MaxFormatSize()` gives the room that each takes.
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

/// A calendar date and time of day, with its texts in the layouts of FORMAT_ID and English names.
///
/// The year is 1850 to 65535; the day of the week follows from the date. What is stored need not be valid:
/// GetStatus() tells. CDateTime is the same with names in the user's language; a program's own names come from
/// overriding the three text operations.
/// Copies take the time and the status, never the text that Format() gave: it stays the object's own.
/// Threads: not synchronised, and Format() writes into the object although it is const; one thread at a time uses an
/// object. An object that nobody changes may serve several threads through GetFormattedString(). The static operations
/// may be called by any.
class TESSEL_API CDateTimeEnglish {
public:
    /// Takes the current local time.
    CDateTimeEnglish();

    /// Takes a time; its day of the week is computed anew.
    /// @param time  date and time of day; GetStatus() tells whether they are valid
    CDateTimeEnglish(const SYSTEMTIME& time);

    /// Takes components; GetStatus() tells whether they are valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    CDateTimeEnglish(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text as SetDateTime() does, with "AM" and "PM"; GetStatus() tells whether it was one. A layout without a
    /// date gives a time of today; a date that cannot be read leaves none. A class of its own indicators calls
    /// SetDateTime() in its constructor.
    /// @param id    layout of the text
    /// @param text  text to read
    CDateTimeEnglish(FORMAT_ID id, const wchar_t* text);

    /// Copies time and status.
    /// @param other  object to copy
    CDateTimeEnglish(const CDateTimeEnglish& other);

    /// Copies time and status; a text that Format() gave stays.
    /// @param other  object to copy
    /// @return this object
    CDateTimeEnglish& operator=(const CDateTimeEnglish& other);

    /// Takes a time; its day of the week is computed anew, and GetStatus() tells whether it is valid.
    /// @param time  date and time of day
    /// @return this object
    CDateTimeEnglish& operator=(const SYSTEMTIME& time);

    /// The month's name, abbreviated to three characters, as the layouts hold it.
    /// @param month   1 to 12; any other gives an empty text
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetMonthText(int month, wchar_t* buffer, unsigned int size) const;

    /// The name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @param buffer     receives the text, terminated and truncated to fit; null writes nothing
    /// @param size       buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const;

    /// What the 12-hour clock calls the half of the day: "AM" before noon, else "PM". Layouts have room for two
    /// characters.
    /// @param hour    of the 24-hour clock
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    virtual void GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const;

    /// Has nothing to free.
    virtual ~CDateTimeEnglish() = default;

    /// The clock's date and time.
    /// @return object with the current local time
    static CDateTimeEnglish GetLocalTime();

    /// The clock's date and time.
    /// @param time  receives the current local time
    static void GetDateTime(SYSTEMTIME& time);

    /// Sets the machine's clock to this local time, which takes the right to do so (SE_SYSTEMTIME_NAME).
    /// @return 0; -1: the status is not DTS_VALID, or the system refused, for which GetLastError() has the reason
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
    /// @return date and time as they are stored
    SYSTEMTIME GetSystemTime() const { return m_SystemTime; }

    /// Whether the object holds a date and time.
    /// @return what the last check found, or SetStatus() set
    DateTimeStatus GetStatus() const { return m_Status; }

    /// Sets the status without a check.
    /// @param status  new status
    void SetStatus(DateTimeStatus status) { m_Status = status; }

    /// Stores components, valid or not, and computes the day of the week. One that its 16 bits cannot hold is stored as
    /// 0 in a date and 65535 in a time, so that it never becomes valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    /// @return the new status; DTS_NULL when all seven are 0
    DateTimeStatus SetDateTime(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text whose fields stand at the layout's positions. Separators are not looked at, and of a field the
    /// digits in front count (_wtoi). Layouts with a meridian indicator are read too, with the hour 1 to 12 and the
    /// object's own indicators in either case. A time that the layout lacks is 0; a date that it lacks stays as it is.
    /// @param id    layout of the text
    /// @param text  text to read
    /// @return the new status. DTS_INVALID: the text is null, has another length than the layout, an hour or indicator
    ///         that the 12-hour clock does not have, or the object's two indicators are the same (in these cases the
    ///         components stay), or it stands for no date and time. DTS_NULL: every component is 0, or the layout is
    ///         not read, which sets all of them to 0
    DateTimeStatus SetDateTime(FORMAT_ID id, const wchar_t* text);

    /// Stores a date, the time of day stays.
    /// @param year   1850 to 65535
    /// @param month  1 to 12
    /// @param day    1 to the month's length
    /// @return the new status of date and time together
    DateTimeStatus SetDate(int year, int month, int day);

    /// Stores a time of day, the date stays.
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    /// @return the new status of date and time together
    DateTimeStatus SetTime(int hour, int minute, int second, int millisecond);

    /// Whether the year has a 29th of February.
    /// @return true in a leap year of the Gregorian calendar, whatever the status
    bool IsLeapYear() const { return IsLeapYear(m_SystemTime.wYear); }

    /// Writes date and time in a layout.
    /// @param id  layout; one that does not exist is reported and gives an empty text
    /// @return text in the object's own buffer, valid until its next Format() and as long as the object lives; empty
    ///         unless the status is DTS_VALID
    const wchar_t* Format(FORMAT_ID id) const;

    /// Writes date and time in a layout into the caller's buffer.
    /// @param id      layout, as for Format()
    /// @param buffer  receives the text, terminated; emptied first
    /// @param size    buffer size in characters, including the terminator
    /// @return 0: the text was copied, or there is none as the status is not DTS_VALID, or the buffer is null or has no
    ///         room, and nothing was done; 1: the text does not fit, and the buffer is empty
    unsigned long GetFormattedString(FORMAT_ID id, wchar_t* buffer, unsigned int size) const;

    /// The room that a layout takes. Years beyond 9999 take one character more.
    /// @param id  layout
    /// @return characters, including the terminator; 1 for a layout that does not exist
    static unsigned int MaxFormatSize(FORMAT_ID id);

    /// The English name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @return text of the library's, valid for ever
    static const wchar_t* GetDayOfWeekText(int dayOfWeek);

    /// Compares all components but the day of the week; the status does not count.
    /// @param other  what to compare with
    /// @return whether they are equal
    bool operator==(const CDateTimeEnglish& other) const { return Compare(other) == 0; }

    /// Compares all components but the day of the week; the status does not count.
    /// @param other  what to compare with
    /// @return whether they differ
    bool operator!=(const CDateTimeEnglish& other) const { return Compare(other) != 0; }

    /// Compares year, month, day, hour, minute, second and millisecond in this order; the status does not count.
    /// @param other  what to compare with
    /// @return whether this object is earlier
    bool operator<(const CDateTimeEnglish& other) const { return Compare(other) < 0; }

    /// Compares as `<` does.
    /// @param other  what to compare with
    /// @return whether this object is later
    bool operator>(const CDateTimeEnglish& other) const { return Compare(other) > 0; }

    /// Compares as `<` does.
    /// @param other  what to compare with
    /// @return whether this object is not later
    bool operator<=(const CDateTimeEnglish& other) const { return Compare(other) <= 0; }

    /// Compares as `<` does.
    /// @param other  what to compare with
    /// @return whether this object is not earlier
    bool operator>=(const CDateTimeEnglish& other) const { return Compare(other) >= 0; }

private:
    friend struct CDateTimeEnglishLayout;

    /// Characters of the longest text, a year of five digits and the including the terminator.
    static constexpr unsigned int TEXT_SIZE = 32;

    static bool IsLeapYear(int year);
    static DateTimeStatus CheckValidDate(int year, int month, int day, int hour, int minute, int second,
                                         int millisecond);
    static int ModifyFor12HourClock(int hour);
    int Compare(const CDateTimeEnglish& other) const;
    void Write(FORMAT_ID id, wchar_t (&text)[TEXT_SIZE]) const;
    /// The text that a letter of a layout stands for.
    void GetTextOf(wchar_t letter, wchar_t* text, unsigned int size) const;
    /// Turns an hour of the 12-hour clock into one of 24 by the indicator in a text; false: it is none.
    bool ReadHalf(const wchar_t* text, int& hour) const;

    SYSTEMTIME m_SystemTime;
    DateTimeStatus m_Status;
    mutable wchar_t m_szText[TEXT_SIZE];
};

/// A calendar date and time of day whose names of months and days and meridian indicators are in the user's language;
/// the layouts stay the same.
///
/// The language is that of the calling thread's locale (GetThreadLocale), as it is for the system's own dates: the
/// user's regional format, unless the program calls SetThreadLocale. There are German, French, Italian, Portuguese,
/// Spanish, Swedish and English; any other language has English names. The texts are in the library's string table.
/// A new thread starts with the user's language; each that writes names sets its own. A text of the 12-hour clock in
/// one language is not read in another: what is kept or sent is best written by CDateTimeEnglish. Objects are compared
/// with the operators of CDateTimeEnglish, also with objects of that class. Threads: as CDateTimeEnglish.
class TESSEL_API CDateTime : public CDateTimeEnglish {
public:
    /// Takes the current local time.
    CDateTime() = default;

    /// Takes a time; its day of the week is computed anew.
    /// @param time  date and time of day; GetStatus() tells whether they are valid
    CDateTime(const SYSTEMTIME& time);

    /// Takes components; GetStatus() tells whether they are valid.
    /// @param year         1850 to 65535
    /// @param month        1 to 12
    /// @param day          1 to the month's length
    /// @param hour         0 to 23
    /// @param minute       0 to 59
    /// @param second       0 to 59
    /// @param millisecond  0 to 999
    CDateTime(int year, int month, int day, int hour, int minute, int second, int millisecond);

    /// Reads a text as SetDateTime() does, with meridian indicators of the user's language. A layout without a date
    /// gives a time of today; a date that cannot be read leaves none.
    /// @param id    layout of the text
    /// @param text  text to read
    CDateTime(FORMAT_ID id, const wchar_t* text);

    /// Copies time and status.
    /// @param other  object to copy
    CDateTime(const CDateTimeEnglish& other);

    using CDateTimeEnglish::operator=;

    /// The month's name in the user's language, abbreviated to three characters.
    /// @param month   1 to 12; any other gives an empty text
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    void GetMonthText(int month, wchar_t* buffer, unsigned int size) const override;

    /// The name of a day of the week in the user's language: in full when there is room for it, else abbreviated to
    /// two or three characters.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @param buffer     receives the text, terminated and truncated to fit; null writes nothing
    /// @param size       buffer size in characters, including the terminator; 0 writes nothing
    void GetDayText(int dayOfWeek, wchar_t* buffer, unsigned int size) const override;

    /// What the 12-hour clock calls the half of the day in the user's language, in two characters.
    /// @param hour    of the 24-hour clock; below 12 it is before noon
    /// @param buffer  receives the text, terminated and truncated to fit; null writes nothing
    /// @param size    buffer size in characters, including the terminator; 0 writes nothing
    void GetMeridianIndicator(int hour, wchar_t* buffer, unsigned int size) const override;

    /// The clock's date and time.
    /// @return object with the current local time
    static CDateTime GetLocalTime();

    /// The name of a day of the week in the user's language, as GetDayText() gives it.
    /// @param dayOfWeek  0 (Sunday) to 6
    /// @param buffer     receives the text, terminated and truncated to fit
    /// @param size       buffer size in characters, including the terminator
    /// @return STATUS_OK; ERROR_INVALID_PARAMETER (87): there is no such day or no room, and the buffer, if any, is
    ///         empty; ERROR_INSUFFICIENT_BUFFER (122): even the abbreviated name was cut
    static unsigned long GetDayOfWeekText(int dayOfWeek, wchar_t* buffer, unsigned int size);

    /// The English name of a day of the week.
    /// @param dayOfWeek  0 (Sunday) to 6; any other gives an empty text
    /// @return text of the library's, valid for ever
    static const wchar_t* GetDayOfWeekTextEnglish(int dayOfWeek);
};
