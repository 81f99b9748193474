#pragma once

#include "preslib/Library.h"

#include <string_view>

namespace kelvox::preslib {

/// What the display that we calibrate for looks like; the calibration file is computed from it.
struct Monitor {
    std::array<Chromaticity, 3> primaries{};
    Chromaticity white;
    double luminance = 0; ///< of the white, cd/m2
};

/// Reads colour tables: a line for each colour with x, y, luminance by day, dusk and night, then
/// its use.
void readColors(const std::filesystem::path& file, std::string_view text, Library& library,
                Diagnostics& diagnostics);

/// Reads a look-up table: a line "table NAME geometry", then for each class its acronym alone on
/// a line and below it rows "conditions | priority radar category group | instructions".
void readLookUps(const std::filesystem::path& file, std::string_view text, Library& library,
                 Diagnostics& diagnostics);

/// Reads the lines "red X Y", "green X Y", "blue X Y", "white X Y" and "luminance L".
[[nodiscard]] Monitor readMonitor(const std::filesystem::path& file, std::string_view text,
                                  Diagnostics& diagnostics);

} // namespace kelvox::preslib
