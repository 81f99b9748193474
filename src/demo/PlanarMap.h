#pragma once

#include "s57/S57CellRecords.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace kelvox {

/// Divides a box into areas along contours and overlaid outlines, with every line between two areas
/// kept once: the topology that charts want.
///
/// Contours come as short segments and never cross each other. Outlines (quays, dredged areas) may
/// cross contours and each other but run along nothing else. Places are in whole chart units.
class PlanarMap {
public:
    /// One line from node to node with the areas beside it as it is walked.
    struct Line {
        std::vector<S57Place> places;
        int left = exterior; ///< index of an area
        int right = exterior;
        int source = border; ///< level of the contour, border, or outlineSource()
    };
    struct Step {
        std::uint32_t line = 0;
        bool reversed = false;
    };
    using Ring = std::vector<Step>;
    struct Area {
        int kind = 0; ///< what the caller's rule said
        std::vector<Ring> rings; ///< the outer one first, clockwise; inner ones counter-clockwise
    };
    /// The kind of the ground between two levels (number of levels below it) and inside a set of
    /// outlines (bit by bit). Neighbours of one kind become one area.
    using Rule = std::function<int(int band, std::uint64_t outlines)>;

    static constexpr int exterior = -1;
    static constexpr int border = -1;
    static constexpr int outlineSource(int outline) { return -2 - outline; }

    PlanarMap(S57Place southWest, S57Place northEast);
    /// The ground above the level is on the left.
    void addContour(S57Place from, S57Place to, int level);
    /// A closed outline; at most 64. What lies outside the box is cut off.
    void addOutline(std::span<const S57Place> ring);
    /// @param cornerBand number of levels below the ground in the south-west corner
    /// False when the lines contradict each other.
    [[nodiscard]] bool build(int cornerBand, const Rule& rule);

    [[nodiscard]] const std::vector<Line>& lines() const { return m_lines; }
    [[nodiscard]] const std::vector<Area>& areas() const { return m_areas; }
    /// The box itself.
    [[nodiscard]] const Ring& outside() const { return m_outside; }

private:
    struct Segment {
        std::uint32_t from = 0; ///< indexes of points
        std::uint32_t to = 0;
        int source = border;
    };
    friend class PlanarMapBuilder;

    S57Place m_southWest;
    S57Place m_northEast;
    std::vector<std::pair<std::pair<S57Place, S57Place>, int>> m_input;
    std::vector<std::vector<S57Place>> m_outlines;
    std::vector<Line> m_lines;
    std::vector<Area> m_areas;
    Ring m_outside;
};

} // namespace kelvox
