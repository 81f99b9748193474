#pragma once

#include "base/Clock.h"
#include "connections/ReaderThread.h"

#include <functional>
#include <string>

namespace kelvox {

/// What a connection of the Garmin type does after its port was opened: it ends a transfer that was
/// left unfinished and asks the receiver what it is, once and briefly, since one that is set to
/// NMEA does not answer and must not be kept waiting.
/// @param identified gets what it says it is, on the reader thread
[[nodiscard]] PortPlan::Setup
garminSetup(const Clock& clock, std::function<void(const std::string& ident)> identified = {});

} // namespace kelvox
