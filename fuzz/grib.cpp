// Weather files: whatever the bytes are, loading ends, and what was loaded can be asked.

#include "weather/GribModel.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    const UnitsModel units;
    GribModel model(units);
    (void)model.loadBytes({reinterpret_cast<const char*>(data), size}, "fuzz");
    for (const GribPoints* points : model.points()) {
        const Position last = points->positionOf(points->grid().pointCount() - 1);
        for (const Position place : {points->positionOnGPS(), last, Position{180, 0}})
            (void)model.valuesAt(place, points->forecastDate() + std::chrono::minutes(30));
        for (std::size_t i = 0; points->hasWind() && i < points->grid().pointCount(); ++i)
            (void)(points->windSpeed(i) + points->windDirection(i));
    }
    return 0;
}
