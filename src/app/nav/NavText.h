#pragma once

#include "app/Program.h"
#include "base/Position.h"

#include <QString>

namespace kelvox {

/// Values of waypoints, routes and tracks in the user's units and language. Unknown ones are "---".
namespace navtext {
[[nodiscard]] QString distance(double miles);
[[nodiscard]] QString speed(double knots);
/// True, or magnetic where the user has chosen so (setting "magnetic").
[[nodiscard]] QString bearing(Program& program, double degreesTrue);
[[nodiscard]] QString hours(double hours); ///< "h:mm"
[[nodiscard]] QString latitude(double degrees);
[[nodiscard]] QString longitude(double degrees);
[[nodiscard]] QString position(Position position);
/// The local day and time of a date; empty without one.
[[nodiscard]] QString date(const std::optional<Date>& date);
} // namespace navtext

} // namespace kelvox
