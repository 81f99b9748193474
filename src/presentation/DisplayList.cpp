#include "presentation/DisplayList.h"

#include "presentation/S52Render.h"

namespace kelvox {

namespace {
constexpr double pen = 3; ///< display points; more than half of any pen

float rowAt(double y)
{
    return static_cast<float>(y);
}
} // namespace

void DisplayList::fillArea(const Path& rings, DisplayColor color)
{
    if (rings.isEmpty())
        return;
    const Rect box = rings.bounds();
    m_commands.push_back({rowAt(box.bottom - 1), rowAt(box.top + 1), Area{rings, color}});
}

void DisplayList::strokeLine(const Path& lines, const Stroke& stroke)
{
    if (lines.isEmpty())
        return;
    const Rect box = lines.bounds();
    const double reach = pen * m_pixelsPerPoint;
    m_commands.push_back({rowAt(box.bottom - reach), rowAt(box.top + reach), Line{lines, stroke}});
}

void DisplayList::placeSymbol(const SymbolDrawing& symbol, Point at, float degrees)
{
    const double reach = (symbol.reach + pen) * m_pixelsPerPoint;
    m_commands.push_back({rowAt(at.y - reach), rowAt(at.y + reach), Symbol{&symbol, at, degrees}});
}

void DisplayList::placeText(const TextFigure& figure, Point at)
{
    const double reach = figure.size * 1.5 * m_pixelsPerPoint;
    m_commands.push_back({rowAt(at.y - reach), rowAt(at.y + reach), Text{figure, at}});
}

void DisplayList::replay(Canvas& canvas, double top, double bottom) const
{
    struct Draw {
        Canvas& canvas;
        void operator()(const Area& area) const { canvas.fillArea(area.rings, area.color); }
        void operator()(const Line& line) const { canvas.strokeLine(line.lines, line.stroke); }
        void operator()(const Symbol& symbol) const
        {
            canvas.placeSymbol(*symbol.symbol, symbol.at, symbol.degrees);
        }
        void operator()(const Text& text) const { canvas.placeText(text.figure, text.at); }
    };
    for (const Command& command : m_commands)
        if (command.bottom >= top && command.top <= bottom)
            std::visit(Draw{canvas}, command.what);
}

} // namespace kelvox
