#include "demo/DemoScene.h"

#include <fmt/format.h>

#include <array>

namespace kelvox {

namespace {
using Attributes = DemoCell::Attributes;

/// A light's rhythm, colour, period and range; its height where it stands on the ground.
struct Rhythm {
    const char* character; ///< LITCHR; nullptr for no light
    const char* group; ///< SIGGRP
    const char* period; ///< seconds; empty for a fixed light
    const char* colour;
    const char* range; ///< nautical miles
    const char* height = ""; ///< metres
};
constexpr Rhythm unlit{nullptr, "", "", "", ""};

Attributes lightAttributes(const Rhythm& rhythm)
{
    Attributes attributes{
        {"COLOUR", rhythm.colour}, {"LITCHR", rhythm.character}, {"VALNMR", rhythm.range}};
    if (*rhythm.group)
        attributes.emplace_back("SIGGRP", rhythm.group);
    if (*rhythm.period)
        attributes.emplace_back("SIGPER", rhythm.period);
    if (*rhythm.height)
        attributes.emplace_back("HEIGHT", rhythm.height);
    return attributes;
}

struct Topmark {
    const char* shape; ///< TOPSHP; nullptr for none
    const char* colour;
};
constexpr Topmark bare{nullptr, ""};

/// A structure with the equipment that stands on it.
class Mark {
public:
    Mark(DemoCell& cell, std::string_view acronym, Point place, const Attributes& attributes)
        : m_cell(cell)
        , m_place(place)
        , m_structure(cell.point(acronym, place, attributes, DemoCell::Far))
    {
        for (const auto& [name, value] : attributes)
            if (m_structure && name == "OBJNAM")
                cell.remember(value, *m_structure);
    }
    Mark& carry(std::string_view acronym, const Attributes& attributes,
                DemoCell::Reach reach = DemoCell::Far)
    {
        const auto equipment = m_cell.point(acronym, m_place, attributes, reach);
        if (m_structure && equipment)
            m_cell.equip(*m_structure, *equipment);
        return *this;
    }
    Mark& light(const Rhythm& rhythm)
    {
        return rhythm.character ? carry("LIGHTS", lightAttributes(rhythm)) : *this;
    }
    Mark& sector(const Rhythm& rhythm, const char* from, const char* to)
    {
        auto attributes = lightAttributes(rhythm);
        attributes.emplace_back("SECTR1", from);
        attributes.emplace_back("SECTR2", to);
        return carry("LIGHTS", attributes, DemoCell::Always);
    }
    Mark& topmark(const Topmark& topmark)
    {
        return topmark.shape
            ? carry("TOPMAR", {{"TOPSHP", topmark.shape}, {"COLOUR", topmark.colour}})
            : *this;
    }

private:
    DemoCell& m_cell;
    Point m_place;
    std::optional<DemoCell::FeatureID> m_structure;
};

void port(DemoCell& cell, Point place, const std::string& name, const Rhythm& rhythm)
{
    Mark(cell, "BOYLAT", place,
         {{"OBJNAM", name}, {"BOYSHP", "2"}, {"CATLAM", "1"}, {"COLOUR", "3"}, {"MARSYS", "1"}})
        .topmark({"5", "3"})
        .light(rhythm);
}

void starboard(DemoCell& cell, Point place, const std::string& name, const Rhythm& rhythm)
{
    Mark(cell, "BOYLAT", place,
         {{"OBJNAM", name}, {"BOYSHP", "1"}, {"CATLAM", "2"}, {"COLOUR", "4"}, {"MARSYS", "1"}})
        .topmark({"1", "4"})
        .light(rhythm);
}

enum class Quarter : std::size_t { North, East, South, West };

void cardinal(DemoCell& cell, Point place, const char* name, Quarter quarter)
{
    struct Look {
        const char* category;
        const char* colours;
        const char* topmark;
        Rhythm rhythm;
    };
    static constexpr std::array<Look, 4> looks{
        {{"1", "2,6", "13", {"4", "", "1", "1", "5"}},
         {"2", "2,6,2", "11", {"4", "(3)", "10", "1", "5"}},
         {"3", "6,2", "14", {"25", "(6)(1)", "15", "1", "5"}},
         {"4", "6,2,6", "10", {"4", "(9)", "15", "1", "5"}}}};
    const Look& look = looks[static_cast<std::size_t>(quarter)];
    Mark(cell, "BOYCAR", place,
         {{"OBJNAM", name},
          {"BOYSHP", "4"},
          {"CATCAM", look.category},
          {"COLOUR", look.colours},
          {"COLPAT", "1"},
          {"MARSYS", "1"}})
        .topmark({look.topmark, "2"})
        .light(look.rhythm);
}

void special(DemoCell& cell, Point place, const char* name, const char* category,
             const Rhythm& rhythm, const Topmark& topmark = {"7", "6"})
{
    Mark(cell, "BOYSPP", place,
         {{"OBJNAM", name}, {"BOYSHP", "4"}, {"CATSPM", category}, {"COLOUR", "6"}})
        .topmark(topmark)
        .light(rhythm);
}

void addFairwayBuoys(DemoCell& cell)
{
    const DemoLine& way = demoFairway();
    const DemoLine outer{way[0], way[1], way[2], way[3]};
    const DemoLine west = beside(outer, 230);
    const DemoLine east = beside(outer, -230);
    struct Gate {
        std::size_t leg;
        double share;
    };
    int number = 1;
    for (const Gate& gate : {Gate{0, 0.1}, Gate{0, 0.36}, Gate{0, 0.66}, Gate{1, 0.0}, Gate{1, 0.5},
                             Gate{2, 0.0}, Gate{2, 0.55}}) {
        const auto at = [&](const DemoLine& line) {
            return line[gate.leg] + (line[gate.leg + 1] - line[gate.leg]) * gate.share;
        };
        // Odd numbers to starboard, even ones to port, counted from seaward.
        const bool slow = number % 4 == 1;
        starboard(cell, at(east), fmt::format("Kelmouth {}", number),
                  {"2", slow ? "(1)" : "(2)", slow ? "3" : "6", "4", "3"});
        port(cell, at(west), fmt::format("Kelmouth {}", number + 1),
             {"2", slow ? "(1)" : "(2)", slow ? "3" : "6", "3", "3"});
        number += 2;
    }
    Mark(cell, "BOYSAW", {-1'520, -12'150},
         {{"OBJNAM", "Kelmouth"},
          {"BOYSHP", "4"},
          {"COLOUR", "3,1"},
          {"COLPAT", "2"},
          {"MARSYS", "1"}})
        .topmark({"3", "3"})
        .light({"3", "(1)", "10", "1", "8"})
        .carry("FOGSIG", {{"CATFOG", "8"}, {"SIGGEN", "3"}})
        .carry("RTPBCN", {{"CATRTB", "2"}, {"SIGGRP", "(K)"}});
}

void addDangerMarks(DemoCell& cell)
{
    cardinal(cell, {3'640, -7'420}, "Hern North", Quarter::North);
    cardinal(cell, {3'500, -9'350}, "Hern South", Quarter::South);
    cardinal(cell, {4'950, -4'900}, "Tithing West", Quarter::West);
    cardinal(cell, {-6'450, -6'300}, "Sorrel East", Quarter::East);
    cardinal(cell, {-2'760, -2'500}, "Monk South", Quarter::South);
    cardinal(cell, {-1'950, -1'780}, "Monk East", Quarter::East);
    cardinal(cell, {-29'300, -30'600}, "Drummel", Quarter::South);
    cardinal(cell, {14'500, -20'500}, "Carrow", Quarter::West);
    Mark(cell, "BOYISD", {-4'800, -6'040},
         {{"OBJNAM", "Fair Maid"},
          {"BOYSHP", "5"},
          {"COLOUR", "2,3,2"},
          {"COLPAT", "1"},
          {"MARSYS", "1"}})
        .topmark({"4", "2"})
        .light({"2", "(2)", "5", "1", "4"});
    Mark(cell, "BCNISD", {880, -1'380},
         {{"OBJNAM", "Widow"},
          {"BCNSHP", "5"},
          {"COLOUR", "2,3,2"},
          {"COLPAT", "1"},
          {"MARSYS", "1"}})
        .topmark({"4", "2"})
        .light({"2", "(2)", "10", "1", "3", "6"});
}

void addSpecialMarks(DemoCell& cell)
{
    const Rhythm yellow{"2", "(1)", "5", "6", "2"};
    special(cell, {-5'350, -3'930}, "Farm NW", "55", yellow);
    special(cell, {-4'350, -3'780}, "Farm NE", "55", unlit);
    special(cell, {-4'230, -4'400}, "Farm SE", "55", yellow);
    special(cell, {-5'270, -4'570}, "Farm SW", "55", unlit);
    special(cell, {6'680, -3'330}, "Outfall", "8", yellow);
    special(cell, {10'500, -26'200}, "K2", "9", {"2", "(5)", "20", "6", "5"});
    special(cell, {-15'500, -19'200}, "Range", "1", {"2", "(1)", "10", "6", "3"});
    Mark(cell, "BOYLAT", {1'050, -300},
         {{"BOYSHP", "2"},
          {"CATLAM", "1"},
          {"COLOUR", "3"},
          {"MARSYS", "1"},
          {"OBJNAM", "Marina 2"}});
    Mark(cell, "MORFAC", {-1'950, -1'000}, {{"CATMOR", "7"}, {"BOYSHP", "6"}, {"COLOUR", "6"}});
    Mark(cell, "MORFAC", {-2'100, -1'120}, {{"CATMOR", "7"}, {"BOYSHP", "6"}, {"COLOUR", "6"}});
    Mark(cell, "LITFLT", {-2'000, -26'000},
         {{"OBJNAM", "Kelmouth Lanby"}, {"COLOUR", "3"}, {"CONRAD", "3"}})
        .light({"2", "(3)", "15", "1", "15", "12"})
        .carry("RTPBCN", {{"CATRTB", "2"}, {"SIGGRP", "(O)"}, {"VALMXR", "12"}})
        .carry("FOGSIG", {{"CATFOG", "10"}, {"SIGGRP", "(3)"}, {"SIGPER", "60"}, {"SIGGEN", "1"}});
}

void leadingLight(DemoCell& cell, Point place, const char* name, const char* daymark,
                  const char* category, const char* height)
{
    auto light = lightAttributes({"7", "(1)", "4", "1", "11", height});
    light.emplace_back("CATLIT", category);
    light.emplace_back("ORIENT", "9.4");
    Mark(
        cell, "BCNSPP", place,
        {{"OBJNAM", name}, {"BCNSHP", "4"}, {"CATSPM", "16"}, {"COLOUR", "1,3,1"}, {"COLPAT", "2"}})
        .carry("DAYMAR", {{"TOPSHP", daymark}, {"COLOUR", "11"}})
        .carry("LIGHTS", light);
}

void addBeacons(DemoCell& cell)
{
    Mark(cell, "BCNLAT", {-333, -420},
         {{"OBJNAM", "West Breakwater Head"},
          {"BCNSHP", "3"},
          {"CATLAM", "1"},
          {"COLOUR", "3"},
          {"HEIGHT", "9"},
          {"MARSYS", "1"}})
        .topmark({"5", "3"})
        .light({"2", "(2)", "6", "3", "7", "10"});
    Mark(cell, "BCNLAT", {304, -559},
         {{"OBJNAM", "East Breakwater Head"},
          {"BCNSHP", "3"},
          {"CATLAM", "2"},
          {"COLOUR", "4"},
          {"HEIGHT", "9"},
          {"MARSYS", "1"}})
        .topmark({"1", "4"})
        .light({"2", "(2)", "6", "4", "7", "10"})
        .carry("FOGSIG", {{"CATFOG", "10"}, {"SIGGRP", "(1)"}, {"SIGPER", "30"}, {"SIGGEN", "1"}});
    leadingLight(cell, {369, 1'750}, "Kell Front", "24", "4,12", "14");
    leadingLight(cell, {468, 2'350}, "Kell Rear", "25", "4,13", "27");
    Mark(cell, "BCNCAR", {-4'500, -3'000},
         {{"OBJNAM", "Abbot"},
          {"BCNSHP", "5"},
          {"CATCAM", "3"},
          {"COLOUR", "6,2"},
          {"COLPAT", "1"},
          {"MARSYS", "1"}})
        .topmark({"14", "2"});
    Mark(cell, "BCNSAW", {-130, 2'050},
         {{"OBJNAM", "Kell Fork"},
          {"BCNSHP", "5"},
          {"COLOUR", "3,1"},
          {"COLPAT", "2"},
          {"MARSYS", "1"}})
        .topmark({"3", "3"});
    for (const auto& [place, isPort] :
         {std::pair{Point{-330, 1'500}, true}, std::pair{Point{-470, 2'300}, true},
          std::pair{Point{60, 1'850}, false}, std::pair{Point{-70, 2'750}, false}})
        Mark(cell, "BCNLAT", place,
             {{"BCNSHP", "1"},
              {"CATLAM", isPort ? "1" : "2"},
              {"COLOUR", isPort ? "3" : "4"},
              {"MARSYS", "1"}})
            .topmark(isPort ? Topmark{"5", "3"} : Topmark{"1", "4"});
    for (const Point place : {Point{-620, 640}, Point{-575, 628}})
        Mark(cell, "BCNSPP", place, {{"BCNSHP", "1"}, {"CATSPM", "33"}, {"COLOUR", "3"}})
            .light({"1", "()", "", "3", "2", "5"});
    Mark(cell, "BCNSPP", {252, 1'332}, {{"BCNSHP", "1"}, {"CATSPM", "33"}, {"COLOUR", "4"}})
        .light({"1", "()", "", "4", "2", "6"});
}

void addLighthouses(DemoCell& cell)
{
    const auto tower = [](const char* name, const char* colours, const char* height) {
        return Attributes{{"OBJNAM", name},    {"CATLMK", "17"}, {"FUNCTN", "33"},  {"CONVIS", "1"},
                          {"COLOUR", colours}, {"COLPAT", "1"},  {"HEIGHT", height}};
    };
    Mark(cell, "LNDMRK", {3'620, -8'290}, tower("Hern Rock", "1,3,1", "34"))
        .light({"2", "(3)", "20", "1", "22", "41"})
        .carry("FOGSIG", {{"CATFOG", "10"}, {"SIGGRP", "(2)"}, {"SIGPER", "60"}, {"SIGGEN", "1"}})
        .carry("RTPBCN", {{"CATRTB", "2"}, {"SIGGRP", "(H)"}, {"VALMXR", "15"}});
    Mark(cell, "LNDMRK", {-11'900, -8'300}, tower("Great Sorrel", "1,2", "18"))
        .light({"8", "(1)", "10", "1", "17", "72"});
    Mark(cell, "LNDMRK", {18'500, -18'000}, tower("Carrow Point", "1,3", "29"))
        .light({"2", "(2)", "15", "1", "24", "55"});
    Mark(cell, "LNDMRK", {-28'800, -19'700}, tower("Long Drummel", "1", "22"))
        .light({"2", "(1)", "7.5", "1", "20", "48"});
    Mark(cell, "LNDMRK", {-64'000, -42'000}, tower("Brannay", "2,1", "31"))
        .light({"2", "(2)", "30", "1", "25", "61"});
    Mark(cell, "LNDMRK", {9'000, -63'200}, tower("Lantern", "3", "25"))
        .light({"2", "(1)", "20", "1", "23", "58"});
    if (!cell.isAtLeast(3))
        return;
    Mark(cell, "LNDMRK", {-2'500, -1'790}, tower("Monk's Isle", "1", "12"))
        .sector({"8", "(2)", "8", "3", "9", "26"}, "357", "45")
        .sector({"8", "(2)", "8", "1", "12", "26"}, "350", "357")
        .sector({"8", "(2)", "8", "4", "9", "26"}, "290", "350")
        .sector({"8", "(2)", "8", "1", "12", "26"}, "45", "110");
    Mark(cell, "LNDMRK", {6'900, -5'420}, tower("Tithings", "1", "10"))
        .sector({"2", "(4)", "15", "1", "14", "19"}, "180", "345")
        .sector({"2", "(4)", "15", "3", "10", "19"}, "345", "60");
    Mark(cell, "OFSPLF", {9'500, -19'600},
         {{"OBJNAM", "Brigand A"},
          {"CATOFP", "2"},
          {"PRODCT", "2"},
          {"HEIGHT", "46"},
          {"CONRAD", "1"}})
        .light({"12", "(U)", "15", "1", "10", "32"})
        .carry("FOGSIG", {{"CATFOG", "10"}, {"SIGGRP", "(U)"}, {"SIGPER", "30"}, {"SIGGEN", "1"}});
}
} // namespace

void addAids(DemoCell& cell)
{
    addLighthouses(cell);
    if (!cell.isAtLeast(3))
        return;
    addFairwayBuoys(cell);
    addDangerMarks(cell);
    addSpecialMarks(cell);
    if (cell.isAtLeast(4))
        addBeacons(cell);
}

} // namespace kelvox
