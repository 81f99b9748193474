#pragma once

#include <string_view>

namespace kelvox {

/// The key of the text for a ship and cargo type, by the table of ITU-R M.1371: "NSShipTypeCargo".
/// Empty for a type that is not available or not defined.
[[nodiscard]] std::string_view aisShipTypeKey(int type);

} // namespace kelvox
