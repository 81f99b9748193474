#pragma once

#include "ais/AISStation.h"
#include "support/AISWriter.h"

#include <string>
#include <vector>

namespace kelvox {

/// Alarms that write down what was asked of them.
class RecordedAlarms : public Alarms {
public:
    void beep() override { calls.emplace_back("beep"); }
    void playSound(const std::string& name) override { calls.push_back("play " + name); }
    void speak(const std::string& text) override { calls.push_back("speak " + text); }
    void show(const Alert& alert) override
    {
        calls.push_back("show " + alert.key + "|" + alert.informativeText + "|" + alert.button);
    }
    [[nodiscard]] bool isShown(const std::string&) const override { return false; }

    std::vector<std::string> calls;
};

/// A station whose alarms are recorded, and short words for what happens to it.
struct AISBench : private RecordedAlarms, public AISStation {
    AISBench()
        : AISStation(this)
    {
    }
    std::vector<std::string>& alarmCalls() { return calls; }
    void feed(const std::string& line) { controller.processRawSentence(line); }
    /// Feeds a sentence without its checksum.
    void sentence(const std::string& text) { feed(AISWriter::checked(text)); }
    /// A class A vessel at the place, degrees.
    AISPosition& vessel(std::uint32_t mmsi, double longitude, double latitude)
    {
        RawReport raw{.mmsi = mmsi};
        raw.longitude = RawReport::raw(longitude);
        raw.latitude = RawReport::raw(latitude);
        feed(raw.classA().sentence());
        return *model.find(static_cast<std::int32_t>(mmsi));
    }
    /// "longitude latitude sog cog hdg" of the first target, "-" for what is not known.
    [[nodiscard]] std::string first() const
    {
        if (model.count() == 0)
            return "nothing";
        const auto& target = model.aisPosition(0);
        const auto text = [](double value, int digits) {
            const bool known = isKnown(value) && value != noCoordinate;
            return known ? fmt::format("{:.{}f}", value, digits) : "-";
        };
        const auto place = target.positionOnGPS();
        return fmt::format("{} {} {} {} {}", text(place.longitude, 4), text(place.latitude, 4),
                           text(target.sog(), 1), text(target.cog(), 1), text(target.hdg(), 0));
    }
};

} // namespace kelvox
