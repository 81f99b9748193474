#include "painting/GribPainter.h"

#include "painting/PainterCanvas.h"

#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>
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

using Linear = std::array<double, 3>; ///< light of red, green and blue, 0 to 1

double light(float coded)
{
    // IEC 61966-2-1
    return coded <= 0.04045F ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
}

float coded(double light)
{
    return static_cast<float>(light <= 0.0031308 ? light * 12.92
                                                 : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

Linear linear(const QColor& color)
{
    return {light(color.redF()), light(color.greenF()), light(color.blueF())};
}

double luminance(const Linear& c)
{
    return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2];
}

void paintLabel(QPainter& painter, const GribLabel& label, const GribLook& look)
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
    painter.strokePath(letters,
                       QPen(toQColor(look.paper), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(letters, toQColor(gribInk(label.color, look)));
    painter.restore();
}
} // namespace

GribLook GribLook::of(const Portrayal& portrayal)
{
    GribLook look;
    if (const DisplayColor* const paper = portrayal.color("DEPDW"))
        look.paper = *paper;
    if (const DisplayColor* const ink = portrayal.color("CHBLK"))
        look.ink = *ink;
    return look;
}

DisplayColor gribInk(GribColor color, const GribLook& look)
{
    const QColor ink(color.red, color.green, color.blue);
    const double brightest = luminance(linear(toQColor(look.ink)));
    if (brightest <= luminance(linear(toQColor(look.paper))))
        return {color.red, color.green, color.blue};
    // Strong colours look brighter than greys of their luminance.
    const double share =
        std::clamp(1.0 - ink.lightnessF(), 0.4, 1.0) * (1 - 0.4 * ink.hslSaturationF());
    const double wanted = brightest * share;
    const QColor hue = QColor::fromHslF(ink.hslHueF(), ink.hslSaturationF() * 0.6F, 0.5F);
    Linear result = linear(hue);
    const double gain = wanted / luminance(result);
    for (double& channel : result)
        channel = std::min(channel * gain, 1.0);
    // What a full channel cannot give comes from white.
    const double reached = luminance(result);
    const double white = reached < wanted ? (wanted - reached) / (1 - reached) : 0;
    for (double& channel : result)
        channel += (1 - channel) * white;
    const QColor shown = QColor::fromRgbF(coded(result[0]), coded(result[1]), coded(result[2]));
    return {static_cast<std::uint8_t>(shown.red()), static_cast<std::uint8_t>(shown.green()),
            static_cast<std::uint8_t>(shown.blue())};
}

void paintGrib(QPainter& painter, const GribController& weather, const ViewFrame& frame,
               const GribLook& look)
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
        painter.fillPath(toPainterPath(fill.path), toQColor(gribInk(fill.color, look)));
    for (const GribStroke& stroke : drawing.strokes)
        painter.strokePath(toPainterPath(stroke.path),
                           QPen(toQColor(gribInk(stroke.color, look)), stroke.width, Qt::SolidLine,
                                Qt::RoundCap, Qt::RoundJoin));
    for (const GribLabel& label : drawing.labels)
        paintLabel(painter, label, look);
    painter.restore();
}

} // namespace kelvox
