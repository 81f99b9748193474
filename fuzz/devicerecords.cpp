// Records of receivers: the first byte says which converter gets the rest. What was read is
// written and read once more, and then is the same.

#include "devices/Furuno.h"
#include "devices/GarminRecords.h"
#include "devices/Magellan.h"

#include <cmath>
#include <cstdlib>

using namespace kelvox;

namespace {
using Records = GarminRecords;

void check(const std::optional<Waypoint>& waypoint, auto&& read, auto&& write, std::size_t size)
{
    if (!waypoint)
        return;
    if (waypoint->hasPosition()
        && !(std::abs(waypoint->latitude) <= 90 && std::abs(waypoint->longitude) <= 180))
        std::abort();
    const std::string record = write(*waypoint);
    if (record.size() != size)
        std::abort();
    const auto once = read(record);
    if (!once || read(write(*once))->name != once->name
        || read(write(*once))->description != once->description)
        std::abort();
    if (once->hasPosition() != waypoint->hasPosition()
        || std::abs(once->latitude - waypoint->latitude) > 1e-6F)
        std::abort();
}

void checkTrack(const std::optional<Records::TrackPoint>& point, auto&& write, std::size_t size)
{
    if (point && write(*point).size() != size)
        std::abort();
}

void checkSentences(std::string_view text)
{
    for (const int product : {15, 37}) {
        const auto family = Magellan::Family::ofProduct(product);
        if (const auto waypoint = Magellan::waypointFromSentence(text, family);
            waypoint && waypoint->isInsideTheChart()) {
            const auto sentence = Magellan::waypointSentence(*waypoint, family);
            if (sentence.size() > 77 || !Magellan::waypointFromSentence(sentence + ",", family))
                if (!deviceText(waypoint->name, family.name).empty())
                    std::abort();
        }
    }
    (void)Magellan::trackFromSentence(text);
    if (const auto waypoint = Furuno::waypointFromSentence(text);
        waypoint && waypoint->isInsideTheChart())
        (void)Furuno::waypointSentence(*waypoint);
    (void)NmeaTransfer::waypointFromSentence(text);
    RouteParts routes;
    for (auto part : {Magellan::routeFromSentence(text), Furuno::routeFromSentence(text),
                      NmeaTransfer::routeFromSentence(text)})
        if (part)
            (void)routes.add(std::move(*part));
    ExchangeRecords records;
    routes.handOver({}, records);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0] % 10) {
    case 0:
        check(Records::makeWaypointWithD100(text), Records::makeWaypointWithD100,
              Records::makeD100WaypointType, 58);
        break;
    case 1:
        check(Records::makeWaypointWithD108(text), Records::makeWaypointWithD108,
              Records::makeD108WaypointType, 154);
        break;
    case 2:
        check(Records::makeWaypointWithD109(text), Records::makeWaypointWithD109,
              Records::makeD109WaypointType, 158);
        break;
    case 3:
        check(Records::makeWaypointWithD110(text), Records::makeWaypointWithD110,
              Records::makeD110WaypointType, 168);
        break;
    case 4:
        check(Records::makeWaypointWithD150(text), Records::makeWaypointWithD150,
              Records::makeD150WaypointType, 119);
        break;
    case 5:
        checkTrack(Records::makeTrackWithD300(text), Records::makeD300TrackType, 13);
        checkTrack(Records::makeTrackWithD301(text), Records::makeD301TrackType, 21);
        checkTrack(Records::makeTrackWithD302(text), Records::makeD302TrackType, 25);
        break;
    case 6:
        (void)Records::routeNameFromD201(text);
        (void)Records::routeNameFromD202(text);
        (void)Records::colorFromD310(text);
        (void)GarminCapabilities(text).uses(108);
        break;
    case 7: {
        const TextRule rule{.longest = size % 20, .others = " -", .substitute = '-'};
        const auto held = deviceText(text, rule);
        if (held.size() > rule.longest || deviceText(held, rule) != held)
            std::abort();
        break;
    }
    default:
        checkSentences(text);
    }
    return 0;
}
