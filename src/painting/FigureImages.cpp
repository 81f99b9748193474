#include "painting/FigureImages.h"

#include "painting/PainterCanvas.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <mutex>
#include <numbers>

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

/// The words of a figure with their fonts, laid out from a base line's start at the origin.
class TextLine {
public:
    TextLine(const TextFigure& figure, double size)
        : m_size(size)
        , m_font(fontOf(figure, size))
        , m_smallFont(fontOf(figure, size * 0.75))
        , m_text(QString::fromStdString(figure.text))
        , m_subscript(QString::fromStdString(figure.subscript))
        , m_underlined(figure.underlined)
        , m_metrics(m_font)
        , m_textWidth(m_metrics.horizontalAdvance(m_text))
    {
    }
    [[nodiscard]] double width() const
    {
        return m_subscript.isEmpty()
            ? m_textWidth
            : m_textWidth + QFontMetricsF(m_smallFont).horizontalAdvance(m_subscript);
    }
    [[nodiscard]] double above() const { return m_metrics.capHeight(); }
    [[nodiscard]] double below() const
    {
        return m_subscript.isEmpty() ? m_metrics.descent() : m_size * 0.35;
    }
    void draw(QPainter& painter, QPointF at, QColor color) const
    {
        painter.setPen(color);
        painter.setFont(m_font);
        painter.drawText(at, m_text);
        if (m_underlined)
            painter.fillRect(
                QRectF(at.x(), at.y() + m_size * 0.12, m_textWidth, std::max(1.0, m_size * 0.08)),
                color);
        if (m_subscript.isEmpty())
            return;
        painter.setFont(m_smallFont);
        painter.drawText(at + QPointF(m_textWidth, m_size * 0.25), m_subscript);
    }

private:
    double m_size;
    QFont m_font;
    QFont m_smallFont;
    QString m_text;
    QString m_subscript;
    bool m_underlined;
    QFontMetricsF m_metrics;
    double m_textWidth;
};

/// How a text lies in its picture.
struct TextLayout {
    TextLayout(const TextFigure& figure, double pixelsPerPoint)
        : line(figure, figure.size * pixelsPerPoint)
        // Whole pixels, so that the letters of the halo come from the same cache as those on top.
        , halo(figure.halo ? std::max(1, qRound(haloWidth * pixelsPerPoint)) : 0)
        , start(halo + 1, std::ceil(line.above()) + halo + 1)
        , size(static_cast<int>(std::ceil(line.width())) + 2 * (halo + 1),
               static_cast<int>(std::ceil(start.y() + line.below())) + halo + 1)
    {
    }
    TextLine line;
    int halo; ///< pixels
    QPointF start; ///< of the base line
    QSize size;
};

FigureImage paintText(const TextFigure& figure, double pixelsPerPoint)
{
    const TextLayout layout(figure, pixelsPerPoint);
    const TextLine& line = layout.line;
    const int halo = layout.halo;
    const QPointF start = layout.start;
    FigureImage result{QImage(layout.size, QImage::Format_ARGB32_Premultiplied), {}};
    if (result.image.isNull())
        return {};
    // The middle of the capital letters is what stands on the anchor.
    result.hotspot = {result.image.width() / 2.0, start.y() - line.above() / 2.0};
    result.image.fill(Qt::transparent);
    QPainter painter(&result.image);
    if (halo > 0) {
        // Stroking the letters' outlines would cost sixty times as much as writing them around.
        QColor color = toQColor(figure.haloColor);
        const double opacity = color.alphaF();
        color.setAlpha(255);
        constexpr int directions = 8;
        for (int i = 0; i < directions; ++i) {
            const double angle = 2 * std::numbers::pi * i / directions;
            line.draw(painter,
                      start
                          + QPointF(qRound(halo * std::cos(angle)), qRound(halo * std::sin(angle))),
                      color);
        }
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.fillRect(result.image.rect(), QColor(0, 0, 0, qRound(opacity * 255)));
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    }
    line.draw(painter, start, toQColor(figure.color));
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
    // Laid out but not painted: most of the names of a dense chart find no room.
    std::string key = keyOf(figure);
    {
        const std::shared_lock lock(m_mutex);
        if (const auto found = m_sizes.find(key); found != m_sizes.end())
            return found->second;
    }
    const QSize pixels = TextLayout(figure, m_pixelsPerPoint).size;
    const Size size{pixels.width() / m_pixelsPerPoint, pixels.height() / m_pixelsPerPoint};
    const std::unique_lock lock(m_mutex);
    if (m_sizes.size() >= mostTexts)
        m_sizes.clear();
    m_sizes.try_emplace(std::move(key), size);
    return size;
}

} // namespace kelvox
