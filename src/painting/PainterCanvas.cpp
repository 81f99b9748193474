#include "painting/PainterCanvas.h"

#include "painting/LineFiller.h"
#include "painting/Pixels.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

PainterCanvas::PainterCanvas(const PixelBuffer& buffer, int top, FigureImages& figures)
    : m_buffer(buffer)
    , m_top(top)
    , m_figures(figures)
{
}

void PainterCanvas::fillArea(const Path& rings, DisplayColor color)
{
    m_filler.fill(m_buffer, rings, color, m_top);
}

void PainterCanvas::strokeLine(const Path& lines, const Stroke& stroke)
{
    LineFiller::stroke(m_buffer, lines, stroke.width * m_figures.pixelsPerPoint(), stroke.color,
                       m_top);
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
    // Whole pixels keep it sharp.
    const int left = static_cast<int>(std::lround(at.x - figure.hotspot.x()));
    const int top = static_cast<int>(std::lround(at.y - figure.hotspot.y())) - m_top;
    const int from = std::max(0, -left);
    const int to = std::min(figure.image.width(), m_buffer.width - left);
    const int end = std::min(figure.image.height(), m_buffer.height - top);
    for (int row = std::max(0, -top); row < end; ++row) {
        const auto* source = reinterpret_cast<const std::uint32_t*>(figure.image.constScanLine(row));
        std::uint32_t* pixels =
            m_buffer.pixels + static_cast<std::ptrdiff_t>(top + row) * m_buffer.stride + left;
        for (int x = from; x < to; ++x)
            if (source[x] != 0)
                pixels[x] = over(pixels[x], source[x]);
    }
}

} // namespace kelvox
