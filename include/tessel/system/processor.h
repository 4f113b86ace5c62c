#pragma once

#include <tessel/foundation/platform.h>

struct tagVARIANT; // in <oaidl.h>, which the program includes to use it
using VARIANT = tagVARIANT;

struct IWbemLocator;
struct IWbemServices;
struct IEnumWbemClassObject;
struct IWbemClassObject;

/// Reads the instances of a class of the management instrumentation, one at a time.
///
/// Connecting initialises COM on the calling thread, for many threads, and sets the security of the process. It fails
/// on a thread that has COM for itself alone, and where the security has been set and COM is still in use: then the
/// instrumentation cannot be read through this class. So while one object is alive, another comes as a copy of it only:
/// connecting again fails with RPC_E_TOO_LATE (0x80010119).
/// Copies share connection, enumerator and instance; going to another instance, each copy moves the enumerator for all.
/// A copy that is made on a thread where COM cannot be initialised has none of it.
/// Threads: the thread that made an object uses and destroys it, and copies of it that others made serve only those.
class TESSEL_API CWmiClass {
public:
    /// Connects and selects an instance. GetResult() gives the result of the step that failed, or of the last.
    /// @param ns        namespace, as "ROOT\CIMV2"
    /// @param cls       class, as "Win32_Processor"
    /// @param instance  index of the instance; 0 is the first
    CWmiClass(const wchar_t* ns, const wchar_t* cls, unsigned int instance);

    /// Shares the other object's connection and instance.
    /// @param other  object to share with
    CWmiClass(const CWmiClass& other);

    /// Gives up connection and instance, and shares the other object's.
    /// @param other  object to share with
    /// @return this object
    CWmiClass& operator=(const CWmiClass& other);

    /// Gives up connection and instance, and COM as far as the constructor initialised it.
    virtual ~CWmiClass();

    /// Selects another instance.
    /// @param index  its index; 0 is the first
    /// @return 0: selected; 0x80041002 (WBEM_E_NOT_FOUND): there are fewer, and none is selected; else the HRESULT that
    ///         failed, without a connection the one of connecting
    long GetInstance(unsigned int index);

    /// Reads a property of the instance.
    /// @param name   its name
    /// @param value  receives the value, to be cleared with VariantClear(); its former value is overwritten
    /// @return a success or failure HRESULT; without an instance that of selecting it
    long GetProperty(const wchar_t* name, VARIANT& value);

    /// Reads a number.
    /// @param name   name of the property
    /// @param value  receives its low 16 bits, 0 for one that is not set, 0xFFFF for a true; stays after a failure
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): no whole number of up to 32 bits
    long GetProperty(const wchar_t* name, unsigned short& value);

    /// Reads a number.
    /// @param name   name of the property
    /// @param value  receives it, 0 for one that is not set, 0xFFFF for a true; stays after a failure
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): no whole number of up to 32 bits
    long GetProperty(const wchar_t* name, unsigned long& value);

    /// Reads a text as 8-bit text (wcstombs).
    /// @param name    name of the property
    /// @param buffer  receives the text, terminated, empty for one that is not set; stays after a failure
    /// @param length  buffer size in bytes, including the terminator; a longer text is cut
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): no text; 0x80070057 (E_INVALIDARG):
    ///         a buffer that is null or has no room, which is reported
    long GetProperty(const wchar_t* name, char* buffer, unsigned int length);

    /// Reads a text.
    /// @param name    name of the property
    /// @param buffer  receives the text, terminated, empty for one that is not set; stays after a failure
    /// @param length  buffer size in characters, including the terminator; a longer text is cut
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): no text; 0x80070057 (E_INVALIDARG):
    ///         a buffer that is null or has no room, which is reported
    long GetProperty(const wchar_t* name, wchar_t* buffer, unsigned int length);

    /// Result of connecting and of the last GetInstance(); reading a property leaves it as it is.
    /// @return 0: an instance is selected; else the HRESULT that failed
    long GetResult() const { return m_lResult; }

private:
    friend struct CWmiClassLayout;
    void ShareWith(const CWmiClass& other);
    void Release();
    bool Succeeded(long result);
    void Locate();
    void Connect(const wchar_t* ns, const wchar_t* cls);
    bool ReadNext();

    long m_lResult;
    IWbemLocator* m_pLocator;
    IWbemServices* m_pServices;
    IEnumWbemClassObject* m_pEnum;
    IWbemClassObject* m_pInstance;
};

/// What the management instrumentation tells of a processor, as it was when the object was made.
///
/// What could not be read is 0 or empty. Reading takes some 100 ms, and COM as CWmiClass tells.
/// Copies are independent. Threads: any; one at a time changes an object.
class TESSEL_API CWin32_Processor {
public:
    /// The room that the texts have.
    enum : unsigned int {
        TEXT_LENGTH = 64,        ///< characters of a text, including the terminator
        MANUFACTURER_LENGTH = 32 ///< characters of the manufacturer, including the terminator
    };

    /// Reads what there is.
    /// @param instance  index of the processor; 0 is the first
    explicit CWin32_Processor(unsigned int instance);

    /// Copies what was read.
    /// @param other  object to copy
    CWin32_Processor(const CWin32_Processor& other) = default;

    /// Copies what was read.
    /// @param other  object to copy
    /// @return this object
    CWin32_Processor& operator=(const CWin32_Processor& other) = default;

    virtual ~CWin32_Processor() = default;

    long Result;                               ///< 0: the processor was found; else the HRESULT that failed
    unsigned long CurrentClockSpeed;           ///< MHz
    unsigned long MaxClockSpeed;               ///< MHz
    wchar_t Caption[TEXT_LENGTH];              ///< family, model and stepping
    wchar_t Manufacturer[MANUFACTURER_LENGTH]; ///< maker, as the processor gives it
    wchar_t Description[TEXT_LENGTH];          ///< family, model and stepping
    wchar_t Name[TEXT_LENGTH];                 ///< name that it is sold by
};

/// Speed and texts of the machine's first processor.
///
/// The registered speed comes from the registry, all else from the management instrumentation, which every operation
/// asks anew: some 100 ms each time, and COM as CWmiClass tells.
/// Copies are independent. Threads: not synchronised; only one thread at a time may use an object.
class TESSEL_API CProcessor {
public:
    /// Starts with speeds of 0.
    CProcessor();

    /// Copies the speeds.
    /// @param other  object to copy
    CProcessor(const CProcessor& other) = default;

    /// Copies the speeds.
    /// @param other  object to copy
    /// @return this object
    CProcessor& operator=(const CProcessor& other) = default;

    virtual ~CProcessor() = default;

    /// The speed that the system measured at its start.
    /// @return MHz; when it cannot be read, what the last call gave, or 0
    unsigned long GetRegisteredCPUInMHz();

    /// The speed now.
    /// @return MHz; when it cannot be read, what the last call gave, or 0
    unsigned int GetCurrentCPUInMHz();

    /// The highest speed that is known: the maximum, when it exceeds the current speed, else the larger of current and
    /// registered speed. It takes twice the time of the others.
    /// @return MHz; 0: nothing could be read
    unsigned int GetMaxCPUInMHz();

    /// Family, model and stepping.
    /// @param buffer  receives the text, terminated; stays when it cannot be read. Null does nothing
    /// @param length  buffer size in characters, including the terminator; a longer text is cut
    void GetCaption(wchar_t* buffer, unsigned int length);

    /// Family, model and stepping.
    /// @param buffer  receives the text, terminated; stays when it cannot be read. Null does nothing
    /// @param length  buffer size in characters, including the terminator; a longer text is cut
    void GetDescription(wchar_t* buffer, unsigned int length);

    /// The maker, as the processor gives it.
    /// @param buffer  receives the text, terminated; stays when it cannot be read. Null does nothing
    /// @param length  buffer size in characters, including the terminator; a longer text is cut
    void GetManufacturer(wchar_t* buffer, unsigned int length);

    /// The name that the processor is sold by.
    /// @param buffer  receives the text, terminated; stays when it cannot be read. Null does nothing
    /// @param length  buffer size in characters, including the terminator; a longer text is cut
    void GetName(wchar_t* buffer, unsigned int length);

private:
    friend struct CProcessorLayout;

    unsigned long m_ulRegistered;
    unsigned long m_ulCurrent;
    unsigned long m_ulMaximum;
};
