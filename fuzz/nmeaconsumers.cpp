// Receiver, instruments, repeater: whole streams of arbitrary lines through every handler.

#include "positioning/OwnVessel.h"
#include "positioning/Repeater.h"

#include <cstdint>
#include <cstdlib>

namespace {

class Sink final : public kelvox::RepeatOutput {
public:
    void writeToRepeatTarget(std::string_view) override { }
    void writeToClients(std::string_view line) override
    {
        if (!line.ends_with("\r\n"))
            std::abort();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    kelvox::ManualClock clock;
    kelvox::OwnVessel vessel(clock);
    Sink sink;
    kelvox::Repeater repeater(clock, sink);
    vessel.gps.setRepeater(&repeater);
    vessel.gps.setGotoActive(true);
    repeater.setTarget(kelvox::SteeringTarget{.name = "W",
                                              .position = {.longitude = 5, .latitude = 52},
                                              .legStart = {.longitude = 4, .latitude = 52},
                                              .routeWaypoints = {"V", "W"}});
    std::string_view input(reinterpret_cast<const char*>(data), size);
    while (!input.empty()) {
        const auto end = input.find('\n');
        const auto line = input.substr(0, end == input.npos ? end : end + 1);
        input.remove_prefix(line.size());
        vessel.gps.processRawSentence(line);
        // Most mutations spoil the checksum, so the same text also comes without one.
        const auto star = line.find('*');
        if (star != line.npos)
            vessel.gps.processRawSentence(std::string(line.substr(0, star)) + "\r\n");
        clock.advance(std::chrono::seconds(1));
        vessel.gps.positionTimer();
        vessel.gps.waypointTimer();
    }
    (void)vessel.gps.latitude();
    (void)vessel.gps.cog();
    (void)vessel.gps.altitude();
    (void)vessel.gps.utc();
    if (vessel.gps.satelliteView().satellites.size() > 128)
        std::abort();
    return 0;
}
