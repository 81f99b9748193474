#pragma once

#include "library/ChartRecord.h"

#include <cstddef>

namespace kelvox {

/// What a view shows.
struct ChartArea {
    Rect bounds; ///< degrees; right may be above 180 and left below -180
    double scale = 50'000; ///< denominator
};

/// What one selection may hold.
struct SelectionLimits {
    std::size_t charts = 120;
    std::uint64_t fileBytes = std::uint64_t{96} << 20; ///< of the base files together
};

enum class ChartChoice { Cells, Rasters, Both };

/// Says which charts a view needs, the best for it first: each of them covers some place of the
/// view that none of those before it covers.
///
/// Charts between a quarter and four times the view's scale are best, the finest of them first, so
/// that finer ones lie over coarser ones. The others follow by how far their scale is off: a
/// chart reduced to a grey mass is only taken where none nearer in scale covers the place. Where
/// more is needed than the limits allow, coarser charts count as best until it fits.
class ChartSelection {
public:
    explicit ChartSelection(SelectionLimits limits = {})
        : m_limits(limits)
    {
    }

    /// Charts selected before stay until the view has moved or zoomed away from them by some
    /// margin, so that small steps to and fro change nothing.
    /// @param charts usable ones, each data set once
    void update(const ChartRecords& charts, const ChartArea& view, ChartChoice choice);
    void clear();

    [[nodiscard]] const ChartRecords& cells() const { return m_cells; }
    [[nodiscard]] const ChartRecords& rasters() const { return m_rasters; }

    /// Of several copies of one data set the newest edition with the latest update; without charts
    /// that cannot be used.
    [[nodiscard]] static ChartRecords usable(const ChartRecords& charts);

private:
    SelectionLimits m_limits;
    ChartRecords m_cells;
    ChartRecords m_rasters;
};

/// Degrees of longitude, a multiple of 360, by which a box is to be moved to meet another one;
/// only the first that does. Nothing when none does.
[[nodiscard]] bool meets(const Rect& box, const Rect& other, double& shift);

} // namespace kelvox
