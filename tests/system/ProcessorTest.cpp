#include "support/ImportPatch.h"
#include "support/OwnLocalMachine.h"
#include "support/Reports.h"

#include <gtest/gtest.h>
#include <tessel/system/processor.h>
#include <tessel/system/registry.h>

#include <oleauto.h>
#include <wbemidl.h>

#include <cstring>
#include <string>

namespace {

constexpr auto kNotFound = static_cast<long>(WBEM_E_NOT_FOUND);
constexpr auto kTypeMismatch = static_cast<long>(WBEM_E_TYPE_MISMATCH);

/// Which step of connecting fails; the others are real.
std::string failing;
int initialised = 0;

HRESULT Unless(const char* step, HRESULT result) {
    return failing == step ? RPC_E_TOO_LATE : result;
}

HRESULT WINAPI Initialise(void* reserved, DWORD model) {
    EXPECT_EQ(model, DWORD{COINIT_MULTITHREADED});
    if (failing == "initialise") return RPC_E_CHANGED_MODE;
    ++initialised;
    return CoInitializeEx(reserved, model);
}

void WINAPI Uninitialise() {
    --initialised;
    CoUninitialize();
}

HRESULT WINAPI Secure(SECURITY_DESCRIPTOR* descriptor, LONG services, SOLE_AUTHENTICATION_SERVICE*, void*,
                      DWORD authentication, DWORD impersonation, void*, DWORD capabilities, void*) {
    EXPECT_EQ(descriptor, nullptr);
    EXPECT_EQ(services, -1);
    EXPECT_EQ(authentication, DWORD{RPC_C_AUTHN_LEVEL_CONNECT});
    EXPECT_EQ(impersonation, DWORD{RPC_C_IMP_LEVEL_IDENTIFY});
    EXPECT_EQ(capabilities, DWORD{EOAC_NONE});
    return Unless("secure", S_OK);
}

HRESULT WINAPI Create(REFCLSID cls, IUnknown* outer, DWORD context, REFIID wanted, void** object) {
    EXPECT_EQ(context, DWORD{CLSCTX_INPROC_SERVER});
    return failing == "create" ? RPC_E_TOO_LATE : CoCreateInstance(cls, outer, context, wanted, object);
}

HRESULT WINAPI Blanket(IUnknown*, DWORD authentication, DWORD authorisation, OLECHAR*, DWORD level, DWORD impersonation,
                       void*, DWORD) {
    EXPECT_EQ(authentication, DWORD{RPC_C_AUTHN_WINNT});
    EXPECT_EQ(authorisation, DWORD{RPC_C_AUTHZ_NONE});
    EXPECT_EQ(level, DWORD{RPC_C_AUTHN_LEVEL_CALL});
    EXPECT_EQ(impersonation, DWORD{RPC_C_IMP_LEVEL_IMPERSONATE});
    return Unless("blanket", S_OK);
}

BSTR WINAPI NoText(const OLECHAR*) {
    return nullptr;
}

/// Instrumentation whose steps can fail.
struct Processor : testing::Test {
    ImportPatch initialise{L"Tessel.dll", "CoInitializeEx", Initialise};
    ImportPatch uninitialise{L"Tessel.dll", "CoUninitialize", Uninitialise};
    ImportPatch secure{L"Tessel.dll", "CoInitializeSecurity", Secure};
    ImportPatch create{L"Tessel.dll", "CoCreateInstance", Create};
    ImportPatch blanket{L"Tessel.dll", "CoSetProxyBlanket", Blanket};

    ~Processor() override { EXPECT_EQ(initialised, 0) << "COM is left as it was"; }
};

CWmiClass Reader(const wchar_t* cls = L"Win32_Processor", unsigned int instance = 0) {
    return {L"ROOT\\CIMV2", cls, instance};
}

unsigned long Number(CWmiClass& reader, const wchar_t* name) {
    unsigned long number = 77;
    EXPECT_EQ(reader.GetProperty(name, number), 0);
    return number;
}

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
    const struct {
        void (CProcessor::*get)(wchar_t*, unsigned int);
        const wchar_t* text;
    } rows[] = {
        {&CProcessor::GetCaption, read.Caption},
        {&CProcessor::GetDescription, read.Description},
        {&CProcessor::GetManufacturer, read.Manufacturer},
        {&CProcessor::GetName, read.Name},
    };
    for (const auto& row : rows) {
        wchar_t text[5] = {};
        (processor.*row.get)(text, 5);
        EXPECT_FALSE(std::wstring(text).empty());
        EXPECT_EQ(text, std::wstring(row.text, 4));
        (processor.*row.get)(nullptr, 5);
    }
}

TEST_F(Processor, HasAHighestSpeedThatLeavesOutTheRegisteredOneBelowTheMaximumOdd204) {
    const OwnLocalMachine machine; // without a speed
    failing = "initialise";        // nor is one read elsewhere, so that the object's stay
    struct Speeds {
        unsigned long registered, current, maximum;
    };
    const struct {
        Speeds speeds;
        unsigned int highest;
    } rows[] = {
        {{3000, 1000, 2000}, 2000}, {{1000, 3000, 2000}, 3000}, {{3000, 2000, 1000}, 3000}, {{2500, 0, 0}, 2500}};
    for (const auto& row : rows) {
        CProcessor processor;
        std::memcpy(reinterpret_cast<char*>(&processor) + sizeof(void*), &row.speeds, sizeof row.speeds);
        EXPECT_EQ(processor.GetMaxCPUInMHz(), row.highest);
    }
    failing.clear();
    const HKEY key = CReg::OpenKey(HKEY_LOCAL_MACHINE, L"HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", false);
    ASSERT_NE(key, nullptr) << "it was made";
    CReg::CloseKey(key);
}

TEST_F(Processor, KeepsItsSpeedsWithoutInstrumentationWhoseStepsCanFailOdd205) {
    CProcessor processor;
    const unsigned int current = processor.GetCurrentCPUInMHz();
    for (const char* step : {"initialise", "secure", "create", "blanket"}) {
        failing = step;
        const long expected = failing == "initialise" ? RPC_E_CHANGED_MODE : RPC_E_TOO_LATE;
        CWmiClass reader = Reader();
        unsigned long number = 77;
        EXPECT_EQ(reader.GetResult(), expected) << step;
        EXPECT_EQ(reader.GetInstance(0), expected);
        EXPECT_EQ(reader.GetProperty(L"MaxClockSpeed", number), expected);
        EXPECT_EQ(number, 77u);
        EXPECT_EQ(CWmiClass(reader).GetResult(), expected);
        EXPECT_EQ(CWin32_Processor(0).Result, expected);
        EXPECT_EQ(processor.GetCurrentCPUInMHz(), current);
        EXPECT_EQ(CProcessor().GetMaxCPUInMHz(), processor.GetRegisteredCPUInMHz());
        wchar_t text[] = L"text";
        processor.GetName(text, 5);
        EXPECT_STREQ(text, L"text");
    }
    failing.clear();
    const ImportPatch noMemory{L"Tessel.dll", "SysAllocString", NoText};
    EXPECT_EQ(Reader().GetResult(), E_OUTOFMEMORY);
    EXPECT_EQ(CWmiClass(nullptr, L"Win32_Processor", 0).GetResult(), E_INVALIDARG);
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
    EXPECT_EQ(Reader(L"Win32_Processor", 99999).GetResult(), kNotFound);
    EXPECT_LT(Reader(L"No class").GetResult(), 0);
}

TEST_F(Processor, GivesItsPropertiesOnlyAsWhatTheyAre) {
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
    Reports reports;
    EXPECT_EQ(reader.GetProperty(L"Manufacturer", text, 0), E_INVALIDARG);
    EXPECT_EQ(reader.GetProperty(L"Manufacturer", static_cast<char*>(nullptr), 3), E_INVALIDARG);
    EXPECT_EQ(reports.Take().size(), 2u);
    EXPECT_EQ(reader.GetProperty(L"No property", number), kNotFound);
    EXPECT_EQ(reader.GetProperty(nullptr, number), E_INVALIDARG);
    EXPECT_EQ(reader.GetResult(), 0);
}
