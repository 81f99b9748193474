#pragma once

#include "connections/SentenceText.h"
#include "positioning/GPSController.h"
#include "positioning/InstrumentsController.h"
#include "positioning/Repeater.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace kelvox {

/// Receiver, instruments and repeater on one thread and a clock of the test's own; what they say
/// to the user, to other processes, to displays and to the repeat port is kept as text.
class Vessel : public Alarms, public NotificationBus, public GPSListener, public RepeatOutput {
public:
    Vessel()
    {
        gps.setInstruments(&instruments);
        gps.setRepeater(&repeater);
        gps.addListener(*this);
    }
    /// A sentence without its checksum, which is added.
    Verdict take(std::string_view sentence)
    {
        return gps.processRawSentence(completeSentence(sentence, AddChecksum::Yes));
    }
    std::vector<std::string> takeSaid() { return std::exchange(said, {}); }

    void beep() override { said.emplace_back("beep"); }
    void playSound(const std::string& name) override { said.push_back("sound " + name); }
    void speak(const std::string& text) override { said.push_back("speak " + text); }
    void show(const Alert& alert) override { said.push_back("show " + alert.key); }
    [[nodiscard]] bool isShown(const std::string&) const override { return false; }

    [[nodiscard]] bool companionRuns() const override { return companion; }
    void post(const std::string& name, const std::string& text) override
    {
        posted.push_back(name + ' ' + text);
    }

    void plotPosition(Position p) override { plotted.push_back(p); }
    void recordTrack(const TrackSample& sample) override { track.push_back(sample); }
    void setXte(float miles, char steer) override { shown(fmt::format("xte {} {}", miles, steer)); }
    void setWaypoint(const ReceiverWaypoint& w) override
    {
        shown(fmt::format("waypoint {} {:.2f},{:.2f} {} {} {}", w.name, w.position.latitude,
                          w.position.longitude, w.bearingDegrees, w.rangeNM, w.velocityKnots));
    }
    void waypointTimedOut() override { shown("waypoint gone"); }
    void waypointReceived(Position p, const std::string& name) override
    {
        shown(fmt::format("stored {} {:.3f},{:.3f}", name, p.latitude, p.longitude));
    }
    void createRouteFromGPS(const std::string& id, const std::vector<std::string>& names) override
    {
        shown(fmt::format("route {} {}", id, fmt::join(names, " ")));
    }
    void setActiveRouteWaypointsFromGPS(const std::string& to, const std::string& from) override
    {
        shown(fmt::format("leg {} {}", from, to));
    }

    void writeToRepeatTarget(std::string_view line) override { repeated.emplace_back(line); }
    void writeToClients(std::string_view line) override { toClients.emplace_back(line); }

    ManualClock clock{std::chrono::sys_days(std::chrono::year(2024) / 3 / 9)
                      + std::chrono::seconds(45296)}; // 12:34:56
    InlineExecutor executor;
    MemorySettings settings;
    Strings strings;
    Compass compass;
    GPSNotification notification{clock, *this};
    Repeater repeater{clock, *this};
    InstrumentsController instruments{executor, clock, settings, strings, compass};
    GPSController gps{{executor, clock, settings, strings, *this, notification, compass}};

    bool companion = true;
    std::vector<std::string> said, posted, displays, repeated, toClients;
    std::vector<Position> plotted;
    std::vector<TrackSample> track;

private:
    void shown(std::string text) { displays.push_back(std::move(text)); }
};

} // namespace kelvox
