#pragma once

#include "base/Strings.h"

namespace kelvox {

/// The English texts of this module's keys: what the user is asked to do at the receiver.
[[nodiscard]] const Strings& deviceStrings();

} // namespace kelvox
