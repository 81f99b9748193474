#include "preslib/sheet/ContactSheet.h"

#include "presentation/ProgramNames.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kelvox::preslib {

namespace {
constexpr int pageWidth = 1440;
constexpr int pageHeight = 1130;
constexpr int margin = 10;
constexpr int nameHeight = 14;
constexpr int panelGap = 2;
constexpr double margins = 6; // around a figure in its panel

QColor qColor(DisplayColor c)
{
    return QColor(c.red, c.green, c.blue, c.alpha);
}

QColor tokenColor(const S52CcieMap& colors, const char* token)
{
    const auto it = colors.find(token);
    return it == colors.end() ? QColor(Qt::gray) : qColor(it->second.color);
}

QPainterPath painterPath(const Path& path)
{
    QPainterPath result;
    result.setFillRule(Qt::WindingFill);
    for (std::size_t i = 0; i < path.subPathCount(); ++i) {
        const auto points = path.subPath(i);
        result.moveTo(points.front().x, -points.front().y);
        for (const Point p : points.subspan(1))
            result.lineTo(p.x, -p.y);
    }
    return result;
}

/// Draws an item with its pivot at the painter's origin, y down.
void draw(QPainter& painter, const S52Item& item)
{
    for (const S52Path& piece : item.s52Path()) {
        const QPainterPath path = painterPath(piece.path);
        if (piece.fill)
            painter.fillPath(path, qColor(piece.color));
        else
            painter.strokePath(path,
                               QPen(qColor(piece.color), piece.lineWidth, Qt::SolidLine,
                                    Qt::RoundCap, Qt::RoundJoin));
    }
}

/// Where the ink lies, in display points, y down, the pivot at the origin.
QRectF inkBox(const S52Item& item)
{
    QRectF box;
    for (const S52Path& piece : item.s52Path()) {
        const Rect r = piece.path.bounds();
        const double pen = piece.fill ? 0 : piece.lineWidth / 2;
        box |= QRectF(QPointF(r.left - pen, -r.top - pen), QPointF(r.right + pen, -r.bottom + pen));
    }
    return box;
}

void drawCentred(QPainter& painter, const S52Item& item, const QRectF& panel, double enlargement,
                 bool markPivot, const QColor& pivotColor)
{
    painter.save();
    painter.setClipRect(panel);
    const QRectF ink = inkBox(item);
    const double room = std::min((panel.width() - margins) / std::max(ink.width(), 1.0),
                                 (panel.height() - margins) / std::max(ink.height(), 1.0));
    const double scale = enlargement > 1 ? std::min(enlargement, room) : 1;
    painter.translate(panel.center());
    painter.scale(scale, scale);
    painter.translate(-ink.center());
    draw(painter, item);
    if (markPivot) {
        painter.setPen(QPen(pivotColor, 0));
        const double arm = 3 / scale;
        painter.drawLine(QPointF(-arm, 0), QPointF(arm, 0));
        painter.drawLine(QPointF(0, -arm), QPointF(0, arm));
    }
    painter.restore();
}

void drawRepeated(QPainter& painter, const S52Item& item, const QRectF& panel, double scale)
{
    painter.save();
    painter.setClipRect(panel);
    painter.translate(panel.left() + 4, panel.center().y());
    painter.scale(scale, scale);
    const QRectF ink = inkBox(item);
    const double repeat = std::max(ink.width(), item.hlNumber * S52Item::scaleTransform);
    painter.translate(-ink.left(), -ink.center().y());
    for (double x = 0; x * scale < panel.width(); x += repeat) {
        draw(painter, item);
        painter.translate(repeat, 0);
    }
    painter.restore();
}

struct Cell {
    int columns;
    int width; ///< of one scheme's panel
    int height;
};

void drawPanel(QPainter& painter, const S52Item& item, const S52CcieMap& colors, const QRect& panel,
               bool isLine)
{
    painter.fillRect(panel, tokenColor(colors, "DEPDW"));
    if (isLine) {
        drawRepeated(painter, item, QRectF(panel.adjusted(0, 0, 0, -panel.height() / 2)), 1);
        drawRepeated(painter, item, QRectF(panel.adjusted(0, panel.height() / 2, 0, 0)), 0.6);
        return;
    }
    const int strip = panel.width() * 2 / 5;
    const QRect large = panel.adjusted(0, 0, -strip, 0);
    const QRect water(panel.right() - strip + 1, panel.top(), strip, panel.height() / 2);
    const QRect land = water.translated(0, water.height());
    painter.fillRect(water, tokenColor(colors, "DEPVS"));
    painter.fillRect(land, tokenColor(colors, "LANDA"));
    drawCentred(painter, item, QRectF(large), 4, true, tokenColor(colors, "CURSR"));
    drawCentred(painter, item, QRectF(water), 1, false, {});
    drawCentred(painter, item, QRectF(land), 1, false, {});
}
} // namespace

std::vector<QImage> ContactSheet::pages(const std::vector<const S52Item*>& items, bool isLine) const
{
    const Cell cell = isLine ? Cell{2, 226, 60} : Cell{4, 112, 88};
    const int cellWidth = 3 * cell.width + 2 * panelGap + margin;
    const int cellHeight = cell.height + nameHeight + 4;
    const int rows = (pageHeight - margin) / cellHeight;
    std::vector<QImage> result;
    QFont font("DejaVu Sans");
    font.setPixelSize(11);
    for (std::size_t first = 0; first < items.size();
         first += static_cast<std::size_t>(rows * cell.columns)) {
        const std::size_t count =
            std::min(items.size() - first, static_cast<std::size_t>(rows * cell.columns));
        const int usedRows = static_cast<int>((count + cell.columns - 1) / cell.columns);
        QImage page(pageWidth, usedRows * cellHeight + margin, QImage::Format_RGB32);
        page.fill(QColor(236, 236, 236));
        QPainter painter(&page);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setFont(font);
        for (std::size_t i = 0; i < count; ++i) {
            S52Item shown = *items[first + i]; // built for one scheme after the other
            const int column = static_cast<int>(i) % cell.columns;
            const int row = static_cast<int>(i) / cell.columns;
            const QPoint corner(margin + column * cellWidth, margin + row * cellHeight);
            painter.setPen(Qt::black);
            painter.drawText(corner + QPoint(0, nameHeight - 4),
                             QString::fromStdString(shown.nmString));
            for (int scheme = 0; scheme < 3; ++scheme) {
                const auto table =
                    m_model.cols().find(colorTableNames()[static_cast<std::size_t>(scheme)]);
                if (table == m_model.cols().end())
                    continue;
                shown.processVct(table->second.ccie());
                const QRect panel(corner + QPoint(scheme * (cell.width + panelGap), nameHeight),
                                  QSize(cell.width, cell.height));
                drawPanel(painter, shown, table->second.ccie(), panel, isLine);
            }
        }
        painter.end();
        result.push_back(std::move(page));
    }
    return result;
}

std::vector<std::pair<std::string, QImage>> ContactSheet::pages() const
{
    std::vector<std::pair<std::string, QImage>> result;
    const auto add = [&](const std::string& stem, const auto& definitions, bool isLine) {
        std::vector<const S52Item*> items;
        items.reserve(definitions.size());
        for (const auto& [name, item] : definitions)
            items.push_back(&item);
        int number = 0;
        for (QImage& page : pages(items, isLine)) {
            const QString name =
                QString::fromStdString(stem) + QString("-%1").arg(++number, 2, 10, QChar('0'));
            result.emplace_back(name.toStdString(), std::move(page));
        }
    };
    add("symbols", m_model.symb(), false);
    add("lines", m_model.lnst(), true);
    add("patterns", m_model.patt(), false);
    return result;
}

} // namespace kelvox::preslib
