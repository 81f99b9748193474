#include "painting/PainterCanvas.h"

namespace kelvox {

namespace {
// Lengths in display points. A dotted line is made of round dots.
const QList<qreal> dash{12, 6};
const QList<qreal> dott{2, 4};
} // namespace

PainterCanvas::PainterCanvas(const PixelBuffer& buffer, int top, FigureImages& figures)
    : m_buffer(buffer)
    , m_top(top)
    , m_figures(figures)
    , m_image(reinterpret_cast<uchar*>(buffer.pixels), buffer.width, buffer.height,
              static_cast<qsizetype>(buffer.stride) * 4, QImage::Format_ARGB32_Premultiplied)
    , m_painter(&m_image)
{
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.translate(0, -top);
}

void PainterCanvas::fillArea(const Path& rings, DisplayColor color)
{
    m_filler.fill(m_buffer, rings, color, m_top);
}

void PainterCanvas::strokeLine(const Path& lines, const Stroke& stroke)
{
    const double width = stroke.width * m_figures.pixelsPerPoint();
    // Up to one pixel the painter has a quick way; anything wider costs ten times as much.
    QPen pen(toQColor(stroke.color), width <= 1 ? 1 : width, Qt::SolidLine, Qt::FlatCap,
             Qt::RoundJoin);
    if (stroke.pattern != LinePattern::Solid) {
        QList<qreal> pattern = stroke.pattern == LinePattern::Dash ? dash : dott;
        for (qreal& length : pattern)
            length *= m_figures.pixelsPerPoint() / pen.widthF();
        pen.setDashPattern(pattern);
    }
    m_painter.setPen(pen);
    for (std::size_t i = 0; i < lines.subPathCount(); ++i) {
        const auto line = lines.subPath(i);
        m_polygon.resize(static_cast<qsizetype>(line.size()));
        std::transform(line.begin(), line.end(), m_polygon.begin(),
                       [](Point p) { return QPointF(p.x, p.y); });
        m_painter.drawPolyline(m_polygon);
    }
}

void PainterCanvas::placeSymbol(const SymbolDrawing& symbol, Point at, float degrees)
{
    place(m_figures.symbol(symbol, degrees), at);
}

void PainterCanvas::placeText(const TextFigure& figure, Point at)
{
    place(m_figures.text(figure), at);
}

void PainterCanvas::place(const FigureImage& figure, Point at)
{
    // Whole pixels keep it sharp and are ten times as quick.
    const QPointF corner = QPointF(at.x, at.y) - figure.hotspot;
    m_painter.drawImage(QPoint(qRound(corner.x()), qRound(corner.y())), figure.image);
}

} // namespace kelvox
