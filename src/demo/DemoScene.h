#pragma once

#include "demo/DemoCell.h"

namespace kelvox {

// What stands, lies and is ruled in the demo waters. Each function adds what its chart's area and
// usage band show.

/// Quays, breakwaters and dredged ground.
[[nodiscard]] std::vector<DemoWork> demoWorks(int usageBand);
/// Fairway, traffic separation, anchorages, restricted and other areas, routes.
void addSeaways(DemoCell& cell);
/// Wrecks, rocks, obstructions, kinds of seabed, tide.
void addDangers(DemoCell& cell);
/// Buoys, beacons and lights, with what they carry.
void addAids(DemoCell& cell);
/// Town, roads, hills, lake, river.
void addLand(DemoCell& cell);
/// What a harbour chart shows beyond that: berths, cranes, pontoons, moorings.
void addHarbour(DemoCell& cell);
/// Names of waters and lands, magnetic variation.
void addNames(DemoCell& cell);

/// The way in from the sea, outermost point first.
[[nodiscard]] const DemoLine& demoFairway();

} // namespace kelvox
