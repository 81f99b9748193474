#pragma once

#include "presentation/Canvas.h"

#include <variant>
#include <vector>

namespace kelvox {

/// A canvas that remembers what was drawn on it, to be painted later, elsewhere and in parts.
class DisplayList final : public Canvas {
public:
    /// @param pixelsPerPoint the picture's sharpness, which decides how far symbols reach
    explicit DisplayList(double pixelsPerPoint)
        : m_pixelsPerPoint(pixelsPerPoint)
    {
    }
    void fillArea(const Path& rings, DisplayColor color) override;
    void strokeLine(const Path& lines, const Stroke& stroke) override;
    /// The symbol outlives the list.
    void placeSymbol(const SymbolDrawing& symbol, Point at, float degrees) override;
    void placeText(const TextFigure& figure, Point at) override;

    /// Draws what meets the rows from top to bottom onto another canvas, in order.
    void replay(Canvas& canvas, double top, double bottom) const;
    [[nodiscard]] std::size_t size() const { return m_commands.size(); }

private:
    struct Area {
        Path rings;
        DisplayColor color;
    };
    struct Line {
        Path lines;
        Stroke stroke;
    };
    struct Symbol {
        const SymbolDrawing* symbol;
        Point at;
        float degrees;
    };
    struct Text {
        TextFigure figure;
        Point at;
    };
    struct Command {
        float top; ///< rows that the drawing may touch
        float bottom;
        std::variant<Area, Line, Symbol, Text> what;
    };
    double m_pixelsPerPoint;
    std::vector<Command> m_commands;
};

} // namespace kelvox
