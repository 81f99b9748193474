#include "devices/SerialLine.h"

#include <algorithm>

namespace kelvox {

SerialLine::SerialLine(Serial&& port, const Clock& clock, std::stop_token stop)
    : m_own(std::move(port))
    , m_port(m_own)
    , m_clock(clock)
    , m_stop(std::move(stop))
    , m_onStop(m_stop, Ring{m_wakeUp})
{
}

SerialLine::SerialLine(Serial& port, const Clock& clock, std::stop_token stop)
    : m_port(port)
    , m_clock(clock)
    , m_stop(std::move(stop))
    , m_onStop(m_stop, Ring{m_wakeUp})
{
}

Result<std::unique_ptr<SerialLine>> SerialLine::open(const std::string& port,
                                                     const std::string& rate,
                                                     Serial::FlowControl flow, const Clock& clock,
                                                     std::stop_token stop)
{
    Serial serial;
    if (auto opened = serial.open(port, rate, flow); !opened)
        return tl::unexpected(std::move(opened.error()));
    return std::make_unique<SerialLine>(std::move(serial), clock, std::move(stop));
}

bool SerialLine::write(std::string_view bytes)
{
    // Serial gives up where it takes half a second: so few bytes also a slow line takes in time.
    constexpr std::size_t portion = 32;
    while (!bytes.empty()) {
        if (!m_port.writePort(bytes.substr(0, portion)))
            return false;
        bytes.remove_prefix(std::min(portion, bytes.size()));
    }
    return true;
}

DeviceLine::ReadStatus SerialLine::read(std::string& bytes, double seconds)
{
    const double deadline = m_clock.monotonicSeconds() + seconds;
    do {
        const bool stopped = m_stop.stop_requested();
        switch (m_port.read(bytes, m_wakeUp.descriptor())) {
        case Serial::ReadStatus::Data:
            return ReadStatus::Data;
        case Serial::ReadStatus::Closed:
            return ReadStatus::Closed;
        case Serial::ReadStatus::Timeout:
            break;
        }
        m_wakeUp.clear();
        if (!stopped && m_stop.stop_requested())
            break;
    } while (m_clock.monotonicSeconds() < deadline);
    return ReadStatus::Timeout;
}

} // namespace kelvox
