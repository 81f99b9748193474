#pragma once

#include "ais/AISController.h"
#include "ais/AISModel.h"
#include "app/MainExecutor.h"
#include "connections/HandOver.h"
#include "connections/TCPIPController.h"
#include "positioning/GPSController.h"
#include "positioning/InstrumentsController.h"
#include "positioning/NMEASimulator.h"
#include "positioning/NmeaConnection.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <deque>
#include <optional>
#include <set>

namespace kelvox {

/// The own vessel, its instruments and the traffic around it, with the connections that bring them.
/// Main thread; the reader threads hand their sentences over to it.
class LiveData final : public QObject, public GPSListener {
    Q_OBJECT
public:
    struct Services {
        Settings& settings;
        const Strings& strings;
        Alarms& alarms;
        const Clock& clock;
        Executor& main;
        NotificationBus& bus;
    };
    /// @param pace of the reader threads; tests do not wait three seconds
    explicit LiveData(const Services& services, ReaderThread::Pace pace = {},
                      QObject* parent = nullptr);
    ~LiveData() override;

    /// Starts the reader threads and opens what the settings want open.
    void start();

    /// Whether data come in from elsewhere, or are to as soon as they can.
    [[nodiscard]] bool isConnected();

    /// Lets the simulated vessel of a description sail; see SimulatorDescription.h.
    [[nodiscard]] Result<void> simulate(const std::filesystem::path& description);
    void setSimulating(bool on);
    [[nodiscard]] bool isSimulated() const { return m_simulator.isRunning(); }
    [[nodiscard]] NMEASimulator& simulator() { return m_simulator; }

    [[nodiscard]] GPSController& gps() { return m_gps; }
    [[nodiscard]] InstrumentsController& instruments() { return m_instruments; }
    [[nodiscard]] AISController& ais() { return m_ais; }
    [[nodiscard]] const Compass& compass() const { return m_compass; }
    [[nodiscard]] const Settings& settings() const { return m_services.settings; }
    [[nodiscard]] AISPosition::Time now() const { return m_services.clock.now(); }
    [[nodiscard]] const Clock& clock() const { return m_services.clock; }

    [[nodiscard]] NmeaConnection& connection(ConsumerRole role);
    [[nodiscard]] ConnectionStatus status(ConsumerRole role);
    [[nodiscard]] TCPConnectionModel& network() { return m_network; }
    [[nodiscard]] TCPIPController& tcpip() { return m_tcpip; }

    /// Opens the serial port of the settings; the simulated vessel gives way to the real one.
    void open(ConsumerRole role);
    void close(ConsumerRole role);
    /// Closes the connections that have the port, for a transfer with the receiver on it, and calls
    /// back when it is free.
    void lendPort(const std::string& port, const std::function<void()>& isFree);
    [[nodiscard]] bool isPortOpen(const std::string& port); ///< or to be opened, by a connection
    void takePortBack(); ///< opens again what was open before
    /// Opens and closes network connections as the settings say.
    void connectNetwork();

    /// Plays a log in place of the connection.
    [[nodiscard]] Result<void> replay(ConsumerRole role, const std::filesystem::path& log);
    void setReplaySpeed(ConsumerRole role, double factor);
    void stopReplay(ConsumerRole role);
    [[nodiscard]] bool isReplaying(ConsumerRole role);

    /// A setting has another value: takes it over and opens anew what it concerns.
    void settingChanged(const std::string& key);
    /// What autopilots are told to steer to.
    void setSteering(std::optional<SteeringTarget> target);
    void applicationWillSleep();
    void applicationWillWake();

    /// One target of the list is the selected one, in every window.
    void selectTarget(std::optional<std::int32_t> mmsi);
    [[nodiscard]] std::optional<std::int32_t> selectedTarget();
    /// The target under the pointer in a list, marked on the chart.
    void pointAtTarget(std::optional<std::int32_t> mmsi);
    [[nodiscard]] std::optional<std::int32_t> pointedTarget() const { return m_pointed; }

    struct DepthSample {
        double seconds; ///< monotonic
        float feet;
    };
    /// The last ten minutes, oldest first.
    [[nodiscard]] const std::deque<DepthSample>& depths() const { return m_depths; }
    /// Where the vessel has been since the anchor watch began.
    [[nodiscard]] const std::vector<Position>& swing() const { return m_swing; }

    void plotPosition(Position position) override;
    void plotCourse(float degreesTrue) override;
    void plotSpeed(float knots) override;
    void recordTrack(const TrackSample& sample) override;
    void satellitesChanged() override;
    void setAnchorPosition(Position position) override;

signals:
    void vesselMoved(); ///< each position, in the middle of its sentence
    void vesselChanged(); ///< for displays: when all that the sentences say has been taken over
    void targetsChanged(); ///< the list; at most ten times a second
    void targetsMoved(); ///< what the chart shows of them; the same
    void instrumentsChanged(); ///< the same
    void satellitesReceived();
    void trackSample(const kelvox::TrackSample& sample);
    void connectionsChanged(); ///< a state, a switch or the simulation
    void connectionFailed(const QString& reason); ///< once for each time the user opens one
    void staleChanged(); ///< something has become stale, or is fresh again
    void anchorChanged();
    void selectionChanged(); ///< the selected or pointed target
    void proximityAlarmChanged();

private:
    /// A receiver says position, course and speed in sentences of their own, in one burst.
    static constexpr auto burst = std::chrono::milliseconds(20);
    static constexpr auto coalescing = std::chrono::milliseconds(100);
    static constexpr std::size_t longestSwing = 4096;

    void vesselHasChanged();
    void updateConnections();
    void reopen();
    void noteStaleness();
    void sampleDepth();
    void setTransmit();

    Services m_services;
    HandOver m_handOver;
    IdleExecutor m_idle;
    Compass m_compass;
    GPSNotification m_notification;
    InstrumentsController m_instruments;
    GPSController m_gps;
    AISModel m_targets;
    AISController m_ais;
    NMEASimulator m_simulator;
    NmeaConnection m_gpsConnection;
    NmeaConnection m_instrumentsConnection;
    NmeaConnection m_aisConnection;
    Repeater m_repeater;
    TCPConnectionModel m_network; // after what its thread calls: it ends first
    TCPIPController m_tcpip;

    std::array<std::shared_ptr<Replay>, 3> m_replays;
    std::array<bool, 3> m_tellFailure{};
    std::set<std::string> m_toReopen;
    std::optional<std::int32_t> m_pointed;
    std::deque<DepthSample> m_depths;
    std::vector<Position> m_swing;
    unsigned m_stale = ~0U;
    QTimer m_reopenTimer;
    QTimer m_vesselTimer;
    QTimer m_instrumentsTimer;
    QTimer m_targetsTimer;
    QTimer m_pictureTimer;
    QTimer m_positionTimer;
    QTimer m_ageTimer;
    QTimer m_gotoTimer;
};

} // namespace kelvox
