#include "Subject.h"

#include "support/MessageWindow.h"
#include "support/OpenPostOffice.h"

#include <tessel/messaging/host.h>
#include <tessel/messaging/mailbox.h>
#include <tessel/messaging/resource.h>

namespace {

constexpr ORCAOBJID kSelf{7001};
constexpr RESOURCE_TYPE kType{9};
constexpr RESOURCE_ID kId{9};
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
                "the message arrived");
    }
    Require(mailbox.GetFreeBlockCount() == 500 && mailbox.UnregisterMailbox() == 0, "all blocks are free");
}

void ShareResources() {
    const OpenPostOffice office;
    const MessageWindow window;
    CResource resource;
    const unsigned long self = GetCurrentProcessId();
    Require(resource.AddResource(kType, kId, window.Get(), self) == 0, "an entry is free");
    Require(resource.GetResource(kType, kId, self) == window.Get(), "the entry is found");
    Require(resource.DeleteResource(kType, kId, self) == 0, "the entry is deleted");
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

const Subject messages("messages", SendMessages);
const Subject resources("shared resources", ShareResources);
const Subject host("process host", RunHost);

} // namespace
