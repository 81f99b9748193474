#pragma once

#include "ais/AISAssembly.h"
#include "ais/AISModel.h"
#include "ais/AISReport.h"
#include "ais/AISTargetList.h"
#include "ais/RadarSentences.h"
#include "base/Alarms.h"
#include "base/Executor.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "navigation/NavMath.h"
#include "positioning/Compass.h"
#include "positioning/GPSListener.h"
#include "positioning/GPSNotification.h"
#include "positioning/NmeaConsumer.h"
#include "positioning/SentenceTable.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace kelvox {

/// What the information panel of a target shows beside the target's own fields.
struct AISInfo {
    const AISPosition* target = nullptr;
    // From the own vessel, degrees true and nautical miles; -1000 without an own position.
    float distance = static_cast<float>(noValue);
    float bearing = static_cast<float>(noValue);
    /// Nothing when the two are not closing, or when a position, course or speed is not known.
    std::optional<NavMath::ClosestApproach> closestApproach = {};
};

/// Turns AIS and radar sentences into targets, ages them, and gives the proximity alarm.
///
/// Lines come in on reader threads (NmeaConsumer), each with its checksum or not at all; everything
/// else belongs to the main thread. Fragments of a message go through one single buffer: of two
/// messages that arrive interleaved, as on two channels, only one survives (see AISAssembly).
class AISController final : public NmeaConsumer, public GPSListener {
public:
    /// Settings read: "ais.useGPSPort", "ais.useInstrumentsPort", "aisProximityDistance"
    /// (nautical miles), "audio", "visual".
    struct Services {
        Executor& main;
        Executor& idle; ///< posts to the main thread for when it has nothing else to do
        const Clock& clock;
        const Settings& settings;
        const Strings& strings;
        Alarms& alarms;
        const Compass& compass;
        AISModel& model;
    };
    static constexpr double defaultProximityDistance = 0.5; ///< nautical miles
    static constexpr std::chrono::seconds timerPeriod{5}; ///< for aisPositionTimer()

    explicit AISController(const Services& services);

    [[nodiscard]] AISModel& model() const { return m_services.model; }
    [[nodiscard]] AISTargetList& list() { return m_list; }

    /// Where the own vessel's AIS reports go; may be missing and must outlive the controller.
    void setNotification(GPSNotification* notification) { m_notification = notification; }
    /// Gets each report that was taken, and its channel as it stands in the sentence.
    void setReportHandler(std::function<void(const AISReport&, std::string_view)> handler)
    {
        m_reportHandler = std::move(handler);
    }
    /// Told when the list has been reloaded.
    void setListHandler(std::function<void()> handler) { m_listHandler = std::move(handler); }
    /// Told when the proximity alarm is switched, by the user or by firing.
    void setProximityAlarmHandler(std::function<void(bool)> handler)
    {
        m_alarmHandler = std::move(handler);
    }

    void setConnectionOpen(bool open) { m_connectionOpen = open; }
    /// The own connection is open or AIS shares the port of the GPS or of the instruments.
    [[nodiscard]] bool isSourceActive() const;
    /// Reads the settings that reader threads use; call it after they changed.
    void loadSettings();

    /// The target that the sentence completed a report of; else null.
    AISPosition* processVD(const AISSentence& sentence);
    /// Decodes and stores the message in the buffer; null when it brought nothing.
    AISPosition* processITU();

    /// To be called every timerPeriod: removes what expired.
    void aisPositionTimer();

    // The own vessel: GPSListener.
    void plotPosition(Position position) override;
    void plotCourse(float degreesTrue) override { m_ownCourse = degreesTrue; }
    void plotSpeed(float knots) override { m_ownSpeed = knots; }

    /// Armed, it fires once.
    void setProximityAlarm(bool on);
    [[nodiscard]] bool proximityAlarm() const { return m_proximityAlarm; }
    /// The target that fired the last alarm, until the alarm is armed again.
    [[nodiscard]] std::optional<std::int32_t> alarmTarget() const { return m_alarmTarget; }

    /// Has the list reloaded once when the program is idle, however often it is called before;
    /// does nothing while the table is unchanged.
    void reloadData();
    /// The idle notification came.
    void goneIdle();

    /// The panel of the target selected in the list; nothing without one.
    [[nodiscard]] std::optional<AISInfo> updateAISInfo() const;

    [[nodiscard]] bool knowsCommand(std::string_view command) const override;
    [[nodiscard]] bool takesFromGPS(std::string_view sentence) const override;
    [[nodiscard]] bool takesFromInstruments(std::string_view sentence) const override;
    void handle(std::string_view sentence) override;

private:
    using Handler = void (AISController::*)(const NmeaFields&);
    static const SentenceTable<Handler>& table();

    void updateBinaryVDM(const NmeaFields& fields);
    void updateBinaryVDO(const NmeaFields& fields);
    void updateNasaMLS(const NmeaFields&) { } ///< a receiver's signal level: for the monitor only
    void updateTargetTTM(const NmeaFields& fields);
    void updateTargetTLL(const NmeaFields& fields);
    void updateRadarRSD(const NmeaFields& fields);
    void updatePositionRMC(const NmeaFields& fields);

    struct Movement {
        Position position;
        float sog;
        float cog;
        float hdg;
    };
    void store(AISPosition& target, const Movement& movement);
    AISPosition* store(const AISPositionReport& report);
    AISPosition* store(const AISStaticReport& report);
    AISPosition* radarTarget(int number, RadarStatus status, std::string_view name);
    void remove(std::int32_t mmsi);
    [[nodiscard]] float trueBearing(float bearing, RadarReference reference) const;
    [[nodiscard]] Position fromOwnPosition(float distance, float bearing) const;

    void showAISProximityAlarm(const AISPosition& target);
    void listChanged();

    Services m_services;
    AISTargetList m_list;
    AISAssembly m_assembly;
    AISReport m_report; // the last one decoded
    GPSNotification* m_notification = nullptr;
    std::function<void(const AISReport&, std::string_view)> m_reportHandler;
    std::function<void()> m_listHandler;
    std::function<void(bool)> m_alarmHandler;

    std::atomic<bool> m_useGPSPort{false};
    std::atomic<bool> m_useInstrumentsPort{false};
    bool m_connectionOpen = false;

    Position m_ownPosition;
    float m_ownCourse = static_cast<float>(noValue);
    float m_ownSpeed = static_cast<float>(noValue);

    bool m_proximityAlarm = false;
    std::optional<std::int32_t> m_alarmTarget;
    bool m_idleQueued = false;
    std::shared_ptr<AISController*> m_self; // what idle work still finds after this has gone
};

} // namespace kelvox
