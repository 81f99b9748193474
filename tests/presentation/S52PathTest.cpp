#include "presentation/S52Item.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace kelvox {

namespace {
constexpr DisplayColor red{255, 0, 0, 255};
constexpr DisplayColor green{0, 255, 0, 255};

S52Symb built(const std::string& vectors, int pivotColumn = 0, int pivotRow = 0)
{
    S52Symb item;
    item.clNumber = pivotColumn;
    item.rwNumber = pivotRow;
    item.setColorReference("ACHREDBCHGRNCNOCOL");
    item.addVectorCommands(vectors);
    item.processVct({{"CHRED", {"CHRED", red}}, {"CHGRN", {"CHGRN", green}}});
    return item;
}

/// The pieces as text: kind, colour, opacity in percent, width, points in 0.01 mm with y down.
std::string text(const S52Symb& item)
{
    std::string result;
    for (const S52Path& piece : item.s52Path()) {
        result +=
            fmt::format("{}{} {} {}:", result.empty() ? "" : "; ", piece.fill ? "fill" : "line",
                        piece.color.red         ? "red"
                            : piece.color.green ? "green"
                                                : "black",
                        piece.fill ? 0 : piece.lineWidth);
        if (piece.color.alpha != 255)
            result += fmt::format(" {}%", (piece.color.alpha * 100 + 127) / 255);
        for (std::size_t i = 0; i < piece.path.subPathCount(); ++i) {
            result += i == 0 ? "" : " /";
            for (const Point p : piece.path.subPath(i))
                result += fmt::format(" {:.0f},{:.0f}", p.x / 0.028, -p.y / 0.028 + 0.0);
        }
    }
    return result;
}
} // namespace

TEST(S52Path, VectorCommandsBecomePaths)
{
    struct Case {
        const char* why;
        const char* vectors;
        const char* paths;
    };
    for (const Case& c : std::initializer_list<Case>{
             {"width is 2 and colour black until told", "PU1,2;PD3,4", "line black 2: 1,2 3,4"},
             {"a pen of 5 is cut to 2, of 1 is kept", "SPA;SW5;PU0,1;PD9,1;SW1;PU0,2;PD9,2",
              "line red 2: 0,1 9,1; line red 1: 0,2 9,2"},
             {"a new pen ends the line drawn before", "SPA;PU1,1;PD2,2;SPB;PD3,3",
              "line red 2: 1,1 2,2; line green 2: 2,2 3,3"},
             {"an unknown pen keeps the colour", "SPA;SPC;PU1,1;PD2,2;SPX;PD3,3",
              "line red 2: 1,1 2,2 3,3"},
             {"transparency 2 is half, 1 is a quarter", "SPA;ST2;PU1,1;PD2,2;ST1;PD3,3",
              "line red 2: 50% 1,1 2,2; line red 2: 25% 2,2 3,3"},
             {"transparency 0 and 4 are opaque", "SPA;ST4;PU1,1;PD2,2;ST0;PD3,3",
              "line red 2: 1,1 2,2; line red 2: 2,2 3,3"},
             {"transparency without a pen changes nothing", "ST1;PU1,1;PD2,2",
              "line black 2: 1,1 2,2"},
             {"several pairs are moves or lines in turn", "PU1,1,5,5;PD6,6,7,7",
              "line black 2: 5,5 6,6 7,7"},
             {"fewer than two numbers do not move", "PU1,1;PU3;PD2,2", "line black 2: 1,1 2,2"},
             {"pen down alone is a dot one point long", "PU10,10;PD", "line black 2: 10,10 46,46"},
             {"a polygon is filled from where the line stood", "SPA;PU1,1;PM0;PD5,1,5,5;PM2;FP",
              "fill red 0: 1,1 5,1 5,5"},
             {"rings of one polygon; a sub-polygon command does nothing",
              "PU0,0;PM0;PD9,0,9,9;PM1;PU3,3;PD4,3,4,4;PM2;FP",
              "fill black 0: 0,0 9,0 9,9 / 3,3 4,3 4,4"},
             {"after a fill the edge has nothing left to draw", "PU1,1;PM0;PD5,1,5,5;PM2;FP;EP",
              "fill black 0: 1,1 5,1 5,5"},
             {"the edge of a polygon", "SW1;PU1,1;PM0;PD5,1,1,1;PM2;EP",
              "line black 1: 1,1 5,1 1,1"},
             {"arcs, calls and unknown commands are passed over", "PU1,1;AA5,5,90;SCX;ZZ9;PD2,2",
              "line black 2: 1,1 2,2"}})
        EXPECT_EQ(text(built(c.vectors)), c.paths) << c.why;
}

TEST(S52Path, ThePivotComesToTheOriginWithYUp)
{
    const S52Symb item = built("PU100,200;PD200,200", 100, 300);
    const auto line = item.s52Path().at(0).path.subPath(0);
    EXPECT_NEAR(line[0].x, 0, 1e-12);
    EXPECT_NEAR(line[0].y, 2.8, 1e-12) << "100 above the pivot";
    EXPECT_NEAR(line[1].x, 2.8, 1e-12);
}

TEST(S52Path, ACircleEndsADegreeShort)
{
    const S52Symb item = built("PU500,500;CI100;PD500,0");
    const Path& path = item.s52Path().at(0).path;
    const auto arc = path.subPath(0);
    EXPECT_NEAR(arc.front().x, 600 * 0.028, 1e-9);
    EXPECT_NEAR(arc.back().x, (500 + 100 * 0.999847695) * 0.028, 1e-6);
    EXPECT_NEAR(arc.back().y, (-500 - 100 * 0.0174524064) * 0.028, 1e-6);
    EXPECT_NEAR(path.subPath(1).front().x, 500 * 0.028, 1e-9) << "back at the centre";
    // Flat enough that nobody sees the corners.
    for (std::size_t i = 1; i < arc.size(); ++i) {
        const Point middle = (arc[i - 1] + arc[i]) * 0.5 - Point{14, -14};
        EXPECT_GT(std::hypot(middle.x, middle.y), 2.8 - 0.02);
    }
}

TEST(S52Path, ABuildReplacesTheOneBefore)
{
    S52Symb item = built("SPA;PU1,1;PD2,2;X;;Q");
    EXPECT_EQ(item.vct().size(), 3U) << "elements of one character are dropped";
    item.processVct({});
    EXPECT_EQ(text(item), "line black 2: 1,1 2,2");
}

} // namespace kelvox
