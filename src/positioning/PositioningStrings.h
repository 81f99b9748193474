#pragma once

#include "base/Strings.h"

namespace kelvox {

/// The English texts of this module's keys: alarms, labels of the wind values, kinds of fix.
[[nodiscard]] const Strings& positioningStrings();

} // namespace kelvox
