#pragma once

#include "base/Position.h"
#include "base/Rect.h"
#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace kelvox {

/// What a list of charts says of a cell: its identification and the waters it covers.
///
/// Read without loading the cell: the file is walked record by record, and of all the features and
/// spatial records only those of the coverage are looked into.
struct S57CellSummary {
    std::string edition;
    int update = 0; ///< the last one contained or applied
    int updatesApplied = 0; ///< files beside the base cell
    std::string issueDate; ///< YYYYMMDD
    std::uint32_t compiledScale = 0; ///< denominator; 0 when not given
    /// Degrees: left west, bottom south. Of the coverage where the cell states one, else of all
    /// co-ordinates; empty for an empty cell.
    Rect bounds;
    /// Rings of what is covered, to be filled even-odd, in WGS 84 degrees; the first place is not
    /// repeated. Empty when the cell states no coverage.
    std::vector<std::vector<Position>> coverage;

    /// The cell with the updates that lie beside it, by the rules of S57CellLoader.
    [[nodiscard]] static Result<S57CellSummary> read(const std::filesystem::path& path);
    /// A base cell alone, from memory.
    [[nodiscard]] static Result<S57CellSummary> readBytes(std::span<const char> bytes);
};

} // namespace kelvox
