#pragma once

#include "base/Strings.h"

#include <string_view>

namespace kelvox {

/// The English texts of this module's keys.
[[nodiscard]] const Strings& aisStrings();

/// The key of the text for a ship and cargo type, by the table of ITU-R M.1371: "NSShipTypeCargo".
/// Empty for a type that is not available or not defined.
[[nodiscard]] std::string_view aisShipTypeKey(int type);

} // namespace kelvox
