#include "presentation/DisplayList.h"

#include "support/TextCanvas.h"

#include <gtest/gtest.h>

namespace kelvox {

namespace {
Path stripe(double top, double bottom)
{
    Path path;
    path.moveTo({0, top});
    path.lineTo({10, bottom});
    return path;
}
} // namespace

TEST(DisplayList, DrawsAgainInOrderWhatMeetsTheRows)
{
    SymbolDrawing symbol;
    symbol.name = "BOYLAT13";
    TextFigure figure;
    figure.text = "12";
    DisplayList list(1);
    list.fillArea(stripe(0, 100), {1, 0, 0, 255});
    list.strokeLine(stripe(200, 210), {{2, 0, 0, 255}, 2, LinePattern::Dash});
    list.placeSymbol(symbol, {5, 55}, 90);
    list.placeText(figure, {5, 300});
    list.strokeLine(Path(), {}); // nothing to draw
    EXPECT_EQ(list.size(), 4U);
    using Steps = std::vector<std::string>;
    const auto drawn = [&](double top, double bottom) {
        TextCanvas canvas;
        list.replay(canvas, top, bottom);
        return canvas.steps;
    };
    const std::string area = "area #010000/255";
    const std::string line = "line #020000/255 2 dash";
    EXPECT_EQ(drawn(0, 400), (Steps{area, line, "symbol BOYLAT13 90", "text 12"}));
    EXPECT_EQ(drawn(70, 90), Steps{area});
    EXPECT_EQ(drawn(212, 230), Steps{line}) << "the pen reaches further than its line";
    EXPECT_EQ(drawn(400, 500), Steps{});
}

} // namespace kelvox
