// Files of other programs: the first byte says which reader gets the rest.

#include "base/Strings.h"
#include "exchange/CSVImport.h"
#include "exchange/ExchangeDate.h"
#include "exchange/GPXImport.h"
#include "exchange/KMLImport.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {
void check(const kelvox::ChartMarker& marker)
{
    if (!(std::abs(marker.latitude) <= 90 && std::abs(marker.longitude) <= 180))
        std::abort();
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const UnitsModel units;
    const CSVImport csv({}, englishStrings(), units);
    ExchangeRecords records;
    switch (data[0] % 7) {
    case 0:
        (void)GPXImport({}).parse(text, records);
        break;
    case 1:
        (void)KMLImport({}, KMLImport::Lines::AsTracks).parse(text, records);
        break;
    case 2:
        (void)KMLImport({}, KMLImport::Lines::AsRoutes).parse(text, records);
        break;
    case 3:
        (void)csv.readWaypoints(text, records);
        break;
    case 4:
        (void)csv.readTracks(text, records);
        break;
    case 5:
        (void)CSVImport::isTrack(text);
        break;
    default:
        if (const auto date = parseLenientDate(text); date
            && *date > Date(std::chrono::hours(-876'000))
            && *date < Date(std::chrono::hours(876'000)))
            if (parseIsoDate(isoDate(*date)) != std::chrono::floor<std::chrono::seconds>(*date))
                std::abort(); // what is written must read back
    }
    for (const auto& waypoint : records.waypoints)
        check(waypoint);
    for (const auto& point : records.tracks)
        check(point);
    records.nameTheNameless();
    return 0;
}
