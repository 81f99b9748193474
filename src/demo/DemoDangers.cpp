#include "demo/DemoScene.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
/// Rocks where the seabed is shoal and rough: on a lattice of the whole world, so that charts of
/// different scale show the same ones.
void addRocks(DemoCell& cell)
{
    constexpr double step = 260;
    constexpr double wave = 8;
    const DemoGround ground(wave * 2.2);
    const Rect& area = cell.chart().area;
    for (int row = static_cast<int>(std::floor(area.bottom / step)); row * step < area.top; ++row)
        for (int column = static_cast<int>(std::floor(area.left / step));
             column * step < area.right; ++column) {
            if (demoRandom(column, row, 500) > 0.10)
                continue;
            const Point p{(column + demoRandom(column, row, 501)) * step,
                          (row + demoRandom(column, row, 502)) * step};
            if (std::abs(p.x) < 1'500 && p.y > -5'000)
                continue; // the approach is clear
            const double depth = ground.depth(p);
            if (depth < -3 || depth > 7)
                continue;
            const double top = depth - 1.5 - 2.5 * demoRandom(column, row, 503);
            const char* level = top > 0.3 ? "3" : top > -0.3 ? "5" : "4";
            cell.point("UWTROC", p,
                       {{"WATLEV", level},
                        {"VALSOU", demoNumber(std::floor(top * 10) / 10)},
                        {"QUASOU", "6"},
                        {"NATSUR", "9"},
                        {"EXPSOU", "2"}},
                       DemoCell::Far);
        }
}

void addWrecks(DemoCell& cell)
{
    struct Wreck {
        Point place;
        const char* category;
        const char* level;
        const char* depth;
        const char* name;
    };
    for (const Wreck& wreck :
         {Wreck{{-4'800, -6'100}, "2", "3", "6.2", "Fair Maid"},
          Wreck{{1'650, -2'250}, "1", "3", "11.4", ""},
          Wreck{{-3'350, -2'300}, "5", "4", "", "Prosper"},
          Wreck{{-1'150, -2'620}, "2", "3", "", ""}, Wreck{{5'100, -9'600}, "1", "3", "24", ""},
          Wreck{{7'600, -4'100}, "4", "3", "", ""}, Wreck{{2'600, -1'250}, "2", "3", "1.8", ""},
          Wreck{{-16'500, -13'500}, "1", "3", "38", ""},
          Wreck{{13'000, -26'500}, "2", "3", "19", ""},
          Wreck{{-6'000, -34'500}, "1", "3", "61", ""},
          Wreck{{-22'000, -20'000}, "2", "3", "", ""}}) {
        DemoCell::Attributes attributes{{"CATWRK", wreck.category}, {"WATLEV", wreck.level}};
        if (*wreck.depth) {
            attributes.emplace_back("VALSOU", wreck.depth);
            attributes.emplace_back("QUASOU", "6");
            attributes.emplace_back("TECSOU", "3");
        } else {
            attributes.emplace_back("QUASOU", "2");
        }
        if (*wreck.name)
            attributes.emplace_back("OBJNAM", wreck.name);
        cell.point("WRECKS", wreck.place, attributes, DemoCell::Far);
    }
}

void addObstructions(DemoCell& cell)
{
    cell.point("OBSTRN", {6'700, -3'200},
               {{"CATOBS", "3"}, {"WATLEV", "3"}, {"VALSOU", "8.7"}, {"QUASOU", "6"}},
               DemoCell::Far);
    cell.point("OBSTRN", {-1'850, -3'150}, {{"WATLEV", "3"}, {"VALSOU", "7.1"}, {"QUASOU", "6"}},
               DemoCell::Far);
    cell.point("OBSTRN", {880, -1'450}, {{"CATOBS", "6"}, {"WATLEV", "3"}, {"QUASOU", "2"}},
               DemoCell::Far);
    cell.area("OBSTRN", blob({-3'300, -2'900}, 170, 21),
              {{"CATOBS", "6"}, {"WATLEV", "3"}, {"QUASOU", "2"}});
    cell.area("OBSTRN", blob({2'300, -3'050}, 190, 22),
              {{"CATOBS", "5"}, {"WATLEV", "3"}, {"VALSOU", "9.8"}, {"QUASOU", "6"}});
    cell.point("OBSTRN", {14'800, -21'300},
               {{"CATOBS", "2"}, {"WATLEV", "3"}, {"VALSOU", "41"}, {"QUASOU", "6"}},
               DemoCell::Far);
    cell.point("PILPNT", {-560, 615}, {}, DemoCell::Near);
    for (const Point p : {Point{-2'950, -2'350}, Point{5'400, -5'200}, Point{-8'100, -7'500}})
        cell.point("WEDKLP", p, {{"CATWED", "1"}}, DemoCell::Middle);
}

void addSeabed(DemoCell& cell)
{
    const auto works = demoWorks(cell.chart().usageBand);
    const double step = cell.chart().soundingSpacing * 9;
    const Rect& area = cell.chart().area;
    for (int row = static_cast<int>(std::floor(area.bottom / step)); row * step < area.top; ++row)
        for (int column = static_cast<int>(std::floor(area.left / step));
             column * step < area.right; ++column) {
            const Point p{(column + demoRandom(column, row, 600)) * step,
                          (row + demoRandom(column, row, 601)) * step};
            const double depth = cell.ground().depth(p);
            if (depth < 0.5 || std::any_of(works.begin(), works.end(), [&](const auto& work) {
                    return isInsideRing(work.ring, p);
                }))
                continue;
            struct Ground {
                const char* surface;
                const char* quality;
            };
            static constexpr std::array<Ground, 6> shallow{
                {{"4", "1"}, {"4", ""}, {"9", ""}, {"1", "6"}, {"17", "4"}, {"6", ""}}};
            static constexpr std::array<Ground, 4> deep{
                {{"1", ""}, {"4", "1"}, {"1,4", ""}, {"2", "7"}}};
            const double pick = demoRandom(column, row, 602);
            const Ground found = depth < 20 ? shallow[static_cast<std::size_t>(pick * 6)]
                                            : deep[static_cast<std::size_t>(pick * 4)];
            DemoCell::Attributes attributes{{"NATSUR", found.surface}};
            if (*found.quality)
                attributes.emplace_back("NATQUA", found.quality);
            cell.point("SBDARE", p, attributes, DemoCell::Near);
        }
}

void addTide(DemoCell& cell)
{
    cell.area("WATTUR", blob({-6'200, -8'300}, 750, 31),
              {{"CATWAT", "3"}, {"OBJNAM", "Sorrel Race"}});
    cell.point("WATTUR", {4'500, -6'900}, {{"CATWAT", "2"}}, DemoCell::Middle);
    cell.point("WATTUR", {15'500, -19'800}, {{"CATWAT", "4"}}, DemoCell::Middle);
    cell.line("TIDEWY", {{5'000, -3'750}, {5'900, -3'500}, {6'900, -3'650}},
              {{"OBJNAM", "Tithing Gut"}}, DemoCell::Middle);
    struct Stream {
        Point place;
        const char* kind;
        const char* direction;
        const char* knots;
    };
    for (const Stream& stream :
         {Stream{{-5'200, -5'300}, "1", "78", "2.5"}, Stream{{-5'000, -4'950}, "2", "257", "2.2"},
          Stream{{250, -1'250}, "1", "4", "1.4"}, Stream{{420, -1'350}, "2", "186", "1.8"},
          Stream{{-12'000, -27'000}, "1", "84", "1.6"},
          Stream{{10'000, -27'400}, "2", "271", "1.5"}})
        cell.point(
            "TS_FEB", stream.place,
            {{"CAT_TS", stream.kind}, {"ORIENT", stream.direction}, {"CURVEL", stream.knots}},
            DemoCell::Middle);
}
} // namespace

void addDangers(DemoCell& cell)
{
    if (!cell.isAtLeast(3))
        return;
    addWrecks(cell);
    addObstructions(cell);
    addSeabed(cell);
    addTide(cell);
    if (cell.isAtLeast(4))
        addRocks(cell);
}

} // namespace kelvox
