#pragma once

#include "ais/AISController.h"
#include "ais/AISModel.h"
#include "app/MainExecutor.h"
#include "positioning/GPSController.h"
#include "positioning/InstrumentsController.h"
#include "positioning/NMEASimulator.h"

#include <QObject>
#include <QTimer>

namespace kelvox {

/// The own vessel, its instruments and the traffic around it, with what keeps them going. Main
/// thread.
class LiveData final : public QObject, public GPSListener, private NotificationBus {
    Q_OBJECT
public:
    LiveData(Settings& settings, const Strings& strings, Alarms& alarms, const Clock& clock,
             QObject* parent = nullptr);

    /// Lets the simulated vessel of a description sail; see SimulatorDescription.h.
    [[nodiscard]] Result<void> simulate(const std::filesystem::path& description);
    [[nodiscard]] bool isSimulated() const { return m_simulator.isRunning(); }
    [[nodiscard]] NMEASimulator& simulator() { return m_simulator; }

    [[nodiscard]] GPSController& gps() { return m_gps; }
    [[nodiscard]] InstrumentsController& instruments() { return m_instruments; }
    [[nodiscard]] AISController& ais() { return m_ais; }
    [[nodiscard]] const Compass& compass() const { return m_compass; }
    [[nodiscard]] const Settings& settings() const { return m_settings; }
    [[nodiscard]] AISPosition::Time now() const { return m_clock.now(); }

    void plotPosition(Position position) override;
    void recordTrack(const TrackSample& sample) override;
    void satellitesChanged() override;

signals:
    void vesselMoved();
    void targetsChanged();
    void instrumentsChanged();
    void satellitesReceived();
    void trackSample(const kelvox::TrackSample& sample);

private:
    void readSimulator();
    [[nodiscard]] bool companionRuns() const override { return false; }
    void post(const std::string& name, const std::string& text) override;

    const Clock& m_clock;
    Settings& m_settings;
    InlineExecutor m_main; ///< the simulator is read on the main thread
    IdleExecutor m_idle;
    Compass m_compass;
    GPSNotification m_notification;
    InstrumentsController m_instruments;
    GPSController m_gps;
    AISModel m_targets;
    AISController m_ais;
    NMEASimulator m_simulator;
    QTimer m_simulatorTimer;
    QTimer m_positionTimer;
    QTimer m_ageTimer;
};

} // namespace kelvox
