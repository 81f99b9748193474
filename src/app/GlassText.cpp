#include "app/GlassText.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainterPath>

namespace kelvox {

QFont GlassText::font() const
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(qRound(size));
    font.setBold(bold);
    return font;
}

double GlassText::width(const QString& words) const
{
    return QFontMetricsF(font()).horizontalAdvance(words);
}

void GlassText::paint(QPainter& painter, QPointF at, const QString& words) const
{
    const QFont letters = font();
    const QFontMetricsF metrics(letters);
    QPainterPath path;
    path.addText(at.x() - metrics.horizontalAdvance(words) / 2, at.y() + metrics.capHeight() / 2,
                 letters, words);
    painter.strokePath(path, QPen(halo, 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(path, ink);
}

} // namespace kelvox
