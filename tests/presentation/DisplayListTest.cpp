#include "presentation/DisplayList.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvox {

namespace {
/// Writes down what is drawn on it: kind, red of the colour, first point.
class TextCanvas final : public Canvas {
public:
    void fillArea(const Path& rings, DisplayColor color) override { note("area", rings, color); }
    void strokeLine(const Path& lines, const Stroke& stroke) override
    {
        note("line", lines, stroke.color);
    }
    std::string text;

private:
    void note(const char* kind, const Path& path, DisplayColor color)
    {
        text += std::string(kind) + std::to_string(color.red) + '@'
            + std::to_string(static_cast<int>(path.points().front().y)) + ' ';
    }
};

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
    DisplayList list;
    list.fillArea(stripe(0, 100), {1, 0, 0, 255});
    list.strokeLine(stripe(200, 210), {{2, 0, 0, 255}, 3, LinePattern::Dash});
    list.fillArea(stripe(50, 60), {3, 0, 0, 255});
    list.strokeLine(Path(), {}); // nothing to draw
    EXPECT_EQ(list.size(), 3U);
    const auto drawn = [&](double top, double bottom) {
        TextCanvas canvas;
        list.replay(canvas, top, bottom);
        return canvas.text;
    };
    EXPECT_EQ(drawn(0, 300), "area1@0 line2@200 area3@50 ");
    EXPECT_EQ(drawn(70, 90), "area1@0 ");
    EXPECT_EQ(drawn(212, 230), "line2@200 "); // the pen reaches further than its line
    EXPECT_EQ(drawn(300, 400), "");
    list.clear();
    EXPECT_EQ(drawn(0, 300), "");
}

} // namespace kelvox
