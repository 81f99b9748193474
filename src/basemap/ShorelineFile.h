#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace kelvox {

/// What makes land in a file of the Global Self-consistent Hierarchical High-resolution Geography
/// (Wessel and Smith, J. Geophys. Res. 101, 1996) in its netCDF form: the shoreline cut at the
/// edges of square bins of whole degrees, in rows from north to south, each from Greenwich
/// eastward.
///
/// A segment is a run of points inside one bin with land on its left. Its description holds, from
/// the lowest bits up: the side it leaves the bin by, the side it comes in by (three bits each: 0
/// south, 1 east, 2 north, 3 west, 4 none, a closed line), the level of its polygon (three bits: 1
/// land, 2 lake, 3 island in a lake, 4 pond on such an island, 6 grounding line of the Antarctic
/// ice) and the number of its points.
struct ShorelineTables {
    int columns = 0; ///< bins around the Earth
    int rows = 0; ///< from pole to pole, half as many
    // One for each bin.
    std::vector<std::int32_t> firstSegment;
    std::vector<std::int16_t> segmentCount;
    /// Levels at the corners in three bits each, from bit 9 down: south-west, south-east,
    /// north-east, north-west. Even is water.
    std::vector<std::int16_t> cornerLevels;
    // One for each segment.
    std::vector<std::int32_t> segment;
    std::vector<std::int32_t> firstPoint;
    // One for each point: 0 to 65535 from the bin's south-west corner to its north-east corner.
    std::vector<std::uint16_t> x;
    std::vector<std::uint16_t> y;
};

/// Reads the tables. Fails when the file is missing, no shoreline file or damaged; what the numbers
/// in it refer to is not checked here.
[[nodiscard]] Result<ShorelineTables> readShoreline(const std::filesystem::path& path);

} // namespace kelvox
