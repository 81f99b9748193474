#pragma once

#include "base/Position.h"
#include "base/Result.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvox {

/// Forecast times are UTC, to the second.
using GribTime = std::chrono::sys_seconds;

/// A regular latitude/longitude grid in the one order that all scanning modes are brought to: row
/// by row, each row from west to east. Rows keep their order: latitudeIncrement is negative when
/// the first row is the northern one.
struct GribGrid {
    Position first; ///< of the first point; longitude in [-180, 180]
    double latitudeIncrement = 0; ///< degrees from row to row, signed
    double longitudeIncrement = 0; ///< degrees from column to column, never negative
    int latitudeCount = 0; ///< rows
    int longitudeCount = 0; ///< columns

    [[nodiscard]] std::size_t pointCount() const
    {
        return static_cast<std::size_t>(latitudeCount) * static_cast<std::size_t>(longitudeCount);
    }
    /// Whether the last column is followed by the first one, all around the earth.
    [[nodiscard]] bool wraps() const;
    friend bool operator==(const GribGrid&, const GribGrid&) = default;
};

/// WMO code of a level. Types with one 16-bit value keep it in `top`, `bottom` is then 0; the other
/// types have two one-byte values.
struct GribLevel {
    int type = 0;
    int top = 0;
    int bottom = 0;
};

/// What one message says about itself, checked, its values not unpacked yet. The spans point into
/// the bytes that were read and live as long as they do.
struct GribMessage {
    std::size_t offset = 0; ///< of "GRIB" in the file
    int edition = 1;
    int tableVersion = 2; ///< 0 for edition 0
    int centre = 0;
    int parameter = 0;
    GribLevel level;
    GribTime referenceTime;
    GribTime forecastTime; ///< valid time; the end of the interval for averages and sums
    GribGrid grid;

    bool fromEast = false; ///< the file's rows run from east to west
    bool columnsFirst = false; ///< the file runs along the meridians first
    std::span<const std::uint8_t> bitmap; ///< one bit a point in the file's order; empty: all there
    std::span<const std::uint8_t> data;
    int bitsPerValue = 0; ///< 0: every value is the reference
    double reference = 0; ///< value = (reference + X * binaryScale) * decimalScale
    double binaryScale = 1;
    double decimalScale = 1;
};

/// Reads the message that begins at or after `offset` and moves `offset` behind it; nothing at the
/// end of the bytes. Bytes between messages are skipped.
///
/// An error stands for one message that was skipped: Unsupported for one that is sound but of a
/// kind that is not read (its words name the kind), BadSyntax or OutOfRange for a damaged one.
/// Truncated ends the file: nothing follows. Editions 0 and 1 as in the WMO Manual on Codes, FM 92.
[[nodiscard]] std::optional<Result<GribMessage>>
readGribMessage(std::span<const std::uint8_t> bytes, std::size_t& offset);

/// One float a grid point in the order of GribGrid; missingGridValue where the bitmap says so.
[[nodiscard]] Result<std::vector<float>> unpackGribValues(const GribMessage& message);

/// Such as "10 m above ground" or "500 hPa"; the bare code for types without a usual name.
[[nodiscard]] std::string describe(const GribLevel& level);

} // namespace kelvox
