#include "preslib/Check.h"

#include "base/Rect.h"
#include "presentation/CodeTables.h"
#include "presentation/ProgramNames.h"
#include "presentation/TextFields.h"
#include "preslib/DrawingReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <set>
#include <span>

namespace kelvox::preslib {

namespace {
constexpr std::size_t acronymLength = 6;
constexpr std::size_t nameLength = 8;

bool isIn(std::span<const std::string_view> names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

/// The parameters between the parentheses of an instruction; nothing when they are missing.
std::vector<std::string> parameters(std::string_view instruction)
{
    std::vector<std::string> result;
    if (instruction.size() < 5 || instruction[2] != '(' || instruction.back() != ')')
        return result;
    forEachPart(instruction.substr(3, instruction.size() - 4), ',',
                [&](std::string_view text) { result.emplace_back(text); });
    return result;
}

class LookUpCheck {
public:
    LookUpCheck(const Library& library, Diagnostics& diagnostics)
        : m_library(library)
        , m_diagnostics(diagnostics)
    {
    }

    void run(const LookUp& entry)
    {
        m_place = entry.place;
        if (objectCode(entry.objectClass) == 0)
            complain("unknown class \"" + entry.objectClass + '"');
        for (const std::string& condition : entry.conditions)
            checkCondition(condition);
        for (const std::string& instruction : entry.instructions)
            checkInstruction(instruction);
    }

private:
    void complain(const std::string& message) { m_diagnostics.add(m_place, message); }

    void checkCondition(const std::string& condition)
    {
        checkAttribute(condition.substr(0, acronymLength));
        const std::string_view value = part(condition, acronymLength);
        const bool known = value.empty() || value == "?"
            || value.find_first_not_of("0123456789,.-") == std::string_view::npos;
        if (!known)
            complain("condition " + condition + " has no value that an attribute can take");
    }

    void checkAttribute(const std::string& acronym)
    {
        if (attributeCode(acronym) == 0)
            complain("unknown attribute \"" + acronym + '"');
    }

    void checkColor(const std::string& token)
    {
        if (!m_library.hasColor(token))
            complain("unknown colour \"" + token + '"');
    }

    void checkName(Drawing::Kind kind, const std::string& name, const char* what)
    {
        if (!m_library.hasDrawing(kind, name))
            complain(std::string("unknown ") + what + " \"" + name + '"');
    }

    void checkText(const std::vector<std::string>& values, std::size_t attribute, std::size_t count,
                   bool quoted)
    {
        if (values.size() != count) {
            complain("a text instruction has " + std::to_string(count) + " parameters");
            return;
        }
        std::string acronym = values[attribute];
        if (quoted && acronym.size() > 2)
            acronym = acronym.substr(1, acronym.size() - 2);
        checkAttribute(acronym);
        checkColor(values[count - 2]);
    }

    void checkInstruction(const std::string& instruction)
    {
        const std::string prefix = instruction.substr(0, 2);
        const auto values = parameters(instruction);
        if (values.empty())
            complain("not an instruction: " + instruction);
        else if (prefix == "SY")
            checkName(Drawing::Kind::Symbol, values[0], "symbol");
        else if (prefix == "LC")
            checkName(Drawing::Kind::LineStyle, values[0], "line style");
        else if (prefix == "AP")
            checkName(Drawing::Kind::Pattern, values[0], "pattern");
        else if (prefix == "AC")
            checkColor(values[0]);
        else if (prefix == "CS") {
            if (!isIn(conditionalProcedureNames(), values[0]))
                complain("unknown conditional procedure \"" + values[0] + '"');
        } else if (prefix == "LS") {
            constexpr auto patterns = std::to_array<std::string_view>({"SOLD", "DASH", "DOTT"});
            if (values.size() != 3 || !isIn(patterns, values[0]) || integerValue(values[1]) < 1)
                complain("a line reads LS(SOLD|DASH|DOTT,width,colour), not " + instruction);
            else
                checkColor(values[2]);
        } else if (prefix == "TX")
            checkText(values, 0, 9, false);
        else if (prefix == "TE")
            checkText(values, 1, 10, true);
        else
            complain("unknown instruction \"" + prefix + '"');
    }

    const Library& m_library;
    Diagnostics& m_diagnostics;
    Place m_place;
};

bool isNameOfEight(const std::string& name)
{
    return name.size() == nameLength && std::ranges::all_of(name, [](unsigned char c) {
               return std::isupper(c) != 0 || std::isdigit(c) != 0;
           });
}

void checkDrawing(const Library& library, const Drawing& drawing, Diagnostics& diagnostics)
{
    const auto complain = [&](const std::string& message) {
        diagnostics.add(drawing.place, drawing.name + ": " + message);
    };
    if (!isNameOfEight(drawing.name))
        complain("a name has 8 characters, capitals and figures");
    if (drawing.shapes.empty())
        complain("nothing is drawn");
    std::set<std::string> colors;
    Rect ink;
    for (const Shape& shape : drawing.shapes) {
        if (colors.insert(shape.token).second && !library.hasColor(shape.token))
            complain("unknown colour \"" + shape.token + '"');
        for (const auto& ring : shape.rings)
            for (const Point p : ring) {
                ink.include(Point{p.x - shape.radius, p.y - shape.radius});
                ink.include(Point{p.x + shape.radius, p.y + shape.radius});
            }
    }
    if (ink.isEmpty())
        return;
    const Rect box{static_cast<double>(-drawing.pivotX), static_cast<double>(-drawing.pivotY),
                   static_cast<double>(drawing.width) - drawing.pivotX,
                   static_cast<double>(drawing.height) - drawing.pivotY};
    constexpr double slack = 0.5; // what rounding to whole hundredths brings back
    if (!box.grownBy(slack, slack).contains({ink.left, ink.bottom})
        || !box.grownBy(slack, slack).contains({ink.right, ink.top})) {
        const auto text = [](const Rect& r) {
            const auto whole = [](double v) { return std::to_string(std::lround(v)); };
            return whole(r.left) + ',' + whole(r.bottom) + " to " + whole(r.right) + ','
                + whole(r.top);
        };
        complain("the figure (" + text(ink) + ") leaves its box (" + text(box) + ')');
    }
}
} // namespace

void check(const Library& library, Diagnostics& diagnostics)
{
    LookUpCheck lookUps(library, diagnostics);
    for (const LookUp& entry : library.lookUps)
        lookUps.run(entry);
    std::set<std::pair<Drawing::Kind, std::string>> names;
    for (const Drawing& drawing : library.drawings) {
        checkDrawing(library, drawing, diagnostics);
        if (!names.emplace(drawing.kind, drawing.name).second)
            diagnostics.add(drawing.place, drawing.name + " is drawn twice");
    }
}

void checkComplete(const Library& library, const Place& place, Diagnostics& diagnostics)
{
    const auto need = [&](bool found, const char* what, std::string_view name) {
        if (!found)
            diagnostics.add(place,
                            std::string("the program wants ") + what + ' ' + std::string(name)
                                + ", which is not here");
    };
    for (const std::string_view name : routineSymbolNames())
        need(library.hasDrawing(Drawing::Kind::Symbol, std::string(name)), "symbol", name);
    for (const std::string_view name : routinePatternNames())
        need(library.hasDrawing(Drawing::Kind::Pattern, std::string(name)), "pattern", name);
    for (const std::string_view token : routineColorTokens())
        need(library.hasColor(std::string(token)), "colour", token);
}

} // namespace kelvox::preslib
