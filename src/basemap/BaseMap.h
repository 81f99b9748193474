#pragma once

#include "base/Position.h"
#include "basemap/ShorelineFile.h"

#include <span>

namespace kelvox {

/// The land of the whole Earth, coarse and unofficial: what is shown where there is no chart.
///
/// Kept as the file has it, in square bins: each holds closed rings, to be filled even-odd, of its
/// land less lakes, more islands in them. Neighbours meet along the edges of their bins in the very
/// same points, no ring crosses a bin's edge, so neither the date line nor a pole is special.
/// About five bytes a point. Unchanging; shared between threads.
class BaseMap {
public:
    struct Vertex {
        std::uint16_t x; ///< 0 to 65535 over the bin's width
        std::uint16_t y; ///< the same from south to north, in latitude
    };
    struct Ring {
        std::uint32_t first; ///< its vertices; the last joins the first
        std::uint32_t count;
        std::uint8_t detail; ///< the highest of its vertices that are not its beginning or border
    };
    struct Bin {
        float west; ///< degrees, -180 to 180
        std::uint16_t row; ///< from the north
        std::uint32_t firstRing;
        std::uint32_t ringCount;
    };

    /// Makes rings of the tables. Fails when the numbers in them point outside; a line that does
    /// not close is left out.
    [[nodiscard]] static Result<BaseMap> from(const ShorelineTables& tables);
    /// Reads the finest file of a folder up to the one with a point every 200 m; without a folder
    /// where the Debian packages gmt-gshhg-low and gmt-gshhg-high keep theirs. Takes some tenths of
    /// a second: for a worker.
    [[nodiscard]] static Result<BaseMap> load(const std::filesystem::path& folder = systemFolder());
    [[nodiscard]] static std::filesystem::path systemFolder();

    [[nodiscard]] std::span<const Bin> bins() const { return m_bins; } ///< those with land
    [[nodiscard]] std::span<const Ring> rings(const Bin& bin) const
    {
        return std::span(m_rings).subspan(bin.firstRing, bin.ringCount);
    }
    [[nodiscard]] std::span<const Vertex> vertices(const Ring& ring) const
    {
        return std::span(m_vertices).subspan(ring.first, ring.count);
    }
    /// The code of the tolerance up to which each vertex is needed; see CellGeometry::detailCode().
    [[nodiscard]] std::span<const std::uint8_t> details(const Ring& ring) const
    {
        return std::span(m_details).subspan(ring.first, ring.count);
    }
    [[nodiscard]] double binDegrees() const { return m_binDegrees; }
    [[nodiscard]] double longitude(const Bin& bin, std::uint16_t x) const
    {
        return bin.west + x * m_binDegrees / most;
    }
    /// The Mercator ordinate, of 89.9° at most; between the steps of a table, within 60 m at 85°.
    [[nodiscard]] double ordinate(const Bin& bin, std::uint16_t y) const
    {
        const double* const steps = m_ordinates.data() + std::size_t{bin.row} * (tableSteps + 1);
        const unsigned step = y / stepSize;
        const unsigned rest = y % stepSize;
        return rest == 0 ? steps[step]
                         : steps[step] + (steps[step + 1] - steps[step]) * rest / stepSize;
    }
    /// Whether the edge between two vertices is no shore but the edge of their bin.
    [[nodiscard]] static bool isBorder(Vertex a, Vertex b)
    {
        const auto onSide = [](std::uint16_t u, std::uint16_t v) {
            return u == v && (u == 0 || u == most);
        };
        return onSide(a.x, b.x) || onSide(a.y, b.y);
    }
    /// Whether the land holds a position, for tests and answers; a few microseconds.
    [[nodiscard]] bool isLand(Position position) const;

    /// The scale, as its denominator, to which the shoreline is good: half a millimetre there is
    /// what it may be wrong.
    [[nodiscard]] int coarsestGoodScale() const { return m_goodScale; }
    [[nodiscard]] std::size_t vertexCount() const { return m_vertices.size(); }
    [[nodiscard]] std::size_t bytes() const; ///< of memory held

private:
    static constexpr std::uint16_t most = 65535;
    static constexpr unsigned stepSize = 257;
    static constexpr unsigned tableSteps = most / stepSize;

    class Builder;
    void buildOrdinates(int rows);

    double m_binDegrees = 0;
    int m_goodScale = 0;
    std::vector<Vertex> m_vertices;
    std::vector<std::uint8_t> m_details;
    std::vector<Ring> m_rings;
    std::vector<Bin> m_bins;
    std::vector<double> m_ordinates; ///< of each row, south to north
};

} // namespace kelvox
