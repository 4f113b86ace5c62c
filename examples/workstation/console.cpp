#include "Station.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

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

    /// Sends an order, again if there is no room for it just now.
    /// @return whether it was sent
    bool Order(WORK_MESSAGE order, std::uint32_t images = 0) {
        int status = ERROR_BUSY;
        while (status == ERROR_BUSY) status = Send(kWorkstationId, order, BytesOf(images));
        return status == STATUS_OK;
    }

    /// Has images acquired and waits until they are saved, then ends the workstation.
    bool RunImages(std::uint32_t images) {
        m_imagesLeft = images;
        if (!Order(WORK_START, images)) return false;
        TickEvery(500);
        Run();
        std::printf("console: heartbeats heard: %lu\n", static_cast<unsigned long>(Heartbeats()));
        return m_imagesLeft == 0 && Order(WORK_EXIT);
    }

private:
    void OnMail(const Mail& mail) override {
        if (mail.id == WORK_SAVED && --m_imagesLeft == 0) Leave();
    }

    /// Waits no longer when the workstation has ended.
    void OnTick() override {
        if (!IsThere(kWorkstationId)) Leave();
    }

    std::uint32_t m_imagesLeft = 0;
};

/// @return whether the arguments are an order, and it was carried out
bool Obey(Console& console, std::string_view order, std::uint32_t images) {
    if (order == "run" && images > 0) return console.RunImages(images);
    if (order == "start") return console.Order(WORK_START, images);
    return console.Order(order == "stop" ? WORK_STOP : WORK_EXIT);
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view order = argc < 2 ? "" : argv[1];
    const auto images = static_cast<std::uint32_t>(argc < 3 ? 0 : std::strtoul(argv[2], nullptr, 10));
    const bool known = order == "start" || order == "stop" || order == "exit" || (order == "run" && images > 0);
    if (!known) {
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
