#pragma once

#include "app/Program.h"
#include "exchange/ExchangeTarget.h"

namespace kelvox {

// The user's records as they go to a receiver: copies, the points of routes with their routes.

[[nodiscard]] ExchangeRecords allWaypoints(Program& program);
[[nodiscard]] ExchangeRecords allRoutes(Program& program);
[[nodiscard]] ExchangeRecords wholeTrack(Program& program);
[[nodiscard]] ExchangeRecords allRecords(Program& program);
[[nodiscard]] ExchangeRecords groupOfWaypoints(Program& program, const std::string& group);
void addRoute(const Route& route, ExchangeRecords& records);
/// The lines of the track that begin at these points.
[[nodiscard]] ExchangeRecords trackLinesAt(Program& program,
                                           const std::vector<std::size_t>& firstPoints);

} // namespace kelvox
