#include "Station.h"

#include <common/Arguments.h>

#include <cstdio>

namespace {

constexpr char kUsage[] = "usage: console start [IMAGES] | stop | exit | run IMAGES\n"
                          "Sends an order to the workstation that runs on this machine.\n"
                          "  start [IMAGES]  acquire so many images; without a number, until stopped\n"
                          "  stop            end with the image that is being acquired\n"
                          "  exit            end the workstation\n"
                          "  run IMAGES      start, wait until the images are saved, then exit\n";

/// The process that operates the workstation from outside.
class Console : public Station {
public:
    Console() : Station(kConsoleId) {}

    /// Sends an order, retrying while there is no room.
    /// @return whether it was sent
    bool Order(WORK_MESSAGE order, std::uint32_t images = 0) {
        int status = ERROR_BUSY;
        while (status == ERROR_BUSY) status = Send(kWorkstationId, order, BytesOf(images));
        return status == STATUS_OK;
    }

    /// Requests images, waits until they are saved, then ends the workstation.
    bool RunImages(std::uint32_t images) {
        m_imagesLeft = images;
        if (!Order(WORK_START, images)) return false;
        TickEvery(500);
        Run();
        std::printf("console: heartbeats heard: %lu\n", static_cast<unsigned long>(Heartbeats()));
        return m_imagesLeft == 0 && Order(WORK_EXIT);
    }

private:
    void OnMail(const CMail& mail) override {
        if (mail.Sender() == kWorkstationId && mail.MsgId() == WORK_SAVED && --m_imagesLeft == 0) Leave();
    }

    /// Stops waiting when the workstation has ended.
    void OnTick() override {
        if (!IsThere(kWorkstationId)) Leave();
    }

    std::uint32_t m_imagesLeft = 0;
};

/// @param images  number of images in the order; 0: none given
/// @return whether the order is valid
bool IsOrder(const std::wstring& order, std::uint32_t images) {
    if (images > 0) return order == L"start" || order == L"run";
    return order == L"start" || order == L"stop" || order == L"exit";
}

/// @return whether the order was carried out
bool Obey(Console& console, const std::wstring& order, std::uint32_t images) {
    if (order == L"run") return console.RunImages(images);
    if (order == L"start") return console.Order(WORK_START, images);
    return console.Order(order == L"stop" ? WORK_STOP : WORK_EXIT);
}

} // namespace

int main() {
    const std::vector<std::wstring> arguments = Arguments();
    const std::wstring order = arguments.empty() ? L"" : arguments[0];
    const std::uint32_t images = arguments.size() == 2 && IsNumber(arguments[1]) ? Number(arguments[1]) : 0;
    if (arguments.size() > (images > 0 ? 2U : 1U) || !IsOrder(order, images)) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    CPostOffice::CreateGlobalPostOffice();
    bool done = false;
    {
        Console console;
        done = console.IsOpen() && Obey(console, order, images);
    }
    CPostOffice::DestroyGlobalPostOffice();
    if (!done) std::fputs("console: there is no workstation, or it has ended\n", stderr);
    return done ? 0 : 1;
}
