#include "demo/DemoScene.h"

namespace kelvox {

namespace {
/// Lanes, zone and boundaries between two legs' lines; traffic keeps to starboard.
void addTrafficScheme(DemoCell& cell)
{
    const DemoLine middle{{-24'000, -31'500}, {0, -29'500}, {24'000, -31'000}};
    constexpr double halfZone = 450;
    constexpr double laneWidth = 2'500;
    const DemoLine north = beside(middle, halfZone);
    const DemoLine south = beside(middle, -halfZone);
    const DemoLine northEdge = beside(middle, halfZone + laneWidth);
    const DemoLine southEdge = beside(middle, -halfZone - laneWidth);
    struct Leg {
        std::size_t from;
        const char* eastbound;
        const char* westbound;
    };
    for (const Leg& leg : {Leg{0, "85.2", "265.2"}, Leg{1, "93.6", "273.6"}}) {
        const std::size_t a = leg.from;
        const std::size_t b = a + 1;
        cell.area("TSSLPT", {north[a], north[b], northEdge[b], northEdge[a]},
                  {{"CATTSS", "2"}, {"ORIENT", leg.westbound}});
        cell.area("TSSLPT", {southEdge[a], southEdge[b], south[b], south[a]},
                  {{"CATTSS", "2"}, {"ORIENT", leg.eastbound}});
        cell.area("TSEZNE", {south[a], south[b], north[b], north[a]}, {{"CATTSS", "2"}});
    }
    cell.line("TSSBND", northEdge, {{"CATTSS", "2"}});
    cell.line("TSSBND", southEdge, {{"CATTSS", "2"}});
    cell.area("ISTZNE",
              {northEdge[0], northEdge[1], northEdge[2], {20'500, -23'500}, {-19'500, -23'500}},
              {{"CATTSS", "2"}});
    cell.area("PRCARE", circle({28'000, -31'250}, 4'000), {{"RESTRN", "14"}});
}

void addRoutes(DemoCell& cell)
{
    const DemoLine& way = demoFairway();
    cell.area("FAIRWY", ribbon({way[0], way[1], way[2], way[3]}, 200),
              {{"OBJNAM", "Kelmouth Fairway"}, {"DRVAL1", "9.5"}, {"TRAFIC", "4"}});
    // The leading line and the track along it.
    const Point front{369, 1'750};
    cell.line("NAVLNE", {way[1], front}, {{"CATNAV", "3"}, {"ORIENT", "9.4"}});
    cell.line("RECTRC", {way[1], way[3]},
              {{"CATTRK", "1"}, {"ORIENT", "9.4"}, {"TRAFIC", "4"}, {"DRVAL1", "9.5"}});
    cell.line("RECTRC", {way[0], way[1]}, {{"CATTRK", "2"}, {"ORIENT", "6.5"}, {"TRAFIC", "4"}},
              DemoCell::Middle);
    cell.line(
        "FERYRT",
        {{520, 1'000}, {180, 300}, {0, -480}, {-400, -1'500}, {-3'600, -3'400}, {-6'850, -5'650}},
        {{"CATFRY", "1"}, {"OBJNAM", "Kelmouth-Sorrel Ferry"}}, DemoCell::Middle);
    cell.point(
        "RDOCAL", {-1'480, -11'300},
        {{"OBJNAM", "Kelmouth South"}, {"ORIENT", "6.5"}, {"TRAFIC", "1"}, {"COMCHA", "[VHF0012]"}},
        DemoCell::Far);
}

void addAnchorages(DemoCell& cell)
{
    cell.area("ACHARE", circle({2'700, -4'900}, 950),
              {{"OBJNAM", "Tithing Roads"}, {"CATACH", "1"}});
    for (const auto& [name, place] :
         {std::pair{"T1", Point{2'300, -4'600}}, std::pair{"T2", Point{3'100, -4'700}},
          std::pair{"T3", Point{2'650, -5'400}}})
        cell.point("ACHBRT", place, {{"OBJNAM", name}, {"CATACH", "1"}, {"RADIUS", "250"}},
                   DemoCell::Middle);
    if (cell.isAtLeast(4)) {
        cell.area("ACHARE", circle({-2'050, -1'050}, 230),
                  {{"OBJNAM", "Monk's Hole"}, {"CATACH", "7"}});
        cell.area("ACHARE", circle({3'300, -2'450}, 420),
                  {{"CATACH", "5"}, {"OBJNAM", "Quarantine Anchorage"}});
    }
    cell.area("PILBOP", circle({-1'750, -10'200}, 450),
              {{"OBJNAM", "Kelmouth Pilots"}, {"CATPIL", "1"}, {"COMCHA", "[VHF0012]"}});
}

void addRestrictions(DemoCell& cell)
{
    cell.area("RESARE", circle({3'620, -8'250}, 800),
              {{"OBJNAM", "Hern Rock Bird Sanctuary"}, {"CATREA", "5"}, {"RESTRN", "7,3"}});
    cell.area("RESARE", blob({6'900, -5'500}, 2'300, 12),
              {{"OBJNAM", "Tithings Nature Reserve"}, {"CATREA", "4"}, {"RESTRN", "2,4,8"}});
    cell.area("RESARE", circle({9'500, -19'600}, 500),
              {{"CATREA", "1"}, {"RESTRN", "7,1,3"}, {"OBJNAM", "Brigand A"}});
    cell.area("MIPARE", blob({-15'500, -23'500}, 4'200, 5),
              {{"OBJNAM", "Drummel Firing Range"}, {"CATMPA", "4"}});
    const DemoLine cable{{-8'500, -3'200}, {-8'750, -4'000}, {-8'900, -5'000}};
    cell.area("CBLARE", ribbon(cable, 220), {{"CATCBL", "1"}, {"RESTRN", "1,3"}});
    cell.line("CBLSUB", cable, {{"CATCBL", "1"}, {"STATUS", "1"}});
    cell.line("CBLSUB", {{-1'600, 300}, {-700, 420}, {100, 520}, {640, 700}}, {{"CATCBL", "4"}});
    cell.line("CBLSUB",
              {{20'000, -50'000},
               {8'000, -38'000},
               {3'500, -25'000},
               {6'800, -14'000},
               {8'300, -9'000},
               {8'200, -4'000},
               {7'200, -1'300}},
              {{"CATCBL", "4"}}, DemoCell::Middle);
    cell.line("PIPSOL", {{7'000, -1'050}, {6'850, -2'400}, {6'700, -3'200}},
              {{"CATPIP", "2"}, {"PRODCT", "3"}});
    cell.line("PIPSOL", {{9'500, -19'600}, {13'500, -17'500}, {17'500, -15'000}},
              {{"CATPIP", "6"}, {"PRODCT", "2"}});
    cell.area("CTNARE", ribbon({{-500, -450}, {500, -450}}, 330),
              {{"INFORM", "Ferries cross the entrance and have right of way"}});
}

void addUses(DemoCell& cell)
{
    cell.area("MARCUL", {{-5'300, -4'000}, {-4'400, -3'850}, {-4'300, -4'350}, {-5'200, -4'500}},
              {{"CATMFA", "3"}, {"RESTRN", "7"}, {"WATLEV", "7"}});
    cell.area("DMPGRD", circle({-9'500, -18'500}, 1'300), {{"CATDPG", "5"}, {"STATUS", "1"}});
    cell.area("HRBARE",
              {{-1'950, 100},
               {-1'250, -1'050},
               {1'500, -1'150},
               {2'150, -20},
               {400, 3'000},
               {-900, 3'000}},
              {{"OBJNAM", "Port of Kelmouth"}});
}
} // namespace

const DemoLine& demoFairway()
{
    static const DemoLine way{{-1'450, -11'500}, {-630, -4'290}, {-210, -1'750},
                              {0, -480},         {180, 300},     {260, 1'150}};
    return way;
}

void addSeaways(DemoCell& cell)
{
    addTrafficScheme(cell);
    if (!cell.isAtLeast(3))
        return;
    addRoutes(cell);
    addAnchorages(cell);
    addRestrictions(cell);
    addUses(cell);
}

} // namespace kelvox
