#include "app/AisLayer.h"

#include "app/AisTargetDetails.h"
#include "app/LiveData.h"
#include "app/Text.h"
#include "base/Reversed.h"

#include <QMenu>

#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double metresPerInch = 0.0254;
constexpr double tolerance = 10; // widget pixels about a symbol that still count as on it

QPointF widgetPoint(Point viewPoint, const ViewFrame& frame)
{
    const Point p = frame.pixelOf(viewPoint) * (1 / frame.pixelsPerPoint);
    return {p.x, p.y};
}

QColor lineColor(const AISSymbol& symbol, const LayerLook& look)
{
    return look.color(symbol.alarmed ? "DNGHL" : "ARPAT");
}

void paintHull(QPainter& painter, const AISSymbol& symbol, const ViewFrame& frame,
               const QColor& line, const QColor& fill)
{
    const auto polygon = [&](const Path& path) {
        QPolygonF result;
        for (const Point p : path.points())
            result << widgetPoint(p, frame);
        return result;
    };
    painter.setPen(
        QPen(line, symbol.selected ? 3 : 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(fill);
    painter.drawPolygon(polygon(symbol.outline));
    if (!symbol.headingLine.isEmpty())
        painter.drawPolyline(polygon(symbol.headingLine));
    const auto strike = polygon(symbol.strike);
    for (qsizetype i = 0; i + 1 < strike.size(); i += 2)
        painter.drawLine(strike[i], strike[i + 1]);
}
} // namespace

void AisLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    AISView view;
    view.pointAt = [&](Position position) { return frame.view.positionToPoint(position); };
    view.pointsPerMetre = [&](double latitude) {
        return frame.view.dpi() / metresPerInch / frame.view.scale()
            / std::cos(latitude * std::numbers::pi / 180);
    };
    view.rotation = frame.view.rotate();
    const Point half = Point{static_cast<double>(frame.width), static_cast<double>(frame.height)}
        * (0.5 / frame.pixelsPerPoint);
    view.visible = {frame.center.x - half.x, frame.center.y - half.y, frame.center.x + half.x,
                    frame.center.y + half.y};
    AISDisplay display = AISDisplay::fromSettings(m_live.settings());
    display.symbolLength *= look.scale;
    display.selected = m_live.selectedTarget();
    display.alarmed = m_live.ais().alarmTarget();
    m_picture.update(m_live.ais().model(), view, display, m_live.now());

    QFont font = painter.font();
    font.setPixelSize(qRound(11 * look.scale));
    const QColor fill = look.color("DEPDW");
    m_images.setLook({.line = look.color("ARPAT"),
                      .fill = fill,
                      .halo = fill,
                      .scale = look.scale,
                      .pixelRatio = frame.pixelsPerPoint},
                     font);
    paintVectors(painter, frame, look);
    const auto pointed = m_live.pointedTarget();
    for (const AISSymbol& symbol : m_picture.symbols()) {
        if (symbol.own)
            continue;
        const QPointF at = widgetPoint(symbol.at, frame);
        const QColor line = lineColor(symbol, look);
        if (symbol.shape == AISSymbol::Shape::TrueOutline)
            paintHull(painter, symbol, frame, line, fill);
        else
            m_images.paintSymbol(painter, symbol, at, line);
        if (symbol.selected || symbol.mmsi == pointed) {
            const double room = 22 * look.scale;
            painter.setPen(QPen(look.color("CHBLK"), 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(at, room, room);
        }
    }
    paintLabels(painter, frame);
}

void AisLayer::paintVectors(QPainter& painter, const ViewFrame& frame, const LayerLook& look) const
{
    constexpr qsizetype manyLines = 300; // dashes and width are for few: a thin line is far cheaper
    QList<QLineF> plain;
    QList<QLineF> alarmed;
    for (const AISSymbol& symbol : m_picture.symbols()) {
        if (symbol.own || symbol.courseVector.points().size() < 2)
            continue;
        (symbol.alarmed ? alarmed : plain)
            << QLineF(widgetPoint(symbol.courseVector.points()[0], frame),
                      widgetPoint(symbol.courseVector.points()[1], frame));
    }
    const bool many = plain.size() > manyLines;
    painter.setRenderHint(QPainter::Antialiasing, !many);
    painter.setPen(many ? QPen(look.color("ARPAT"), 0)
                        : QPen(look.color("ARPAT"), 1.5, Qt::DashLine));
    painter.drawLines(plain);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look.color("DNGHL"), 2, Qt::DashLine));
    painter.drawLines(alarmed);
}

void AisLayer::paintLabels(QPainter& painter, const ViewFrame& frame)
{
    LabelRoom room(frame.width / frame.pixelsPerPoint, frame.height / frame.pixelsPerPoint);
    // From the topmost down: the selected target keeps its name.
    const auto symbols = m_picture.symbols();
    for (const auto& symbol : Reversed(symbols)) {
        if (symbol.own || symbol.label.empty())
            continue;
        const QPointF side = widgetPoint(symbol.labelAt, frame);
        if (!room.isFree(side - QPointF(symbol.labelOnLeft ? 1 : 0, 0)))
            continue; // most of them, where there are many
        const QSizeF size = m_images.labelSize(symbol.label);
        QPointF place = side - QPointF(0, size.height() / 2);
        if (symbol.labelOnLeft)
            place.rx() -= size.width();
        if (room.take(QRectF(place, size)))
            m_images.paintLabel(painter, symbol.label, place);
    }
}

const AISPosition* AisLayer::targetAt(const ChartPointer& pointer, const ViewFrame& frame) const
{
    const Point viewPoint =
        frame.viewPointOf(Point{pointer.at.x(), pointer.at.y()} * frame.pixelsPerPoint);
    const auto mmsi = m_picture.targetAt(viewPoint, tolerance);
    const auto* target = mmsi ? m_live.ais().model().find(*mmsi) : nullptr;
    return target && !target->own() ? target : nullptr;
}

void AisLayer::open(std::int32_t mmsi)
{
    m_live.selectTarget(mmsi);
    auto* details = new AisTargetDetails(m_host, nullptr);
    m_host.showCard(details->title(), details);
}

std::optional<ChartItem> AisLayer::itemAt(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return std::nullopt;
    return ChartItem{.name = QString::fromStdString(target->name()),
                     .position = target->positionOnGPS(),
                     .open = [this, mmsi = target->mmsi()] { open(mmsi); }};
}

void AisLayer::addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return;
    menu.addAction(text("NSShowTarget", {QString::fromStdString(target->name())}), &menu,
                   [this, mmsi = target->mmsi()] { open(mmsi); });
    menu.addSeparator();
}

bool AisLayer::click(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return false;
    open(target->mmsi());
    return true;
}

bool AisLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& frame)
{
    const auto* target = targetAt(pointer, frame);
    if (!target)
        return false;
    m_host.showPosition(target->positionOnGPS());
    return true;
}

} // namespace kelvox
