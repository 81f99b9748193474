#include "app/LiveData.h"

#include "app/Text.h"

#include <QApplication>

namespace kelvox {

namespace {
/// What must be there before the controllers read their settings.
MemorySettings defaultSettings()
{
    MemorySettings settings;
    settings.set("ais.useGPSPort", true);
    settings.set("visual", true);
    settings.set("showUnderway", true);
    settings.set("showStationary", true);
    settings.set("showVesselNames", true);
    settings.set("showAISClassB", true);
    return settings;
}
} // namespace

LiveData::LiveData(QObject* parent)
    : QObject(parent)
    , m_settings(defaultSettings())
    , m_strings(textCatalog().strings())
    , m_notification(m_clock, *this)
    , m_gps({m_main, m_clock, m_settings, m_strings, *this, m_notification, m_compass})
    , m_targets(m_clock)
    , m_ais({m_main, m_idle, m_clock, m_settings, m_strings, *this, m_compass, m_targets})
    , m_simulator(m_clock)
{
    m_gps.setAIS(&m_ais);
    m_gps.setSimulator(&m_simulator);
    m_gps.addListener(m_ais);
    m_gps.addListener(*this);
    m_gps.loadSettings();
    m_ais.loadSettings();
    m_ais.setListHandler([this] { emit targetsChanged(); });
    connect(&m_simulatorTimer, &QTimer::timeout, this, &LiveData::readSimulator);
    connect(&m_positionTimer, &QTimer::timeout, this, [this] { m_gps.positionTimer(); });
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

void LiveData::IdleExecutor::post(std::function<void()> work)
{
    QTimer::singleShot(0, QApplication::instance(), std::move(work));
}

void LiveData::beep()
{
    QApplication::beep();
}

void LiveData::playSound(const std::string& /*name*/)
{
    QApplication::beep();
}

void LiveData::speak(const std::string& text)
{
    emit alarmRaised(QString::fromStdString(text));
}

void LiveData::show(const Alert& alert)
{
    emit alarmRaised(QString::fromStdString(alert.message));
}

bool LiveData::isShown(const std::string& /*key*/) const
{
    return false;
}

void LiveData::post(const std::string& /*name*/, const std::string& /*text*/)
{
}

} // namespace kelvox
