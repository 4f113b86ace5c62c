#include <tessel/tessel.h>

#include <cstdio>

int main() {
    const HKEY key = CReg::OpenVardaKey(nullptr, true, L"Example");
    if (key == nullptr) {
        std::fputs("settings: the key cannot be opened: are you an administrator?\n", stderr);
        return 1;
    }
    CReg registry;
    CList<const wchar_t*> rooms;
    rooms.AddTail(L"CT 1");
    rooms.AddTail(L"MR 2");
    registry.SaveKey(key, L"Rooms", rooms);

    unsigned long bytes = 0; // requesting the length makes the buffer grow to any value
    if (registry.ReadKey(key, L"Rooms", 0, &bytes) == 0 && registry.GetData(rooms) == 0) {
        std::printf("%lu bytes:", bytes);
        for (const wchar_t* room : rooms) std::printf(" [%ls]", room);
        std::puts("");
    }
    CReg::CloseKey(key);
    const HKEY varda = CReg::OpenKey(HKEY_LOCAL_MACHINE, L"Software\\Varda", false);
    const long removed = CReg::RemoveKey(varda, L"Example");
    CReg::CloseKey(varda);
    return removed == 0 && bytes > 0 ? 0 : 1;
}
