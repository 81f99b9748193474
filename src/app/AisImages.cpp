#include "app/AisImages.h"

#include "painting/Pixels.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

namespace {
constexpr int degreesPerImage = 2; // half a pixel at the bow of the largest symbol

/// Quantised direction of the bow; 0 for symbols that look the same all round.
std::uint64_t bowStep(const AISSymbol& symbol)
{
    using Shape = AISSymbol::Shape;
    if ((symbol.shape != Shape::ClassA && symbol.shape != Shape::ClassB)
        || symbol.outline.isEmpty())
        return 0;
    const Point bow = symbol.outline.points().front() - symbol.at;
    const double degrees = std::atan2(bow.x, bow.y) * 180 / std::numbers::pi;
    return static_cast<std::uint64_t>(std::lround((degrees + 360) / degreesPerImage))
        % (360 / degreesPerImage);
}

QPolygonF polygonAbout(const Path& path, Point origin, QPointF centre)
{
    QPolygonF polygon;
    for (const Point p : path.points())
        polygon << centre + QPointF(p.x - origin.x, origin.y - p.y);
    return polygon;
}
} // namespace

void AisImages::setLook(const Look& look, const QFont& font)
{
    if (look.line == m_look.line && look.fill == m_look.fill && look.text == m_look.text
        && look.halo == m_look.halo && look.scale == m_look.scale
        && look.pixelRatio == m_look.pixelRatio && font == m_font)
        return;
    m_look = look;
    m_font = font;
    m_symbols.clear();
    m_labels.clear();
}

const QImage& AisImages::symbolImage(const AISSymbol& symbol, const QColor& line)
{
    const std::uint64_t flags = (symbol.selected ? 1U : 0U) | (symbol.timedOut ? 2U : 0U)
        | (symbol.stationary ? 4U : 0U) | (symbol.headingLine.isEmpty() ? 0U : 8U);
    const std::uint64_t key = static_cast<std::uint64_t>(line.rgb()) << 32U | bowStep(symbol) << 16U
        | static_cast<std::uint64_t>(symbol.shape) << 8U | flags;
    auto it = m_symbols.find(key);
    if (it != m_symbols.end())
        return *it;

    double reach = 0;
    for (const Path* path : {&symbol.outline, &symbol.headingLine, &symbol.strike})
        for (const Point p : path->points())
            reach = std::max({reach, std::abs(p.x - symbol.at.x), std::abs(p.y - symbol.at.y)});
    const int half = static_cast<int>(std::ceil(reach)) + 3;
    QImage image(QSize(2 * half, 2 * half) * m_look.pixelRatio,
                 QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(m_look.pixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre(half, half);
    if (!symbol.headingLine.isEmpty()) {
        painter.setPen(QPen(line, 1.2));
        painter.drawPolyline(polygonAbout(symbol.headingLine, symbol.at, centre));
    }
    const QPen outline(line, symbol.selected ? 3 : 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter.setPen(outline);
    if (symbol.shape == AISSymbol::Shape::Cursor) {
        const auto arms = polygonAbout(symbol.outline, symbol.at, centre);
        for (qsizetype i = 0; i + 1 < arms.size(); i += 2)
            painter.drawLine(arms[i], arms[i + 1]);
    } else {
        painter.setBrush(m_look.fill);
        painter.drawPolygon(polygonAbout(symbol.outline, symbol.at, centre));
    }
    const auto strike = polygonAbout(symbol.strike, symbol.at, centre);
    for (qsizetype i = 0; i + 1 < strike.size(); i += 2)
        painter.drawLine(strike[i], strike[i + 1]);
    painter.end();
    return *m_symbols.insert(key, image);
}

void AisImages::paintSymbol(QPainter& painter, const AISSymbol& symbol, QPointF at,
                            const QColor& line)
{
    const QImage& image = symbolImage(symbol, line);
    const double half = image.width() / image.devicePixelRatio() / 2;
    place(painter, image, at - QPointF(half, half));
}

void AisImages::place(QPainter& painter, const QImage& image, QPointF topLeft) const
{
    const double ratio = m_look.pixelRatio;
    const QPoint corner(static_cast<int>(std::lround(topLeft.x() * ratio)),
                        static_cast<int>(std::lround(topLeft.y() * ratio)));
    if (!m_target) {
        painter.drawImage(QPointF(corner) / ratio, image);
        return;
    }
    const int first = std::max(0, -corner.x());
    const int last = std::min(image.width(), m_target->width - corner.x());
    const int bottom = std::min(image.height(), m_target->height - corner.y());
    for (int row = std::max(0, -corner.y()); row < bottom; ++row) {
        const auto* source = reinterpret_cast<const std::uint32_t*>(image.constScanLine(row));
        std::uint32_t* pixels = m_target->pixels
            + static_cast<std::ptrdiff_t>(corner.y() + row) * m_target->stride + corner.x();
        for (int x = first; x < last; ++x)
            if (source[x] != 0)
                pixels[x] = over(pixels[x], source[x]);
    }
}

const QImage& AisImages::labelImage(const std::string& name)
{
    if (const auto it = m_labels.find(name); it != m_labels.end())
        return it->second;
    if (m_labels.size() >= mostLabels)
        m_labels.clear();
    const QString words = QString::fromStdString(name);
    const QFontMetricsF metrics(m_font);
    const QSize size(static_cast<int>(std::ceil(metrics.horizontalAdvance(words))) + 4,
                     static_cast<int>(std::ceil(metrics.height())) + 2);
    QImage image(size * m_look.pixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(m_look.pixelRatio);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setFont(m_font);
    const QPointF base(2, 1 + metrics.ascent());
    painter.setPen(m_look.halo);
    for (const QPointF around : {QPointF(1, 1), QPointF(1, -1), QPointF(-1, 1), QPointF(-1, -1)})
        painter.drawText(base + around, words);
    painter.setPen(m_look.text);
    painter.drawText(base, words);
    painter.end();
    return m_labels.emplace(name, image).first->second;
}

QSizeF AisImages::labelSize(const std::string& name)
{
    return QSizeF(labelImage(name).size()) / m_look.pixelRatio;
}

void AisImages::paintLabel(QPainter& painter, const std::string& name, QPointF topLeft)
{
    place(painter, labelImage(name), topLeft);
}

LabelRoom::LabelRoom(double width, double height)
    : m_columns(std::max(1, static_cast<int>(width / cell)))
    , m_rows(std::max(1, static_cast<int>(height / cell)))
    , m_taken(static_cast<std::size_t>(m_columns) * static_cast<std::size_t>(m_rows))
{
}

int LabelRoom::place(double value, int count)
{
    return std::clamp(static_cast<int>(std::floor(value / cell)), 0, count - 1);
}

bool LabelRoom::isFree(QPointF point) const
{
    const auto row = static_cast<std::size_t>(place(point.y(), m_rows));
    const auto column = static_cast<std::size_t>(place(point.x(), m_columns));
    return m_taken[row * static_cast<std::size_t>(m_columns) + column] == 0;
}

bool LabelRoom::take(const QRectF& rectangle)
{
    if (rectangle.right() < 0 || rectangle.bottom() < 0 || rectangle.left() > m_columns * cell
        || rectangle.top() > m_rows * cell)
        return false;
    const int left = place(rectangle.left(), m_columns);
    const int right = place(rectangle.right(), m_columns);
    const int top = place(rectangle.top(), m_rows);
    const int bottom = place(rectangle.bottom(), m_rows);
    const auto at = [this](int column, int row) -> std::uint8_t& {
        return m_taken[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns)
                       + static_cast<std::size_t>(column)];
    };
    for (int row = top; row <= bottom; ++row)
        for (int column = left; column <= right; ++column)
            if (at(column, row))
                return false;
    for (int row = top; row <= bottom; ++row)
        for (int column = left; column <= right; ++column)
            at(column, row) = 1;
    return true;
}

} // namespace kelvox
