#include "presentation/S57ObjectRender.h"

#include "presentation/Dashes.h"
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
constexpr double smallestNamed = 20; ///< display points from corner to corner of what is named
constexpr double labelReach = 16; ///< pixels; a click this near a labelled place means it
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

Rect boxAround(Point middle, Size size)
{
    return Rect{middle.x, middle.y, middle.x, middle.y}.grownBy(size.width / 2, size.height / 2);
}

bool isCovered(const S57ObjectRender::Portion& portion, Point at)
{
    return std::ranges::any_of(portion.covered,
                               [&](const CoveredWaters& waters) { return waters.contains(at); });
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

std::vector<CoveredWaters> coveredWaters(const CellGeometry& geometry,
                                         std::span<const std::uint32_t> features,
                                         const ViewFrame& frame, double longitudeShift,
                                         double margin)
{
    std::vector<CoveredWaters> result;
    ViewPathBuilder paths(frame, longitudeShift, margin);
    for (const std::uint32_t index : features) {
        const S57Feature& feature = *geometry.cell().s57Features()[index];
        if (feature.objectCode() != s57class::M_COVR)
            break; // coverage comes first
        if (feature.geometry() != S57Feature::area || !feature.s57Object()
            || feature.s57Object()->catcov() == noCoverage)
            continue;
        const Path& rings = paths.areaPath(geometry, index);
        if (!rings.isEmpty())
            result.push_back({rings, rings.bounds()});
    }
    return result;
}

RenderColors RenderColors::from(const S52CcieMap& colors)
{
    // A library that lacks the colour of a text must not take the text away.
    const auto orInk = [&](std::string_view token) {
        return colorOf(colors, colors.contains(token) ? token : "CHBLK");
    };
    return {.coverageColor = colorOf(colors, "DEPDW"),
            .landColor = colorOf(colors, "LANDA"),
            .coastLineColor = colorOf(colors, "CSTLN"),
            .lakeColor = colorOf(colors, "DEPVS"),
            .radiusColor = colorOf(colors, "CHGRN"),
            .coastFillColor = colorOf(colors, "DEPIT"),
            .shallowFillColor = colorOf(colors, "DEPVS"),
            .contourLineColor = colorOf(colors, "DEPCN"),
            .noDataColor = colorOf(colors, "NODTA"),
            .soundingColor = orInk("SNDG2"),
            .inkColor = colorOf(colors, "CHBLK"),
            .textColor = orInk("UINFD")};
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

void S57ObjectRender::drawFeatures(const Portion& portion, const Target& target) const
{
    const CellGeometry& geometry = portion.geometry;
    ViewPathBuilder paths(m_frame, portion.longitudeShift);
    AffineTransform toPixels = m_frame.toPixels();
    toPixels.tx += toPixels.a * portion.longitudeShift;
    toPixels.ty += toPixels.b * portion.longitudeShift;
    Rect picture = m_frame.coveredBox(ViewPathBuilder::margin);
    picture.left -= portion.longitudeShift;
    picture.right -= portion.longitudeShift;
    const auto& all = geometry.cell().s57Features();
    for (const std::uint32_t index : portion.features) {
        const S57Feature& feature = *all[index];
        const auto anchor = geometry.anchor(index);
        if (!anchor || !isDrawn(feature, target.hits != nullptr))
            continue;
        const bool isPoint = feature.geometry() == S57Feature::point;
        const Point at = toPixels.map(*anchor);
        const bool covered = isCovered(portion, at);
        if (covered && isPoint && feature.objectCode() != s57class::SOUNDG)
            continue;
        if (target.hits)
            target.hits->beginFeature(index);
        drawObject({.geometry = geometry,
                    .index = index,
                    .feature = feature,
                    .object = *feature.s57Object(),
                    .anchor = at,
                    .cellRank = portion.cellRank,
                    .toPixels = toPixels,
                    .paths = paths,
                    .canvas = isPoint ? target.marks : target.ground,
                    .marks = target.marks,
                    .texts = target.texts,
                    .hits = target.hits,
                    .portion = portion,
                    .covered = covered,
                    .textsOnly = !geometry.bounds(index).intersects(picture)});
    }
}

void S57ObjectRender::hitOutline(const Parameter& p) const
{
    if (p.hits && !p.isPoint() && !p.textsOnly)
        p.hits->hitPath(p.isArea() ? p.area() : p.line(), p.isArea());
}

void S57ObjectRender::fillOutline(const Parameter& p, DisplayColor color) const
{
    if (!p.hits && !p.textsOnly)
        p.canvas.fillArea(p.area(), color);
    hitOutline(p);
}

void S57ObjectRender::strokeOutline(const Parameter& p, const Stroke& stroke) const
{
    if (!p.hits && !p.textsOnly) {
        if (stroke.pattern == LinePattern::Solid)
            p.canvas.strokeLine(p.line(), stroke);
        else
            p.canvas.strokeLine(
                p.paths.dashedPath(p.geometry, p.index,
                                   dashesOf(stroke.pattern).scaled(m_frame.pixelsPerPoint)),
                stroke);
    }
    hitOutline(p);
}

void S57ObjectRender::strokeFigure(const Parameter& p, const Path& figure,
                                   const Stroke& stroke) const
{
    if (p.hits || p.textsOnly)
        return;
    if (stroke.pattern == LinePattern::Solid)
        return p.canvas.strokeLine(figure, stroke);
    Path dashes;
    for (std::size_t i = 0; i < figure.subPathCount(); ++i)
        appendDashes(figure.subPath(i), dashesOf(stroke.pattern).scaled(m_frame.pixelsPerPoint), 0,
                     dashes);
    p.canvas.strokeLine(dashes, stroke);
}

Rect S57ObjectRender::pictureBox(double reach) const
{
    return {-reach, -reach, m_frame.width + reach, m_frame.height + reach};
}

bool S57ObjectRender::isDrawn(const S57Feature& feature, bool forHits) const
{
    using namespace s57class;
    constexpr int routeCentre = 108, track = 109, caution = 27, restricted = 112;
    if (!feature.s57Object())
        return false;
    const int code = feature.objectCode();
    // What makes the ground of the chart is always drawn, whatever its scale.
    if (code == DEPARE || code == DEPCNT || code == LNDARE || code == M_COVR)
        return true;
    if (m_quality != Quality::Full)
        return false;
    if (code >= 300 && code <= 312)
        return forHits; // never drawn, but found by a click
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
    case 300:
    case 304:
    case 305:
    case 306:
    case 308:
    case 309:
    case 310:
    case 312: // told of a place, never drawn
        if (p.isArea())
            hitOutline(p);
        return;
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
        return hitOutline(p); // the deep water of the coverage shows
    const bool drying = minimum < 0 || p.object.drval2().value_or(0) < 0;
    fillOutline(p, drying ? m_colors.coastFillColor : m_colors.shallowFillColor);
}

void S57ObjectRender::drawDepthContour(const Parameter& p) const
{
    if (m_settings.showDepthContours)
        strokeOutline(p, {m_colors.contourLineColor, thinLine, LinePattern::Solid});
}

void S57ObjectRender::drawLandArea(const Parameter& p) const
{
    if (p.isArea()) {
        fillOutline(p, m_colors.landColor);
        if (m_quality == Quality::Full)
            drawObjectName(p);
    } else if (p.isLine()) {
        strokeOutline(p, {m_colors.coastLineColor, thinLine, LinePattern::Solid});
    } else if (m_frame.view.scale() <= std::min(p.object.scale(), landPointScale)) {
        processSelectedInstruction(p, "SY(LNDARE01)");
    }
}

void S57ObjectRender::drawLake(const Parameter& p) const
{
    if (!p.isArea())
        return;
    fillOutline(p, m_colors.lakeColor);
    drawObjectName(p);
    drawElevation(p);
}

void S57ObjectRender::drawCoverage(const Parameter& p) const
{
    if (p.isArea() && p.object.catcov() != noCoverage)
        fillOutline(p, m_colors.coverageColor);
}

void S57ObjectRender::drawSounding(const Parameter& p) const
{
    if (!m_settings.showSoundings)
        return;
    const std::uint8_t least = CellGeometry::detailCode(m_soundingDetail);
    // The shoalest of a wider neighbourhood never gives way to a name.
    const std::uint8_t lasting = CellGeometry::detailCode(3 * m_soundingDetail);
    const Rect space = p.portion.textBox.isEmpty() ? pictureBox(50) : p.portion.textBox;
    for (const auto& sounding : p.geometry.soundings(p.index)) {
        if (sounding.detail < least)
            continue;
        const Point at = p.toPixels.map({sounding.longitude, sounding.ordinate});
        if (!space.contains(at) || isCovered(p.portion, at))
            continue;
        if (p.hits) {
            const double reach = soundingRoom / 2 * m_frame.pixelsPerPoint;
            p.hits->hitSounding(sounding, Rect{at.x, at.y, at.x, at.y}.grownBy(reach, reach));
            continue;
        }
        TextFigure figure =
            soundingFigure(sounding.depth, m_settings.depthUnit, m_settings.largeText);
        figure.color = m_colors.soundingColor;
        p.texts.addSounding({std::move(figure), at, sounding.depth, sounding.detail >= lasting});
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
    strokeFigure(p, circle, {m_colors.radiusColor, thinLine, LinePattern::Dash});
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
    const Point at = p.anchor + Point{x, -y} * m_frame.pixelsPerPoint;
    const Rect space = boxAround(
        at, {figure.size * 0.6 * static_cast<double>(figure.text.size()), figure.size * 1.2});
    if (p.hits)
        p.hits->hitBox(space);
    else if (!figure.text.empty() && !p.textsOnly)
        p.canvas.placeText(figure, at);
    p.texts.avoid(space);
}

void S57ObjectRender::addText(const Parameter& p, std::string text, S57TextModel::Rank rank,
                              bool centred, bool italic) const
{
    if (p.covered)
        return;
    if (p.hits) {
        // A label may lie anywhere around its place; what is sure is the place itself.
        if (p.isPoint())
            p.hits->hitBox(boxAround(p.anchor, {labelReach, labelReach}));
        return;
    }
    S57TextModel::Item item;
    item.figure.text = std::move(text);
    item.figure.size = m_settings.largeText ? 14 : 11;
    item.figure.italic = italic;
    item.figure.color = m_colors.textColor;
    item.figure.haloColor = m_colors.coverageColor.withOpacity(0.75);
    item.anchor = p.anchor;
    item.centred = centred;
    item.across = p.isArea() ? acrossPixels(p) : 0;
    item.rank = rank;
    item.cell = p.cellRank;
    item.order = p.index;
    p.texts.add(std::move(item));
}

double S57ObjectRender::acrossPixels(const Parameter& p)
{
    const Rect box = p.geometry.bounds(p.index);
    const Point one = p.toPixels.map({box.left, box.bottom});
    const Point other = p.toPixels.map({box.right, box.top});
    return std::hypot(other.x - one.x, other.y - one.y);
}

void S57ObjectRender::drawObjectName(const Parameter& p) const
{
    if (p.feature.isNavAid())
        return drawMarkName(p);
    if (!m_settings.showPlaceNames || !p.feature.hasName())
        return;
    const bool area = hasAreaName(p.feature.objectCode());
    if (area && p.isArea() && acrossPixels(p) < smallestNamed * m_frame.pixelsPerPoint)
        return; // too small for a name: it would stand on what lies about it
    using Rank = S57TextModel::Rank;
    const bool land = p.isArea() && p.feature.objectCode() == s57class::LNDARE;
    addText(p, std::string(p.object.name()),
            area       ? Rank::Area
                : land ? Rank::Land
                       : Rank::Place,
            area || p.isArea(), area);
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
    strokeFigure(p, legs, {m_colors.inkColor, thinLine, LinePattern::Dash});

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
    strokeFigure(p, arc, {m_colors.inkColor, 4, LinePattern::Solid});
    if (color)
        strokeFigure(p, arc, {*color, 2.4F, LinePattern::Solid});
}

} // namespace kelvox
