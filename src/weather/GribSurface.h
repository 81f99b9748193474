#pragma once

#include "weather/GribModel.h"

#include <vector>

namespace kelvox {

/// A smooth surface through the points of a scalar field, in the user's unit: Catmull-Rom splines
/// along rows and columns. Meant for a window of the grid, so that zoomed in little is prepared.
class GribSurface {
public:
    /// Columns and rows of the window are those of the grid; columns go on around a global grid.
    GribSurface(const GribModel& model, const GribPoints& points, GribField field, int firstColumn,
                int lastColumn, int firstRow, int lastRow);

    /// Not a number outside the window and in cells that lack a corner.
    [[nodiscard]] float at(double column, double row) const;
    /// Of the points themselves; not a number for both when there are none.
    [[nodiscard]] float least() const { return m_least; }
    [[nodiscard]] float most() const { return m_most; }

private:
    [[nodiscard]] std::size_t index(int column, int row) const
    {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns)
            + static_cast<std::size_t>(column);
    }
    void fillGaps();

    static constexpr int border = 2; ///< points around the window that the splines reach for
    int m_firstColumn;
    int m_firstRow;
    int m_columns;
    int m_rows;
    std::vector<float> m_values; ///< gaps next to values are filled to carry the splines
    std::vector<char> m_present;
    float m_least;
    float m_most;
};

} // namespace kelvox
