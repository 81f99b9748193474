#pragma once

#include "base/Strings.h"

namespace kelvox {

/// The English texts of this module's keys: what formatters append, what a position text can have
/// wrong with it, the alarms and the refusals.
[[nodiscard]] const Strings& navigationStrings();

} // namespace kelvox
