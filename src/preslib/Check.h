#pragma once

#include "preslib/Library.h"

namespace kelvox::preslib {

/// Looks for what would be drawn wrongly or not at all: unknown classes, attributes, colours,
/// symbols, line styles, patterns and procedures; names that are not eight characters; figures
/// that leave their box; drawings without a figure.
void check(const Library& library, Diagnostics& diagnostics);

/// Whether everything that the program's own routines name is there. Names without a place in the
/// source are reported at the place given.
void checkComplete(const Library& library, const Place& place, Diagnostics& diagnostics);

} // namespace kelvox::preslib
