#pragma once

#include <nlohmann/json_fwd.hpp>

namespace kelvox {

class BSBChart;

/// What is worth knowing about a raster chart whose header is loaded, as one JSON object:
/// longitudes and latitudes in degrees WGS 84, sizes in pixels.
[[nodiscard]] nlohmann::json rasterInfo(const BSBChart& chart);

} // namespace kelvox
