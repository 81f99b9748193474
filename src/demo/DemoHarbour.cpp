#include "demo/DemoScene.h"

#include <fmt/format.h>

namespace kelvox {

std::vector<DemoWork> demoWorks(int usageBand)
{
    using Kind = DemoWork::Kind;
    const DemoWork::Kind fill = Kind::Fill;
    const DemoLine& way = demoFairway();
    const std::vector<DemoWork> all{
        {Kind::Dredged,
         {{150, 240},
          {790, 190},
          {600, 1'110},
          {340, 1'190},
          {300, 1'560},
          {90, 1'560},
          {130, 1'150}},
         4,
         {{"OBJNAM", "Kelmouth Basin"},
          {"DRVAL1", "9.5"},
          {"DRVAL2", "9.5"},
          {"QUASOU", "10"},
          {"TECSOU", "3"}}},
        {Kind::Dredged,
         {{1'120, -330}, {1'630, -260}, {1'700, -20}, {1'090, -180}},
         5,
         {{"OBJNAM", "Marina"}, {"DRVAL1", "2.5"}, {"DRVAL2", "2.5"}, {"QUASOU", "11"}}},
        {Kind::Dredged,
         ribbon({way[2], way[3], way[4], {210, 600}}, 85),
         4,
         {{"OBJNAM", "Kelmouth Channel"},
          {"DRVAL1", "9.5"},
          {"DRVAL2", "9.5"},
          {"QUASOU", "10"},
          {"TECSOU", "3"}}},
        // The commercial quay, its reclaimed ground reaching back onto the natural shore.
        {fill,
         {{565, 1'060}, {765, 250}, {1'720, 330}, {1'250, 1'130}},
         4,
         {{"CATSLC", "6"}, {"NATCON", "2"}, {"OBJNAM", "Commercial Quay"}}},
        {fill,
         ribbon({{1'720, 190}, {1'330, 90}, {880, 20}}, 16),
         5,
         {{"CATSLC", "4"}, {"NATCON", "2"}, {"OBJNAM", "Fish Pier"}}},
        {fill,
         ribbon({{-1'980, 120}, {-1'250, -300}, {-330, -420}}, 15),
         4,
         {{"CATSLC", "1"}, {"NATCON", "3"}, {"OBJNAM", "West Breakwater"}}},
        {fill,
         ribbon({{2'280, 60}, {1'480, -430}, {300, -560}}, 15),
         4,
         {{"CATSLC", "1"}, {"NATCON", "3"}, {"OBJNAM", "East Breakwater"}}},
        {fill,
         ribbon({{1'060, 40}, {1'030, -250}}, 9),
         5,
         {{"CATSLC", "3"}, {"NATCON", "1"}, {"OBJNAM", "Marina Mole"}}},
        {fill,
         ribbon({{-1'150, 760}, {-620, 640}}, 11),
         5,
         {{"CATSLC", "4"}, {"NATCON", "6"}, {"OBJNAM", "West Jetty"}}},
        {fill,
         ribbon({{660, 1'480}, {250, 1'330}}, 10),
         5,
         {{"CATSLC", "4"}, {"NATCON", "7"}, {"OBJNAM", "Oil Jetty"}}},
        {fill,
         {{-1'330, 620}, {-1'010, 350}, {-880, 500}, {-1'200, 800}},
         5,
         {{"CATSLC", "6"}, {"NATCON", "2"}, {"OBJNAM", "Shipyard"}}},
    };
    std::vector<DemoWork> shown;
    for (const DemoWork& work : all)
        if (usageBand >= work.firstBand)
            shown.push_back(work);
    return shown;
}

namespace {
void addMarina(DemoCell& cell)
{
    // A walkway along the shore side, with fingers from it.
    cell.line("PONTON", {{1'130, -110}, {1'640, -40}}, {{"NATCON", "6"}}, DemoCell::Near);
    for (int i = 0; i < 6; ++i) {
        const Point root{1'170.0 + 85 * i, -104.5 + 11.7 * i};
        cell.line("PONTON", {root, root + Point{22, -160}}, {{"NATCON", "6"}}, DemoCell::Near);
    }
    cell.point("HRBFAC", {1'960, 130}, {{"CATHAF", "5"}, {"OBJNAM", "Kelmouth Marina"}},
               DemoCell::Middle);
    cell.point("SMCFAC", {2'010, 170}, {{"CATSCF", "1,12,13,14,16"}}, DemoCell::Near);
    cell.point("SMCFAC", {2'060, 80}, {{"CATSCF", "2,7"}}, DemoCell::Near);
    cell.line("SLCONS", {{1'820, -30}, {1'740, -90}}, {{"CATSLC", "13"}}, DemoCell::Near);
}

void addPort(DemoCell& cell)
{
    for (int i = 0; i < 6; ++i) {
        const Point berth{558.0 + 31 * i, 990.0 - 128 * i};
        cell.point("BERTHS", berth, {{"OBJNAM", std::to_string(i + 1)}, {"DRVAL1", "9.5"}},
                   DemoCell::Near);
        if (i % 2 == 0)
            cell.point("CRANES", berth + Point{50, -20},
                       {{"CATCRN", "2"}, {"HEIGHT", "46"}, {"CONVIS", "1"}}, DemoCell::Near);
    }
    cell.point("HRBFAC", {900, 700}, {{"CATHAF", "10"}, {"OBJNAM", "Container Terminal"}},
               DemoCell::Middle);
    cell.point("HRBFAC", {620, 1'010}, {{"CATHAF", "3"}, {"OBJNAM", "Sorrel Ferry"}},
               DemoCell::Middle);
    cell.point("HRBFAC", {1'150, 75}, {{"CATHAF", "4"}}, DemoCell::Middle);
    for (const Point p :
         {Point{250, 1'230}, Point{245, 1'290}, Point{240, 1'390}, Point{235, 1'450}})
        cell.point("MORFAC", p, {{"CATMOR", "1"}}, DemoCell::Near);
    for (const Point tank :
         {Point{760, 1'480}, Point{830, 1'480}, Point{760, 1'560}, Point{830, 1'560}})
        cell.area("SILTNK", circle(tank, 24),
                  {{"CATSIL", "2"}, {"BUISHP", "7"}, {"CONVIS", "1"}, {"HEIGHT", "21"}},
                  DemoCell::Near);
    for (const Point p : {Point{820, 420}, Point{900, 480}, Point{830, 610}, Point{1'020, 850}})
        cell.area("BUISGL", box({p.x, p.y, p.x + 60, p.y + 110}), {{"FUNCTN", "15"}},
                  DemoCell::Near);
    cell.point("BUISGL", {1'290, 340}, {{"FUNCTN", "2"}, {"CONVIS", "1"}}, DemoCell::Near);
    cell.point("BUISGL", {1'330, 400}, {{"FUNCTN", "3"}}, DemoCell::Near);
    if (const auto steps = cell.line("SLCONS", {{-585, 1'330}, {-540, 1'310}},
                                     {{"CATSLC", "4"}, {"OBJNAM", "Town Steps"}}))
        cell.remember("Town Steps", *steps);
    cell.point("HRBFAC", {-1'180, 690}, {{"CATHAF", "9"}, {"OBJNAM", "Kell Yard"}},
               DemoCell::Middle);
}
} // namespace

void addHarbour(DemoCell& cell)
{
    if (cell.isAtLeast(5)) {
        addMarina(cell);
        addPort(cell);
        cell.area("BRIDGE", ribbon({{-860, 3'240}, {230, 3'160}}, 9),
                  {{"CATBRG", "1"}, {"VERCLR", "34"}, {"OBJNAM", "Kell Bridge"}, {"NATCON", "7"}});
    } else if (cell.isAtLeast(3)) {
        cell.line("BRIDGE", {{-860, 3'240}, {230, 3'160}},
                  {{"CATBRG", "1"}, {"VERCLR", "34"}, {"OBJNAM", "Kell Bridge"}});
    }
}

} // namespace kelvox
