#pragma once

#include "preslib/Library.h"
#include "preslib/TableReader.h"

#include <string>

namespace kelvox::preslib {

/// The library in the exchange form: lines of tag, five-digit length and body, "\r\n" between.
[[nodiscard]] std::string exchangeForm(const Library& library);

/// The calibration file of a display that codes light as IEC 61966-2-1 (sRGB) does.
[[nodiscard]] std::string calibrationFile(const Monitor& monitor);

/// A drawing as vector commands, the box moved to whole positive co-ordinates.
[[nodiscard]] std::vector<std::string> vectorCommands(const Drawing& drawing);

} // namespace kelvox::preslib
