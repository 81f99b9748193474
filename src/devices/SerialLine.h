#pragma once

#include "base/Clock.h"
#include "base/Result.h"
#include "connections/Serial.h"
#include "connections/WakeUp.h"
#include "devices/DeviceLine.h"

#include <memory>
#include <stop_token>

namespace kelvox {

/// A receiver on a serial port. Waits are in steps of half a second and end at once when a stop is
/// asked for; only that one wait, so that the receiver can still be told and heard afterwards.
class SerialLine final : public DeviceLine {
public:
    SerialLine(Serial&& port, const Clock& clock, std::stop_token stop);
    /// On a port that another one has opened and keeps.
    SerialLine(Serial& port, const Clock& clock, std::stop_token stop);
    [[nodiscard]] static Result<std::unique_ptr<SerialLine>>
    open(const std::string& port, const std::string& rate, Serial::FlowControl flow,
         const Clock& clock, std::stop_token stop);

    [[nodiscard]] bool write(std::string_view bytes) override;
    [[nodiscard]] ReadStatus read(std::string& bytes, double seconds) override;
    void flush() override { m_port.flushPort(); }

private:
    struct Ring {
        WakeUp& wakeUp;
        void operator()() const { wakeUp.ring(); }
    };
    Serial m_own;
    Serial& m_port;
    const Clock& m_clock;
    WakeUp m_wakeUp;
    std::stop_token m_stop;
    std::stop_callback<Ring> m_onStop;
};

} // namespace kelvox
