#include "app/VesselLayer.h"

#include "app/Program.h"
#include "app/Text.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double metresPerInch = 0.0254;
constexpr double metresPerFoot = 0.3048;
constexpr double metresPerNauticalMile = 1852;
constexpr double slowest = 0.2; // knots; below it a course is noise
constexpr double longestLine = 20'000; // painters go wrong far outside a view

double pointsPerMetre(const ViewFrame& frame, double latitude)
{
    return frame.view.dpi() / metresPerInch / frame.view.scale()
        / std::cos(latitude * std::numbers::pi / 180);
}

/// A direction over ground as a vector of display points, y down, on the turned chart.
QPointF along(double degreesTrue, double length, const ViewFrame& frame)
{
    const double angle = (degreesTrue - frame.view.rotate()) * std::numbers::pi / 180;
    return {std::sin(angle) * length, -std::cos(angle) * length};
}

/// The vessel's outline in display points about its antenna; empty when its size is not known or
/// too small to be seen, or nobody knows where its bow points.
QPolygonF hull(const LiveData& live, double pointsPerFoot, double bowDegrees,
               const ViewFrame& frame)
{
    constexpr double smallest = 24; // display points from bow to stern
    constexpr double foreship = 0.3; // of the length, from the shoulders to the bow
    const Settings& settings = live.settings();
    const double length = settings.number("vesselLength");
    const double beam = settings.number("vesselBeam");
    if (length <= 0 || beam <= 0 || !isKnown(bowDegrees) || length * pointsPerFoot < smallest)
        return {};
    double bow = std::clamp(settings.number("antennaFromBow"), 0.0, length);
    double right = std::clamp(settings.number("antennaFromStarboard"), 0.0, beam);
    if (bow <= 0 && right <= 0) { // never told: in the middle
        bow = length / 2;
        right = beam / 2;
    }
    const double shoulder = bow - foreship * length;
    const std::pair<double, double> corners[] = {{right - beam / 2, bow},
                                                 {right, shoulder},
                                                 {right - beam * 0.06, bow - length},
                                                 {right - beam * 0.94, bow - length},
                                                 {right - beam, shoulder}};
    QPolygonF polygon;
    for (const auto& [starboard, ahead] : corners)
        polygon << along(bowDegrees, ahead * pointsPerFoot, frame)
                + along(bowDegrees + 90, starboard * pointsPerFoot, frame);
    return polygon;
}
} // namespace

LiveData& VesselLayer::live() const
{
    return m_host.program().live();
}

void VesselLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    paintAnchor(painter, frame, look);
    paintVessel(painter, frame, look);
}

void VesselLayer::paintAnchor(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const Position anchor = live().gps().anchorPosition();
    if (!anchor.isKnown())
        return;
    const QPointF at = pointOf(anchor, frame);
    const double radius =
        std::min(live().settings().number("anchorDragDistance") * metresPerNauticalMile
                     * pointsPerMetre(frame, anchor.latitude),
                 longestLine);
    QPolygonF swing;
    for (const Position position : live().swing())
        swing << pointOf(position, frame);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(look.color("CHGRD"), 1.2));
    painter.drawPolyline(swing);
    QColor wash = look.color("CHMGF");
    wash.setAlphaF(0.08F);
    painter.setBrush(wash);
    painter.setPen(QPen(look.color("CHMGD"), 2, Qt::DashLine));
    painter.drawEllipse(at, radius, radius);
    // An anchor: ring, shank, stock and flukes.
    const double size = 9 * look.scale;
    painter.setBrush(Qt::NoBrush);
    for (const auto& [color, width] :
         {std::pair(look.color("DEPDW"), 5.0), std::pair(look.color("CHMGD"), 2.2)}) {
        painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap));
        painter.drawEllipse(at - QPointF(0, size), size * 0.25, size * 0.25);
        painter.drawLine(at - QPointF(0, size * 0.75), at + QPointF(0, size));
        painter.drawLine(at + QPointF(-size * 0.5, -size * 0.35),
                         at + QPointF(size * 0.5, -size * 0.35));
        painter.drawArc(QRectF(at - QPointF(size, size), QSizeF(2 * size, 2 * size)), 200 * 16,
                        140 * 16);
    }
}

void VesselLayer::paintVessel(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const GPSController& gps = live().gps();
    const Position position = gps.position();
    if (!position.isKnown())
        return;
    const QPointF at = pointOf(position, frame);
    const bool stale = gps.positionIsStale();
    const QColor color = look.color("SHIPS");
    const double scale = pointsPerMetre(frame, position.latitude);
    const double course = gps.courseOverGround();
    const double speed = gps.speedOverGround();
    const double heading = live().compass().headingTrue;
    const bool sails = isKnown(course) && isKnown(speed) && speed > slowest;
    const double bow = isKnown(heading) ? heading : sails ? course : noValue;
    const auto outline = hull(live(), scale * metresPerFoot, bow, frame);

    if (!stale) { // an old course says nothing about where the vessel is going
        const double minutes = live().settings().number("vesselVectorMinutes", 6);
        const double ahead =
            sails ? std::min(speed * minutes / 60 * metresPerNauticalMile * scale, longestLine) : 0;
        if (isKnown(heading) && live().settings().boolean("showHeadingLine", true)) {
            painter.setPen(QPen(color, 1.2));
            painter.drawLine(at, at + along(heading, std::max(70 * look.scale, ahead), frame));
        }
        if (ahead > 0) {
            painter.setPen(QPen(color, 2, Qt::DashLine));
            painter.drawLine(at, at + along(course, ahead, frame));
            // A bar at the end, where the vessel will be.
            const QPointF end = at + along(course, ahead, frame);
            const QPointF side = along(course + 90, 5 * look.scale, frame);
            painter.setPen(QPen(color, 2));
            painter.drawLine(end - side, end + side);
        }
    }
    const QPen pen(color, 2.2 * look.scale, stale ? Qt::DotLine : Qt::SolidLine);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    if (!outline.isEmpty()) {
        QColor deck = look.color("DEPDW");
        deck.setAlphaF(0.85F);
        painter.setBrush(deck);
        painter.drawPolygon(outline.translated(at));
        painter.setBrush(color);
        painter.drawEllipse(at, 2 * look.scale, 2 * look.scale);
    } else {
        painter.drawEllipse(at, 8 * look.scale, 8 * look.scale);
        painter.drawEllipse(at, 3 * look.scale, 3 * look.scale);
    }
    if (stale) {
        QFont font = painter.font();
        font.setPixelSize(qRound(16 * look.scale));
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(at + QPointF(11, -8) * look.scale, QStringLiteral("?"));
    }
}

std::optional<ChartItem> VesselLayer::itemAt(const ChartPointer& pointer, const ViewFrame& frame)
{
    constexpr double reach = 14;
    const Position position = live().gps().position();
    if (!position.isKnown())
        return std::nullopt;
    const QPointF away = pointOf(position, frame) - pointer.at;
    if (std::hypot(away.x(), away.y()) > reach)
        return std::nullopt;
    return ChartItem{.name = text("NSOwnVessel"), .position = position, .open = [this] {
                         m_host.openPanel(QStringLiteral("gps"));
                     }};
}

bool VesselLayer::click(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto item = itemAt(pointer, frame);
    if (item)
        item->open();
    return item.has_value();
}

} // namespace kelvox
