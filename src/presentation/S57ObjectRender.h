#pragma once

#include "chartview/ViewFrame.h"
#include "presentation/Canvas.h"
#include "presentation/S52Item.h"
#include "presentation/ViewPathBuilder.h"
#include "s57/CellGeometry.h"

namespace kelvox {

/// The colours that the dedicated routines use, taken once from a colour table.
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

    [[nodiscard]] static RenderColors from(const S52CcieMap& colors);
};

/// What the user wants to see.
struct RenderSettings {
    bool showDepthContours = true;
};

/// Draws the features of cells into one picture. Holds no state of the chart: one for each thread.
class S57ObjectRender {
public:
    S57ObjectRender(const ViewFrame& frame, const RenderColors& colors,
                    const RenderSettings& settings);

    /// Draws some features of a cell, named by their places in its list, in that order.
    /// @param longitudeShift as for ViewPathBuilder
    void drawFeatures(const CellGeometry& geometry, std::span<const std::uint32_t> features,
                      double longitudeShift, Canvas& canvas);

private:
    struct Drawing {
        const CellGeometry& geometry;
        std::size_t index;
        const S57Feature& feature;
        ViewPathBuilder& paths;
        Canvas& canvas;
    };
    void drawObject(const Drawing& drawing) const;
    void drawDepth(const Drawing& drawing) const;
    void drawDepthContour(const Drawing& drawing) const;
    void drawLandArea(const Drawing& drawing) const;
    void drawLake(const Drawing& drawing) const;
    void drawCoverage(const Drawing& drawing) const;

    ViewFrame m_frame;
    RenderColors m_colors;
    RenderSettings m_settings;
};

} // namespace kelvox
