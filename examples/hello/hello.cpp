#include <tessel/tessel.h>

#include <cstdio>

int main() {
    CPostOffice::CreateGlobalPostOffice();
    const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    CMailBox mailbox(ORCAOBJID{1000});
    mailbox.RegisterMailbox(window);
    mailbox.Send(ORCAOBJID{1000}, 7, 6, reinterpret_cast<const unsigned char*>("hello"), 0, nullptr);
    MSG message;
    GetMessageW(&message, window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION);
    SBLOCK* const block = mailbox.GetMessageBlock(LOWORD(message.lParam));
    std::printf("message %lu: %s\n", static_cast<unsigned long>(block->MsgId), reinterpret_cast<char*>(block->Data));
    return mailbox.ReleaseMemory(block);
}
