#include "painting/FigureImages.h"

#include "painting/PainterCanvas.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <mutex>

namespace kelvox {

namespace {
constexpr double haloWidth = 1.3; ///< display points on each side

QPainterPath toPainterPath(const Path& path, bool closed)
{
    QPainterPath result;
    result.setFillRule(Qt::WindingFill);
    for (std::size_t i = 0; i < path.subPathCount(); ++i) {
        const auto line = path.subPath(i);
        result.moveTo(line.front().x, line.front().y);
        for (const Point p : line.subspan(1))
            result.lineTo(p.x, p.y);
        if (closed)
            result.closeSubpath();
    }
    return result;
}

FigureImage paintSymbol(const SymbolDrawing& symbol, double degrees, double pixelsPerPoint)
{
    // Definition points run up, pixels down; the turn is clockwise as seen.
    QTransform transform;
    transform.scale(pixelsPerPoint, pixelsPerPoint);
    transform.rotate(degrees);
    transform.scale(1, -1);
    QRectF bounds;
    for (const S52Path& piece : symbol.paths)
        for (const Point p : piece.path.points()) {
            const QPointF at = transform.map(QPointF(p.x, p.y));
            bounds |= QRectF(at - QPointF(1, 1), at + QPointF(1, 1));
        }
    const double border = S52Item::widestPen * pixelsPerPoint;
    const QRect box = bounds.adjusted(-border, -border, border, border).toAlignedRect();
    FigureImage figure{QImage(box.size(), QImage::Format_ARGB32_Premultiplied), -box.topLeft()};
    if (figure.image.isNull())
        return {};
    figure.image.fill(Qt::transparent);
    QPainter painter(&figure.image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(figure.hotspot);
    painter.setTransform(transform, true);
    for (const S52Path& piece : symbol.paths) {
        const QPainterPath path = toPainterPath(piece.path, piece.fill);
        if (piece.fill)
            painter.fillPath(path, toQColor(piece.color));
        else
            painter.strokePath(path,
                               QPen(toQColor(piece.color), std::max(piece.lineWidth, 0.1),
                                    Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    return figure;
}

QFont fontOf(const TextFigure& figure, double size)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(std::max(1, qRound(size)));
    font.setItalic(figure.italic);
    return font;
}

FigureImage paintText(const TextFigure& figure, double pixelsPerPoint)
{
    const double size = figure.size * pixelsPerPoint;
    const QFont font = fontOf(figure, size);
    const QFont smallFont = fontOf(figure, size * 0.75);
    const QString text = QString::fromStdString(figure.text);
    const QString subscript = QString::fromStdString(figure.subscript);
    QPainterPath letters;
    letters.addText(0, 0, font, text);
    double width = QFontMetricsF(font).horizontalAdvance(text);
    if (!subscript.isEmpty()) {
        letters.addText(width, size * 0.25, smallFont, subscript);
        width += QFontMetricsF(smallFont).horizontalAdvance(subscript);
    }
    if (figure.underlined)
        letters.addRect(0, size * 0.12, QFontMetricsF(font).horizontalAdvance(text),
                        std::max(1.0, size * 0.08));
    const double halo = figure.halo ? haloWidth * pixelsPerPoint : 0;
    const QFontMetricsF metrics(font);
    const double below = subscript.isEmpty() ? metrics.descent() : size * 0.35;
    const QRectF bounds(-halo - 1, -metrics.capHeight() - halo - 1, width + 2 * halo + 2,
                        metrics.capHeight() + below + 2 * halo + 2);
    FigureImage result{QImage(static_cast<int>(std::ceil(bounds.width())),
                              static_cast<int>(std::ceil(bounds.height())),
                              QImage::Format_ARGB32_Premultiplied),
                       {}};
    if (result.image.isNull())
        return {};
    // The middle of the capital letters is what stands on the anchor.
    result.hotspot = {result.image.width() / 2.0, halo + 1 + metrics.capHeight() / 2.0};
    result.image.fill(Qt::transparent);
    QPainter painter(&result.image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-bounds.topLeft());
    if (figure.halo)
        painter.strokePath(
            letters,
            QPen(toQColor(figure.haloColor), 2 * halo, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(letters, toQColor(figure.color));
    return result;
}

std::string keyOf(const TextFigure& figure)
{
    std::string key = figure.text;
    const auto append = [&key](const auto& value) {
        key.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    key += '\0';
    key += figure.subscript;
    key += '\0';
    append(figure.size);
    append(figure.color);
    append(figure.haloColor);
    key += static_cast<char>((figure.italic ? 1 : 0) + (figure.underlined ? 2 : 0)
                             + (figure.halo ? 4 : 0));
    return key;
}
} // namespace

FigureImage FigureImages::symbol(const SymbolDrawing& symbol, float degrees)
{
    const int angle = (qRound(degrees) % 360 + 360) % 360;
    std::string key = symbol.name;
    key += static_cast<char>(angle % 256);
    key += static_cast<char>(angle / 256);
    {
        const std::shared_lock lock(m_mutex);
        if (const auto found = m_symbols.find(key); found != m_symbols.end())
            return found->second;
    }
    FigureImage image = paintSymbol(symbol, angle, m_pixelsPerPoint);
    const std::unique_lock lock(m_mutex);
    return m_symbols.try_emplace(std::move(key), std::move(image)).first->second;
}

FigureImage FigureImages::text(const TextFigure& figure) const
{
    std::string key = keyOf(figure);
    {
        const std::shared_lock lock(m_mutex);
        if (const auto found = m_texts.find(key); found != m_texts.end())
            return found->second;
    }
    FigureImage image = paintText(figure, m_pixelsPerPoint);
    const std::unique_lock lock(m_mutex);
    if (m_texts.size() >= mostTexts)
        m_texts.clear();
    return m_texts.try_emplace(std::move(key), std::move(image)).first->second;
}

Size FigureImages::size(const TextFigure& figure) const
{
    const QSize pixels = text(figure).image.size();
    return {pixels.width() / m_pixelsPerPoint, pixels.height() / m_pixelsPerPoint};
}

} // namespace kelvox
