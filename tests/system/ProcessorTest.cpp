#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"

#include <gtest/gtest.h>
#include <tessel/system/processor.h>

#include <oleauto.h>
#include <wbemidl.h>

#include <cstring>

namespace {

constexpr auto kNotFound = static_cast<long>(WBEM_E_NOT_FOUND);
constexpr auto kTypeMismatch = static_cast<long>(WBEM_E_TYPE_MISMATCH);

CWmiClass Reader(const wchar_t* cls = L"Win32_Processor", unsigned int instance = 0) {
    return {L"ROOT\\CIMV2", cls, instance};
}

unsigned long Number(CWmiClass& reader, const wchar_t* name) {
    unsigned long number = 77;
    EXPECT_EQ(reader.GetProperty(name, number), 0);
    return number;
}

/// WMI that can be queried repeatedly, although a process can set COM's security only once.
struct Processor : testing::Test {
    int initialised = 0;
    ImportPatch initialise{"CoInitializeEx", &CoInitializeEx,
                           [this](auto... a) { return ++initialised, CoInitializeEx(a...); }};
    ImportPatch uninitialise{"CoUninitialize", &CoUninitialize, [this] { --initialised, CoUninitialize(); }};
    ImportPatch secure{Failing("CoInitializeSecurity", &CoInitializeSecurity, S_OK)};

    ~Processor() override { EXPECT_EQ(initialised, 0) << "COM is left as it was"; }
};

} // namespace

TEST_F(Processor, IsDescribedByTheInstrumentation) {
    const CWin32_Processor read(0);
    EXPECT_EQ(read.Result, 0);
    CWmiClass reader = Reader();
    EXPECT_EQ(read.MaxClockSpeed, Number(reader, L"MaxClockSpeed"));
    EXPECT_EQ(read.CurrentClockSpeed, Number(reader, L"CurrentClockSpeed"));
    EXPECT_GT(read.MaxClockSpeed, 0u);
    CProcessor processor;
    EXPECT_GT(processor.GetCurrentCPUInMHz(), 0u);
    for (const auto& [get, whole] :
         {std::pair(&CProcessor::GetCaption, read.Caption), std::pair(&CProcessor::GetDescription, read.Description),
          std::pair(&CProcessor::GetManufacturer, read.Manufacturer), std::pair(&CProcessor::GetName, read.Name)}) {
        wchar_t text[5] = {};
        (processor.*get)(text, 5);
        EXPECT_EQ(text, std::wstring(whole, 4));
    }
}

TEST_F(Processor, HighestSpeedIgnoresTheRegisteredOneBelowTheMaximumOdd204) {
    const OwnLocalMachine machine; // without a speed, and none is read elsewhere: the object's speeds stay
    const ImportPatch noCom(Failing("CoInitializeEx", &CoInitializeEx, RPC_E_CHANGED_MODE));
    constexpr unsigned long kRows[][4] = {// registered, current, maximum, highest
                                          {3000, 1000, 2000, 2000},
                                          {1000, 3000, 2000, 3000},
                                          {3000, 2000, 1000, 3000},
                                          {2500, 0, 0, 2500}};
    for (const auto& row : kRows) {
        CProcessor processor;
        std::memcpy(reinterpret_cast<char*>(&processor) + sizeof(void*), row, 3 * sizeof *row);
        EXPECT_EQ(processor.GetMaxCPUInMHz(), row[3]);
    }
    EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0"), 0)
        << "created";
}

TEST_F(Processor, KeepsItsSpeedsWithoutInstrumentationWhoseStepsCanFailOdd205) {
    CProcessor processor;
    const unsigned int current = processor.GetCurrentCPUInMHz();
    for (const Stub& failing : {Failing("CoInitializeEx", &CoInitializeEx, E_OUTOFMEMORY),
                                Failing("CoInitializeSecurity", &CoInitializeSecurity, E_OUTOFMEMORY),
                                Failing("CoCreateInstance", &CoCreateInstance, E_OUTOFMEMORY),
                                Failing("CoSetProxyBlanket", &CoSetProxyBlanket, E_OUTOFMEMORY),
                                Failing("SysAllocString", &SysAllocString, BSTR{})}) {
        const ImportPatch step(failing);
        CWmiClass reader = Reader();
        unsigned long number = 77;
        EXPECT_EQ(reader.GetResult(), E_OUTOFMEMORY) << failing.name;
        EXPECT_EQ(reader.GetInstance(0), E_OUTOFMEMORY);
        EXPECT_EQ(reader.GetProperty(L"MaxClockSpeed", number), E_OUTOFMEMORY);
        EXPECT_EQ(number, 77u);
        EXPECT_EQ(CWmiClass(reader).GetResult(), E_OUTOFMEMORY);
        EXPECT_EQ(CWin32_Processor(0).Result, E_OUTOFMEMORY);
        EXPECT_EQ(processor.GetCurrentCPUInMHz(), current);
        EXPECT_EQ(CProcessor().GetMaxCPUInMHz(), processor.GetRegisteredCPUInMHz());
        wchar_t text[] = L"text";
        processor.GetName(text, 5);
        EXPECT_STREQ(text, L"text");
    }
    EXPECT_EQ(CWmiClass(nullptr, L"Win32_Processor", 0).GetResult(), E_INVALIDARG);
    EXPECT_EQ(CWmiClass(L"ROOT\\CIMV2", nullptr, 0).GetResult(), E_INVALIDARG);
}

TEST_F(Processor, IsOneOfTheInstancesThatAReaderAndItsCopiesSelect) {
    CWmiClass processes = Reader(L"Win32_Process", 1);
    const unsigned long second = Number(processes, L"ProcessId");
    EXPECT_EQ(processes.GetInstance(0), 0);
    const unsigned long first = Number(processes, L"ProcessId");
    EXPECT_NE(first, second);
    CWmiClass copy(Reader());
    copy = processes;
    EXPECT_EQ(processes.GetInstance(99999), kNotFound);
    EXPECT_EQ(Number(copy, L"ProcessId"), first);
    EXPECT_EQ(copy.GetInstance(1), 0);
    EXPECT_EQ(Number(copy, L"ProcessId"), second);
    EXPECT_LT(Reader(L"No class").GetResult(), 0);
}

TEST_F(Processor, ReturnsPropertiesOnlyAsTheirOwnType) {
    CWmiClass reader = Reader();
    char bytes[3] = {'#', '#', '#'};
    wchar_t text[64];
    unsigned short low = 0;
    unsigned long number = 0;
    ASSERT_EQ(reader.GetProperty(L"Manufacturer", text, 64), 0);
    EXPECT_EQ(reader.GetProperty(L"Manufacturer", bytes, 3), 0);
    EXPECT_EQ(std::string(bytes), std::string(text, text + 2));
    EXPECT_EQ(reader.GetProperty(L"MaxClockSpeed", low), 0);
    EXPECT_EQ(low, Number(reader, L"MaxClockSpeed") & 0xFFFF);
    EXPECT_EQ(reader.GetProperty(L"Manufacturer", number), kTypeMismatch);
    EXPECT_EQ(reader.GetProperty(L"MaxClockSpeed", text, 64), kTypeMismatch);
    EXPECT_EQ(reader.GetProperty(L"No property", number), kNotFound);
    EXPECT_EQ(reader.GetResult(), 0);
}
