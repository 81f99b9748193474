#pragma once

#include "chartview/ViewFrame.h"
#include "presentation/Canvas.h"
#include "presentation/RenderSettings.h"
#include "presentation/S52Render.h"
#include "presentation/S57TextModel.h"
#include "presentation/ViewPathBuilder.h"
#include "s57/CellGeometry.h"
#include "s57/S57Object.h"

#include <span>

namespace kelvox {

/// The colours that the dedicated routines use, taken once from a colour scheme.
struct RenderColors {
    DisplayColor coverageColor; ///< DEPDW
    DisplayColor landColor; ///< LANDA
    DisplayColor coastLineColor; ///< CSTLN
    DisplayColor lakeColor; ///< DEPVS
    DisplayColor radiusColor; ///< CHGRN
    DisplayColor coastFillColor; ///< DEPIT
    DisplayColor shallowFillColor; ///< DEPVS too, on purpose
    DisplayColor contourLineColor; ///< DEPCN
    DisplayColor noDataColor; ///< NODTA, where no chart is
    DisplayColor soundingColor; ///< SNDG2; CHBLK where it is missing
    DisplayColor inkColor; ///< CHBLK
    DisplayColor textColor; ///< UINFD, the strongest of each scheme; CHBLK where it is missing

    [[nodiscard]] static RenderColors from(const S52CcieMap& colors);
};

/// Waters of a picture that some cell covers. Pixels.
struct CoveredWaters {
    Path rings; ///< even-odd
    Rect box; ///< around them

    [[nodiscard]] bool contains(Point p) const { return box.contains(p) && rings.contains(p); }
};

/// What a cell covers of a picture and a margin of pixels around it.
/// @param features as featuresIn() found them
[[nodiscard]] std::vector<CoveredWaters> coveredWaters(const CellGeometry& geometry,
                                                       std::span<const std::uint32_t> features,
                                                       const ViewFrame& frame,
                                                       double longitudeShift, double margin);

/// Learns what a click on the picture may hit, as the instructions draw it. Pixels.
class HitSink {
public:
    virtual ~HitSink() = default;
    /// All that follows belongs to this feature of the cell.
    virtual void beginFeature(std::uint32_t index) = 0;
    /// The outline of a feature; the inside belongs to it when it is an area.
    virtual void hitPath(const Path& outline, bool isArea) = 0;
    /// The space of a symbol or a text.
    virtual void hitBox(const Rect& box) = 0;
    virtual void hitSounding(const CellGeometry::Sounding& sounding, const Rect& box) = 0;
};

/// Draws the features of cells into one picture. Holds no state of the chart: one for each thread.
class S57ObjectRender {
public:
    enum class Quality { Full, Reduced };

    /// Some features of a cell and how they lie in the picture.
    struct Portion {
        const CellGeometry& geometry;
        std::span<const std::uint32_t> features; ///< places in the cell's list, drawn in that order
        std::uint32_t cellRank = 0; ///< 0 for the cell that lies on top
        double longitudeShift = 0; ///< as for ViewPathBuilder
        /// What the cells above cover, in pixels: no mark and no text of this cell stands there.
        std::span<const CoveredWaters> covered = {};
        /// Around the picture only texts are gathered, so that those near its edge are placed as
        /// they will be when they have come further in.
        Rect textBox = {}; ///< pixels; empty for the picture itself
    };
    /// Where it is drawn. The ground (areas, lines) of all cells lies beneath the marks (points,
    /// symbols) of all cells, so that no cell cuts its neighbour's marks at its border.
    struct Target {
        Canvas& ground;
        Canvas& marks;
        S57TextModel& texts;
        HitSink* hits = nullptr;
    };

    /// @param portrayal outlives what is drawn: symbols are handed on by reference
    S57ObjectRender(const ViewFrame& frame, const Portrayal& portrayal,
                    const RenderSettings& settings, Quality quality = Quality::Full);

    void drawFeatures(const Portion& portion, const Target& target) const;

    /// Whether the filters let a feature through: its class, the switches and its scale.
    /// @param forHits meta objects, which are never drawn, can still be found by a click
    [[nodiscard]] bool isDrawn(const S57Feature& feature, bool forHits = false) const;

private:
    /// One feature being drawn (the render parameter).
    struct Parameter {
        const CellGeometry& geometry;
        std::size_t index;
        const S57Feature& feature;
        const S57Object& object;
        Point anchor; ///< pixel
        std::uint32_t cellRank;
        AffineTransform toPixels;
        ViewPathBuilder& paths;
        Canvas& canvas; ///< for areas and lines of this feature
        Canvas& marks;
        S57TextModel& texts;
        HitSink* hits;
        const Portion& portion;
        bool covered; ///< the anchor, by a cell above
        bool textsOnly; ///< the feature lies outside the picture

        [[nodiscard]] const Path& area() const { return paths.areaPath(geometry, index); }
        [[nodiscard]] const Path& line() const { return paths.linePath(geometry, index); }
        [[nodiscard]] bool isPoint() const { return feature.geometry() == S57Feature::point; }
        [[nodiscard]] bool isArea() const { return feature.geometry() == S57Feature::area; }
        [[nodiscard]] bool isLine() const { return feature.geometry() == S57Feature::line; }
    };

    [[nodiscard]] Rect pictureBox(double reach) const;
    void drawObject(const Parameter& p) const;
    void fillOutline(const Parameter& p, DisplayColor color) const;
    void strokeOutline(const Parameter& p, const Stroke& stroke) const;
    void strokeFigure(const Parameter& p, const Path& figure, const Stroke& stroke) const;
    void hitOutline(const Parameter& p) const;
    // Dedicated routines.
    void drawDepth(const Parameter& p) const;
    void drawDepthContour(const Parameter& p) const;
    void drawLandArea(const Parameter& p) const;
    void drawLake(const Parameter& p) const;
    void drawCoverage(const Parameter& p) const;
    void drawSounding(const Parameter& p) const;
    void drawSeaBed(const Parameter& p) const;
    void drawTurbulence(const Parameter& p) const;
    void drawRadius(const Parameter& p) const;
    void drawAnnotation(const Parameter& p) const;
    void drawObjectName(const Parameter& p) const;
    void drawMarkName(const Parameter& p) const;
    void drawInformation(const Parameter& p) const;
    void drawElevation(const Parameter& p) const;
    void drawSector(const Parameter& p) const;
    void drawLightCharacter(const Parameter& p) const;
    /// From corner to corner of what the feature covers.
    [[nodiscard]] static double acrossPixels(const Parameter& p);
    void addText(const Parameter& p, std::string text, S57TextModel::Rank rank, bool centred,
                 bool italic) const;

    // Plain instructions.
    void drawLookUp(const Parameter& p) const;
    void processSelectedInstruction(const Parameter& p, std::string_view text) const;
    void drawInstruction(const Parameter& p, const Instruction& instruction) const;
    void drawSymbol(const Parameter& p, const Instruction& instruction) const;
    void drawLineStyle(const Parameter& p, const Instruction& instruction) const;
    void drawLineComplex(const Parameter& p, const Instruction& instruction) const;
    void drawAreaColor(const Parameter& p, const Instruction& instruction) const;
    void drawAreaPattern(const Parameter& p, const Instruction& instruction) const;
    void drawText(const Parameter& p, const Instruction& instruction) const;

    // Conditional procedures.
    void drawSymbolConditional(const Parameter& p, const std::string& name) const;
    void drawDepthArea(const Parameter& p) const;
    void drawLights(const Parameter& p) const;
    void drawObstruction(const Parameter& p) const;
    void drawShoreLineConstruction(const Parameter& p) const;
    void drawQualityOfPosition(const Parameter& p) const;
    void drawRestriction(const Parameter& p) const;
    void drawRestrictedArea(const Parameter& p) const;
    void drawTopMark(const Parameter& p) const;
    void drawWreck(const Parameter& p) const;

    ViewFrame m_frame;
    const Portrayal& m_portrayal;
    RenderColors m_colors;
    RenderSettings m_settings;
    Quality m_quality;
    float m_soundingDetail; ///< soundings below this detail would overprint each other
};

} // namespace kelvox
