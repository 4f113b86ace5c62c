#include <system/RegistryKey.h>
#include <tessel/foundation/strings.h>
#include <tessel/system/processor.h>

#include <algorithm>
#include <cstddef>

namespace {

template <std::size_t size> void Fetch(wchar_t (CWin32_Processor::*text)[size], wchar_t* buffer, unsigned int length) {
    if (buffer == nullptr) return;
    const CWin32_Processor processor(0);
    if (processor.Result == 0) (void)CopyString(buffer, processor.*text, length); // may be truncated
}

} // namespace

CProcessor::CProcessor() : m_ulRegistered(0), m_ulCurrent(0), m_ulMaximum(0) {}

unsigned long CProcessor::GetRegisteredCPUInMHz() {
    CReg registry;
    const tessel::RegistryKey key(registry, HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0",
                                  true);
    if (key.Get() == nullptr) return m_ulRegistered;
    unsigned long speed = 0;
    if (registry.ReadKey(key.Get(), L"~Mhz", 0, nullptr) == 0 && registry.GetData(speed) == 0) m_ulRegistered = speed;
    return m_ulRegistered;
}

unsigned int CProcessor::GetCurrentCPUInMHz() {
    const CWin32_Processor processor(0);
    if (processor.Result == 0) m_ulCurrent = processor.CurrentClockSpeed;
    return m_ulCurrent;
}

// ODD-204: a maximum above the current speed is returned even if the registered speed is above both.
unsigned int CProcessor::GetMaxCPUInMHz() {
    m_ulRegistered = GetRegisteredCPUInMHz();
    m_ulCurrent = GetCurrentCPUInMHz();
    const CWin32_Processor processor(0);
    if (processor.Result == 0) m_ulMaximum = processor.MaxClockSpeed;
    return m_ulMaximum > m_ulCurrent ? m_ulMaximum : std::max(m_ulCurrent, m_ulRegistered);
}

void CProcessor::GetCaption(wchar_t* buffer, unsigned int length) {
    Fetch(&CWin32_Processor::Caption, buffer, length);
}

void CProcessor::GetDescription(wchar_t* buffer, unsigned int length) {
    Fetch(&CWin32_Processor::Description, buffer, length);
}

void CProcessor::GetManufacturer(wchar_t* buffer, unsigned int length) {
    Fetch(&CWin32_Processor::Manufacturer, buffer, length);
}

void CProcessor::GetName(wchar_t* buffer, unsigned int length) {
    Fetch(&CWin32_Processor::Name, buffer, length);
}
