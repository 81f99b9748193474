#include "presentation/S52Item.h"

#include "presentation/TextFields.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace kelvox {

namespace {
constexpr auto commands = std::to_array<std::string_view>(
    {"AA", "CI", "EP", "FP", "PD", "PM", "PU", "SC", "SP", "ST", "SW"});

/// The parameter x and y of a command, y turned up.
std::vector<Point> points(std::string_view parameters, std::size_t& numbers)
{
    std::vector<Point> result;
    std::optional<double> x;
    numbers = 0;
    if (trimmed(parameters).empty())
        return result;
    forEachPart(parameters, ',', [&](std::string_view text) {
        ++numbers;
        const double value = decimalValue(text);
        if (x) {
            result.push_back({*x, -value});
            x.reset();
        } else
            x = value;
    });
    return result;
}

/// Appends an arc from 0 to 359 degrees about the centre (the last degree is left open on
/// purpose), flat to a fiftieth of a display point even on a fine screen.
void addCircle(Path& path, Point center, double radius)
{
    constexpr double flatness = 0.25; // of 0.01 mm
    constexpr double sweep = 359 * std::numbers::pi / 180;
    radius = std::min(std::fabs(radius), 1e5);
    const double step = radius > flatness ? 2 * std::acos(1 - flatness / radius) : sweep / 4;
    const int pieces = static_cast<int>(std::ceil(sweep / step));
    for (int i = 0; i <= pieces; ++i) {
        const double angle = sweep * i / pieces;
        const Point p = center + Point{std::cos(angle), std::sin(angle)} * radius;
        if (i == 0)
            path.moveTo(p);
        else
            path.lineTo(p);
    }
    path.moveTo(center);
}

/// Runs the vector commands of one definition.
class PathBuilder {
public:
    PathBuilder(S52Item& item, const S52CcieMap& colors)
        : m_item(item)
        , m_colors(colors)
    {
    }

    void run(const S52Vct& vct)
    {
        const std::string_view parameters = vct.parametersString;
        switch (vct.instruction) {
        case S52Vct::SP:
            selectPen(parameters);
            break;
        case S52Vct::ST:
            setTransparency(integerValue(parameters));
            break;
        case S52Vct::SW:
            flush(m_line, false);
            m_width = std::min(decimalValue(parameters), S52Item::widestPen);
            break;
        case S52Vct::PU:
            for (const Point p : points(parameters, m_numbers))
                current().moveTo(p);
            break;
        case S52Vct::PD:
            draw(parameters);
            break;
        case S52Vct::CI:
            addCircle(current(), current().currentPoint(), decimalValue(parameters));
            break;
        case S52Vct::PM:
            polygonMode(parameters);
            break;
        case S52Vct::EP:
            flush(m_polygon, false);
            break;
        case S52Vct::FP:
            flush(m_polygon, true);
            break;
        default:
            break;
        }
    }
    void finish() { flush(m_line, false); }

private:
    Path& current() { return m_inPolygon ? m_polygon : m_line; }

    void selectPen(std::string_view letter)
    {
        m_entry = nullptr;
        const auto token = m_item.crfDictionary.find(letter.empty() ? '\0' : letter.front());
        if (token == m_item.crfDictionary.end())
            return;
        const auto entry = m_colors.find(token->second);
        if (entry == m_colors.end())
            return;
        flush(m_line, false);
        m_entry = &entry->second;
        m_color = m_entry->color;
    }

    void setTransparency(int quarters)
    {
        if (!m_entry)
            return;
        flush(m_line, false);
        m_color = m_entry->color;
        if (quarters >= 1 && quarters <= 3)
            m_color = m_color.withOpacity(quarters * 0.25);
    }

    void draw(std::string_view parameters)
    {
        const auto to = points(parameters, m_numbers);
        if (m_numbers < 2) // a dot: one display point down to the right
            current().lineTo(m_line.currentPoint() + Point{35.714283, -35.714283});
        for (const Point p : to)
            current().lineTo(p);
    }

    void polygonMode(std::string_view parameters)
    {
        const std::string_view mode = trimmed(parameters);
        if (mode == "0") {
            m_polygon.clear();
            m_polygon.moveTo(m_line.currentPoint());
            m_inPolygon = true;
        } else if (mode == "2")
            m_inPolygon = false;
    }

    /// Hands the path to the item and leaves one that begins where it ended. Moves that draw
    /// nothing are not handed on.
    void flush(Path& path, bool fill)
    {
        if (path.isEmpty())
            return;
        const Point pivot = m_item.pivotTransform();
        Path result;
        for (std::size_t i = 0; i < path.subPathCount(); ++i) {
            const auto line = path.subPath(i);
            if (line.size() < 2)
                continue;
            result.moveTo(line.front() * S52Item::scaleTransform + pivot);
            for (const Point p : line.subspan(1))
                result.lineTo(p * S52Item::scaleTransform + pivot);
        }
        if (!result.isEmpty())
            m_item.s52PathArray.push_back({std::move(result), m_color, fill, m_width});
        const Point last = path.currentPoint();
        path.clear();
        path.moveTo(last);
    }

    S52Item& m_item;
    const S52CcieMap& m_colors;
    Path m_line;
    Path m_polygon;
    DisplayColor m_color;
    double m_width = S52Item::widestPen;
    bool m_inPolygon = false;
    const S52Ccie* m_entry = nullptr;
    std::size_t m_numbers = 0;
};
} // namespace

int S52Vct::instructionFor(std::string_view command)
{
    for (std::size_t i = 0; i < commands.size(); ++i)
        if (commands[i] == command)
            return static_cast<int>(i) + 1;
    return Unknown;
}

void S52Item::setColorReference(std::string_view text)
{
    for (; !text.empty(); text.remove_prefix(std::min<std::size_t>(6, text.size())))
        crfDictionary.insert_or_assign(text.front(), std::string(part(text, 1, 5)));
}

void S52Item::addVectorCommands(std::string_view text)
{
    forEachPart(text, ';', [this](std::string_view command) {
        if (command.size() >= 2)
            vctArray.push_back(
                {S52Vct::instructionFor(command.substr(0, 2)), std::string(command.substr(2))});
    });
}

void S52Item::processVct(const S52CcieMap& colors)
{
    s52PathArray.clear();
    PathBuilder builder(*this, colors);
    for (const S52Vct& vct : vctArray)
        builder.run(vct);
    builder.finish();
}

} // namespace kelvox
