#include "presentation/S57ObjectRender.h"

#include "s57/S57Object.h"

namespace kelvox {

namespace {
constexpr float contourWidth = 1;
constexpr float coastWidth = 1;
constexpr int noCoverage = 2; ///< CATCOV

DisplayColor colorOf(const S52CcieMap& colors, std::string_view token)
{
    const auto it = colors.find(token);
    return it == colors.end() ? DisplayColor{0, 0, 0, 0} : it->second.color;
}
} // namespace

RenderColors RenderColors::from(const S52CcieMap& colors)
{
    return {.coverageColor = colorOf(colors, "DEPDW"),
            .landColor = colorOf(colors, "LANDA"),
            .coastLineColor = colorOf(colors, "CSTLN"),
            .lakeColor = colorOf(colors, "DEPVS"),
            .radiusColor = colorOf(colors, "CHGRN"),
            .coastFillColor = colorOf(colors, "DEPIT"),
            .shallowFillColor = colorOf(colors, "DEPVS"),
            .contourLineColor = colorOf(colors, "DEPCN"),
            .noDataColor = colorOf(colors, "NODTA")};
}

S57ObjectRender::S57ObjectRender(const ViewFrame& frame, const RenderColors& colors,
                                 const RenderSettings& settings)
    : m_frame(frame)
    , m_colors(colors)
    , m_settings(settings)
{
}

void S57ObjectRender::drawFeatures(const CellGeometry& geometry,
                                   std::span<const std::uint32_t> features, double longitudeShift,
                                   Canvas& canvas)
{
    ViewPathBuilder paths(m_frame, longitudeShift);
    const auto& all = geometry.cell().s57Features();
    for (const std::uint32_t index : features)
        drawObject({geometry, index, *all[index], paths, canvas});
}

void S57ObjectRender::drawObject(const Drawing& drawing) const
{
    if (!drawing.feature.s57Object())
        return;
    switch (drawing.feature.objectCode()) {
    case s57class::DEPARE:
        return drawDepth(drawing);
    case s57class::DEPCNT:
        return drawDepthContour(drawing);
    case s57class::LAKARE:
        return drawLake(drawing);
    case s57class::LNDARE:
        return drawLandArea(drawing);
    case s57class::M_COVR:
        return drawCoverage(drawing);
    default:
        return;
    }
}

void S57ObjectRender::drawDepth(const Drawing& drawing) const
{
    if (drawing.feature.geometry() != S57Feature::area)
        return;
    const S57Object& object = *drawing.feature.s57Object();
    const double minimum = object.drval1().value_or(0);
    if (minimum > 0)
        return; // the deep water of the coverage shows
    const bool drying = minimum < 0 || object.drval2().value_or(0) < 0;
    drawing.canvas.fillArea(drawing.paths.areaPath(drawing.geometry, drawing.index),
                            drying ? m_colors.coastFillColor : m_colors.shallowFillColor);
}

void S57ObjectRender::drawDepthContour(const Drawing& drawing) const
{
    if (m_settings.showDepthContours)
        drawing.canvas.strokeLine(drawing.paths.linePath(drawing.geometry, drawing.index),
                                  {m_colors.contourLineColor, contourWidth, LinePattern::Solid});
}

void S57ObjectRender::drawLandArea(const Drawing& drawing) const
{
    switch (drawing.feature.geometry()) {
    case S57Feature::line:
        drawing.canvas.strokeLine(drawing.paths.linePath(drawing.geometry, drawing.index),
                                  {m_colors.coastLineColor, coastWidth, LinePattern::Solid});
        return;
    case S57Feature::area:
        drawing.canvas.fillArea(drawing.paths.areaPath(drawing.geometry, drawing.index),
                                m_colors.landColor);
        return;
    default:
        return;
    }
}

void S57ObjectRender::drawLake(const Drawing& drawing) const
{
    if (drawing.feature.geometry() == S57Feature::area)
        drawing.canvas.fillArea(drawing.paths.areaPath(drawing.geometry, drawing.index),
                                m_colors.lakeColor);
}

void S57ObjectRender::drawCoverage(const Drawing& drawing) const
{
    if (drawing.feature.geometry() == S57Feature::area
        && drawing.feature.s57Object()->catcov() != noCoverage)
        drawing.canvas.fillArea(drawing.paths.areaPath(drawing.geometry, drawing.index),
                                m_colors.coverageColor);
}

} // namespace kelvox
