#include "painting/GribPainter.h"

#include "painting/PainterCanvas.h"

#include <QPainterPath>

#include <numbers>

namespace kelvox {

namespace {
QPainterPath toPainterPath(const Path& path)
{
    QPainterPath result;
    for (std::size_t i = 0; i < path.subPathCount(); ++i) {
        const auto line = path.subPath(i);
        result.moveTo(line.front().x, line.front().y);
        for (const Point p : line.subspan(1))
            result.lineTo(p.x, p.y);
    }
    return result;
}

QColor toQColor(const GribColor& color)
{
    return {color.red, color.green, color.blue};
}

void paintLabel(QPainter& painter, const GribLabel& label, DisplayColor paper)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(qRound(label.height));
    font.setBold(label.bold);
    const QString text = QString::fromStdString(label.text);
    const QFontMetricsF metrics(font);
    QPainterPath letters;
    letters.addText(-metrics.horizontalAdvance(text) / 2, metrics.capHeight() / 2, font, text);
    painter.save();
    painter.translate(label.center.x, label.center.y);
    painter.rotate(label.angle * 180 / std::numbers::pi);
    painter.strokePath(
        letters, QPen(kelvox::toQColor(paper), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(letters, toQColor(label.color));
    painter.restore();
}
} // namespace

void paintGrib(QPainter& painter, const GribController& weather, const ViewFrame& frame,
               DisplayColor paper)
{
    // View points of the weather: those of the picture, y down.
    const double scale = frame.pixelsPerPoint;
    GribView view;
    view.visible = {0, 0, frame.width / scale, frame.height / scale};
    view.positionToPoint = [&](Position position) {
        return frame.pixelOf(frame.view.positionToPoint(position)) * (1 / scale);
    };
    view.pointToPosition = [&](Point point) { return frame.positionOf(point * scale); };
    const GribDrawing drawing = weather.draw(view);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    for (const GribFill& fill : drawing.fills)
        painter.fillPath(toPainterPath(fill.path), toQColor(fill.color));
    for (const GribStroke& stroke : drawing.strokes)
        painter.strokePath(
            toPainterPath(stroke.path),
            QPen(toQColor(stroke.color), stroke.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const GribLabel& label : drawing.labels)
        paintLabel(painter, label, paper);
    painter.restore();
}

} // namespace kelvox
