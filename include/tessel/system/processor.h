#pragma once

#include <tessel/foundation/platform.h>

struct tagVARIANT; // in <oaidl.h>, which the program includes to use it
using VARIANT = tagVARIANT;

struct IWbemLocator;
struct IWbemServices;
struct IEnumWbemClassObject;
struct IWbemClassObject;

/// Reads instances of a class of the management instrumentation (WMI), one at a time.
///
/// Connecting initialises COM on the calling thread in the multithreaded model and sets COM's security for the process.
/// It fails on a thread with single-threaded COM, and if the security has been set before while COM is in use: this
/// class cannot be used then. While an object exists, further ones can only be copies of it: connecting again fails
/// with RPC_E_TOO_LATE (0x80010119).
/// Copies share connection, enumerator and instance; selecting another instance moves the enumerator of all.
/// A copy made on a thread where COM cannot be initialised has none of these.
/// Threads: only the thread that created an object may use and destroy it; copies serve other threads.
class TESSEL_API CWmiClass {
public:
    /// Connects and selects an instance. GetResult() has the result.
    /// @param ns        namespace, such as "ROOT\CIMV2"
    /// @param cls       class, such as "Win32_Processor"
    /// @param instance  index of the instance; 0 is the first
    CWmiClass(const wchar_t* ns, const wchar_t* cls, unsigned int instance);

    /// Shares the other object's connection and instance.
    /// @param other  object to share with
    CWmiClass(const CWmiClass& other);

    /// Releases connection and instance, and shares those of the other object.
    /// @param other  object to share with
    /// @return this object
    CWmiClass& operator=(const CWmiClass& other);

    /// Releases connection and instance, and uninitialises COM if the constructor initialised it.
    virtual ~CWmiClass();

    /// Selects another instance.
    /// @param index  its index; 0 is the first
    /// @return 0: selected; 0x80041002 (WBEM_E_NOT_FOUND): there is no such instance, and none is selected; else the
    ///         HRESULT of the failure, without a connection that of connecting
    long GetInstance(unsigned int index);

    /// Reads a property of the instance.
    /// @param name   name of the property
    /// @param value  receives the value, to be cleared with VariantClear(); overwritten without being cleared
    /// @return HRESULT of the operation; without an instance that of selecting it
    long GetProperty(const wchar_t* name, VARIANT& value);

    /// Reads a number.
    /// @param name   name of the property
    /// @param value  receives its low 16 bits, 0 for null, 0xFFFF for true; unchanged after a failure
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): not an integer of up to 32 bits
    long GetProperty(const wchar_t* name, unsigned short& value);

    /// Reads a number.
    /// @param name   name of the property
    /// @param value  receives the number, 0 for null, 0xFFFF for true; unchanged after a failure
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): not an integer of up to 32 bits
    long GetProperty(const wchar_t* name, unsigned long& value);

    /// Reads a text as 8-bit text (wcstombs).
    /// @param name    name of the property
    /// @param buffer  receives the text, terminated, empty for null; unchanged after a failure
    /// @param length  buffer size in bytes, including the terminator; a longer text is truncated
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): not a text; 0x80070057 (E_INVALIDARG):
    ///         null or empty buffer, which is reported
    long GetProperty(const wchar_t* name, char* buffer, unsigned int length);

    /// Reads a text.
    /// @param name    name of the property
    /// @param buffer  receives the text, terminated, empty for null; unchanged after a failure
    /// @param length  buffer size in characters, including the terminator; a longer text is truncated
    /// @return as the form with VARIANT; 0x80041005 (WBEM_E_TYPE_MISMATCH): not a text; 0x80070057 (E_INVALIDARG):
    ///         null or empty buffer, which is reported
    long GetProperty(const wchar_t* name, wchar_t* buffer, unsigned int length);

    /// Result of connecting and of the last GetInstance(), not of reading properties.
    /// @return 0: an instance is selected; else the HRESULT of the failure
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

/// Properties of a processor in the management instrumentation, read when the object is constructed.
///
/// Properties that cannot be read are 0 or empty. Reading takes some 100 ms and initialises COM, see CWmiClass.
/// Copies are independent. Threads: any thread may construct objects; they are plain data afterwards.
class TESSEL_API CWin32_Processor {
public:
    /// Sizes of the texts.
    enum : unsigned int {
        TEXT_LENGTH = 64,        ///< characters of a text, including the terminator
        MANUFACTURER_LENGTH = 32 ///< characters of the manufacturer, including the terminator
    };

    /// Reads the properties.
    /// @param instance  index of the processor; 0 is the first
    explicit CWin32_Processor(unsigned int instance);

    /// Copies the properties.
    /// @param other  object to copy
    CWin32_Processor(const CWin32_Processor& other) = default;

    /// Copies the properties.
    /// @param other  object to copy
    /// @return this object
    CWin32_Processor& operator=(const CWin32_Processor& other) = default;

    virtual ~CWin32_Processor() = default;

    long Result;                               ///< 0: the processor was found; else the HRESULT of the failure
    unsigned long CurrentClockSpeed;           ///< MHz
    unsigned long MaxClockSpeed;               ///< MHz
    wchar_t Caption[TEXT_LENGTH];              ///< family, model and stepping
    wchar_t Manufacturer[MANUFACTURER_LENGTH]; ///< manufacturer, as reported by the processor
    wchar_t Description[TEXT_LENGTH];          ///< family, model and stepping
    wchar_t Name[TEXT_LENGTH];                 ///< brand name
};

/// Speed and texts of the machine's first processor.
///
/// The registered speed is read from the registry, everything else from the management instrumentation: each operation
/// queries it anew, takes some 100 ms and initialises COM, see CWmiClass.
/// Copies are independent. Threads: not synchronised; only one thread at a time may use an object.
class TESSEL_API CProcessor {
public:
    /// Sets the speeds to 0.
    CProcessor();

    /// Copies the speeds.
    /// @param other  object to copy
    CProcessor(const CProcessor& other) = default;

    /// Copies the speeds.
    /// @param other  object to copy
    /// @return this object
    CProcessor& operator=(const CProcessor& other) = default;

    virtual ~CProcessor() = default;

    /// The speed that the system measured when it started.
    /// @return MHz; if it cannot be read, the result of the last call, or 0
    unsigned long GetRegisteredCPUInMHz();

    /// The current speed.
    /// @return MHz; if it cannot be read, the result of the last call, or 0
    unsigned int GetCurrentCPUInMHz();

    /// The highest known speed: the maximum if it exceeds the current speed, else the larger of current and registered
    /// speed. Takes twice as long as the other operations.
    /// @return MHz; 0: nothing could be read
    unsigned int GetMaxCPUInMHz();

    /// Family, model and stepping.
    /// @param buffer  receives the text, terminated; unchanged if it cannot be read. Null: no effect
    /// @param length  buffer size in characters, including the terminator; a longer text is truncated
    void GetCaption(wchar_t* buffer, unsigned int length);

    /// Family, model and stepping.
    /// @param buffer  receives the text, terminated; unchanged if it cannot be read. Null: no effect
    /// @param length  buffer size in characters, including the terminator; a longer text is truncated
    void GetDescription(wchar_t* buffer, unsigned int length);

    /// The manufacturer, as reported by the processor.
    /// @param buffer  receives the text, terminated; unchanged if it cannot be read. Null: no effect
    /// @param length  buffer size in characters, including the terminator; a longer text is truncated
    void GetManufacturer(wchar_t* buffer, unsigned int length);

    /// The brand name.
    /// @param buffer  receives the text, terminated; unchanged if it cannot be read. Null: no effect
    /// @param length  buffer size in characters, including the terminator; a longer text is truncated
    void GetName(wchar_t* buffer, unsigned int length);

private:
    friend struct CProcessorLayout;

    unsigned long m_ulRegistered;
    unsigned long m_ulCurrent;
    unsigned long m_ulMaximum;
};
