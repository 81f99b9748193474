#include "ais/AISPicture.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace kelvox {
namespace {

using Shape = AISSymbol::Shape;

constexpr double metresPerFoot = 1 / 3.28084;
constexpr double metresPerMile = 1852;
constexpr double highestLatitude = 85; // where the chart sheet ends
constexpr double longestVector = 20'000; // view points; painters go wrong far outside a view
constexpr double longestLabel = 160; // view points; only decides what is left out

/// A direction in the view and what lies to starboard of it.
struct Axes {
    Point ahead;
    Point starboard;

    Axes(double bearing, double rotation)
    {
        const double angle = (bearing - rotation) * std::numbers::pi / 180;
        ahead = {std::sin(angle), std::cos(angle)};
        starboard = {ahead.y, -ahead.x};
    }
    [[nodiscard]] Point place(Point origin, double right, double forward) const
    {
        return origin + starboard * right + ahead * forward;
    }
};

/// A hull in feet about its antenna: x to starboard, y ahead.
struct Hull {
    double bow, stern, port, starboard;

    explicit Hull(const AISPosition& target)
    {
        const auto reference = target.referencePoint();
        // Without bow and port distances the antenna's place is not known: the middle is taken.
        const bool isPlaced = reference.y > 0 || target.beam() - reference.x > 1e-3;
        bow = isPlaced ? reference.y : target.length() / 2;
        starboard = isPlaced ? reference.x : target.beam() / 2;
        stern = bow - target.length();
        port = starboard - target.beam();
    }
    [[nodiscard]] double reach() const
    {
        return std::hypot(std::max(bow, -stern), std::max(starboard, -port));
    }
};

void polygon(Path& path, Point at, const Axes& axes, std::span<const Point> corners, double scale)
{
    for (const Point corner : corners)
        path.lineTo(axes.place(at, corner.x * scale, corner.y * scale));
    path.lineTo(path.points().front());
}

void circle(Path& path, Point at, double radius)
{
    constexpr int corners = 24;
    for (int i = 0; i <= corners; ++i) {
        const double angle = i % corners * 2 * std::numbers::pi / corners;
        const Point p = at + Point{radius * std::sin(angle), radius * std::cos(angle)};
        i == 0 ? path.moveTo(p) : path.lineTo(p);
    }
}

void line(Path& path, Point from, Point to)
{
    path.moveTo(from);
    path.lineTo(to);
}

/// Bow, notch and stern corners of the triangles, in symbol lengths.
constexpr Point classACorners[] = {{0, 0.6}, {0.3, -0.4}, {-0.3, -0.4}};
constexpr Point classBCorners[] = {{0, 0.6}, {0.25, -0.4}, {0, -0.15}, {-0.25, -0.4}};
constexpr Point diamondCorners[] = {{0, 0.35}, {0.35, 0}, {0, -0.35}, {-0.35, 0}};
constexpr double bowOfTriangle = 0.6;
constexpr double restingSize = 0.75; // a vessel at rest is drawn smaller

/// What the shapes of one target are made from.
struct Drawing {
    const AISPosition& target;
    const AISDisplay& display;
    AISSymbol& symbol;
    double pointsPerFoot;
    double rotation;
};

double vectorLength(const AISPosition& target, const AISDisplay& display, double pointsPerFoot)
{
    if (!target.underway())
        return 0;
    const double feet = target.sog() * metresPerMile / 60 * display.vectorMinutes / metresPerFoot;
    return std::clamp(feet * pointsPerFoot, 0.0, longestVector);
}

/// Nothing of the symbol but its label lies farther from the antenna; a little too much.
double farthestReach(const AISPosition& target, const AISDisplay& display, double pointsPerFoot)
{
    const double hull = (target.length() + target.beam()) * pointsPerFoot + display.symbolLength;
    return std::max({2 * display.symbolLength, hull, vectorLength(target, display, pointsPerFoot)});
}

/// Heading, else course, else up the view.
Axes bowOf(const Drawing& drawing)
{
    const auto& target = drawing.target;
    if (isKnown(target.hdg()))
        return {target.hdg(), drawing.rotation};
    if (isKnown(target.cog()))
        return {target.cog(), drawing.rotation};
    return {0, 0};
}

bool hasTrueOutline(const Drawing& drawing)
{
    const auto& target = drawing.target;
    // At rest the course is only noise, so a hull needs a heading then.
    const bool isOriented = isKnown(target.hdg()) || (target.underway() && isKnown(target.cog()));
    return isOriented && target.beam() > 0
        && target.length() * drawing.pointsPerFoot >= drawing.display.symbolLength;
}

void addHull(const Drawing& drawing, const Axes& axes)
{
    constexpr double foreship = 0.2; // of the length, from the shoulders to the bow
    const Hull hull(drawing.target);
    const double shoulder = hull.bow - foreship * (hull.bow - hull.stern);
    const Point corners[] = {{(hull.port + hull.starboard) / 2, hull.bow},
                             {hull.starboard, shoulder},
                             {hull.starboard, hull.stern},
                             {hull.port, hull.stern},
                             {hull.port, shoulder}};
    auto& symbol = drawing.symbol;
    polygon(symbol.outline, symbol.at, axes, corners, drawing.pointsPerFoot);
    symbol.reach = hull.reach() * drawing.pointsPerFoot;
}

Shape shapeOf(const Drawing& drawing)
{
    const auto& target = drawing.target;
    if (target.radarTarget())
        return Shape::Radar;
    if (target.cursor())
        return Shape::Cursor;
    if (target.gps())
        return Shape::Receiver;
    if (hasTrueOutline(drawing))
        return Shape::TrueOutline;
    if (target.own())
        return Shape::Own;
    return target.equipmentClass() == AISClass::B ? Shape::ClassB : Shape::ClassA;
}

/// The outline and, in symbol.reach, its farthest point. @return from `at` to the bow
double addOutline(const Drawing& drawing, const Axes& axes)
{
    auto& symbol = drawing.symbol;
    const double full = drawing.display.symbolLength;
    const double size = symbol.stationary ? full * restingSize : full;
    symbol.reach = bowOfTriangle * full;
    switch (symbol.shape) {
    case Shape::ClassA:
        polygon(symbol.outline, symbol.at, axes, classACorners, size);
        return bowOfTriangle * size;
    case Shape::ClassB:
        polygon(symbol.outline, symbol.at, axes, classBCorners, size);
        return bowOfTriangle * size;
    case Shape::TrueOutline:
        addHull(drawing, axes);
        return Hull(drawing.target).bow * drawing.pointsPerFoot;
    case Shape::Own:
        circle(symbol.outline, symbol.at, 0.5 * full);
        circle(symbol.outline, symbol.at, 0.3 * full);
        return 0.5 * full;
    case Shape::Radar:
        circle(symbol.outline, symbol.at, 0.35 * full);
        return 0.35 * full;
    case Shape::Receiver:
        polygon(symbol.outline, symbol.at, {0, 0}, diamondCorners, full);
        return 0;
    case Shape::Cursor:
        for (const Point arm : {Point{1, 0}, Point{0, 1}, Point{-1, 0}, Point{0, -1}})
            line(symbol.outline, symbol.at + arm * (0.15 * full), symbol.at + arm * (0.6 * full));
        return 0;
    }
    return 0;
}

void addLines(const Drawing& drawing, const Axes& bowAxes, double bow)
{
    auto& symbol = drawing.symbol;
    const auto& target = drawing.target;
    const double length = drawing.display.symbolLength;
    if (symbol.timedOut) {
        // The old course says nothing any more.
        const double arm = 0.45 * length;
        line(symbol.strike, symbol.at + Point{-arm, -arm}, symbol.at + Point{arm, arm});
        line(symbol.strike, symbol.at + Point{-arm, arm}, symbol.at + Point{arm, -arm});
        return;
    }
    if (symbol.stationary)
        return;
    if (isKnown(target.hdg())) {
        line(symbol.headingLine, bowAxes.place(symbol.at, 0, bow),
             bowAxes.place(symbol.at, 0, bow + length));
        symbol.reach = std::max(symbol.reach, bow + length);
    }
    const double ahead = vectorLength(target, drawing.display, drawing.pointsPerFoot);
    if (isKnown(target.cog()) && ahead > 0) {
        line(symbol.courseVector, symbol.at,
             Axes(target.cog(), drawing.rotation).place(symbol.at, 0, ahead));
        symbol.reach = std::max(symbol.reach, ahead);
    }
}

void addLabel(const Drawing& drawing, const Axes& bowAxes)
{
    auto& symbol = drawing.symbol;
    if (!drawing.display.showVesselNames || symbol.shape == Shape::Cursor)
        return;
    symbol.label = drawing.target.name();
    // Beside the symbol, away from where it is going.
    symbol.labelOnLeft = !symbol.stationary && bowAxes.ahead.x > 0.3;
    const double side = symbol.labelOnLeft ? -1 : 1;
    symbol.labelAt = symbol.at + Point{side * 0.8 * drawing.display.symbolLength, 0};
}

void begin(AISSymbol& symbol, const AISPosition& target, Point at)
{
    symbol.mmsi = target.mmsi();
    symbol.at = at;
    symbol.classB = target.equipmentClass() == AISClass::B;
    symbol.own = target.own();
    symbol.stationary = target.isVessel() && target.stationary();
    symbol.label.clear();
    symbol.labelOnLeft = false;
    for (Path* path : {&symbol.outline, &symbol.headingLine, &symbol.courseVector, &symbol.strike})
        path->clear();
}

} // namespace

AISDisplay AISDisplay::fromSettings(const Settings& settings)
{
    AISDisplay display;
    const std::pair<std::string_view, bool*> filters[] = {
        {"showUnderway", &display.showUnderway},
        {"showStationary", &display.showStationary},
        {"showVesselNames", &display.showVesselNames},
        {"showAISClassB", &display.showAISClassB},
    };
    for (const auto& [key, value] : filters)
        *value = settings.boolean(key, *value);
    display.vectorMinutes = settings.number("aisVectorMinutes", display.vectorMinutes);
    return display;
}

bool AISDisplay::shows(const AISPosition& target) const
{
    if (!target.show() || !target.isPositionKnown())
        return false;
    if (!target.isVessel())
        return true;
    if (!showAISClassB && target.equipmentClass() == AISClass::B)
        return false;
    return target.underway() ? showUnderway : showStationary;
}

std::optional<AISPicture::Place> AISPicture::placeOf(const AISPosition& target, const AISView& view,
                                                     const AISDisplay& display)
{
    const auto position = target.positionOnGPS();
    if (!display.shows(target) || std::abs(position.latitude) >= highestLatitude)
        return std::nullopt;
    const Place place{view.pointAt(position),
                      view.pointsPerMetre(position.latitude) * metresPerFoot};
    if (!std::isfinite(place.at.x) || !std::isfinite(place.at.y)
        || !std::isfinite(place.pointsPerFoot))
        return std::nullopt;
    const double reach = farthestReach(target, display, place.pointsPerFoot);
    const double room = std::max(reach, display.showVesselNames ? longestLabel : 0);
    if (!view.visible.grownBy(room, reach).contains(place.at))
        return std::nullopt;
    return place;
}

void AISPicture::update(std::span<const AISPosition* const> targets, const AISView& view,
                        const AISDisplay& display, AISPosition::Time now)
{
    m_count = 0;
    std::optional<std::size_t> selected;
    for (const auto* target : targets) {
        const auto place = placeOf(*target, view, display);
        if (!place)
            continue;
        if (m_count == m_symbols.size())
            m_symbols.emplace_back();
        auto& symbol = m_symbols[m_count];
        begin(symbol, *target, place->at);
        symbol.timedOut = target->timedOut(now);
        symbol.selected = display.selected == target->mmsi();
        symbol.alarmed = display.alarmed == target->mmsi();
        const Drawing drawing{*target, display, symbol, place->pointsPerFoot, view.rotation};
        symbol.shape = shapeOf(drawing);
        const Axes bowAxes = bowOf(drawing);
        const double bow = addOutline(drawing, bowAxes);
        addLines(drawing, bowAxes, bow);
        addLabel(drawing, bowAxes);
        if (symbol.selected)
            selected = m_count;
        ++m_count;
    }
    if (selected)
        std::swap(m_symbols[*selected], m_symbols[m_count - 1]);
}

std::optional<std::int32_t> AISPicture::targetAt(Point point, double tolerance) const
{
    std::optional<std::int32_t> found;
    double nearest = std::numeric_limits<double>::infinity();
    for (const auto& symbol : symbols()) {
        const double distance = std::hypot(point.x - symbol.at.x, point.y - symbol.at.y);
        if (distance > symbol.reach + tolerance || distance > nearest)
            continue;
        if (distance <= tolerance || symbol.outline.contains(point)
            || symbol.outline.distanceTo(point) <= tolerance) {
            nearest = distance;
            found = symbol.mmsi;
        }
    }
    return found;
}

} // namespace kelvox
