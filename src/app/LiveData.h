#pragma once

#include "ais/AISController.h"
#include "ais/AISPicture.h"
#include "base/Executor.h"
#include "base/Strings.h"
#include "positioning/GPSController.h"
#include "positioning/NMEASimulator.h"

#include <QObject>
#include <QTimer>

namespace kelvox {

/// The own vessel and the traffic around it, with what keeps them going. Main thread.
class LiveData final : public QObject, public GPSListener, private Alarms, private NotificationBus {
    Q_OBJECT
public:
    explicit LiveData(QObject* parent = nullptr);

    /// Lets the simulated vessel of a description sail; see SimulatorDescription.h.
    [[nodiscard]] Result<void> simulate(const std::filesystem::path& description);
    [[nodiscard]] bool isSimulated() const { return m_simulator.isRunning(); }

    [[nodiscard]] const GPSController& gps() const { return m_gps; }
    [[nodiscard]] AISController& ais() { return m_ais; }
    [[nodiscard]] const Compass& compass() const { return m_compass; }
    [[nodiscard]] const Settings& settings() const { return m_settings; }
    [[nodiscard]] AISPosition::Time now() const { return m_clock.now(); }

    void plotPosition(Position position) override;

signals:
    void vesselMoved();
    void targetsChanged();
    void alarmRaised(const QString& message);

private:
    /// Runs work when the event loop has nothing else to do.
    class IdleExecutor final : public Executor {
    public:
        void post(std::function<void()> work) override;
        void performAndWait(std::function<void()> work) override { work(); }
    };

    void readSimulator();
    void beep() override;
    void playSound(const std::string& name) override;
    void speak(const std::string& text) override;
    void show(const Alert& alert) override;
    [[nodiscard]] bool isShown(const std::string& key) const override;
    [[nodiscard]] bool companionRuns() const override { return false; }
    void post(const std::string& name, const std::string& text) override;

    SystemClock m_clock;
    InlineExecutor m_main; ///< the simulator is read on the main thread
    IdleExecutor m_idle;
    MemorySettings m_settings;
    const Strings& m_strings;
    Compass m_compass;
    GPSNotification m_notification;
    GPSController m_gps;
    AISModel m_targets;
    AISController m_ais;
    NMEASimulator m_simulator;
    QTimer m_simulatorTimer;
    QTimer m_positionTimer;
    QTimer m_ageTimer;
};

} // namespace kelvox
