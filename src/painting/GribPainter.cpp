#include "painting/GribPainter.h"

#include "painting/PainterCanvas.h"

#include <QPainterPath>

#include <algorithm>
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

/// The colours are chosen for paper; on a dark chart their lightness is turned over, and kept low
/// enough for eyes that are used to the night.
QColor toQColor(const GribColor& color, DisplayColor paper)
{
    constexpr double dark = 0.4;
    const QColor ink(color.red, color.green, color.blue);
    if (kelvox::toQColor(paper).lightnessF() > dark)
        return ink;
    return QColor::fromHslF(ink.hslHueF(), ink.hslSaturationF() * 0.7F,
                            std::clamp(1 - ink.lightnessF(), 0.3F, 0.5F));
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
    painter.fillPath(letters, toQColor(label.color, paper));
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
        painter.fillPath(toPainterPath(fill.path), toQColor(fill.color, paper));
    for (const GribStroke& stroke : drawing.strokes)
        painter.strokePath(toPainterPath(stroke.path),
                           QPen(toQColor(stroke.color, paper), stroke.width, Qt::SolidLine,
                                Qt::RoundCap, Qt::RoundJoin));
    for (const GribLabel& label : drawing.labels)
        paintLabel(painter, label, paper);
    painter.restore();
}

} // namespace kelvox
