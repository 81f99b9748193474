#include "app/VesselLayer.h"

#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double minutesAhead = 6;
constexpr double metresPerInch = 0.0254;
constexpr double metresPerNauticalMile = 1852;

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

class Pen {
public:
    Pen(QPainter& painter, const ViewFrame& frame)
        : m_painter(painter)
        , m_frame(frame)
    {
    }
    [[nodiscard]] QPolygonF polygon(const Path& path) const
    {
        QPolygonF result;
        for (const Point p : path.points())
            result << at(p);
        return result;
    }
    [[nodiscard]] QPointF at(Point viewPoint) const
    {
        const Point p = m_frame.pixelOf(viewPoint) * (1 / m_frame.pixelsPerPoint);
        return {p.x, p.y};
    }
    void line(const Path& path, const QPen& pen)
    {
        if (path.isEmpty())
            return;
        m_painter.setPen(pen);
        m_painter.drawPolyline(polygon(path));
    }

private:
    QPainter& m_painter;
    const ViewFrame& m_frame;
};

void paintTarget(QPainter& painter, const AISSymbol& symbol, const ViewFrame& frame,
                 const LayerLook& look)
{
    Pen pen(painter, frame);
    const QColor color = symbol.alarmed ? look.color("DNGHL") : look.color("ARPAT");
    const QPen outline(color, symbol.selected ? 3 : 1.8, Qt::SolidLine, Qt::RoundCap,
                       Qt::RoundJoin);
    pen.line(symbol.courseVector, QPen(color, 1.5, Qt::DashLine));
    pen.line(symbol.headingLine, QPen(color, 1.2));
    painter.setPen(outline);
    painter.setBrush(symbol.shape == AISSymbol::Shape::Cursor ? QBrush(Qt::NoBrush)
                                                              : QBrush(look.color("DEPDW")));
    if (symbol.shape == AISSymbol::Shape::Cursor)
        painter.drawPolyline(pen.polygon(symbol.outline));
    else
        painter.drawPolygon(pen.polygon(symbol.outline));
    pen.line(symbol.strike, outline);
    if (symbol.label.empty())
        return;
    const QString text = QString::fromStdString(symbol.label);
    const QFontMetricsF metrics(painter.font());
    QPointF place = pen.at(symbol.labelAt) + QPointF(0, metrics.capHeight() / 2);
    if (symbol.labelOnLeft)
        place.rx() -= metrics.horizontalAdvance(text);
    painter.setPen(look.color("DEPDW"));
    for (const QPointF around : {QPointF(1, 1), QPointF(1, -1), QPointF(-1, 1), QPointF(-1, -1)})
        painter.drawText(place + around, text);
    painter.setPen(color);
    painter.drawText(place, text);
}

void paintOwnVessel(QPainter& painter, LiveData& live, const ViewFrame& frame,
                    const LayerLook& look)
{
    const Position position = live.gps().position();
    if (!position.isKnown())
        return;
    const Point p =
        frame.pixelOf(frame.view.positionToPoint(position)) * (1 / frame.pixelsPerPoint);
    const QPointF at(p.x, p.y);
    const QColor color = look.color("SHIPS");
    const double scale = pointsPerMetre(frame, position.latitude);
    const double course = live.gps().courseOverGround();
    const double speed = live.gps().speedOverGround();
    const double heading = live.compass().headingTrue;
    painter.setBrush(Qt::NoBrush);
    if (isKnown(heading)) {
        painter.setPen(QPen(color, 1.2));
        painter.drawLine(at, at + along(heading, 70, frame));
    }
    if (isKnown(course) && isKnown(speed) && speed > 0.2) {
        const double ahead = speed * minutesAhead / 60 * metresPerNauticalMile * scale;
        painter.setPen(QPen(color, 2, Qt::DashLine));
        painter.drawLine(at, at + along(course, ahead, frame));
    }
    painter.setPen(QPen(color, 2.2));
    painter.drawEllipse(at, 8, 8);
    painter.drawEllipse(at, 3, 3);
}
} // namespace

void VesselLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    QFont font = painter.font();
    font.setPixelSize(qRound(11 * look.scale));
    painter.setFont(font);
    AISView view;
    view.pointAt = [&](Position position) { return frame.view.positionToPoint(position); };
    view.pointsPerMetre = [&](double latitude) { return pointsPerMetre(frame, latitude); };
    view.rotation = frame.view.rotate();
    const Point half = Point{static_cast<double>(frame.width), static_cast<double>(frame.height)}
        * (0.5 / frame.pixelsPerPoint);
    const double reach = std::hypot(half.x, half.y);
    view.visible = {frame.center.x - reach, frame.center.y - reach, frame.center.x + reach,
                    frame.center.y + reach};
    m_picture.update(m_live.ais().model(), view, AISDisplay::fromSettings(m_live.settings()),
                     m_live.now());
    for (const AISSymbol& symbol : m_picture.symbols())
        if (!symbol.own)
            paintTarget(painter, symbol, frame, look);
    paintOwnVessel(painter, m_live, frame, look);
}

} // namespace kelvox
