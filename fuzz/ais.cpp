// Lines to the AIS controller as from its port, then what the program does with the table.

#include "ais/AISPicture.h"
#include "ais/AISStation.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    AISStation station;
    auto& controller = station.controller;
    const auto& model = station.model;
    controller.setProximityAlarm(true);
    controller.plotPosition({.longitude = -1, .latitude = 50});
    controller.plotCourse(30);
    controller.plotSpeed(5);
    while (!input.empty()) {
        const auto end = std::min(input.find('\n'), input.size() - 1);
        const auto line = input.substr(0, end + 1);
        controller.processRawSentence(line);
        controller.handle(line); // a fuzzer seldom finds a checksum
        input.remove_prefix(end + 1);
    }
    controller.plotPosition({.longitude = -1.01, .latitude = 50});
    controller.list().sortBy(AISTargetList::Column::Distance, AISTargetList::Order::Descending);
    if (controller.list().rowCount() != model.count())
        std::abort();
    for (const auto* target : model.positionEnumerator()) {
        controller.list().select(target->mmsi());
        if (!controller.updateAISInfo())
            std::abort();
    }
    AISPicture picture;
    const AISView view{.pointAt =
                           [](Position p) {
                               return Point{p.longitude, p.latitude};
                           },
                       .pointsPerMetre = [](double) { return 0.1; },
                       .visible = {-200, -200, 200, 200}};
    picture.update(model, view, {.selected = AISPosition::cursorKey}, station.clock.now());
    (void)picture.targetAt({0, 0}, 5);
    station.idle.run();
    station.clock.advance(std::chrono::seconds(901));
    controller.aisPositionTimer();
    if (model.count() != 0)
        std::abort();
    return 0;
}
