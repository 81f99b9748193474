#pragma once

#include "painting/AreaFiller.h"
#include "painting/FigureImages.h"
#include "presentation/Canvas.h"

#include <QColor>

namespace kelvox {

/// Paints onto a band of rows of a picture. Each band has a canvas of its own, on any thread.
class PainterCanvas final : public Canvas {
public:
    /// @param buffer the band's pixels, @param top its first row in the picture
    PainterCanvas(const PixelBuffer& buffer, int top, FigureImages& figures);

    void fillArea(const Path& rings, DisplayColor color) override;
    void strokeLine(const Path& lines, const Stroke& stroke) override;
    void placeSymbol(const SymbolDrawing& symbol, Point at, float degrees) override;
    void placeText(const TextFigure& figure, Point at) override;

private:
    void place(const FigureImage& figure, Point at);

    PixelBuffer m_buffer;
    int m_top;
    FigureImages& m_figures;
    AreaFiller m_filler;
};

[[nodiscard]] inline QColor toQColor(DisplayColor color)
{
    return {color.red, color.green, color.blue, color.alpha};
}

} // namespace kelvox
