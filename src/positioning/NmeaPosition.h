#pragma once

#include "base/Position.h"

#include <string>

namespace kelvox {

/// The four position fields of a sentence: "ddmm.mmm,N,dddmm.mmm,E".
[[nodiscard]] std::string nmeaFields(Position position);

} // namespace kelvox
