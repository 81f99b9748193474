#include "app/FurnitureLayer.h"

#include <QPainterPath>

#include <array>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr double metresPerInch = 0.0254;
constexpr double metresPerNauticalMile = 1852;

void paintHaloed(QPainter& painter, const QPainterPath& path, const QColor& color,
                 const QColor& halo)
{
    painter.setPen(QPen(halo, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(halo);
    painter.drawPath(path);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawPath(path);
}
} // namespace

void FurnitureLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    const double width = frame.width / frame.pixelsPerPoint;
    const double height = frame.height / frame.pixelsPerPoint;
    const QColor ink = look.color("CHBLK");
    const QColor halo = look.color("DEPDW");
    QFont font = painter.font();
    font.setPixelSize(qRound(12 * look.scale));

    // The bar measures at the middle of the view, where the eye is.
    const Position middle = frame.positionOf({frame.width / 2.0, frame.height / 2.0});
    const double pointsPerMile = metresPerNauticalMile * frame.view.dpi() / metresPerInch
        / frame.view.scale() / std::cos(middle.latitude * std::numbers::pi / 180);
    const double wanted = 120 * look.scale / pointsPerMile;
    const double decade = std::pow(10, std::floor(std::log10(wanted)));
    const double step = wanted / decade >= 5 ? 5 : wanted / decade >= 2 ? 2 : 1;
    const double miles = step * decade;
    const double length = miles * pointsPerMile;
    const double right = width - 20 * look.scale;
    const double bottom = height - 16 * look.scale;
    QPainterPath bar;
    const double thick = 3 * look.scale;
    bar.addRect(right - length, bottom - thick, length, thick);
    for (const double x : {right - length, right - length / 2, right})
        bar.addRect(x - 0.75 * look.scale, bottom - 9 * look.scale, 1.5 * look.scale,
                    9 * look.scale);
    paintHaloed(painter, bar.simplified(), ink, halo);
    QPainterPath label;
    const QString words = QStringLiteral("%1 NM").arg(miles);
    const double labelWidth = QFontMetricsF(font).horizontalAdvance(words);
    label.addText(right - length / 2 - labelWidth / 2, bottom - 13 * look.scale, font, words);
    paintHaloed(painter, label, ink, halo);

    const double size = 22 * look.scale;
    const QPointF center(width - 32 * look.scale, 40 * look.scale);
    m_arrow = QRectF(center - QPointF(size, size), QSizeF(2 * size, 2 * size));
    QPainterPath arrow;
    arrow.moveTo(0, -size);
    arrow.lineTo(size * 0.45, size * 0.7);
    arrow.lineTo(0, size * 0.4);
    arrow.lineTo(-size * 0.45, size * 0.7);
    arrow.closeSubpath();
    QFont letter = font;
    letter.setBold(true);
    QPainterPath north;
    const double half = QFontMetricsF(letter).horizontalAdvance(QLatin1Char('N')) / 2;
    north.addText(-half, size * 0.35, letter, QStringLiteral("N"));
    painter.translate(center);
    painter.rotate(-frame.view.rotate());
    paintHaloed(painter, arrow, ink, halo);
    painter.setPen(Qt::NoPen);
    painter.setBrush(halo);
    painter.drawPath(north);
}

bool FurnitureLayer::doubleClick(const ChartPointer& pointer, const ViewFrame& /*frame*/)
{
    if (!m_arrow.contains(pointer.at))
        return false;
    m_northUp();
    return true;
}

} // namespace kelvox
