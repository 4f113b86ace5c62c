#include <tessel/tessel.h>

#include <cstdio>

int main() {
    CPostOffice::CreateGlobalPostOffice();
    const HWND window = CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    CMailBox mailbox(ORCAOBJID{1000});
    const auto* const hello = reinterpret_cast<const unsigned char*>("hello");
    if (mailbox.RegisterMailbox(window) != 0 || mailbox.Send(ORCAOBJID{1000}, 7, 6, hello, 0, nullptr) != 0) return 1;
    MSG message;
    GetMessageW(&message, window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION);
    SBLOCK* const block = mailbox.GetMessageBlock(LOWORD(message.lParam));
    if (block == nullptr || block->BlkNum != LOWORD(message.lParam)) return 1; // anyone can post a notification
    std::printf("message %lu: %.6s\n", static_cast<unsigned long>(block->MsgId), reinterpret_cast<char*>(block->Data));
    return mailbox.ReleaseMemory(block);
}
