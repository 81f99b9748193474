#include "presentation/S57ObjectRender.h"

#include "base/Settings.h"
#include "presentation/LabelTexts.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr float thinLine = 1;
constexpr int noCoverage = 2; ///< CATCOV
constexpr int landPointScale = 2'500'000; ///< islands too small to be areas vanish beyond it
constexpr double scaleAllowance = 1.25; ///< beyond its own scale a feature stays this much longer
constexpr double soundingRoom = 24; ///< display points from one figure to the next
constexpr double feetPerMetre = 3.2808399;
constexpr double metresPerInch = 0.0254;

DisplayColor colorOf(const S52CcieMap& colors, std::string_view token)
{
    const auto it = colors.find(token);
    return it == colors.end() ? DisplayColor{0, 0, 0, 0} : it->second.color;
}

/// Names of waters and areas: set in the middle, in italics.
bool hasAreaName(int classCode)
{
    constexpr std::array codes{3, 4, 46, 63, 66, 92, 96, 112, 119, 121, 135};
    return std::ranges::find(codes, classCode) != codes.end();
}

/// The value behind a mark such as "X:" in an annotation's text.
std::optional<double> annotationField(std::string_view text, std::string_view mark)
{
    const auto at = text.find(mark);
    if (at == std::string_view::npos)
        return std::nullopt;
    const auto rest = text.substr(at + mark.size());
    double value = 0;
    const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    return read.ec == std::errc{} ? std::optional(value) : std::nullopt;
}
} // namespace

void RenderSettings::loadSettings(const Settings& settings)
{
    const std::array<std::pair<std::string_view, bool*>, 10> switches{
        {{"showElevations", &showElevations},
         {"showCautionAreas", &showCautionAreas},
         {"showRestrictedAreas", &showRestrictedAreas},
         {"showDepthContours", &showDepthContours},
         {"showLightSectors", &showSectors},
         {"showMarkNames", &showMarkNames},
         {"showPlaceNames", &showPlaceNames},
         {"showSoundings", &showSoundings},
         {"showRecommendedRoutes", &showRecommendedRoutes},
         {"showSurface", &showSurface}}};
    for (const auto& [key, value] : switches)
        *value = settings.boolean(key, *value);
}

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
            .noDataColor = colorOf(colors, "NODTA"),
            .soundingColor = colorOf(colors, "SNDG2"),
            .textColor = colorOf(colors, "CHBLK")};
}

S57ObjectRender::S57ObjectRender(const ViewFrame& frame, const Portrayal& portrayal,
                                 const RenderSettings& settings, Quality quality)
    : m_frame(frame)
    , m_portrayal(portrayal)
    , m_colors(RenderColors::from(portrayal.colors))
    , m_settings(settings)
    , m_quality(quality)
{
    const AffineTransform t = frame.toPixels();
    m_soundingDetail =
        static_cast<float>(soundingRoom * frame.pixelsPerPoint / std::hypot(t.c, t.d));
}

void S57ObjectRender::drawFeatures(const CellGeometry& geometry,
                                   std::span<const std::uint32_t> features, std::uint32_t cellRank,
                                   double longitudeShift, Canvas& canvas, S57TextModel& texts)
{
    ViewPathBuilder paths(m_frame, longitudeShift);
    AffineTransform toPixels = m_frame.toPixels();
    toPixels.tx += toPixels.a * longitudeShift;
    toPixels.ty += toPixels.b * longitudeShift;
    const auto& all = geometry.cell().s57Features();
    for (const std::uint32_t index : features) {
        const S57Feature& feature = *all[index];
        const auto anchor = geometry.anchor(index);
        if (anchor && isDrawn(feature))
            drawObject({geometry, index, feature, *feature.s57Object(), toPixels.map(*anchor),
                        cellRank, toPixels, paths, canvas, texts});
    }
}

bool S57ObjectRender::isDrawn(const S57Feature& feature) const
{
    using namespace s57class;
    constexpr int routeCentre = 108, track = 109, caution = 27, restricted = 112;
    if (!feature.s57Object())
        return false;
    const int code = feature.objectCode();
    // What makes the ground of the chart is always drawn, whatever its scale.
    if (code == DEPARE || code == DEPCNT || code == LNDARE || code == M_COVR)
        return true;
    if ((code >= 300 && code <= 312) || m_quality != Quality::Full)
        return false;
    // The switches work as a chain, on purpose: each area switch also rules those before it.
    const bool restrictedOn = m_settings.showRestrictedAreas;
    const bool cautionOn = restrictedOn && m_settings.showCautionAreas;
    if ((code == routeCentre || code == track) && !(cautionOn && m_settings.showRecommendedRoutes))
        return false;
    if ((code == caution && !cautionOn) || (code == restricted && !restrictedOn))
        return false;
    return m_settings.showAtAllScales
        || feature.s57Object()->scale() * scaleAllowance >= m_frame.view.scale();
}

void S57ObjectRender::drawObject(const Parameter& p) const
{
    switch (p.feature.objectCode()) {
    case s57class::ACHBRT:
        drawRadius(p);
        return drawLookUp(p);
    case s57class::DEPARE:
        return drawDepth(p);
    case s57class::DEPCNT:
        return drawDepthContour(p);
    case s57class::LAKARE:
        return drawLake(p);
    case s57class::LNDARE:
        return drawLandArea(p);
    case s57class::SBDARE:
        return drawSeaBed(p);
    case s57class::SOUNDG:
        return drawSounding(p);
    case s57class::WATTUR:
        return drawTurbulence(p);
    case s57class::M_COVR:
        return drawCoverage(p);
    case s57class::annotation:
        return drawAnnotation(p);
    default:
        return drawLookUp(p);
    }
}

void S57ObjectRender::drawDepth(const Parameter& p) const
{
    if (!p.isArea())
        return;
    const double minimum = p.object.drval1().value_or(0);
    if (minimum > 0)
        return; // the deep water of the coverage shows
    const bool drying = minimum < 0 || p.object.drval2().value_or(0) < 0;
    p.canvas.fillArea(p.area(), drying ? m_colors.coastFillColor : m_colors.shallowFillColor);
}

void S57ObjectRender::drawDepthContour(const Parameter& p) const
{
    if (m_settings.showDepthContours)
        p.canvas.strokeLine(p.line(), {m_colors.contourLineColor, thinLine, LinePattern::Solid});
}

void S57ObjectRender::drawLandArea(const Parameter& p) const
{
    if (p.isArea()) {
        p.canvas.fillArea(p.area(), m_colors.landColor);
        if (m_quality == Quality::Full)
            drawObjectName(p);
    } else if (p.isLine()) {
        p.canvas.strokeLine(p.line(), {m_colors.coastLineColor, thinLine, LinePattern::Solid});
    } else if (m_frame.view.scale() <= std::min(p.object.scale(), landPointScale)) {
        processSelectedInstruction(p, "SY(LNDARE01)");
    }
}

void S57ObjectRender::drawLake(const Parameter& p) const
{
    if (!p.isArea())
        return;
    p.canvas.fillArea(p.area(), m_colors.lakeColor);
    drawObjectName(p);
    drawElevation(p);
}

void S57ObjectRender::drawCoverage(const Parameter& p) const
{
    if (p.isArea() && p.object.catcov() != noCoverage)
        p.canvas.fillArea(p.area(), m_colors.coverageColor);
}

void S57ObjectRender::drawSounding(const Parameter& p) const
{
    if (!m_settings.showSoundings)
        return;
    const std::uint8_t least = CellGeometry::detailCode(m_soundingDetail);
    const Rect picture{-50, -50, m_frame.width + 50.0, m_frame.height + 50.0};
    for (const auto& sounding : p.geometry.soundings(p.index)) {
        if (sounding.detail < least)
            continue;
        const Point at = p.toPixels.map({sounding.longitude, sounding.ordinate});
        if (!picture.contains(at))
            continue;
        TextFigure figure =
            soundingFigure(sounding.depth, m_settings.depthUnit, m_settings.largeText);
        figure.color = m_colors.soundingColor;
        p.canvas.placeText(figure, at);
    }
}

void S57ObjectRender::drawSeaBed(const Parameter& p) const
{
    if (!m_settings.showSurface)
        return;
    const std::string qualifier = p.object.readable(s57attribute::NATQUA);
    const std::string nature = p.object.readable(s57attribute::NATSUR);
    if (!qualifier.empty() || !nature.empty())
        addText(p, qualifier + " " + nature, S57TextModel::Rank::Detail, true, true);
}

void S57ObjectRender::drawTurbulence(const Parameter& p) const
{
    const std::string kind = p.object.readable(s57attribute::CATWAT);
    if (!kind.empty())
        addText(p, kind, S57TextModel::Rank::Detail, true, true);
}

void S57ObjectRender::drawRadius(const Parameter& p) const
{
    // The swinging circle of an anchor berth, true to scale.
    const auto metres = p.object.radius();
    if (!metres || *metres <= 0 || *metres > 20'000)
        return;
    const Point place = *p.geometry.anchor(p.index);
    const double latitude = std::atan(std::sinh(place.y));
    const double pixels = *metres / metresPerInch * m_frame.view.dpi() / m_frame.view.scale()
        / std::cos(latitude) * m_frame.pixelsPerPoint;
    const double reach = pixels + std::hypot(m_frame.width, m_frame.height);
    if (std::hypot(p.anchor.x - m_frame.width / 2.0, p.anchor.y - m_frame.height / 2.0) > reach)
        return;
    constexpr int corners = 72;
    Path circle;
    for (int i = 0; i <= corners; ++i) {
        const double angle = 2 * std::numbers::pi * i / corners;
        circle.lineTo(p.anchor + Point{std::cos(angle), std::sin(angle)} * pixels);
    }
    p.canvas.strokeLine(circle, {m_colors.radiusColor, thinLine, LinePattern::Dash});
}

void S57ObjectRender::drawAnnotation(const Parameter& p) const
{
    // The name holds the text and, behind "X:", "Y:" and "S:", its offset and size in points.
    std::string_view name = p.object.name();
    const double x = annotationField(name, "X:").value_or(0);
    const double y = annotationField(name, "Y:").value_or(0);
    const double size = std::clamp(annotationField(name, "S:").value_or(11), 6.0, 72.0);
    name = name.substr(0, std::min({name.find("X:"), name.find("Y:"), name.find("S:")}));
    while (name.ends_with(' '))
        name.remove_suffix(1);
    TextFigure figure;
    figure.text = name;
    figure.size = static_cast<float>(size);
    figure.color = m_colors.textColor;
    figure.haloColor = m_colors.coverageColor;
    if (!figure.text.empty())
        p.canvas.placeText(figure, p.anchor + Point{x, -y} * m_frame.pixelsPerPoint);
}

void S57ObjectRender::addText(const Parameter& p, std::string text, S57TextModel::Rank rank,
                              bool centred, bool italic) const
{
    S57TextModel::Item item;
    item.figure.text = std::move(text);
    item.figure.size = m_settings.largeText ? 14 : 11;
    item.figure.italic = italic;
    item.figure.color = m_colors.textColor;
    item.figure.haloColor = m_colors.coverageColor.withOpacity(0.75);
    item.anchor = p.anchor;
    item.centred = centred;
    item.rank = rank;
    item.cell = p.cellRank;
    item.order = p.index;
    p.texts.add(std::move(item));
}

void S57ObjectRender::drawObjectName(const Parameter& p) const
{
    if (p.feature.isNavAid())
        return drawMarkName(p);
    if (!m_settings.showPlaceNames || !p.feature.hasName())
        return;
    const bool area = hasAreaName(p.feature.objectCode());
    addText(p, std::string(p.object.name()),
            area ? S57TextModel::Rank::Area : S57TextModel::Rank::Place, area || p.isArea(), area);
}

void S57ObjectRender::drawMarkName(const Parameter& p) const
{
    if (m_settings.showMarkNames && p.feature.hasName())
        addText(p, std::string(p.object.name()), S57TextModel::Rank::Mark, false, false);
}

void S57ObjectRender::drawInformation(const Parameter& p) const
{
    if (!p.object.information().empty())
        addText(p, std::string(p.object.information()), S57TextModel::Rank::Detail, false, false);
}

void S57ObjectRender::drawElevation(const Parameter& p) const
{
    const auto metres = p.object.elevation();
    if (!m_settings.showElevations || !metres)
        return;
    addText(p,
            m_settings.heightsInMetres ? fmt::format("{:.0f}m", *metres)
                                       : fmt::format("{:.0f}ft", *metres * feetPerMetre),
            S57TextModel::Rank::Detail, false, false);
}

void S57ObjectRender::drawLightCharacter(const Parameter& p) const
{
    if (!m_settings.showMarkNames)
        return;
    const std::string character = lightCharacter(p.object, m_settings.heightsInMetres);
    if (!character.empty())
        addText(p, character, S57TextModel::Rank::Light, false, false);
}

void S57ObjectRender::drawSector(const Parameter& p) const
{
    constexpr double arcRadius = 56; ///< display points: 20 mm
    constexpr double legLength = 70;
    const auto from = p.object.sectr1();
    const auto to = p.object.sectr2();
    if (!from || !to)
        return;
    // Bearings are stated from seaward; the view may be turned.
    const double turn = m_frame.view.rotate();
    const auto direction = [&](double bearing) {
        const double angle = (bearing + 180 - turn) * std::numbers::pi / 180;
        return Point{std::sin(angle), -std::cos(angle)} * m_frame.pixelsPerPoint;
    };
    Path legs;
    for (const double bearing : {*from, *to}) {
        legs.moveTo(p.anchor);
        legs.lineTo(p.anchor + direction(bearing) * legLength);
    }
    p.canvas.strokeLine(legs, {m_colors.textColor, thinLine, LinePattern::Dash});

    double sweep = std::fmod(*to - *from, 360);
    if (sweep <= 0)
        sweep += 360;
    const int pieces = std::max(2, static_cast<int>(sweep / 2));
    Path arc;
    for (int i = 0; i <= pieces; ++i)
        arc.lineTo(p.anchor + direction(*from + sweep * i / pieces) * arcRadius);
    const auto colours = p.object.colour();
    const std::string_view token = colours.empty() ? "CHMGD"
        : colours.front() == 3                     ? "LITRD"
        : colours.front() == 4                     ? "LITGN"
                                                   : "LITYW";
    const DisplayColor* color = m_portrayal.color(token);
    // A dark edge keeps yellow apart from white water.
    p.canvas.strokeLine(arc, {m_colors.textColor, 4, LinePattern::Solid});
    if (color)
        p.canvas.strokeLine(arc, {*color, 2.4F, LinePattern::Solid});
}

} // namespace kelvox
