#include "positioning/NmeaConnection.h"

#include "positioning/NMEA.h"

#include <utility>

namespace kelvox {

NmeaConnection::NmeaConnection(ConsumerRole role, LineConsumer& consumer, const Services& services,
                               ReaderThread::Pace pace)
    : m_role(role)
    , m_consumer(consumer)
    , m_settings(services.settings, role)
    , m_network(services.network)
    , m_recorder(services.clock)
    , m_reader(*this, services.main, services.clock, pace)
{
}

NmeaConnection::~NmeaConnection()
{
    m_reader.stop();
}

void NmeaConnection::applicationWillSleep()
{
    m_openBeforeSleep = m_reader.status().state != ConnectionStatus::State::Closed;
    m_reader.request(ReaderThread::Command::CloseAndReport);
}

void NmeaConnection::applicationWillWake()
{
    const bool possible = !m_settings.serialPort().empty();
    if (possible && (m_openBeforeSleep || m_settings.connectAtStartup()))
        open();
}

bool NmeaConnection::usesPort(const std::string& path) const
{
    const PortPlan plan = m_settings.portPlan();
    return (plan.hasPort && Serial::devicePath(plan.port) == path)
        || (plan.repeat == PortPlan::Repeat::OwnPort
            && Serial::devicePath(plan.repeatPort) == path);
}

void NmeaConnection::lendPort(std::function<void()> isFree)
{
    if (m_reader.status().state == ConnectionStatus::State::Closed) {
        isFree();
        return;
    }
    m_isLent = true;
    m_portIsFree = std::move(isFree);
    m_reader.request(ReaderThread::Command::Close);
}

void NmeaConnection::takePortBack()
{
    m_portIsFree = {};
    if (std::exchange(m_isLent, false))
        open();
}

void NmeaConnection::connectionClosed()
{
    changed();
    // A port that was lost meanwhile says so as well; only a closed one is not opened by itself.
    if (m_portIsFree && m_reader.status().state == ConnectionStatus::State::Closed)
        std::exchange(m_portIsFree, {})();
}

PortPlan NmeaConnection::portPlan()
{
    m_repeatToInstruments = m_settings.repeatToInstruments();
    auto plan = m_settings.portPlan();
    if (m_settings.type() == GPSSettingsController::garmin)
        plan.initialise = m_garminSetup;
    return plan;
}

void NmeaConnection::openPortFail(const std::string& /*port*/, const std::string& reason)
{
    if (m_openFailed)
        m_openFailed(reason);
    changed();
}

bool NmeaConnection::serverTransmits() const
{
    if (!m_network)
        return false;
    const auto transmit = m_network->serverTransmit();
    return m_role == ConsumerRole::GPS        ? transmit.gps
        : m_role == ConsumerRole::Instruments ? transmit.instruments
                                              : transmit.ais;
}

void NmeaConnection::takeLines(std::span<const std::string_view> lines)
{
    const bool transmits = serverTransmits();
    const bool limited = transmits && m_network->serverLimitToProcessed();
    for (const auto line : lines) {
        m_recorder.record(line);
        if (!transmits)
            continue;
        const auto command = NMEA::command(line);
        const bool processed = command && m_consumer.knowsCommand(*command);
        if ((processed || !limited) && m_consumer.shouldRepeat(line))
            m_network->writeNMEASentence(line);
    }
    m_consumer.processLines(lines);
}

void NmeaConnection::readNMEASentences(std::span<const std::string_view> lines)
{
    for (const auto line : lines) {
        m_monitor.append(line);
        m_recorder.record(NMEA::start(line));
    }
    m_consumer.processLines(lines);
}

void NmeaConnection::readNMEASentenceOverflow()
{
    m_monitor.append("#### Too much at once: the rest was dropped");
}

void NmeaConnection::writeToRepeatTarget(std::string_view line)
{
    if (m_repeatToInstruments && m_instruments && m_instruments->m_reader.writePort(line))
        return;
    m_reader.writeRepeat(line);
}

void NmeaConnection::writeToClients(std::string_view line)
{
    m_monitor.append(line);
    if (m_network)
        m_network->writeNMEASentence(line);
}

} // namespace kelvox
