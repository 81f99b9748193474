#include "tool/RasterInfo.h"

#include "raster/BSBChart.h"

#include <nlohmann/json.hpp>

namespace kelvox {

nlohmann::json rasterInfo(const BSBChart& chart)
{
    const BSBHeader& header = chart.header();
    nlohmann::json info = {
        {"file", chart.path().string()},
        {"type", "raster"},
        {"name", header.name},
        {"number", header.number},
        {"width", header.width},
        {"height", header.height},
        {"bitDepth", header.depth},
        {"version", header.version},
        {"scale", header.scale},
        {"angle", chart.angle()},
        {"datum", header.datum},
        {"projection", header.projection},
        {"depthUnits", header.depthUnits},
        {"soundingDatum", header.soundingDatum},
        {"edition", header.edition},
        {"noticeDate", header.noticeDate},
        {"referencePoints", header.referencePoints.size()},
        {"compressed", header.compressed},
        {"calibrated", chart.hasCalibration()},
    };
    if (const Rect extents = chart.extents(); !extents.isEmpty())
        info["extents"] = {{"west", extents.left},
                           {"south", extents.bottom},
                           {"east", extents.right},
                           {"north", extents.top}};
    auto& border = info["border"] = nlohmann::json::array();
    for (const Position& corner : chart.border())
        border.push_back({corner.latitude, corner.longitude});
    return info;
}

} // namespace kelvox
