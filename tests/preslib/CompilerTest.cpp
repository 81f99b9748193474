#include "presentation/S52Model.h"
#include "preslib/Check.h"
#include "preslib/DrawingReader.h"
#include "preslib/TableReader.h"
#include "preslib/Writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace kelvox::preslib {

namespace {
constexpr const char* colors = "CHRED 0.48 0.30 25 0.48 0.30 10 0.48 0.30 1.25 red of buoys\n"
                               "OUTLW 0.28 0.31 0  0.28 0.31 0  0.28 0.31 0    outline\n";

/// Reads and checks a whole library; a symbol, a line style and a pattern of size 100 are there.
struct Compiled {
    Library library;
    Diagnostics diagnostics;

    explicit Compiled(const std::string& drawings, const std::string& lookUps = {},
                      const std::string& moreColors = {})
    {
        readColors("colours.txt", colors + moreColors, library, diagnostics);
        readLookUps("lookups.txt", lookUps, library, diagnostics);
        DrawingReader reader(library, diagnostics);
        const std::string square = " box 100 x 100\n pen CHRED\n line 0,0 100,100\n";
        reader.read("given.txt",
                    "symbol SQUARE01\n" + square + "linestyle LINING01\n" + square
                        + "pattern PATTRN01\n" + square);
        reader.read("drawings.txt", drawings);
        check(library, diagnostics);
    }
    [[nodiscard]] std::string messages() const
    {
        std::string text;
        for (const std::string& message : diagnostics.messages())
            text += message + '\n';
        return text;
    }
};

std::string vectors(const std::string& commands)
{
    const Compiled compiled("figure stroke\n line 0,0 10,0\nsymbol FIGURE01 a figure\n"
                            " box 1000 x 1000 pivot 500,500\n pen CHRED 2\n"
                            + commands);
    EXPECT_EQ(compiled.messages(), "") << commands;
    std::string text;
    for (const std::string& piece : vectorCommands(compiled.library.drawings.back()))
        text += piece;
    return text;
}
} // namespace

TEST(Compiler, RefusesWhatIsWrongWithFileAndLine)
{
    struct Case {
        const char* drawings;
        const char* lookUps;
        const char* message; ///< begins with file and line
    };
    const std::string table = "table SIMPLIFIED\n";
    const std::string box = " box 100 x 100\n pen CHRED\n";
    for (const Case& c : std::initializer_list<Case>{
             {"", "BUOYXX\n * | 8 O STANDARD 27010 | SY(SQUARE01)",
              "lookups.txt:3: unknown class \"BUOYXX\""},
             {"", "BOYLAT\n NOATTR1 | 8 O STANDARD 27010 | SY(SQUARE01)",
              "lookups.txt:3: unknown attribute \"NOATTR\""},
             {"", "BOYLAT\n BOYSHPx | 8 O STANDARD 27010 | SY(SQUARE01)",
              "lookups.txt:3: condition BOYSHPx"},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | SY(NOSUCH01)",
              "lookups.txt:3: unknown symbol \"NOSUCH01\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | SY(LINING01)",
              "lookups.txt:3: unknown symbol \"LINING01\""},
             {"", "BOYLAT\n\n * | 8 O STANDARD 27010 | LC(SQUARE01)",
              "lookups.txt:4: unknown line style \"SQUARE01\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | AP(SQUARE01)",
              "lookups.txt:3: unknown pattern \"SQUARE01\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | CS(LIGHTS06)",
              "lookups.txt:3: unknown conditional procedure \"LIGHTS06\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | LS(DASH,1,NOCOL); AC(NOCO2,3)",
              "lookups.txt:3: unknown colour \"NOCO2\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | LS(WAVY,1,CHRED)", "lookups.txt:3: a line"},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | TX(NOATTR,1,2,2,'15110',0,0,CHRED,26)",
              "lookups.txt:3: unknown attribute \"NOATTR\""},
             {"", "BOYLAT\n * | 8 O STANDARD 27010 | XX(1)",
              "lookups.txt:3: unknown instruction \"XX\""},
             {"", "BOYLAT\n * | 8 O STANDARD | SY(SQUARE01)", "lookups.txt:3: the second cell"},
             {"", "BOYLAT\n * | SY(SQUARE01)", "lookups.txt:3: a row of three cells"},
             {"", "table LATERAL\n", "lookups.txt:2: unknown table \"LATERAL\""},
             {"symbol SHORT\n BOX line 0,0 1,1", "", "drawings.txt:1: SHORT: a name has 8"},
             {"symbol lower001\n BOX line 0,0 1,1", "", "drawings.txt:1: lower001: a name has 8"},
             {"\nsymbol OUTSIDE1\n BOX line 0,0 101,50", "",
              "drawings.txt:2: OUTSIDE1: the figure"},
             {"symbol OUTSIDE2\n BOX disc 50,50 51", "", "drawings.txt:1: OUTSIDE2: the figure"},
             {"symbol NOBOX001\n pen CHRED\n line 0,0 0,0", "", "drawings.txt:1: NOBOX001 has no"},
             {"symbol EMPTY001\n BOX", "", "drawings.txt:1: EMPTY001: nothing is drawn"},
             {"symbol SQUARE01\n BOX line 0,0 1,1", "", "drawings.txt:1: SQUARE01 is drawn twice"},
             {"symbol NOCOLOR1\n box 9 x 9\n pen NOCOL\n line 0,0 1,1", "",
              "drawings.txt:1: NOCOLOR1: unknown colour \"NOCOL\""},
             {"symbol NOPEN001\n box 9 x 9\n line 0,0 1,1", "", "drawings.txt:3: no pen"},
             {"symbol WIDE0001\n box 9 x 9\n pen CHRED 3\n line 0,0 1,1", "",
              "drawings.txt:3: a pen is 1 or 2"},
             {"symbol POINT001\n BOX line 0,0 7", "", "drawings.txt:4: a point X,Y is wanted"},
             {"symbol VERB0001\n BOX scribble 0,0", "", "drawings.txt:4: unknown command"},
             {"symbol USE00001\n BOX use NOTHING", "", "drawings.txt:4: nothing named NOTHING"},
             {"symbol TEXT0001\n BOX text Q", "", "drawings.txt:4: the letter Q was not drawn"},
             {"symbol MORE0001\n BOX circle 50,50 5 5", "",
              "drawings.txt:4: not understood: \"5\""},
             {"drawing SOME0001", "", "drawings.txt:1: a drawing begins with"}}) {
        std::string drawings = c.drawings;
        if (const auto at = drawings.find(" BOX"); at != std::string::npos)
            drawings.replace(at, 4, box);
        const Compiled compiled(drawings, table + c.lookUps);
        EXPECT_NE(('\n' + compiled.messages()).find('\n' + std::string(c.message)),
                  std::string::npos)
            << c.message << "\nsaid: " << compiled.messages();
    }
    EXPECT_EQ(Compiled("", "", "CHRE 0.4 0.3 1 0.4 0.3 1 0.4 0.3 1").messages().substr(0, 14),
              "colours.txt:3:");
    EXPECT_EQ(Compiled("", "", "CHGRN 0.4 0.3 1 0.4 0.3 1").messages().substr(0, 14),
              "colours.txt:3:");
}

TEST(Compiler, DrawingsBecomeVectorCommands)
{
    for (const auto& [commands, expected] :
         std::initializer_list<std::pair<const char*, const char*>>{
             {" line 0,0 10,20 / 5,5 6,6", "SPA;SW2;PU500,500;PD510,520;PU505,505;PD506,506;"},
             {" loop 0,0 10,0 10,10", "SPA;SW2;PU500,500;PD510,500,510,510,500,500;"},
             {" from corner\n circle 10,20 5", "SPA;SW2;PU10,20;CI5;"},
             {" from middle\n disc 1,2 30", "SPA;PU501,502;PM0;CI30;PM2;FP;"},
             {" edge OUTLW 1\n fill 0,0 9,0 9,9",
              "SPA;PU500,500;PM0;PD509,500,509,509,500,500;PM2;FP;"
              "SPB;SW1;PU500,500;PD509,500,509,509,500,500;"},
             // The hole is written the same way round as its ring, and turned.
             {" fill 0,0 90,0 90,90 0,90 / 30,30 60,30 60,60 30,60",
              "SPA;PU500,500;PM0;PD590,500,590,590,500,590,500,500;"
              "PM1;PU530,530;PD530,560,560,560,560,530,530,530;PM2;FP;"},
             {" band 20 0,0 100,0", "SPA;PU500,510;PM0;PD600,510,600,490,500,490,500,510;PM2;FP;"},
             {" pen CHRED half\n fill 0,0 9,0 9,9\n pen OUTLW\n line 0,0 1,1",
              "SPA;ST2;PU500,500;PM0;PD509,500,509,509,500,500;PM2;FP;"
              "SPB;ST0;SW1;PU500,500;PD501,501;"},
             {" dashed 10 5 line 0,0 40,0",
              "SPA;SW2;PU500,500;PD510,500;PU515,500;PD525,500;PU530,500;PD540,500;"},
             {" use stroke at 5,5 turn 90 scale 2", "SPA;SW2;PU505,505;PD505,525;"},
             {" use stroke mirror CHRED>OUTLW pen 1", "SPA;SW1;PU500,500;PD490,500;"},
             {" use SQUARE01 CHRED>OUTLW pen 2", "SPA;SW2;PU500,500;PD600,600;"},
             {" arc 0,0 100 90 114", // a quarter to four, in two pieces
              "SPA;SW2;PU600,500;PD598,521,591,541;"}})
        EXPECT_EQ(vectors(commands), expected) << commands;
}

TEST(Compiler, CurvesRunThroughTheirPoints)
{
    const Polyline curve =
        outline({{{0, 0}, false}, {{50, -50}, true}, {{100, 0}, false}, {{200, 0}, false}}, false);
    EXPECT_NE(std::ranges::find(curve, Point{50, -50}), curve.end());
    EXPECT_EQ(curve.back(), (Point{200, 0}));
    EXPECT_EQ(curve[curve.size() - 2], (Point{100, 0})) << "straight between corners";
    const Polyline circle =
        outline({{{0, -100}, true}, {{100, 0}, true}, {{0, 100}, true}, {{-100, 0}, true}}, true);
    for (const Point p : circle)
        EXPECT_NEAR(std::hypot(p.x, p.y), 100, 6);
    EXPECT_EQ(dots(ellipse({0, 0}, 100, 100), 62.8, 5).size(), 10U);
}

TEST(Compiler, TheExchangeFormReadsBackAsItWasWritten)
{
    Compiled compiled("symbol ASIDE001 a figure beside its pivot\n box 200 x 100 pivot -50,130\n"
                      " pen OUTLW\n from corner\n line 0,0 200,100\n"
                      "pattern TILE0001\n box 9 x 9\n tile STG CON 2000 10000\n pen CHRED\n"
                      " line 0,0 9,9\n",
                      "table SIMPLIFIED\nBOYLAT\n * | 8 O STANDARD 27010 | SY(SQUARE01)\n"
                      " BOYSHP1 COLOUR3,4,3 | 8 O - 0 |\n");
    ASSERT_EQ(compiled.messages(), "");
    S52Model model;
    model.loadPresentationLibrary(exchangeForm(compiled.library), {});
    EXPECT_EQ(model.cols().size(), 3U);
    EXPECT_EQ(model.cols().at("DUSK").ccie().size(), 2U);

    S52Symb& symbol = model.symb().at("ASIDE001");
    EXPECT_EQ(symbol.poString, "a figure beside its pivot");
    symbol.processVct(model.cols().at("DAY").ccie());
    const Rect ink = symbol.s52Path().at(0).path.bounds();
    EXPECT_NEAR(ink.left, 50 * 0.028, 1e-9);
    EXPECT_NEAR(ink.right, 250 * 0.028, 1e-9);
    EXPECT_NEAR(ink.top, 130 * 0.028, 1e-9) << "the upper edge lies above the pivot";
    EXPECT_NEAR(ink.bottom, 30 * 0.028, 1e-9);
    EXPECT_EQ(model.patt().at("TILE0001").pamaNumber, 10000);

    model.setSymbols(false, false);
    const auto& rows = model.luptForPoints().at("BOYLAT");
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1]->attc(), (std::vector<std::string>{"BOYSHP1", "COLOUR3,4,3"}));
    EXPECT_TRUE(rows[1]->inst().empty());
}

} // namespace kelvox::preslib
