#pragma once

#include "ais/AISStation.h"
#include "support/AISWriter.h"

#include <string>
#include <vector>

namespace kelvox {

/// Alarms that write down what was asked of them.
class RecordedAlarms final : public Alarms {
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

/// A controller with everything around it, its connection open.
struct AISBench {
    InlineExecutor main;
    AISStation::IdleQueue idle;
    ManualClock clock{std::chrono::sys_days{std::chrono::year{2024} / 5 / 1}};
    MemorySettings settings;
    RecordedAlarms alarms;
    Compass compass;
    AISModel model{clock};
    AISController controller{{.main = main,
                              .idle = idle,
                              .clock = clock,
                              .settings = settings,
                              .strings = aisStrings(),
                              .alarms = alarms,
                              .compass = compass,
                              .model = model}};

    AISBench() { controller.setConnectionOpen(true); }
    void feed(const std::string& line) { controller.processRawSentence(line); }
    /// Feeds a sentence without its checksum.
    void sentence(const std::string& text) { feed(AISWriter::checked(text)); }
    /// A class A vessel at the place, degrees.
    AISPosition& vessel(std::uint32_t mmsi, double longitude, double latitude)
    {
        feed(RawReport{.mmsi = mmsi,
                       .longitude = RawReport::raw(longitude),
                       .latitude = RawReport::raw(latitude)}
                 .classA()
                 .sentence());
        return *model.find(static_cast<std::int32_t>(mmsi));
    }
};

} // namespace kelvox
