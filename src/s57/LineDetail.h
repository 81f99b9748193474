#pragma once

#include "s57/CellGeometry.h"

namespace kelvox {

/// Writes the detail code of each vertex of one line; the ends get the highest.
///
/// Lines are worked on in blocks of at most 1,024 vertices whose ends always stay, which bounds the
/// time for a line of any shape.
void measureDetail(std::span<const CellGeometry::Vertex> line, std::span<std::uint8_t> details);

} // namespace kelvox
