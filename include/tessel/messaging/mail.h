#pragma once

#include <tessel/messaging/mailbox.h>

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <utility>

/// A received message, whose block is released at the end of the scope.
///
/// A notification is a window message, which any program can post with any number, and the block lies in memory that
/// every program can write to. So the number is checked, and sender, message word and length are read once. The data
/// stay in the block: copy them before you check them.
/// @code
/// case MAILBOX_NOTIFICATION: {
///     const CMail mail(mailbox, ownId, wParam, lParam);
///     ORDER order; // a record of the program
///     if (mail && mail.MsgId() == MSG_ORDER && mail.Read(order)) CarryOut(order);
///     break;
/// }
/// @endcode
/// The mailbox must outlive the object. Do not wait while a block is held: senders may wait for just this one.
/// Threads: an object is used by one thread at a time.
class CMail {
public:
    /// Fetches the message of a notification. The object is empty if the notification is forged, or if the message has
    /// been removed from the pool meanwhile.
    /// @param mailbox  the mailbox that receives
    /// @param ownId    its id
    /// @param wParam   wParam of MAILBOX_NOTIFICATION
    /// @param lParam   lParam of MAILBOX_NOTIFICATION
    CMail(CMailBox& mailbox, ORCAOBJID ownId, WPARAM wParam, LPARAM lParam) : m_mailbox(&mailbox) {
        if (lParam < 1 || lParam >= LPARAM{SMALL_BLOCK_COUNT}) return;
        SBLOCK* const block = mailbox.GetMessageBlock(static_cast<unsigned int>(lParam));
        if (block == nullptr || ReadOnce(block->BlkNum) != lParam || ReadOnce(block->Receiver) != ownId) return;
        const std::uint32_t length = ReadOnce(block->Length);
        if (length < 1 || length > SMALL_BLOCK_SIZE) return;
        m_content = {block,
                     ORCAOBJID{ReadOnce(block->Sender)},
                     ReadOnce(block->MsgId),
                     {block->Data, length - 1},
                     wParam == MAILBOX_AGAIN};
    }

    /// Takes the message of another object.
    /// @param other  the object; empty afterwards
    CMail(CMail&& other) noexcept : m_mailbox(other.m_mailbox), m_content(std::exchange(other.m_content, {})) {}

    /// Releases the block that is held and takes the message of another object.
    /// @param other  the object; empty afterwards
    /// @return this object
    CMail& operator=(CMail&& other) noexcept {
        CMail taken(std::move(other));
        std::swap(m_mailbox, taken.m_mailbox);
        std::swap(m_content, taken.m_content);
        return *this;
    }

    CMail(const CMail&) = delete;
    CMail& operator=(const CMail&) = delete;

    /// Releases the block if it is held.
    ~CMail() {
        if (*this) (void)m_mailbox->ReleaseMemory(m_content.block); // reports if another has released it
    }

    /// Whether the object holds a message.
    /// @return true: it does; false: sender's id and message word are 0, and there are no data
    explicit operator bool() const { return m_content.block != nullptr; }

    /// Whose message it is.
    /// @return the sender's id
    ORCAOBJID Sender() const { return m_content.sender; }

    /// What the sender calls it.
    /// @return the message word
    unsigned long MsgId() const { return m_content.msgId; }

    /// The data in the block. Any process can change them at any time; their size stays as it is.
    /// @return the data, valid while the object holds the message
    std::span<const unsigned char> Data() const { return m_content.data; }

    /// Whether the message may have been handled before: CMailBox::TakeOver() has posted it, and a receiver that ended
    /// had fetched it.
    /// @return true: it may have been
    bool IsAgain() const { return m_content.isAgain; }

    /// Copies the data.
    /// @param buffer  receives them
    /// @param size    size of @p buffer in bytes; what does not fit is left out
    /// @return bytes copied
    unsigned long Copy(void* buffer, unsigned long size) const {
        const std::size_t copied = std::min<std::size_t>(size, Data().size());
        if (copied > 0) std::memcpy(buffer, Data().data(), copied);
        return static_cast<unsigned long>(copied);
    }

    /// Copies data that are one record.
    /// @param record  receives it; unchanged if the data have another size
    /// @return whether they have the size of the record
    template <class Record> bool Read(Record& record) const {
        static_assert(std::is_trivially_copyable_v<Record>);
        return Data().size() == sizeof record && Copy(&record, sizeof record) > 0;
    }

    /// Answers the sender in the message's own block. After success the object is empty, as the block belongs to the
    /// sender; after a failure it is released as usual, but the data may be lost.
    /// @param msgId         message word of the answer
    /// @param firstLength   bytes of the first part
    /// @param firstData     first part, which may lie in Data(); may be null when @p firstLength is 0
    /// @param secondLength  bytes of the second part
    /// @param secondData    second part, not in Data(); if null, its bytes count and their content is undefined
    /// @return as CMailBox::Reply(); ERROR_INVALID_PARAMETER (87) if the object is empty
    int Reply(unsigned long msgId, unsigned long firstLength, const unsigned char* firstData,
              unsigned long secondLength = 0, const unsigned char* secondData = nullptr) {
        const int status = m_mailbox->Reply(m_content.block, msgId, firstLength, firstData, secondLength, secondData);
        if (status == 0) (void)Keep(); // the sender has it
        return status;
    }

    /// Gives the block to the caller, who releases it later, such as with CMailBox::ReleaseMany(), or leaves it to
    /// another notification of the same message. The object is empty afterwards.
    /// @return the block; null if the object was empty
    SBLOCK* Keep() { return std::exchange(m_content, {}).block; }

    /// Releases the messages whose notifications wait in the queue of a window. Call it on the window's thread before
    /// the window is destroyed, after CMailBox::UnregisterMailbox(): their blocks would stay in use until the process
    /// ends.
    /// @param mailbox  the mailbox that receives
    /// @param ownId    its id
    /// @param window   window that receives the notifications
    static void ReleaseWaiting(CMailBox& mailbox, ORCAOBJID ownId, HWND window) {
        MSG waiting;
        while (PeekMessageW(&waiting, window, MAILBOX_NOTIFICATION, MAILBOX_NOTIFICATION, PM_REMOVE)) {
            // It is delivered last, whatever is asked for.
            if (waiting.message == WM_QUIT) return PostQuitMessage(static_cast<int>(waiting.wParam));
            const CMail released(mailbox, ownId, waiting.wParam, waiting.lParam);
        }
    }

private:
    struct Content {
        SBLOCK* block = nullptr;
        ORCAOBJID sender{};
        unsigned long msgId = 0;
        std::span<const unsigned char> data;
        bool isAgain = false;
    };

    template <class Value> static Value ReadOnce(const Value& shared) {
        return *const_cast<const volatile Value*>(&shared);
    }

    CMailBox* m_mailbox;
    Content m_content;
};
