#include "Subject.h"

#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <tessel/foundation/identifier.h>
#include <tessel/foundation/memory.h>
#include <tessel/messaging/host.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>
#include <tessel/system/file.h>

#include <cstring>

namespace {

constexpr ORCAOBJID kSelf{7001};
const unsigned char kData[1000] = "soak";

void SendMessages() {
    const OpenPostOffice office;
    const MessageWindow window;
    CMailBox mailbox(kSelf);
    Require(mailbox.RegisterMailbox(window.Get()) == 0, "a mailbox is free");
    for (int i = 0; i < 20; ++i) {
        Require(mailbox.Send(kSelf, 1, sizeof kData, kData, 0, nullptr) == 0, "a block is free");
        const LPARAM number = window.Take(MAILBOX_NOTIFICATION);
        Require(mailbox.ReleaseMemory(mailbox.GetMessageBlock(static_cast<unsigned int>(number))) == 0,
                "the message has come");
    }
    Require(mailbox.GetFreeBlockCount() == 500 && mailbox.UnregisterMailbox() == 0, "all blocks are free");
}

void ShareResources() {
    const OpenPostOffice office;
    const MessageWindow window;
    CResource resource;
    const unsigned long self = GetCurrentProcessId();
    Require(resource.AddResource(RESOURCE_TYPE{9}, RESOURCE_ID{9}, window.Get(), self) == 0, "an entry is free");
    Require(resource.GetResource(RESOURCE_TYPE{9}, RESOURCE_ID{9}, self) == window.Get(), "the entry is found");
    Require(resource.DeleteResource(RESOURCE_TYPE{9}, RESOURCE_ID{9}, self) == 0, "the entry is deleted");
}

/// Ends with the first message.
class Program : public OSClass {
public:
    Program() : OSClass(GetModuleHandleW(nullptr), L"Tessel soak host", 0, nullptr) {}
    ~Program() override { DestroyWindow(GetFrameWindow()); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

private:
    void OnStart() override { PostMessageW(GetFrameWindow(), MAILBOX_NOTIFICATION, 0, 0); }
    void OnClose() override {}
    void OnMessage(HWND, UINT message, WPARAM, LPARAM) override {
        if (message == MAILBOX_NOTIFICATION) ExitApplication(7);
    }
    void OnPumpExit(int, const wchar_t*) override {}
};

void RunHost() {
    const OpenPostOffice office;
    Require(Program().OS_Pump() == 7, "the host ends with its code");
}

void UseMemory(int kind, const wchar_t* name) {
    CMemory memory(kind, 4096, name, CMemory::OPENTYPE_CREATE_ALWAYS, 0);
    Require(memory.GetStatus() == 0 && memory.WriteMemory(kData, sizeof kData, 0) == 0, "memory is written");
    const CMemory copy(memory);
    unsigned char* read = nullptr;
    Require(memory.ReadMemory(&read, sizeof kData, 0) == 0 && std::memcmp(read, kData, sizeof kData) == 0,
            "memory is read");
}

void UseAllMemory() {
    UseMemory(CMemory::KIND_HEAP, nullptr);
    CMemMappedFile mapping(L"Tessel soak mapping", 4096, PAGE_READWRITE, 0, nullptr);
    Require(mapping.MapView(FILE_MAP_WRITE, 0, 0, 0) != nullptr, "there is a mapping");
    UseMemory(CMemory::KIND_MAPPING, L"Tessel soak mapping");
    UseMemory(CMemory::KIND_FILE, L"soak.tmp");
    CMemory::RemoveFile(L"soak.tmp");
    CMemory global(CMemory::KIND_GLOBAL, 0, nullptr, CMemory::OPENTYPE_CREATE_ALWAYS, 0);
    Require(global.GetBuffer(1000) != nullptr, "there is global memory");
}

void MakeIdentifiers() {
    COCuid made;
    Require(made.Create() == 0, "an identifier is made");
    COCuid read;
    read = made.GetString();
    Require(read == made, "its text gives the same");
}

const Subject messages("messages", SendMessages);
const Subject resources("shared resources", ShareResources);
const Subject host("process host", RunHost);
const Subject memory("memory", UseAllMemory);
const Subject identifiers("identifiers", MakeIdentifiers);

} // namespace
