#pragma once

#include "Station.h"

/// A station that is a manager of the workstation: it reports what it has done, and ends when it is told to.
class Manager : public Station {
public:
    /// @param id      its own
    /// @param tickMs  milliseconds between two calls of Work()
    Manager(ORCAOBJID id, unsigned int tickMs) : Station(id) { TickEvery(tickMs); }

protected:
    /// Does what is due.
    virtual void Work() {}
    /// An order or a line has arrived.
    virtual void OnOrder(const Mail& mail) = 0;

    ManagerStatus m_status{};

private:
    static constexpr unsigned long kStatusMs = 200;

    void OnTick() final {
        Work();
        if (GetTickCount() - m_reported < kStatusMs) return;
        m_reported = GetTickCount();
        Report(WORK_STATUS);
    }

    void OnMail(const Mail& mail) final {
        if (mail.id != WORK_EXIT) {
            OnOrder(mail);
            return;
        }
        Leave();
        while (Report(WORK_GONE) == ERROR_BUSY) Sleeper(1);
    }

    int Report(WORK_MESSAGE message) {
        m_status.heartbeats = Heartbeats();
        return Send(kWorkstationId, message, BytesOf(m_status));
    }

    unsigned long m_reported = GetTickCount() - kStatusMs;
};
