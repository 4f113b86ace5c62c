#include <tessel/system/processor.h>

CWin32_Processor::CWin32_Processor(unsigned int instance)
    : Result(0), CurrentClockSpeed(0), MaxClockSpeed(0), Caption{}, Manufacturer{}, Description{}, Name{} {
    CWmiClass reader(L"ROOT\\CIMV2", L"Win32_Processor", instance);
    Result = reader.GetResult();
    // Unreadable properties stay 0 or empty.
    (void)reader.GetProperty(L"CurrentClockSpeed", CurrentClockSpeed);
    (void)reader.GetProperty(L"MaxClockSpeed", MaxClockSpeed);
    (void)reader.GetProperty(L"Manufacturer", Manufacturer, MANUFACTURER_LENGTH);
    (void)reader.GetProperty(L"Name", Name, TEXT_LENGTH);
    (void)reader.GetProperty(L"Description", Description, TEXT_LENGTH);
    (void)reader.GetProperty(L"Caption", Caption, TEXT_LENGTH);
}
