#include "demo/DemoScene.h"

namespace kelvox {

namespace {
void addSettlements(DemoCell& cell)
{
    cell.area("BUAARE",
              {{640, 1'420},
               {1'260, 1'150},
               {1'740, 380},
               {2'420, 260},
               {3'300, 420},
               {3'500, 1'600},
               {2'300, 2'400},
               {1'000, 2'300}},
              {{"CATBUA", "4"}, {"OBJNAM", "Kelmouth"}});
    cell.area("BUAARE", blob({-1'900, 1'500}, 420, 3), {{"CATBUA", "3"}, {"OBJNAM", "Westbank"}});
    cell.area("BUAARE", blob({-9'000, -2'400}, 480, 4),
              {{"CATBUA", "3"}, {"OBJNAM", "Stonehythe"}});
    cell.area("BUAARE", blob({6'300, -450}, 380, 6), {{"CATBUA", "3"}, {"OBJNAM", "Nab Green"}});
    cell.area("BUAARE", blob({-17'500, -700}, 900, 7), {{"CATBUA", "4"}, {"OBJNAM", "Harrowby"}});
    cell.area("BUAARE", blob({20'500, -9'500}, 800, 8), {{"CATBUA", "3"}, {"OBJNAM", "Carrow"}});
    if (!cell.isAtLeast(3)) {
        cell.point("BUAARE", {-64'000, -33'500}, {{"CATBUA", "4"}, {"OBJNAM", "Port Brannay"}});
        cell.point("BUAARE", {52'000, 9'000}, {{"CATBUA", "5"}, {"OBJNAM", "Eastmere"}});
    }
}

void addRoads(DemoCell& cell)
{
    const auto road = [&](const DemoLine& line, const char* category) {
        cell.line("ROADWY", line, {{"CATROD", category}}, DemoCell::Middle);
    };
    road({{-34'000, 3'500},
          {-17'500, -600},
          {-12'500, 400},
          {-8'000, 300},
          {-4'800, 800},
          {-2'600, 1'700},
          {-1'350, 2'800},
          {-860, 3'240}},
         "2");
    road({{230, 3'160},
          {900, 2'600},
          {1'700, 1'600},
          {2'600, 900},
          {4'800, 500},
          {9'000, 900},
          {15'000, -1'800},
          {20'500, -9'000}},
         "2");
    if (cell.isAtLeast(4)) {
        road({{-1'350, 2'800}, {-1'700, 1'500}, {-2'350, 700}, {-4'300, -1'300}, {-8'900, -2'300}},
             "3");
        road({{1'700, 1'600}, {1'450, 900}, {1'250, 620}}, "5");
        road({{2'600, 900}, {2'350, 350}, {2'200, 110}}, "5");
        road({{2'600, 900}, {1'450, 900}}, "5");
        road({{900, 2'600}, {1'100, 4'400}, {2'300, 6'200}, {2'600, 9'000}}, "3");
    }
    cell.line("RAILWY",
              {{1'180, 980},
               {1'500, 1'800},
               {2'400, 2'700},
               {4'800, 4'000},
               {9'000, 5'300},
               {20'000, 7'000}},
              {}, DemoCell::Middle);
}

void addWatersAshore(DemoCell& cell)
{
    cell.area("LAKARE", blob({5'300, 3'700}, 620, 9), {{"OBJNAM", "Tarn Water"}, {"ELEVAT", "88"}});
    cell.area("LAKARE", blob({-14'800, 6'500}, 1'300, 10), {{"OBJNAM", "Lake Harrow"}});
    cell.line("RIVERS",
              {{900, 8'350}, {1'650, 9'100}, {1'500, 10'300}, {2'300, 11'400}, {2'200, 12'960}},
              {{"OBJNAM", "River Kell"}});
    cell.line("RIVERS",
              {{-5'200, 7'900},
               {-4'800, 6'600},
               {-3'400, 5'900},
               {-2'700, 5'000},
               {-1'200, 4'700},
               {-330, 4'500}},
              {{"OBJNAM", "Dour Water"}}, DemoCell::Middle);
    cell.line("RIVERS",
              {{4'900, 3'300}, {4'400, 2'300}, {4'700, 900}, {4'400, -300}, {4'450, -900}}, {},
              DemoCell::Middle);
}

void addRelief(DemoCell& cell)
{
    struct Hill {
        Point place;
        const char* metres;
        const char* name;
    };
    for (const Hill& hill :
         {Hill{{6'300, 5'200}, "214", "Beacon Fell"}, Hill{{-5'300, 2'600}, "188", "Kell Down"},
          Hill{{-10'900, 4'300}, "261", "Harrow Pike"}, Hill{{-9'300, -6'100}, "64", "Sorrel Hill"},
          Hill{{9'900, 3'000}, "141", ""}, Hill{{6'750, -5'350}, "47", "Tithe Barrow"},
          Hill{{-2'530, -1'730}, "22", ""}, Hill{{21'000, -14'000}, "132", "Carrow Law"},
          Hill{{-29'000, -14'000}, "156", "Drummel Head"}}) {
        DemoCell::Attributes attributes{{"ELEVAT", hill.metres}};
        if (*hill.name)
            attributes.emplace_back("OBJNAM", hill.name);
        cell.point("LNDELV", hill.place, attributes, DemoCell::Far);
    }
    if (!cell.isAtLeast(4))
        return;
    for (const double radius : {350.0, 800.0, 1'400.0})
        cell.line(
            "LNDELV",
            [&] {
                DemoLine ring = blob({6'300, 5'200}, radius, 14);
                ring.push_back(ring.front());
                return ring;
            }(),
            {{"ELEVAT",
              radius < 400         ? "200"
                  : radius < 1'000 ? "150"
                                   : "100"}},
            DemoCell::Middle);
    cell.area("VEGATN", blob({-3'600, 1'500}, 700, 15), {{"CATVEG", "6"}}, DemoCell::Middle);
    cell.area("VEGATN", blob({3'300, 2'900}, 500, 16), {{"CATVEG", "5"}}, DemoCell::Middle);
    cell.line("SLOTOP", {{-4'750, -1'750}, {-4'100, -1'480}, {-3'400, -1'260}}, {{"CATSLO", "6"}},
              DemoCell::Near);
}

void addLandmarks(DemoCell& cell)
{
    struct Landmark {
        const char* acronym;
        Point place;
        DemoCell::Attributes attributes;
    };
    const std::vector<Landmark> all{
        {"LNDMRK",
         {1'560, 1'420},
         {{"CATLMK", "20"},
          {"FUNCTN", "20"},
          {"CONVIS", "1"},
          {"HEIGHT", "52"},
          {"OBJNAM", "St Brannoc's"}}},
        {"LNDMRK", {1'350, 1'250}, {{"CATLMK", "3"}, {"CONVIS", "1"}, {"HEIGHT", "78"}}},
        {"LNDMRK",
         {6'250, 5'250},
         {{"CATLMK", "7"},
          {"FUNCTN", "30"},
          {"CONVIS", "1"},
          {"HEIGHT", "122"},
          {"OBJNAM", "Beacon Fell Mast"}}},
        {"LNDMRK",
         {-4'150, -1'150},
         {{"CATLMK", "9"}, {"CONVIS", "1"}, {"HEIGHT", "12"}, {"OBJNAM", "Admiral's Monument"}}},
        {"LNDMRK", {5'650, -350}, {{"CATLMK", "18"}, {"CONVIS", "1"}}},
        {"LNDMRK", {-8'950, -2'500}, {{"CATLMK", "20"}, {"FUNCTN", "20"}, {"CONVIS", "1"}}},
        {"LNDMRK", {7'000, 1'200}, {{"CATLMK", "19"}, {"CONVIS", "1"}, {"HEIGHT", "95"}}},
        {"SILTNK", {2'750, 1'450}, {{"CATSIL", "4"}, {"CONVIS", "1"}, {"HEIGHT", "38"}}},
        {"FORSTC",
         {-2'350, 150},
         {{"CATFOR", "1"}, {"CONVIS", "1"}, {"OBJNAM", "Westbank Castle"}}},
        {"CGUSTA", {2'450, 150}, {{"OBJNAM", "Kelmouth Coastguard"}}},
        {"RADSTA", {2'480, 170}, {{"CATRAS", "2"}, {"OBJNAM", "Kelmouth VTS"}}},
        {"AIRARE", {8'600, 2'500}, {{"CATAIR", "6"}, {"OBJNAM", "Nab Airfield"}}},
    };
    for (const Landmark& landmark : all)
        cell.point(landmark.acronym, landmark.place, landmark.attributes, DemoCell::Far);
}
} // namespace

void addLand(DemoCell& cell)
{
    addSettlements(cell);
    if (!cell.isAtLeast(3))
        return;
    addRoads(cell);
    addWatersAshore(cell);
    addRelief(cell);
    addLandmarks(cell);
}

void addNames(DemoCell& cell)
{
    struct Name {
        const char* acronym;
        Point place;
        const char* name;
        int firstBand;
        int lastBand;
        const char* category = "";
    };
    for (const Name& one : {Name{"SEAARE", {-900, -3'500}, "Kelmouth Bay", 3, 5, "5"},
                            Name{"SEAARE", {-9'300, -3'900}, "Sorrel Sound", 3, 4, "12"},
                            Name{"SEAARE", {-130, 2'300}, "River Kell", 4, 5, "53"},
                            Name{"SEAARE", {5'900, -3'400}, "Tithing Gut", 4, 4, "2"},
                            Name{"SEAARE", {-15'000, -9'500}, "Harrow Bay", 3, 3, "5"},
                            Name{"SEAARE", {-5'000, -21'000}, "Drummel Deep", 3, 3, "4"},
                            Name{"SEAARE", {29'500, -4'500}, "Carrow Firth", 3, 3, "5"},
                            Name{"SEAARE", {20'000, -68'000}, "Lantern Bank", 1, 1, "3"},
                            Name{"SEAARE", {-10'000, -60'000}, "Sea of Sorrel", 1, 1, ""},
                            Name{"SEAARE", {-88'000, -12'000}, "Brannay Sound", 1, 1, "12"},
                            Name{"LNDRGN", {6'850, -5'550}, "The Tithings", 3, 4, ""},
                            Name{"LNDRGN", {-9'700, -6'500}, "Great Sorrel", 3, 4, ""},
                            Name{"LNDRGN", {-6'650, -4'300}, "Little Sorrel", 3, 4, ""},
                            Name{"LNDRGN", {-2'520, -1'750}, "Monk's Isle", 4, 5, ""},
                            Name{"LNDRGN", {3'610, -8'300}, "Hern Rock", 3, 4, ""},
                            Name{"LNDRGN", {19'500, -14'500}, "Carrow", 1, 3, ""},
                            Name{"LNDRGN", {-28'500, -14'500}, "Long Drummel", 1, 3, ""},
                            Name{"LNDRGN", {-63'000, -32'000}, "Brannay", 1, 1, ""},
                            Name{"LNDRGN", {64'500, -49'500}, "The Farrows", 1, 1, ""},
                            Name{"LNDRGN", {9'100, -63'400}, "Lantern Isle", 1, 1, ""}}) {
        const int band = cell.chart().usageBand;
        if (band < one.firstBand || band > one.lastBand)
            continue;
        DemoCell::Attributes attributes{{"OBJNAM", one.name}};
        if (*one.category)
            attributes.emplace_back("CATSEA", one.category);
        cell.point(one.acronym, one.place, attributes);
    }
    // Also in the language of the country, as a cell may give it.
    cell.point("LNDRGN", {12'000, 6'500}, {{"OBJNAM", "Ostland"}, {"NOBJNM", "Ørsland"}});
    const Rect& area = cell.chart().area;
    cell.point("MAGVAR", {area.left + 0.2 * area.width(), area.bottom + 0.12 * area.height()},
               {{"VALMAG", "-8.2"}, {"VALACM", "9"}, {"RYRMGV", "2025"}}, DemoCell::Far);
}

} // namespace kelvox
