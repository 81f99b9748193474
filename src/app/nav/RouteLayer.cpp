#include "app/nav/RouteLayer.h"

#include "app/ChartView.h"
#include "app/Text.h"
#include "app/nav/HaloText.h"
#include "app/nav/NavText.h"
#include "app/nav/WaypointSymbols.h"
#include "navigation/NavMath.h"

#include <QMenu>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_map>
#include <unordered_set>

namespace kelvox {

namespace {
constexpr double waypointReach = 16; ///< widget pixels at interface scale 1, for a finger
constexpr double legReach = 7;
constexpr int symbolSize = 22;

double distanceToLine(QPointF p, const QPolygonF& line)
{
    double best = std::numeric_limits<double>::infinity();
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        const QPointF along = line[i + 1] - line[i];
        const double length = QPointF::dotProduct(along, along);
        const double share =
            length > 0 ? std::clamp(QPointF::dotProduct(p - line[i], along) / length, 0.0, 1.0) : 0;
        const QPointF off = p - (line[i] + along * share);
        best = std::min(best, std::hypot(off.x(), off.y()));
    }
    return best;
}

/// The middle of a line by its length, and its direction there.
std::pair<QPointF, double> middleOf(const QPolygonF& line, double* length)
{
    double whole = 0;
    for (qsizetype i = 0; i + 1 < line.size(); ++i)
        whole += QLineF(line[i], line[i + 1]).length();
    *length = whole;
    double left = whole / 2;
    for (qsizetype i = 0; i + 1 < line.size(); ++i) {
        const QLineF piece(line[i], line[i + 1]);
        if (left <= piece.length() && piece.length() > 0)
            return {piece.pointAt(left / piece.length()),
                    std::atan2(piece.dy(), piece.dx()) * 180 / std::numbers::pi};
        left -= piece.length();
    }
    return {line.isEmpty() ? QPointF() : line.first(), 0};
}

/// Boxes of names that are placed already, in a coarse grid, so that thousands are quick.
class Occupied {
public:
    bool take(const QRectF& box)
    {
        bool free = true;
        forEachCell(box, [&](std::vector<QRectF>& cell) {
            for (const QRectF& other : cell)
                free = free && !other.intersects(box);
        });
        if (free)
            forEachCell(box, [&](std::vector<QRectF>& cell) { cell.push_back(box); });
        return free;
    }

private:
    template <typename Use> void forEachCell(const QRectF& box, Use&& use)
    {
        constexpr double size = 64;
        for (int x = static_cast<int>(std::floor(box.left() / size));
             x <= static_cast<int>(std::floor(box.right() / size)); ++x)
            for (int y = static_cast<int>(std::floor(box.top() / size));
                 y <= static_cast<int>(std::floor(box.bottom() / size)); ++y)
                use(m_cells[(static_cast<long long>(x) << 32) ^ static_cast<unsigned>(y)]);
    }
    std::unordered_map<long long, std::vector<QRectF>> m_cells;
};
} // namespace

Position RouteLayer::placeOf(const WaypointPointer& waypoint) const
{
    return m_moved && waypoint == m_dragged ? m_dragPosition : waypoint->positionOnGPS();
}

void RouteLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    m_scale = look.scale;
    m_legs.clear();
    m_drawn.clear();
    const SheetToPoints toPoints(frame);
    Program& program = m_actions.program();
    const RoutePointer& selected = m_actions.selection().route();
    const RoutePointer& hovered = m_actions.selection().hoveredRoute();
    const RoutePointer& active = program.routeController().gotoRoute();
    if (program.settings().boolean("showRoutes", true))
        for (const auto& route : program.routes().objectEnumerator())
            if (route != selected && route != active && route != hovered)
                paintRoute(painter, route, Rank::Other, toPoints, look);
    if (active && active != selected)
        paintRoute(painter, active, Rank::Active, toPoints, look);
    if (hovered && hovered != selected && hovered != active)
        paintRoute(painter, hovered, Rank::Selected, toPoints, look);
    if (selected)
        paintRoute(painter, selected, selected == active ? Rank::Active : Rank::Selected, toPoints,
                   look);
    paintPulledLeg(painter, toPoints, look);
    paintActiveLeg(painter, frame, toPoints, look);
    paintWaypoints(painter, frame, toPoints, look);
}

void RouteLayer::paintRoute(QPainter& painter, const RoutePointer& route, Rank rank,
                            const SheetToPoints& toPoints, const LayerLook& look)
{
    const QColor color = look.color(rank == Rank::Other ? "APLRT" : "PLRTE");
    const QPen pen(color, rank == Rank::Other ? 1 : 2.2, Qt::SolidLine, Qt::RoundCap,
                   Qt::RoundJoin);
    const auto& references = route->waypointReferences();
    WaypointPointer before;
    std::size_t beforeIndex = 0;
    for (std::size_t i = 0; i < references.size(); ++i) {
        const auto& waypoint = references[i]->waypoint;
        if (!waypoint || !waypoint->hasPosition())
            continue;
        if (before) {
            const Position from = placeOf(before);
            const Position to = placeOf(waypoint);
            SheetLine line;
            line.addLeg(from, to);
            line.project(toPoints, 16, [&](const QPolygonF& part) {
                painter.setPen(pen);
                painter.drawPolyline(part);
                m_legs.push_back({{route, beforeIndex}, part});
                if (rank != Rank::Other)
                    paintLegLabel(painter, part, from, to, look);
            });
        }
        before = waypoint;
        beforeIndex = i;
    }
}

void RouteLayer::paintLegLabel(QPainter& painter, const QPolygonF& line, Position from, Position to,
                               const LayerLook& look)
{
    QFont font = painter.font();
    font.setPixelSize(qRound(12 * look.scale));
    const QFontMetricsF metrics(font);
    const QString words = navtext::bearing(m_actions.program(), NavMath::bearingFromPoint(from, to))
        + QStringLiteral("  ") + navtext::distance(NavMath::distanceFromPoint(from, to));
    const double width = metrics.horizontalAdvance(words);
    double length = 0;
    auto [middle, angle] = middleOf(line, &length);
    if (length < width + 40 * look.scale)
        return;
    // An arrow shows the way; the words are never upside down.
    painter.save();
    painter.translate(middle);
    painter.rotate(angle);
    const double tip = 6 * look.scale;
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.color("PLRTE"));
    painter.drawPolygon(QPolygonF{{tip, 0}, {-tip, tip * 0.8}, {-tip, -tip * 0.8}});
    if (angle > 90 || angle < -90)
        painter.rotate(180);
    painter.setFont(font);
    drawHaloText(painter, {-width / 2, -8 * look.scale}, words, look.color("UINFD"),
                 look.color("DEPDW"));
    painter.restore();
}

void RouteLayer::paintPulledLeg(QPainter& painter, const SheetToPoints& toPoints,
                                const LayerLook& look)
{
    if (!m_pulled || !m_moved)
        return;
    const auto from = m_pulled->route->waypointReference(m_pulled->index);
    const auto to = m_pulled->route->waypointReference(m_pulled->index + 1);
    if (!from || !to)
        return;
    const QColor color = look.color("PLRTE");
    SheetLine line;
    line.addLeg(from->waypoint->positionOnGPS(), m_dragPosition);
    line.addLeg(m_dragPosition, to->waypoint->positionOnGPS());
    painter.setPen(QPen(color, 2, Qt::DashLine));
    line.project(toPoints, 16, [&](const QPolygonF& part) { painter.drawPolyline(part); });
    painter.setBrush(look.color("DEPDW"));
    painter.setPen(QPen(color, 2));
    painter.drawEllipse(toPoints.nearest(sheetPlaceOf(m_dragPosition)), 6 * look.scale,
                        6 * look.scale);
}

void RouteLayer::paintActiveLeg(QPainter& painter, const ViewFrame& frame,
                                const SheetToPoints& toPoints, const LayerLook& look) const
{
    Program& program = m_actions.program();
    const WaypointController& steering = program.waypointController();
    if (!steering.hasActiveWaypoint() || !steering.gotoWaypoint()->hasPosition())
        return;
    constexpr double metresPerInch = 0.0254;
    constexpr double metresPerNauticalMile = 1852;
    const Position end = placeOf(steering.gotoWaypoint());
    const double pointsPerMile = metresPerNauticalMile * frame.view.dpi() / metresPerInch
        / frame.view.scale() / std::cos(end.latitude * std::numbers::pi / 180);
    const QColor color = look.color("PLRTE");
    QColor faint = color;
    faint.setAlphaF(0.6F);
    painter.setBrush(Qt::NoBrush);
    const Position start = steering.startPositionOnGPS();
    if (start.isKnown()) {
        SheetLine leg;
        leg.addLeg(start, end);
        leg.project(toPoints, 64, [&](const QPolygonF& part) {
            painter.setPen(QPen(color, 3.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
            painter.drawPolyline(part);
        });
        const double limit = program.settings().number(
            "crossTrackDistance", WaypointController::defaultCrossTrackDistance);
        // The corridor runs beside the leg: square to its own direction at each end.
        if (limit * pointsPerMile > 6)
            for (const float side : {-90.0F, 90.0F}) {
                const auto beside = [&](Position at, float bearing) {
                    return NavMath::positionAtDistance(at, NavMath::fixBearing(bearing + side),
                                                       static_cast<float>(limit));
                };
                const float out = NavMath::bearingFromPoint(start, end);
                const float in = NavMath::bearingFromPoint(end, start) + 180;
                SheetLine edge;
                edge.addLeg(beside(start, out), beside(end, in));
                painter.setPen(QPen(faint, 1, Qt::DashLine));
                edge.project(toPoints, 16,
                             [&](const QPolygonF& part) { painter.drawPolyline(part); });
            }
    }
    const Position vessel = steering.positionOnGPS();
    if (vessel.isKnown()) {
        SheetLine course;
        course.addLeg(vessel, end);
        painter.setPen(QPen(faint, 1, Qt::DotLine));
        course.project(toPoints, 16, [&](const QPolygonF& part) { painter.drawPolyline(part); });
    }
    const double radius = program.settings().number("waypointApproachDistance",
                                                    WaypointController::defaultApproachDistance)
        * pointsPerMile;
    const double reach = std::hypot(frame.width, frame.height) / frame.pixelsPerPoint;
    if (radius > 4 && radius < 2 * reach) {
        painter.setPen(
            QPen(color, 1.4, steering.isWaypointArrivalAlarmOn() ? Qt::SolidLine : Qt::DashLine));
        painter.drawEllipse(toPoints.nearest(sheetPlaceOf(end)), radius, radius);
    }
}

void RouteLayer::paintWaypoints(QPainter& painter, const ViewFrame& frame,
                                const SheetToPoints& toPoints, const LayerLook& look)
{
    Program& program = m_actions.program();
    const NavSelection& selection = m_actions.selection();
    const WaypointPointer& active = program.waypointController().gotoWaypoint();
    const auto important = [&](const WaypointPointer& waypoint) {
        return waypoint == selection.waypoint() || waypoint == selection.hoveredWaypoint()
            || waypoint == active || waypoint == m_dragged;
    };
    std::unordered_set<const Waypoint*> ofRoutes;
    for (const RoutePointer& route :
         {selection.route(), selection.hoveredRoute(), program.routeController().gotoRoute()})
        if (route)
            for (const auto& reference : route->waypointReferences())
                ofRoutes.insert(reference->waypoint.get());
    const bool showAll = program.settings().boolean("showWaypoints", true);
    const double width = frame.width / frame.pixelsPerPoint;
    const double height = frame.height / frame.pixelsPerPoint;
    const double size = symbolSize * look.scale;
    const QRectF visible(-size, -size, width + 2 * size, height + 2 * size);
    const Rect sheet = toPoints.visible(size);
    for (const auto& waypoint : program.waypoints().objectEnumerator()) {
        const bool isOfRoute = ofRoutes.contains(waypoint.get());
        if (!waypoint->hasPosition()
            || !(isOfRoute || (showAll && waypoint->show) || important(waypoint)))
            continue;
        const SheetPlace place = sheetPlaceOf(placeOf(waypoint));
        if (place.y < sheet.bottom || place.y > sheet.top)
            continue;
        if (const QPointF at = toPoints.nearest(place); visible.contains(at))
            m_drawn.push_back({waypoint, at});
    }
    const auto pixels = static_cast<int>(size);
    for (const DrawnWaypoint& drawn : m_drawn) {
        const QPixmap symbol =
            waypointSymbol(drawn.waypoint->iconIndex, look, pixels, frame.pixelsPerPoint);
        painter.drawPixmap(drawn.at - QPointF(pixels, pixels) / 2, symbol);
        if (!important(drawn.waypoint))
            continue;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(look.color("PLRTE"), 2));
        if (drawn.waypoint == active)
            painter.drawEllipse(drawn.at, size * 0.75, size * 0.75);
        else
            painter.drawRoundedRect(
                QRectF(drawn.at - QPointF(size, size) * 0.65, QSizeF(size, size) * 1.3), 3, 3);
    }
    if (!program.settings().boolean("showWaypointNames", true))
        return;
    // Those that matter get their names first; the others where there is room.
    std::vector<std::size_t> order(m_drawn.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::ranges::stable_sort(order, [&](std::size_t a, std::size_t b) {
        const auto rank = [&](std::size_t i) {
            return important(m_drawn[i].waypoint)              ? 0
                : ofRoutes.contains(m_drawn[i].waypoint.get()) ? 1
                                                               : 2;
        };
        return rank(a) < rank(b);
    });
    paintNames(painter, order, look);
}

void RouteLayer::paintNames(QPainter& painter, const std::vector<std::size_t>& order,
                            const LayerLook& look)
{
    constexpr std::size_t mostNames = 400; // more than that nobody reads
    QFont font = painter.font();
    font.setPixelSize(qRound(12 * look.scale));
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    const double half = symbolSize * look.scale / 2;
    Occupied occupied;
    for (const DrawnWaypoint& drawn : m_drawn)
        if (m_drawn.size() <= mostNames)
            occupied.take(QRectF(drawn.at - QPointF(half, half) * 0.6, QSizeF(half, half) * 1.2));
    std::size_t painted = 0;
    for (const std::size_t i : order) {
        const DrawnWaypoint& drawn = m_drawn[i];
        const QString name = QString::fromStdString(drawn.waypoint->name);
        const QSizeF size(metrics.horizontalAdvance(name), metrics.height());
        // Right, left, below, above.
        const QPointF corners[] = {{half + 3, -size.height() / 2},
                                   {-half - 3 - size.width(), -size.height() / 2},
                                   {-size.width() / 2, half},
                                   {-size.width() / 2, -half - size.height()}};
        for (const QPointF& corner : corners)
            if (const QRectF box(drawn.at + corner, size); occupied.take(box)) {
                drawHaloText(painter, box.bottomLeft() - QPointF(0, metrics.descent()), name,
                             look.color("UINFD"), look.color("DEPDW"));
                ++painted;
                break;
            }
        if (painted == mostNames)
            break;
    }
}

WaypointPointer RouteLayer::waypointAt(QPointF point) const
{
    WaypointPointer best;
    double nearest = waypointReach * m_scale;
    for (const DrawnWaypoint& drawn : m_drawn) {
        const QPointF off = drawn.at - point;
        if (const double distance = std::hypot(off.x(), off.y()); distance <= nearest) {
            nearest = distance;
            best = drawn.waypoint;
        }
    }
    return best;
}

std::optional<RouteLayer::Leg> RouteLayer::legAt(QPointF point) const
{
    std::optional<Leg> best;
    double nearest = legReach * m_scale;
    for (const DrawnLeg& drawn : m_legs)
        if (const double distance = distanceToLine(point, drawn.line); distance <= nearest) {
            nearest = distance; // of two on each other the one painted later, which is selected
            best = drawn.leg;
        }
    return best;
}

std::optional<ChartItem> RouteLayer::itemAt(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    if (auto waypoint = waypointAt(pointer.at))
        return ChartItem{QString::fromStdString(waypoint->name), waypoint->positionOnGPS(),
                         [this, waypoint] { m_actions.openWaypoint(waypoint); }};
    if (const auto leg = legAt(pointer.at))
        return ChartItem{QString::fromStdString(leg->route->name), pointer.position,
                         [this, leg] { m_actions.openRoute(leg->route, leg->index); }};
    return std::nullopt;
}

void RouteLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const Position position = pointer.position;
    if (const auto waypoint = waypointAt(pointer.at)) {
        m_actions.addWaypointToMenu(menu, waypoint);
        menu.addAction(text("NSStartRouteHere"), &m_actions, [this, waypoint] {
            m_actions.startRouteAt({waypoint->positionOnGPS(), waypoint});
        });
    } else {
        menu.addAction(text("NSDropWaypoint"), &m_actions,
                       [this, position] { m_actions.dropWaypoint(position); });
        menu.addAction(text("NSGotoHere"), &m_actions,
                       [this, position] { m_actions.gotoPosition(position); });
        menu.addAction(text("NSStartRouteHere"), &m_actions, [this, position] {
            m_actions.startRouteAt({position, nullptr});
        });
    }
    if (const auto leg = legAt(pointer.at)) {
        menu.addSeparator();
        menu.addAction(text("NSInsertPoint"), &m_actions, [this, leg, position] {
            m_actions.editor().insertIntoLeg(leg->route, leg->index, {position, nullptr});
        });
        m_actions.addRouteToMenu(menu, leg->route, leg->index + 1);
    }
    if (m_actions.program().waypointController().hasActiveWaypoint()) {
        menu.addSeparator();
        menu.addAction(text("NSStopNavigating"), &m_actions, &NavActions::stopNavigating);
    }
    menu.addSeparator();
}

bool RouteLayer::press(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    m_dragged = nullptr;
    m_pulled.reset();
    m_moved = false;
    if (m_actions.isLocked() || m_actions.host().tool())
        return false;
    m_dragged = waypointAt(pointer.at);
    if (m_dragged)
        return true;
    // Only the selected route gives way to the hand: the chart is dragged across the others.
    const auto leg = legAt(pointer.at);
    if (!leg || leg->route != m_actions.selection().route())
        return false;
    m_pulled = leg;
    return true;
}

void RouteLayer::move(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    if (!m_dragged && !m_pulled)
        return; // taken back by Esc while the button is still down
    m_moved = true;
    m_dragPosition = pointer.position;
}

void RouteLayer::release(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    const auto dragged = std::exchange(m_dragged, nullptr);
    const auto pulled = std::exchange(m_pulled, std::nullopt);
    if (!std::exchange(m_moved, false))
        return;
    if (dragged) {
        m_actions.program().waypoints().editWaypointPosition(dragged, pointer.position);
        m_actions.selection().selectWaypoint(dragged);
    } else if (pulled) {
        m_actions.editor().insertIntoLeg(pulled->route, pulled->index,
                                         {pointer.position, waypointAt(pointer.at)});
        m_actions.selection().selectRoute(pulled->route, pulled->index + 1);
    }
}

bool RouteLayer::cancel()
{
    if (!m_dragged && !m_pulled)
        return false;
    m_dragged = nullptr;
    m_pulled.reset();
    m_moved = false;
    return true;
}

bool RouteLayer::click(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    if (const auto waypoint = waypointAt(pointer.at)) {
        m_actions.selection().selectWaypoint(waypoint);
        m_actions.showWaypointCard(waypoint);
        return true;
    }
    if (const auto leg = legAt(pointer.at)) {
        m_actions.selection().selectRoute(leg->route, leg->index + 1);
        return true;
    }
    return false;
}

bool RouteLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    if (const auto waypoint = waypointAt(pointer.at)) {
        m_actions.openWaypoint(waypoint);
        return true;
    }
    if (const auto leg = legAt(pointer.at)) {
        m_actions.openRoute(leg->route, leg->index + 1);
        return true;
    }
    return false;
}

} // namespace kelvox
