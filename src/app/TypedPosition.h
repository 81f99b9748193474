#pragma once

#include "base/Position.h"

#include <optional>
#include <string_view>

namespace kelvox {

/// A position as people type it: "42 20.15N 71 0.93W", "42.3358, -71.0155", "N42.20.150
/// W071.00.930", "42°20'09\"N 71°00'55\"W". Latitude first; without letters a minus is south or
/// west. Nothing for all other text and for what lies beyond the ends of the scales.
[[nodiscard]] std::optional<Position> parseTypedPosition(std::string_view text);

} // namespace kelvox
