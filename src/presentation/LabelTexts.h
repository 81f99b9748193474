#pragma once

#include "presentation/Canvas.h"
#include "s57/S57Object.h"

#include <string>

namespace kelvox {

/// The figure of a sounding in the user's unit: 0 feet, 1 metres, 2 fathoms; empty text for any
/// other. See S57Depth for its texts. Colours are left to the caller.
[[nodiscard]] TextFigure soundingFigure(float depthMetres, int unit, bool large);

/// What a chart prints beside a light, e.g. "Fl(2)G 5s 12m 9M"; empty when nothing is known.
/// The abbreviations are those of the international chart symbols (IHO INT 1, section P).
[[nodiscard]] std::string lightCharacter(const S57Object& light, bool heightsInMetres);

} // namespace kelvox
