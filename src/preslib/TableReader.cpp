#include "preslib/TableReader.h"

#include "presentation/TextFields.h"
#include "preslib/Words.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace kelvox::preslib {

namespace {
struct Table {
    std::string name;
    char geometry = 'P';
};

std::optional<Table> tableOf(const std::string& name)
{
    if (name == "PLAIN_BOUNDARIES" || name == "SYMBOLIZED_BOUNDARIES")
        return Table{name, 'A'};
    if (name == "LINES")
        return Table{name, 'L'};
    if (name == "SIMPLIFIED" || name == "PAPER_CHART")
        return Table{name, 'P'};
    return std::nullopt;
}

/// Cuts at semicolons that stand outside single quotes.
std::vector<std::string> instructionsOf(std::string_view text)
{
    std::vector<std::string> result;
    forEachPart(text, ';', [&](std::string_view instruction) {
        if (!trimmed(instruction).empty())
            result.emplace_back(trimmed(instruction));
    });
    return result;
}

class LookUpReader {
public:
    LookUpReader(Library& library, Diagnostics& diagnostics)
        : m_library(library)
        , m_diagnostics(diagnostics)
    {
    }

    void line(const Place& place, std::string_view text)
    {
        if (trimmed(text).empty() || trimmed(text).front() == '#')
            return;
        if (text.find('|') != std::string_view::npos) {
            row(place, text);
            return;
        }
        Words words(text);
        if (words.skip("table")) {
            const std::string name = words.next();
            m_table = tableOf(name);
            m_objectClass.clear();
            if (!m_table)
                m_diagnostics.add(place, "unknown table \"" + name + '"');
        } else {
            m_objectClass = words.next();
        }
        if (!words.isAtEnd())
            m_diagnostics.add(place, "not understood: \"" + words.rest() + '"');
    }

private:
    void row(const Place& place, std::string_view text)
    {
        std::vector<std::string_view> cells;
        forEachPart(text, '|', [&](std::string_view cell) { cells.push_back(trimmed(cell)); });
        if (cells.size() != 3 || !m_table || m_objectClass.empty()) {
            m_diagnostics.add(place, "a row of three cells is wanted, under a table and a class");
            return;
        }
        LookUp entry;
        entry.table = m_table->name;
        entry.geometry = m_table->geometry;
        entry.objectClass = m_objectClass;
        entry.place = place;
        if (cells[0] != "*")
            for (Words conditions(cells[0]); !conditions.isAtEnd();)
                entry.conditions.push_back(conditions.next());
        Words properties(cells[1]);
        const auto priority = wholeNumber(properties.next());
        const std::string radar = properties.next();
        entry.category = properties.next();
        const auto group = wholeNumber(properties.next());
        if (!priority || *priority < 0 || *priority > 9 || (radar != "O" && radar != "S") || !group
            || !properties.isAtEnd()) {
            m_diagnostics.add(place,
                              "the second cell reads: priority 0-9, O or S, category, group");
            return;
        }
        entry.priority = *priority;
        entry.radar = radar.front();
        entry.viewingGroup = *group;
        entry.instructions = instructionsOf(cells[2]);
        m_library.lookUps.push_back(std::move(entry));
    }

    Library& m_library;
    Diagnostics& m_diagnostics;
    std::optional<Table> m_table;
    std::string m_objectClass;
};

bool readPair(Words& words, Chromaticity& into)
{
    const auto x = decimalNumber(words.next());
    const auto y = decimalNumber(words.next());
    if (!x || !y || *x < 0 || *y <= 0 || *x + *y > 1)
        return false;
    into = {*x, *y};
    return true;
}
} // namespace

void readColors(const std::filesystem::path& file, std::string_view text, Library& library,
                Diagnostics& diagnostics)
{
    forEachLine(file, text, [&](const Place& place, std::string_view line) {
        Words words(line);
        if (words.isAtEnd())
            return;
        Color color;
        color.place = place;
        color.token = words.next();
        if (color.token.size() != 5)
            diagnostics.add(place, "a colour token has 5 letters, not \"" + color.token + '"');
        if (library.hasColor(color.token))
            diagnostics.add(place, "colour " + color.token + " stands twice");
        for (CieColor& scheme : color.schemes) {
            Chromaticity at;
            const bool hasChromaticity = readPair(words, at);
            const auto luminance = decimalNumber(words.next());
            if (!hasChromaticity || !luminance || *luminance < 0
                || *luminance > libraryWhiteLuminance) {
                diagnostics.add(place,
                                color.token
                                    + ": x, y and luminance (at most 80) are wanted three times");
                return;
            }
            scheme = {at.x, at.y, *luminance};
        }
        color.use = words.rest();
        library.colors.push_back(std::move(color));
    });
}

void readLookUps(const std::filesystem::path& file, std::string_view text, Library& library,
                 Diagnostics& diagnostics)
{
    LookUpReader reader(library, diagnostics);
    forEachLine(file, text,
                [&](const Place& place, std::string_view line) { reader.line(place, line); });
}

Monitor readMonitor(const std::filesystem::path& file, std::string_view text,
                    Diagnostics& diagnostics)
{
    Monitor monitor;
    const std::array<std::pair<const char*, Chromaticity*>, 4> places{
        {{"red", monitor.primaries.data()},
         {"green", &monitor.primaries[1]},
         {"blue", &monitor.primaries[2]},
         {"white", &monitor.white}}};
    forEachLine(file, text, [&](const Place& place, std::string_view line) {
        Words words(line);
        if (words.isAtEnd())
            return;
        const std::string key = words.next();
        bool understood = false;
        if (key == "luminance") {
            monitor.luminance = decimalNumber(words.next()).value_or(0);
            understood = monitor.luminance > 0;
        } else {
            for (const auto& [name, into] : places)
                if (key == name)
                    understood = readPair(words, *into);
        }
        if (!understood || !words.isAtEnd())
            diagnostics.add(place, "a chromaticity or a luminance is wanted for \"" + key + '"');
    });
    const bool complete = monitor.luminance > 0
        && std::ranges::all_of(places, [](const auto& entry) { return entry.second->y > 0; });
    if (!complete && diagnostics.isEmpty())
        diagnostics.add({file, 1}, "red, green, blue, white and luminance are wanted");
    return monitor;
}

} // namespace kelvox::preslib
