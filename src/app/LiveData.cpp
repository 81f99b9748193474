#include "app/LiveData.h"

namespace kelvox {

LiveData::LiveData(Settings& settings, const Strings& strings, Alarms& alarms, const Clock& clock,
                   QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_settings(settings)
    , m_notification(m_clock, *this)
    , m_instruments(m_main, m_clock, settings, strings, m_compass)
    , m_gps({m_main, m_clock, settings, strings, alarms, m_notification, m_compass})
    , m_targets(m_clock)
    , m_ais({m_main, m_idle, m_clock, settings, strings, alarms, m_compass, m_targets})
    , m_simulator(m_clock)
{
    m_gps.setInstruments(&m_instruments);
    m_gps.setAIS(&m_ais);
    m_gps.setSimulator(&m_simulator);
    m_gps.addListener(m_ais);
    m_gps.addListener(*this);
    m_instruments.setChanged([this](auto) { emit instrumentsChanged(); });
    m_gps.loadSettings();
    m_instruments.loadSettings();
    m_ais.loadSettings();
    m_ais.setListHandler([this] { emit targetsChanged(); });
    connect(&m_simulatorTimer, &QTimer::timeout, this, &LiveData::readSimulator);
    connect(&m_positionTimer, &QTimer::timeout, this, [this] {
        m_gps.positionTimer();
        m_gps.waypointTimer();
    });
    connect(&m_ageTimer, &QTimer::timeout, this, [this] { m_ais.aisPositionTimer(); });
    m_positionTimer.start(std::chrono::seconds(1));
    m_ageTimer.start(AISController::timerPeriod);
}

Result<void> LiveData::simulate(const std::filesystem::path& description)
{
    if (auto read = m_simulator.fromFile(description); !read)
        return read;
    m_simulator.setRunning(true);
    m_simulatorTimer.start(std::chrono::seconds(1));
    return {};
}

void LiveData::readSimulator()
{
    // One cycle of sentences a second; the cycle ends with no lines.
    constexpr int mostLines = 64;
    for (int i = 0; i < mostLines; ++i) {
        const auto lines = m_simulator.nextLines();
        if (lines.empty())
            break;
        for (const std::string& line : lines)
            m_gps.processRawSentence(line);
    }
}

void LiveData::plotPosition(Position /*position*/)
{
    emit vesselMoved();
}

void LiveData::recordTrack(const TrackSample& sample)
{
    emit trackSample(sample);
}

void LiveData::satellitesChanged()
{
    emit satellitesReceived();
}

void LiveData::post(const std::string& /*name*/, const std::string& /*text*/)
{
}

} // namespace kelvox
