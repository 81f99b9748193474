#pragma once

#include "base/File.h"
#include "base/Path.h"
#include "base/Rect.h"
#include "base/Result.h"
#include "raster/BSBHeader.h"
#include "raster/RasterChart.h"
#include "raster/TilePyramid.h"

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace kelvox {

/// A BSB/KAP raster chart: its header, its place on the earth and its picture.
///
/// readHeader() is enough for a list of charts; loadChart() adds the picture, of which only rows
/// and tiles asked for are decoded. Files that begin with "NOS/" and those with 9 added to every
/// byte are read alike; a path with ".NOS" or ".nos" in it takes its geo-referencing from the
/// companion file beside it that ends in .GEO, where there is one.
///
/// Opening and closing belong to one thread; a loaded chart is read by any number of threads, but
/// for the rotation, which belongs to the view.
class BSBChart final : public RasterChart {
public:
    BSBChart() = default;
    explicit BSBChart(std::filesystem::path path)
        : m_path(std::move(path))
    {
    }

    /// Whether a file has the name of a raster chart: .KAP, or .NOS and .NO1 of the older forms.
    [[nodiscard]] static bool isNamedAsChart(const std::filesystem::path& path);

    /// Opens the file and reads its header; what was loaded before is released.
    [[nodiscard]] Result<void> loadHeader(const std::filesystem::path& path);
    /// The same for path(), its reason dropped.
    bool readHeader() { return loadHeader(m_path).has_value(); }
    /// Reads the header where that has not been done and makes the picture ready. A chart in the
    /// unpublished compressed form (CMP/LZ) keeps its frame but has no picture.
    /// @param tileBudget bytes of decoded tiles kept in memory
    [[nodiscard]] Result<void> loadChart(std::size_t tileBudget = TilePyramid::defaultBudget);
    void closeChart();

    [[nodiscard]] bool hasHeader() const { return m_file != nullptr; }
    [[nodiscard]] bool loaded() const { return m_pyramid != nullptr; }
    /// All that the header says; defaults when none is loaded.
    [[nodiscard]] const BSBHeader& header() const { return m_header; }
    /// The picture. Only of a loaded() chart.
    [[nodiscard]] TilePyramid& pyramid() const { return *m_pyramid; }

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
    /// File name without folder and extension, and without what stands before a backslash.
    [[nodiscard]] std::string shortName() const;
    [[nodiscard]] const std::string& number() const { return m_header.number; }
    [[nodiscard]] const std::string& title() const { return m_header.name; }
    /// Number, title and scale in one line, e.g. "1542 NORTH LAKE 1:42240".
    [[nodiscard]] std::string description() const;
    [[nodiscard]] double version() const { return m_header.version; }
    [[nodiscard]] const std::string& edition() const { return m_header.edition; }
    [[nodiscard]] const std::string& revision() const { return m_header.noticeDate; }
    [[nodiscard]] const std::string& projection() const { return m_header.projection; }
    [[nodiscard]] const std::string& depthUnits() const { return m_header.depthUnits; }
    [[nodiscard]] int scale() const { return m_header.scale; } ///< denominator; 0 when not given
    [[nodiscard]] bool scaled() const { return m_header.scale > 0; } ///< the scale is known
    [[nodiscard]] ColorTable colorTable(PaletteScheme scheme) const
    {
        return m_header.palettes.colorTable(scheme);
    }
    [[nodiscard]] double phaseShift() const { return hasHeader() ? m_header.phaseShift : 0; }
    /// Whether the header fixes the chart's place; without, every position is unknown.
    [[nodiscard]] bool hasCalibration() const
    {
        return hasHeader() && m_header.polynomials.allHaveLevel();
    }

    /// Bounding box in degrees, WGS 84, x longitude and y latitude: of the border polygon, else of
    /// the reference points, else of the picture's corners. Across the date line the right edge is
    /// above 180. Empty without calibration.
    [[nodiscard]] Rect extents() const { return m_extents; }
    /// The border polygon in WGS 84; empty when the header has none.
    [[nodiscard]] std::vector<Position> border() const;
    /// Whether the charted area holds the position: within the border, or within the picture when
    /// there is no border.
    [[nodiscard]] bool contains(Position position) const;
    /// Where the view drew the chart last, in its own units; empty until it says so.
    [[nodiscard]] Rect hitRect() const { return m_hitRect; }
    void setHitRect(const Rect& rect) { m_hitRect = rect; }

    /// Value of a polynomial; 0 for a level outside 1 to 5.
    [[nodiscard]] static double polynomial(const std::array<double, 12>& coefficients, int level,
                                           double x, double y)
    {
        return Polynomial{level, coefficients}.at(x, y);
    }

    [[nodiscard]] Size size() const override;
    [[nodiscard]] Position originOnGPSPosition() const override;
    [[nodiscard]] Position extentOnGPSPosition() const override;
    [[nodiscard]] Point positionToPoint(Position position) const override;
    [[nodiscard]] Position pointToPosition(Point point) const override;
    /// The header's skew where it agrees within 3 degrees with the direction of true north at the
    /// picture's middle, else that direction: some headers leave the skew out or at 0.
    [[nodiscard]] float angle() const override { return m_angle; }
    void setRotate(float degrees) override;
    void resetAngleTransform() override;
    [[nodiscard]] Point rotatedPoint(Point diagonal) const override;

private:
    void copyExtents();
    [[nodiscard]] float measuredAngle() const;

    std::filesystem::path m_path;
    std::shared_ptr<const MappedFile> m_file;
    ChartBytes m_bytes;
    BSBHeader m_header;
    std::unique_ptr<TilePyramid> m_pyramid;
    Rect m_extents;
    Path m_borderPixels; ///< the border polygon in image points
    Rect m_hitRect;
    float m_angle = 0;
    float m_rotate = 0;
    Point m_turn{1, 0}; ///< cosine and sine of angle and rotation together
};

} // namespace kelvox
