#pragma once

#include "base/Position.h"
#include "presentation/CieColor.h"
#include "preslib/Diagnostics.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace kelvox::preslib {

/// One colour of the three tables.
struct Color {
    std::string token;
    std::array<CieColor, 3> schemes; ///< in the order of Library::schemeNames
    std::string use;
    Place place;
};

/// One row of a look-up table.
struct LookUp {
    std::string table; ///< e.g. "PLAIN_BOUNDARIES"
    char geometry = 'P';
    std::string objectClass;
    std::vector<std::string> conditions;
    std::vector<std::string> instructions;
    int priority = 0;
    char radar = 'S';
    std::string category;
    int viewingGroup = 0;
    Place place;
};

/// A piece of a drawing in 0.01 mm, y down, the pivot at (0, 0).
struct Shape {
    enum class Kind { Line, Area, Circle, Disc };

    Kind kind = Kind::Line;
    std::string token;
    int width = 1; ///< pen width in display points; lines and circles only
    bool halfClear = false; ///< drawn at half opacity
    std::vector<std::vector<Point>> rings; ///< points; the centre alone for circles and discs
    double radius = 0;
};

/// A symbol, line style or pattern; or a figure, which only other drawings use.
struct Drawing {
    enum class Kind { Figure, Symbol, LineStyle, Pattern };

    Kind kind = Kind::Figure;
    std::string name;
    std::string title;
    int width = 0; ///< of the box
    int height = 0;
    int pivotX = 0; ///< from the box's upper-left corner
    int pivotY = 0;
    std::string fillType = "LIN"; ///< patterns: "STG" or "LIN"
    std::string spacing = "CON"; ///< patterns: "CON" or "SCL"
    int leastDistance = 0;
    int greatestDistance = 0;
    std::vector<Shape> shapes;
    Place place;
};

/// The whole source, read.
struct Library {
    static constexpr std::array<const char*, 3> schemeNames{"DAY", "DUSK", "NIGHT"};

    std::vector<Color> colors;
    std::vector<LookUp> lookUps;
    std::map<std::string, Drawing> figures;
    std::vector<Drawing> drawings; ///< in source order

    [[nodiscard]] bool hasColor(const std::string& token) const;
    [[nodiscard]] bool hasDrawing(Drawing::Kind kind, const std::string& name) const;
};

} // namespace kelvox::preslib
