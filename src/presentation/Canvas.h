#pragma once

#include "base/Path.h"
#include "presentation/DisplayColor.h"

#include <string>

namespace kelvox {

enum class LinePattern { Solid, Dash, Dott };

struct Stroke {
    DisplayColor color;
    float width = 1; ///< display points
    LinePattern pattern = LinePattern::Solid;

    friend bool operator==(const Stroke&, const Stroke&) = default;
};

struct SymbolDrawing;

/// A short text as it is drawn, in one line.
struct TextFigure {
    std::string text; ///< UTF-8
    std::string subscript; ///< behind the text, smaller and lower: the tenth of a sounding
    float size = 11; ///< display points
    bool italic = false;
    bool underlined = false; ///< of a drying height
    bool halo = true;
    DisplayColor color;
    DisplayColor haloColor;

    friend bool operator==(const TextFigure&, const TextFigure&) = default;
};

/// Tells how large a text comes out; any thread.
class TextMeasure {
public:
    virtual ~TextMeasure() = default;
    /// In display points, halo included.
    [[nodiscard]] virtual Size size(const TextFigure& figure) const = 0;
};

/// What portrayal draws on. Paths are in pixels of the picture, x right, y down, already clipped to
/// its surroundings and no finer than can be seen; lengths of strokes are display points.
class Canvas {
public:
    virtual ~Canvas() = default;
    /// Fills the rings even-odd, each closed by its chord. Edges are not smoothed, so that areas
    /// with a common edge neither overlap nor gap.
    virtual void fillArea(const Path& rings, DisplayColor color) = 0;
    /// Strokes each sub-path as an open line. A broken line comes as its dashes, each a sub-path;
    /// the pattern only tells what they are.
    virtual void strokeLine(const Path& lines, const Stroke& stroke) = 0;
    /// Puts the symbol's pivot at a pixel, turned clockwise by the angle.
    virtual void placeSymbol(const SymbolDrawing& symbol, Point at, float degrees) = 0;
    /// Puts the middle of the text at a pixel.
    virtual void placeText(const TextFigure& figure, Point at) = 0;
};

} // namespace kelvox
