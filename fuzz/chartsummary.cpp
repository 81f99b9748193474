// Any bytes as a cell of which only the summary is read.

#include "library/ChartSummary.h"
#include "s57/S57CellSummary.h"

using namespace kelvox;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto summary = S57CellSummary::readBytes({reinterpret_cast<const char*>(data), size});
    if (!summary)
        return 0;
    for (const auto& places : summary->coverage) {
        std::vector<Point> ring;
        ring.reserve(places.size());
        for (const Position& place : places)
            ring.push_back({place.longitude, place.latitude});
        (void)simplified(ring, 1e-5);
    }
    return 0;
}
