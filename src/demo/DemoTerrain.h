#pragma once

#include "demo/DemoGround.h"
#include "s57/S57CellRecords.h"

#include <functional>
#include <span>

namespace kelvox {

/// The ground sampled on a lattice, and its contours.
///
/// The lattice is one for the whole world at a given spacing, so that charts of one spacing that
/// meet have the same contours at their border.
class DemoTerrain {
public:
    /// @param area metres, as DemoGround counts; multiples of the spacing
    DemoTerrain(const DemoGround& ground, const Rect& area, double spacing);

    [[nodiscard]] S57Place southWest() const { return node(0, 0); }
    [[nodiscard]] S57Place northEast() const { return node(m_columns, m_rows); }
    /// Elevation of the south-west corner.
    [[nodiscard]] double cornerElevation() const;

    /// Contours as segments with the higher ground on the left. Levels are elevations in metres,
    /// ascending, and at least half a metre apart.
    using Segment = std::function<void(S57Place from, S57Place to, int level)>;
    void contours(std::span<const double> levels, const Segment& segment) const;

private:
    [[nodiscard]] Point point(int column, int row) const;
    [[nodiscard]] S57Place node(int column, int row) const;

    const DemoGround& m_ground;
    double m_spacing;
    int m_firstColumn;
    int m_firstRow;
    int m_columns;
    int m_rows;
};

} // namespace kelvox
