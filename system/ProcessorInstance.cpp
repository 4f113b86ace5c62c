#include <tessel/system/processor.h>

#include <cstddef>

struct CWin32_ProcessorLayout {
    static constexpr std::size_t kStart = sizeof(void*);
    static_assert(offsetof(CWin32_Processor, Result) == kStart);
    static_assert(offsetof(CWin32_Processor, CurrentClockSpeed) == kStart + 4);
    static_assert(offsetof(CWin32_Processor, MaxClockSpeed) == kStart + 8);
    static_assert(offsetof(CWin32_Processor, Caption) == kStart + 12);
    static_assert(offsetof(CWin32_Processor, Manufacturer) == kStart + 140);
    static_assert(offsetof(CWin32_Processor, Description) == kStart + 204);
    static_assert(offsetof(CWin32_Processor, Name) == kStart + 332);
};

CWin32_Processor::CWin32_Processor(unsigned int instance)
    : Result(0), CurrentClockSpeed(0), MaxClockSpeed(0), Caption{}, Manufacturer{}, Description{}, Name{} {
    CWmiClass reader(L"ROOT\\CIMV2", L"Win32_Processor", instance);
    Result = reader.GetResult();
    // What cannot be read stays 0 or empty.
    (void)reader.GetProperty(L"CurrentClockSpeed", CurrentClockSpeed);
    (void)reader.GetProperty(L"MaxClockSpeed", MaxClockSpeed);
    (void)reader.GetProperty(L"Manufacturer", Manufacturer, MANUFACTURER_LENGTH);
    (void)reader.GetProperty(L"Name", Name, TEXT_LENGTH);
    (void)reader.GetProperty(L"Description", Description, TEXT_LENGTH);
    (void)reader.GetProperty(L"Caption", Caption, TEXT_LENGTH);
}
