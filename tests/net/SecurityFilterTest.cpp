#include <gtest/gtest.h>
#include <tessel/registry.h>
#include <tessel/securityfilter.h>

#include <string>
#include <vector>

namespace {

using WideTexts = std::vector<std::wstring>;
constexpr PROTOCOL kBoth = PROTOCOL_TCP | PROTOCOL_UDP;

/// A key of the system's services, which goes again if it was not there before.
class ServiceKey {
public:
    explicit ServiceKey(const std::wstring& name) : m_path(L"SYSTEM\\CurrentControlSet\\Services\\" + name) {
        DWORD disposition = 0;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, m_path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, &disposition);
        m_created = disposition == REG_CREATED_NEW_KEY;
    }
    ~ServiceKey() {
        CReg::CloseKey(key);
        if (m_created) RegDeleteTreeW(HKEY_LOCAL_MACHINE, m_path.c_str());
    }
    ServiceKey(const ServiceKey&) = delete;
    ServiceKey& operator=(const ServiceKey&) = delete;

    void Set(const wchar_t* name, const WideTexts& texts) const {
        CList<const wchar_t*> list;
        for (const std::wstring& text : texts) list.AddTail(text.c_str());
        EXPECT_EQ(CReg().SaveKey(key, name, list), 0UL);
    }

    WideTexts Get(const wchar_t* name) const {
        CReg reg;
        CList<const wchar_t*> list;
        EXPECT_EQ(reg.ReadKey(key, name, 10000, nullptr), 0);
        EXPECT_EQ(reg.GetData(list), 0UL);
        return {list.begin(), list.end()};
    }

    HKEY key = nullptr;

private:
    std::wstring m_path;
    bool m_created = false;
};

/// Restores a value, or its absence.
class ValueKeeper {
public:
    ValueKeeper(const ServiceKey& key, const wchar_t* name) : m_key(key), m_name(name), m_data(10000) {
        auto size = static_cast<DWORD>(m_data.size());
        m_there = RegQueryValueExW(key.key, name, nullptr, &m_type, m_data.data(), &size) == 0;
        m_data.resize(size);
        RegDeleteValueW(key.key, name);
    }
    ~ValueKeeper() {
        RegDeleteValueW(m_key.key, m_name);
        if (m_there) RegSetValueExW(m_key.key, m_name, 0, m_type, m_data.data(), static_cast<DWORD>(m_data.size()));
    }
    ValueKeeper(const ValueKeeper&) = delete;
    ValueKeeper& operator=(const ValueKeeper&) = delete;

private:
    const ServiceKey& m_key;
    const wchar_t* m_name;
    std::vector<BYTE> m_data;
    DWORD m_type = REG_NONE;
    bool m_there = false;
};

// Naming a private member in an explicit instantiation is allowed; this hands it out.
auto PortIsAllowed();
template <auto member> struct HandOut {
    friend auto PortIsAllowed() { return member; }
};
template struct HandOut<&CSecurityFilterNT::IsAllowed>;

class SecurityFilter : public testing::Test {
protected:
    SecurityFilter() {
        linkage.Set(L"Bind", {L"\\Device\\TesselCard1", L"TesselCard3", L"\\Device\\TesselCard2"});
        for (const ServiceKey* adapter : adapters) {
            for (const wchar_t* list : {L"TCPAllowedPorts", L"UDPAllowedPorts", L"RawIPAllowedProtocols"}) {
                adapter->Set(list, {});
            }
        }
    }

    void Switch(unsigned long on) { EXPECT_EQ(CReg().SaveKey(parameters.key, L"EnableSecurityFilters", on), 0); }

    ServiceKey tcpip{L"Tcpip"};
    ServiceKey linkage{L"Tcpip\\Linkage"};
    ServiceKey parameters{L"Tcpip\\Parameters"};
    ServiceKey services[3]{ServiceKey(L"TesselCard1"), ServiceKey(L"TesselCard2"), ServiceKey(L"TesselCard3")};
    ServiceKey first{L"TesselCard1\\Parameters\\Tcpip"};
    ServiceKey second{L"TesselCard2\\Parameters\\Tcpip"};
    ServiceKey unbound{L"TesselCard3\\Parameters\\Tcpip"};
    const ServiceKey* adapters[3] = {&first, &second, &unbound};
    ValueKeeper bind{linkage, L"Bind"};
    ValueKeeper enabled{parameters, L"EnableSecurityFilters"};
};

TEST_F(SecurityFilter, AllowedPortComesFirstOnEveryBoundAdapter) {
    CSecurityFilterNT filter;
    first.Set(L"TCPAllowedPorts", {L"080", L"0"});
    second.Set(L"TCPAllowedPorts", {L"80"});
    EXPECT_EQ(filter.AllowPort(80, PROTOCOL_TCP), 1);
    EXPECT_EQ(filter.AllowPort(80, PROTOCOL_TCP), 0);
    EXPECT_EQ(first.Get(L"TCPAllowedPorts"), (WideTexts{L"80", L"080", L"0"}));
    EXPECT_EQ(second.Get(L"TCPAllowedPorts"), WideTexts{L"80"});
    EXPECT_EQ(first.Get(L"UDPAllowedPorts"), WideTexts{});
    EXPECT_EQ(filter.AllowPort(65535, kBoth), 1);
    EXPECT_EQ(second.Get(L"TCPAllowedPorts"), (WideTexts{L"65535", L"80"}));
    EXPECT_EQ(second.Get(L"UDPAllowedPorts"), WideTexts{L"65535"});
    EXPECT_EQ(unbound.Get(L"UDPAllowedPorts"), WideTexts{});
}

TEST_F(SecurityFilter, BlockingTakesPortsAwayAndAlwaysGives0Odd74) {
    CSecurityFilterNT filter;
    WideTexts many;
    for (int port = 1000; port < 1200; ++port) many.push_back(std::to_wstring(port)); // more than a read has room for
    first.Set(L"TCPAllowedPorts", many);
    first.Set(L"UDPAllowedPorts", {L"7", L"8", L"7"});
    EXPECT_EQ(filter.BlockPort(1000, kBoth), 0);
    many.erase(many.begin());
    EXPECT_EQ(first.Get(L"TCPAllowedPorts"), many);
    EXPECT_EQ(filter.BlockPort(7, PROTOCOL_UDP), 0);
    EXPECT_EQ(first.Get(L"UDPAllowedPorts"), WideTexts{L"8"});
    EXPECT_EQ(filter.BlockPort(CSecurityFilterNT::ALL_PORTS, kBoth), 0);
    EXPECT_EQ(first.Get(L"TCPAllowedPorts"), WideTexts{});
    EXPECT_EQ(first.Get(L"UDPAllowedPorts"), WideTexts{});
}

TEST_F(SecurityFilter, SwitchingChangesTheProtocolsOfEveryAdapter) {
    CSecurityFilterNT filter;
    EXPECT_EQ(filter.Enable(1), 0); // there is no such setting
    EXPECT_EQ(filter.IsEnabled(), 0);
    EXPECT_EQ(first.Get(L"RawIPAllowedProtocols"), WideTexts{});
    Switch(0);
    EXPECT_NE(filter.Enable(1), 0);
    EXPECT_EQ(filter.IsEnabled(), 1);
    EXPECT_EQ(first.Get(L"RawIPAllowedProtocols"), (WideTexts{L"255", L"1"}));
    EXPECT_EQ(filter.Enable(1), 0);
    second.Set(L"RawIPAllowedProtocols", {L"1"});
    EXPECT_NE(filter.Enable(1), 0);
    first.Set(L"RawIPAllowedProtocols", {L"6", L"255"});
    EXPECT_NE(filter.Enable(0), 0);
    EXPECT_EQ(filter.IsEnabled(), 0);
    EXPECT_EQ(first.Get(L"RawIPAllowedProtocols"), WideTexts{});
    EXPECT_EQ(filter.Enable(0), 0);
}

TEST_F(SecurityFilter, PortIsAllowedWhereEveryAdapterLetsItThrough) {
    CSecurityFilterNT filter;
    const auto allowed = [&](PROTOCOL protocols) { return (filter.*PortIsAllowed())(80, protocols); };
    EXPECT_EQ(allowed(kBoth), 1); // the filter is off
    Switch(1);
    EXPECT_EQ(allowed(PROTOCOL_TCP), 0);
    first.Set(L"TCPAllowedPorts", {L"80"});
    EXPECT_EQ(allowed(PROTOCOL_TCP), 0);
    second.Set(L"TCPAllowedPorts", {L"80"});
    EXPECT_EQ(allowed(PROTOCOL_TCP), 1);
    EXPECT_EQ(allowed(kBoth), 0);
    filter.AllowPort(80, PROTOCOL_UDP);
    EXPECT_EQ(allowed(kBoth), 1);
    linkage.Set(L"Bind", {});
    filter = CSecurityFilterNT();
    EXPECT_EQ((filter.*PortIsAllowed())(81, kBoth), 1);
}

TEST_F(SecurityFilter, ListsThatAreMissingOrOfAnotherTypeStayAsTheyAre) {
    CSecurityFilterNT filter;
    const CSecurityFilterNT copy(filter);
    RegDeleteValueW(first.key, L"TCPAllowedPorts");
    CReg reg;
    EXPECT_EQ(reg.SaveKey(second.key, L"TCPAllowedPorts", L"80"), 0);
    EXPECT_EQ(filter.AllowPort(81, PROTOCOL_TCP), 0);
    EXPECT_NE(reg.ReadKey(first.key, L"TCPAllowedPorts", 0, nullptr), 0);
    EXPECT_EQ(reg.SaveKey(parameters.key, L"EnableSecurityFilters", L"1"), 0);
    EXPECT_EQ(filter.Enable(0), 0);
    EXPECT_EQ(filter.IsEnabled(), 0);
    RegDeleteValueW(linkage.key, L"Bind");
    EXPECT_EQ(CSecurityFilterNT().AllowPort(80, PROTOCOL_UDP), 0);
    EXPECT_EQ(CSecurityFilterNT(copy).AllowPort(80, PROTOCOL_UDP), 1);
}

} // namespace
