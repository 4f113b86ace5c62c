#pragma once

#include "LineCount.h"
#include "Station.h"

/// A manager of the workstation: it reports what it has done, and ends on request.
class Manager : public Station {
public:
    /// @param id      its own
    /// @param tickMs  milliseconds between two calls of Work()
    Manager(ORCAOBJID id, unsigned int tickMs) : Station(id) { TickEvery(tickMs); }

protected:
    /// Does what is due.
    virtual void Work() {}
    /// Sends the reports that the workstation has not received yet.
    /// @return false: there was no room for all of it
    virtual bool SayRest() { return true; }
    /// An order of the workstation has arrived.
    virtual void OnOrder(const CMail& mail) = 0;
    /// A line has arrived.
    virtual void OnLine(const Line& /*line*/) {}

    ManagerStatus m_status{};

private:
    static constexpr unsigned long kStatusMs = 200;

    void OnTick() final {
        Work();
        (void)SayRest(); // again at the next tick
        if (GetTickCount() - m_reported < kStatusMs) return;
        m_reported = GetTickCount();
        Report(WORK_STATUS);
    }

    void OnMail(const CMail& mail) final {
        if (const auto line = ReadLine(mail)) return OnLine(*line);
        if (mail.Sender() != kWorkstationId) return;
        if (mail.MsgId() == WORK_EXIT) return Leave();
        OnOrder(mail);
    }

    void OnLeft() final {
        while (!SayRest() || Report(WORK_GONE) == ERROR_BUSY) Sleeper(1);
    }

    int Report(WORK_MESSAGE message) {
        m_status.heartbeats = Heartbeats();
        return Send(kWorkstationId, message, BytesOf(m_status));
    }

    unsigned long m_reported = GetTickCount() - kStatusMs;
};
