#include "Manager.h"
#include "TestImage.h"

#include <algorithm>
#include <array>

namespace {

constexpr unsigned int kTickMs = 10;
constexpr int kLinesPerTick = 4;

/// The receivers of the lines: one saves them, one shows them.
constexpr std::array kReceivers = {kArchiveId, kWorkstationId};

/// The manager in place of a scanner: it sends test images, line by line at a steady rate.
class Acquisition : public Manager {
public:
    Acquisition() : Manager(kAcquisitionId, kTickMs) {}

private:
    void OnOrder(const CMail& mail) override {
        std::uint32_t images = 0;
        if (mail.MsgId() == WORK_START && mail.Read(images)) {
            m_imagesLeft = images == 0 ? UINT32_MAX : images;
        } else if (mail.MsgId() == WORK_STOP) {
            m_imagesLeft = std::min(m_imagesLeft, 1U);
        }
    }

    void Work() override {
        for (int i = 0; i < kLinesPerTick && m_imagesLeft > 0 && SendLine(); ++i) Advance();
    }

    /// Sends the line to the receivers that have not got it yet.
    /// @return false: there was no room for it; it is to be sent again
    bool SendLine() {
        if (m_receiver == 0) MakeLine(m_head.image, m_head.line, m_pixels);
        for (; m_receiver < kReceivers.size(); ++m_receiver) {
            if (Send(kReceivers[m_receiver], WORK_LINE, BytesOf(m_head), m_pixels) != STATUS_OK) return false;
            ++m_status.sent;
        }
        m_receiver = 0;
        return true;
    }

    void Advance() {
        if (++m_head.line < kImageHeight) return;
        m_head.line = 0;
        ++m_head.image;
        if (m_imagesLeft != UINT32_MAX) --m_imagesLeft;
    }

    std::uint32_t m_imagesLeft = 0;
    LineHead m_head{1, 0};
    std::size_t m_receiver = 0;
    std::array<std::uint8_t, kImageWidth> m_pixels{};
};

} // namespace

/// Runs until the workstation ends it.
extern "C" __declspec(dllexport) void ManagerMain(HINSTANCE /*module*/) {
    Acquisition().Run();
}
