#pragma once

#include "base/Position.h"
#include "base/Rect.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelvox {

enum class ChartKind : std::uint8_t { Cell, Raster };

/// What a file and the updates beside it looked like on disk. Another stamp means another content.
struct FileStamp {
    std::uint64_t size = 0; ///< bytes of the base file
    std::int64_t modified = 0; ///< of the base file, in the file system's own count
    std::uint64_t updates = 0; ///< a digest of numbers, sizes and times of the updates; 0 for none

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// One chart as the library knows it without opening it.
struct ChartRecord {
    std::filesystem::path path;
    ChartKind kind = ChartKind::Cell;
    FileStamp stamp;
    std::string name; ///< of the data set, e.g. "KV5K1011", or the raster chart's number
    std::string title;
    std::string edition;
    int update = 0;
    std::string date; ///< YYYYMMDD of the cell's issue; empty where the chart gives none
    int scale = 0; ///< compiled scale's denominator; 0 when not given
    /// Degrees: left west, bottom south; right may be above 180. Empty when the chart has no place.
    Rect bounds;
    /// Rings to be filled even-odd, x longitude and y latitude in degrees; longitudes run on past
    /// 180 where a ring crosses the date line. Empty where the chart states no coverage.
    std::vector<std::vector<Point>> coverage;
    /// Why the file cannot be used; empty when it can. Kept so that it is not read again and again.
    std::string problem;

    [[nodiscard]] bool isUsable() const { return problem.empty() && !bounds.isEmpty(); }
};

/// Charts as they were known at one time: nobody changes them, any thread may read them.
using ChartRecords = std::vector<std::shared_ptr<const ChartRecord>>;

} // namespace kelvox
