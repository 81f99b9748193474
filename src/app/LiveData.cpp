#include "app/LiveData.h"

#include "devices/ReceiverSetup.h"
#include "navigation/NavMath.h"

#include <algorithm>
#include <utility>

namespace kelvox {

namespace {
constexpr auto reopenDelay = std::chrono::milliseconds(400);
/// An autopilot hears for so long that there is nothing to steer to any more.
constexpr auto gotoAfterCancel = std::chrono::seconds(60);

std::size_t indexOf(ConsumerRole role)
{
    return static_cast<std::size_t>(role);
}
} // namespace

LiveData::LiveData(const Services& services, ReaderThread::Pace pace, QObject* parent)
    : QObject(parent)
    , m_services(services)
    , m_handOver(services.main)
    , m_notification(services.clock, services.bus)
    , m_instruments(m_handOver, services.clock, services.settings, services.strings, m_compass)
    , m_gps({m_handOver, services.clock, services.settings, services.strings, services.alarms,
             m_notification, m_compass})
    , m_targets(services.clock)
    , m_ais({m_handOver, m_idle, services.clock, services.settings, services.strings,
             services.alarms, m_compass, m_targets})
    , m_simulator(services.clock)
    , m_gpsConnection(ConsumerRole::GPS, m_gps,
                      {m_handOver, services.clock, services.settings, &m_network}, pace)
    , m_instrumentsConnection(ConsumerRole::Instruments, m_instruments,
                              {m_handOver, services.clock, services.settings, &m_network}, pace)
    , m_aisConnection(ConsumerRole::AIS, m_ais,
                      {m_handOver, services.clock, services.settings, &m_network}, pace)
    , m_repeater(services.clock, m_gpsConnection)
    , m_network(m_handOver, services.clock)
    , m_tcpip(m_network, m_gpsConnection, m_handOver, services.settings, services.strings,
              services.alarms)
{
    m_gps.setInstruments(&m_instruments);
    m_gps.setAIS(&m_ais);
    m_gps.setSimulator(&m_simulator);
    m_gps.setRepeater(&m_repeater);
    m_gps.addListener(m_ais);
    m_gps.addListener(*this);
    m_instruments.setAIS(&m_ais);
    m_instruments.setGPS(&m_gps);
    m_instruments.setRepeat(
        [this](std::string_view line) { m_instrumentsConnection.writeToRepeatTarget(line); });
    m_ais.setNotification(&m_notification);
    m_gpsConnection.setInstruments(&m_instrumentsConnection);
    m_gpsConnection.setGarminSetup(garminSetup(services.clock, [this](const std::string& ident) {
        m_gpsConnection.monitor().append("#### Receiver: " + ident);
    }));
    m_network.setObserver(&m_tcpip);

    connect(&m_vesselTimer, &QTimer::timeout, this, &LiveData::vesselChanged);
    m_vesselTimer.setSingleShot(true);
    for (QTimer* timer :
         {&m_reopenTimer, &m_instrumentsTimer, &m_targetsTimer, &m_pictureTimer, &m_gotoTimer})
        timer->setSingleShot(true);
    const auto startOnce = [](QTimer& timer) {
        if (!timer.isActive())
            timer.start(coalescing);
    };
    m_instruments.setChanged([this, startOnce](InstrumentsController::Instrument instrument) {
        if (instrument == InstrumentsController::Instrument::Depth)
            sampleDepth();
        startOnce(m_instrumentsTimer);
    });
    m_ais.setListHandler([this, startOnce] { startOnce(m_targetsTimer); });
    m_targets.setNeedsDisplayHandler(
        [this, startOnce](const AISPosition&) { startOnce(m_pictureTimer); });
    m_ais.setProximityAlarmHandler([this](bool) { emit proximityAlarmChanged(); });
    connect(&m_instrumentsTimer, &QTimer::timeout, this, &LiveData::instrumentsChanged);
    connect(&m_targetsTimer, &QTimer::timeout, this, &LiveData::targetsChanged);
    connect(&m_pictureTimer, &QTimer::timeout, this, &LiveData::targetsMoved);
    connect(&m_reopenTimer, &QTimer::timeout, this, &LiveData::reopen);
    connect(&m_gotoTimer, &QTimer::timeout, this, [this] { m_gps.setGotoActive(false); });
    connect(&m_positionTimer, &QTimer::timeout, this, [this] {
        m_gps.positionTimer();
        m_gps.waypointTimer();
        noteStaleness();
    });
    connect(&m_ageTimer, &QTimer::timeout, this, [this] { m_ais.aisPositionTimer(); });

    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS}) {
        connection(role).setChanged([this] { updateConnections(); });
        connection(role).setOpenFailed([this, role](const std::string& reason) {
            if (std::exchange(m_tellFailure[indexOf(role)], false))
                emit connectionFailed(QString::fromStdString(reason));
        });
    }
    m_tcpip.setUpdate([this] { updateConnections(); });
}

LiveData::~LiveData()
{
    // First: from here on nobody waits for the main thread, which waits for them.
    m_handOver.close();
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        connection(role).stop();
    m_network.closeClientConnection();
    m_network.closeServerConnection();
}

void LiveData::start()
{
    m_gps.loadSettings();
    m_instruments.loadSettings();
    m_ais.loadSettings();
    m_repeater.loadSettings(m_services.settings);
    m_tellFailure.fill(true);
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        connection(role).start();
    connectNetwork();
    m_positionTimer.start(std::chrono::seconds(1));
    m_ageTimer.start(AISController::timerPeriod);
}

NmeaConnection& LiveData::connection(ConsumerRole role)
{
    return role == ConsumerRole::GPS        ? m_gpsConnection
        : role == ConsumerRole::Instruments ? m_instrumentsConnection
                                            : m_aisConnection;
}

ConnectionStatus LiveData::status(ConsumerRole role)
{
    return connection(role).reader().status();
}

bool LiveData::isConnected()
{
    const Settings& settings = m_services.settings;
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        if (status(role).state != ConnectionStatus::State::Closed || isReplaying(role)
            || connection(role).connectsAtStart())
            return true;
    return settings.boolean("tcpipClientModeTCP") || settings.boolean("tcpipClientModeUDP");
}

Result<void> LiveData::simulate(const std::filesystem::path& description)
{
    if (auto read = m_simulator.fromFile(description); !read)
        return read;
    setSimulating(true);
    return {};
}

void LiveData::setSimulating(bool on)
{
    if (on == m_simulator.isRunning())
        return;
    m_simulator.setRunning(on);
    m_gpsConnection.reader().setSimulator(
        on ? std::function([this] { return m_simulator.nextLines(); }) : nullptr);
    updateConnections();
}

void LiveData::open(ConsumerRole role)
{
    setSimulating(false);
    stopReplay(role);
    m_tellFailure[indexOf(role)] = true;
    connection(role).open();
}

void LiveData::close(ConsumerRole role)
{
    connection(role).close();
}

void LiveData::lendPort(const std::string& port, const std::function<void()>& isFree)
{
    const auto waiting = std::make_shared<int>(1);
    const auto oneIsFree = [waiting, isFree] {
        if (--*waiting == 0)
            isFree();
    };
    const std::string path = Serial::devicePath(port);
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        if (connection(role).usesPort(path)) {
            ++*waiting;
            connection(role).lendPort(oneIsFree);
        }
    oneIsFree();
}

bool LiveData::isPortOpen(const std::string& port)
{
    const std::string path = Serial::devicePath(port);
    const ConsumerRole roles[] = {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS};
    return std::ranges::any_of(roles, [&](ConsumerRole role) {
        return connection(role).usesPort(path)
            && status(role).state != ConnectionStatus::State::Closed;
    });
}

void LiveData::takePortBack()
{
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        connection(role).takePortBack();
}

void LiveData::connectNetwork()
{
    const auto wanted = m_tcpip.loadSettings();
    if (wanted.clientModeTCP || wanted.clientModeUDP)
        setSimulating(false);
    m_tcpip.connect();
}

Result<void> LiveData::replay(ConsumerRole role, const std::filesystem::path& log)
{
    auto opened = Replay::open(log, m_services.clock);
    if (!opened)
        return tl::unexpected(opened.error());
    setSimulating(false);
    m_replays[indexOf(role)] = std::move(*opened);
    connection(role).reader().setLogFile(m_replays[indexOf(role)]);
    updateConnections();
    return {};
}

void LiveData::setReplaySpeed(ConsumerRole role, double factor)
{
    if (const auto& log = m_replays[indexOf(role)])
        log->setSpeed(factor);
    // The wait for the next line was reckoned at the old speed.
    connection(role).reader().retryNow();
}

void LiveData::stopReplay(ConsumerRole role)
{
    if (!isReplaying(role))
        return;
    connection(role).reader().setLogFile(nullptr);
    updateConnections();
}

bool LiveData::isReplaying(ConsumerRole role)
{
    return connection(role).reader().isReadingLogFile();
}

void LiveData::updateConnections()
{
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        if (!isReplaying(role))
            m_replays[indexOf(role)].reset();
    const bool network = m_network.clientConnected();
    m_gps.setConnectionState({.gpsOpen = m_gpsConnection.reader().isOpen() || network,
                              .readingLogFile = isReplaying(ConsumerRole::GPS),
                              .instrumentsOpen = m_instrumentsConnection.reader().isOpen()});
    m_ais.setConnectionOpen(m_aisConnection.reader().isOpen() || isReplaying(ConsumerRole::AIS));
    emit connectionsChanged();
}

void LiveData::settingChanged(const std::string& key)
{
    m_gps.loadSettings();
    m_instruments.loadSettings();
    m_ais.loadSettings();
    m_repeater.loadSettings(m_services.settings);
    static const std::set<std::string, std::less<>> ports{"type",
                                                          "serialPort",
                                                          "rate",
                                                          "repeat",
                                                          "repeatSerialPort",
                                                          "repeatRate",
                                                          "ais.serialPort",
                                                          "ais.rate",
                                                          "instruments.serialPort",
                                                          "instruments.rate"};
    static const std::set<std::string, std::less<>> transmit{
        "tcpipServerGPS", "tcpipServerInstruments", "tcpipServerAIS",
        "tcpipServerLimitToProcessed"};
    if (transmit.contains(key))
        setTransmit();
    else if (ports.contains(key) || key.starts_with("tcpip")) {
        // The user may still be typing, or a whole set of settings is coming in.
        m_toReopen.insert(key);
        m_reopenTimer.start(reopenDelay);
    }
}

void LiveData::setTransmit()
{
    const auto values = m_tcpip.loadSettings();
    m_network.setServerTransmit({.gps = values.serverGPS,
                                 .instruments = values.serverInstruments,
                                 .ais = values.serverAIS});
    m_network.setServerLimitToProcessed(values.serverLimitToProcessed);
}

void LiveData::reopen()
{
    std::array<bool, 3> concerned{};
    bool network = false;
    for (const std::string& key : std::exchange(m_toReopen, {})) {
        if (key.starts_with("tcpip"))
            network = true;
        else if (key.starts_with("ais."))
            concerned[indexOf(ConsumerRole::AIS)] = true;
        else if (key.starts_with("instruments."))
            concerned[indexOf(ConsumerRole::Instruments)] = true;
        else
            concerned[indexOf(ConsumerRole::GPS)] = true;
    }
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS}) {
        const bool wanted = status(role).state != ConnectionStatus::State::Closed;
        if (!concerned[indexOf(role)] || !wanted)
            continue;
        m_tellFailure[indexOf(role)] = true;
        connection(role).open();
    }
    if (network)
        connectNetwork();
}

void LiveData::setSteering(std::optional<SteeringTarget> target)
{
    if (target) {
        m_gotoTimer.stop();
        m_gps.setGotoActive(true);
    } else if (m_gps.gotoActive() && !m_gotoTimer.isActive()) {
        m_gotoTimer.start(gotoAfterCancel);
    }
    m_repeater.setTarget(std::move(target));
}

void LiveData::applicationWillSleep()
{
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        connection(role).applicationWillSleep();
    m_tcpip.disconnect();
}

void LiveData::applicationWillWake()
{
    for (const auto role : {ConsumerRole::GPS, ConsumerRole::Instruments, ConsumerRole::AIS})
        connection(role).applicationWillWake();
    m_tcpip.connect();
}

void LiveData::selectTarget(std::optional<std::int32_t> mmsi)
{
    if (m_ais.list().selected() == mmsi)
        return;
    m_ais.list().select(mmsi);
    emit selectionChanged();
}

std::optional<std::int32_t> LiveData::selectedTarget()
{
    return m_ais.list().selected();
}

void LiveData::pointAtTarget(std::optional<std::int32_t> mmsi)
{
    if (std::exchange(m_pointed, mmsi) != mmsi)
        emit selectionChanged();
}

void LiveData::sampleDepth()
{
    constexpr double interval = 1; // seconds: a line of it is no finer
    constexpr double longest = 600;
    const double now = m_services.clock.monotonicSeconds();
    const float feet = m_instruments.value(InstrumentsController::Instrument::Depth);
    if (!isKnown(feet) || (!m_depths.empty() && now - m_depths.back().seconds < interval))
        return;
    m_depths.push_back({now, feet});
    while (now - m_depths.front().seconds > longest)
        m_depths.pop_front();
}

void LiveData::noteStaleness()
{
    using Instrument = InstrumentsController::Instrument;
    unsigned stale = m_gps.positionIsStale() ? 1U : 0U;
    unsigned bit = 2;
    for (const auto instrument :
         {Instrument::Heading, Instrument::Speed, Instrument::Depth, Instrument::Temperature,
          Instrument::WindAngle, Instrument::WindSpeed}) {
        stale |= m_instruments.isStale(instrument) ? bit : 0U;
        bit *= 2;
    }
    if (std::exchange(m_stale, stale) != stale)
        emit staleChanged();
}

void LiveData::vesselHasChanged()
{
    if (!m_vesselTimer.isActive())
        m_vesselTimer.start(burst);
}

void LiveData::plotPosition(Position position)
{
    constexpr float step = 0.0008F; // nautical miles: below it the receiver's noise
    if (m_gps.anchorAlarm() && position.isKnown()
        && (m_swing.empty() || NavMath::distanceFromPoint(m_swing.back(), position) >= step)) {
        if (m_swing.size() == longestSwing) { // half of the points tell as much
            for (std::size_t i = 0; i < longestSwing / 2; ++i)
                m_swing[i] = m_swing[2 * i + 1];
            m_swing.resize(longestSwing / 2);
        }
        m_swing.push_back(position);
    }
    emit vesselMoved();
    vesselHasChanged();
}

void LiveData::plotCourse(float /*degreesTrue*/)
{
    vesselHasChanged();
}

void LiveData::plotSpeed(float /*knots*/)
{
    vesselHasChanged();
}

void LiveData::recordTrack(const TrackSample& sample)
{
    emit trackSample(sample);
}

void LiveData::satellitesChanged()
{
    emit satellitesReceived();
}

void LiveData::setAnchorPosition(Position position)
{
    // After the alarm the track stays to be looked at, until the next watch begins.
    if (position.isKnown())
        m_swing.assign(1, position);
    emit anchorChanged();
}

} // namespace kelvox
