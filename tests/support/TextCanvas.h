#pragma once

#include "presentation/Canvas.h"
#include "presentation/S52Render.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace kelvox {

/// Writes down what is drawn on it, one step a line: "area #rrggbb/alpha", "line #rrggbb width
/// pattern", "symbol NAME angle", "text WORDS".
class TextCanvas final : public Canvas {
public:
    void fillArea(const Path& rings, DisplayColor color) override
    {
        if (!rings.isEmpty())
            steps.push_back("area " + name(color));
    }
    void strokeLine(const Path& lines, const Stroke& stroke) override
    {
        constexpr const char* patterns[] = {"solid", "dash", "dott"};
        if (!lines.isEmpty())
            steps.push_back(fmt::format("line {} {:g} {}", name(stroke.color), stroke.width,
                                        patterns[static_cast<int>(stroke.pattern)]));
    }
    void placeSymbol(const SymbolDrawing& symbol, Point /*at*/, float degrees) override
    {
        steps.push_back(fmt::format("symbol {} {:g}", symbol.name, degrees));
    }
    void placeText(const TextFigure& figure, Point at) override
    {
        steps.push_back("text " + figure.text
                        + (figure.subscript.empty() ? "" : "_" + figure.subscript)
                        + (figure.underlined ? " underlined" : ""));
        places.push_back(at);
    }
    std::vector<std::string> steps;
    std::vector<Point> places; ///< of the texts

    /// Colours that have a name are written by it.
    std::vector<std::pair<DisplayColor, std::string>> names;

private:
    [[nodiscard]] std::string name(DisplayColor color) const
    {
        DisplayColor opaque = color;
        opaque.alpha = 255;
        for (const auto& [known, word] : names)
            if (known == opaque)
                return color.alpha == 255 ? word : fmt::format("{}/{}", word, color.alpha);
        return fmt::format("#{:02x}{:02x}{:02x}/{}", color.red, color.green, color.blue,
                           color.alpha);
    }
};

} // namespace kelvox
