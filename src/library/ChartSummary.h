#pragma once

#include "base/Result.h"
#include "library/ChartRecord.h"

#include <optional>

namespace kelvox {

/// The kind of chart that a file is by its name; nothing for other files.
[[nodiscard]] std::optional<ChartKind> chartKindOf(const std::filesystem::path& path);

/// The stamp of a chart with the updates that lie beside it; fails when the file is not there.
[[nodiscard]] Result<FileStamp> stampOf(const std::filesystem::path& path, ChartKind kind);

/// Reads what the library has to know of a chart, as little of the file as will do. A file that
/// cannot be read gives a record with its problem.
[[nodiscard]] ChartRecord summarise(const std::filesystem::path& path, ChartKind kind,
                                    const FileStamp& stamp);

/// The outline with the places left out that move it by less than the tolerance, in its own units
/// (Douglas and Peucker, 1973, over stretches of limited length).
[[nodiscard]] std::vector<Point> simplified(const std::vector<Point>& ring, double tolerance);

} // namespace kelvox
