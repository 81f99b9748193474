#include "preslib/Writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kelvox::preslib {

namespace {
constexpr char unitSeparator = '\x1f';

class Lines {
public:
    void add(const char* tag, const std::string& body)
    {
        m_text += fmt::format("{}{:05}{}{}\r\n", tag, body.size() + 1, body, unitSeparator);
    }
    /// Begins a module; the number is unique in the file.
    int begin()
    {
        add("0001", fmt::format("{:05}", ++m_record));
        return m_record;
    }
    void end() { m_text += "****00000\r\n"; }
    std::string take() { return std::move(m_text); }

private:
    std::string m_text;
    int m_record = 0;
};

/// Where the box goes: its corner and the pivot, none of them negative.
struct Placement {
    int pivotColumn;
    int pivotRow;
    int boxColumn;
    int boxRow;
};

Placement placement(const Drawing& drawing)
{
    const int column = std::max(0, -drawing.pivotX);
    const int row = std::max(0, -drawing.pivotY);
    return {column + drawing.pivotX, row + drawing.pivotY, column, row};
}

/// The colours of a drawing in the order of their first use: A, B, C and so on.
std::vector<std::string> colorsOf(const Drawing& drawing)
{
    std::vector<std::string> tokens;
    for (const Shape& shape : drawing.shapes)
        if (std::ranges::find(tokens, shape.token) == tokens.end())
            tokens.push_back(shape.token);
    return tokens;
}

std::string colorReference(const Drawing& drawing)
{
    std::string text;
    char letter = 'A';
    for (const std::string& token : colorsOf(drawing))
        text += letter++ + token;
    return text;
}

class VectorWriter {
public:
    explicit VectorWriter(const Drawing& drawing)
        : m_at(placement(drawing))
        , m_tokens(colorsOf(drawing))
    {
    }

    std::string shape(const Shape& shape)
    {
        m_text.clear();
        pen(shape);
        switch (shape.kind) {
        case Shape::Kind::Line:
            for (const auto& line : shape.rings) {
                m_text += "PU" + point(line.front()) + ';';
                down(line);
            }
            break;
        case Shape::Kind::Area:
            for (std::size_t i = 0; i < shape.rings.size(); ++i) {
                const auto& ring = shape.rings[i];
                const std::string begin = "PU" + point(ring.front()) + ';';
                m_text += i == 0 ? begin + "PM0;" : "PM1;" + begin;
                down(ring);
            }
            m_text += "PM2;FP;";
            break;
        case Shape::Kind::Circle:
            m_text += fmt::format("PU{};CI{};", point(shape.rings[0][0]), round(shape.radius));
            break;
        case Shape::Kind::Disc:
            m_text +=
                fmt::format("PU{};PM0;CI{};PM2;FP;", point(shape.rings[0][0]), round(shape.radius));
            break;
        }
        return m_text;
    }

private:
    static long round(double value) { return std::lround(value); }

    std::string point(Point p) const
    {
        return fmt::format("{},{}", round(p.x + m_at.pivotColumn), round(p.y + m_at.pivotRow));
    }

    void down(const std::vector<Point>& line)
    {
        std::string text;
        std::string last = point(line.front());
        for (const Point p : line) {
            std::string next = point(p);
            if (next == last)
                continue;
            text += (text.empty() ? "PD" : ",") + next;
            last = std::move(next);
        }
        m_text += text.empty() ? "PD;" : text + ';'; // a line of no length is a dot
    }

    void pen(const Shape& shape)
    {
        const auto index = std::ranges::find(m_tokens, shape.token) - m_tokens.begin();
        if (index != m_color || shape.halfClear != m_halfClear) {
            m_text += fmt::format("SP{};", static_cast<char>('A' + index));
            if (shape.halfClear || m_halfClear)
                m_text += shape.halfClear ? "ST2;" : "ST0;";
            m_color = index;
            m_halfClear = shape.halfClear;
        }
        if (shape.width != m_width && shape.kind != Shape::Kind::Area
            && shape.kind != Shape::Kind::Disc) {
            m_text += fmt::format("SW{};", shape.width);
            m_width = shape.width;
        }
    }

    Placement m_at;
    std::vector<std::string> m_tokens;
    std::string m_text;
    std::ptrdiff_t m_color = -1;
    int m_width = -1;
    bool m_halfClear = false;
};

struct Tags {
    const char* module;
    const char* name;
    const char* definition;
    const char* exposition;
    const char* colors;
    const char* vectors;
};

Tags tagsOf(Drawing::Kind kind)
{
    switch (kind) {
    case Drawing::Kind::LineStyle:
        return {"LNST", "LS", "LIND", "LXPO", "LCRF", "LVCT"};
    case Drawing::Kind::Pattern:
        return {"PATT", "PT", "PATD", "PXPO", "PCRF", "PVCT"};
    default:
        return {"SYMB", "SY", "SYMD", "SXPO", "SCRF", "SVCT"};
    }
}

void writeDrawing(Lines& lines, const Drawing& drawing)
{
    const Tags tags = tagsOf(drawing.kind);
    const Placement at = placement(drawing);
    lines.add(tags.module, fmt::format("{}{:05}NIL", tags.name, lines.begin()));
    std::string head = drawing.name;
    if (drawing.kind != Drawing::Kind::LineStyle)
        head += 'V';
    if (drawing.kind == Drawing::Kind::Pattern)
        head += fmt::format("{}{}{:05}{:05}", drawing.fillType, drawing.spacing,
                            drawing.leastDistance, drawing.greatestDistance);
    lines.add(tags.definition,
              head
                  + fmt::format("{:05}{:05}{:05}{:05}{:05}{:05}", at.pivotColumn, at.pivotRow,
                                drawing.width, drawing.height, at.boxColumn, at.boxRow));
    lines.add(tags.exposition, drawing.title);
    lines.add(tags.colors, colorReference(drawing));
    for (const std::string& vectors : vectorCommands(drawing))
        lines.add(tags.vectors, vectors);
    lines.end();
}

void writeLookUp(Lines& lines, const LookUp& entry)
{
    lines.add("LUPT",
              fmt::format("LU{:05}NIL{}{}{:05}{}{}", lines.begin(), entry.objectClass,
                          entry.geometry, entry.priority, entry.radar, entry.table));
    lines.add("ATTC",
              fmt::format("{}", fmt::join(entry.conditions, std::string(1, unitSeparator))));
    lines.add("INST", fmt::format("{}", fmt::join(entry.instructions, ";")));
    lines.add("DISC", entry.category == "-" ? std::string() : entry.category);
    lines.add("LUCM",
              entry.viewingGroup ? fmt::format("{:05}", entry.viewingGroup) : std::string());
    lines.end();
}

void writeColors(Lines& lines, const Library& library, std::size_t scheme)
{
    lines.add("COLS", fmt::format("CS{:05}NIL{}", lines.begin(), Library::schemeNames[scheme]));
    for (const Color& color : library.colors) {
        const CieColor& cie = color.schemes[scheme];
        lines.add("CCIE",
                  fmt::format("{}{:.4f}{u}{:.4f}{u}{:.2f}{u}{}", color.token, cie.x, cie.y,
                              cie.luminance, color.use, fmt::arg("u", unitSeparator)));
    }
    lines.end();
}
} // namespace

std::vector<std::string> vectorCommands(const Drawing& drawing)
{
    VectorWriter writer(drawing);
    std::vector<std::string> result;
    for (const Shape& shape : drawing.shapes)
        result.push_back(writer.shape(shape));
    return result;
}

std::string exchangeForm(const Library& library)
{
    Lines lines;
    lines.add("LBID", fmt::format("LI{:05}NILKelvox presentation library", lines.begin()));
    lines.end();
    for (std::size_t scheme = 0; scheme < Library::schemeNames.size(); ++scheme)
        writeColors(lines, library, scheme);
    for (const LookUp& entry : library.lookUps)
        writeLookUp(lines, entry);
    for (const auto kind :
         {Drawing::Kind::Pattern, Drawing::Kind::LineStyle, Drawing::Kind::Symbol})
        for (const Drawing& drawing : library.drawings)
            if (drawing.kind == kind)
                writeDrawing(lines, drawing);
    return lines.take();
}

std::string calibrationFile(const Monitor& monitor)
{
    constexpr std::array<const char*, 3> names{"red", "green", "blue"};
    // What each channel gives towards the white: full white, mixed from the primaries at one.
    LinearColor shares{};
    const auto mix = [&](Chromaticity c) {
        return linearFromCie({c.x, c.y, monitor.luminance}, monitor.primaries, monitor.white,
                             monitor.luminance);
    };
    // A primary's own luminance yields 1/share of its channel and nothing of the others.
    for (std::size_t c = 0; c < 3; ++c)
        shares[c] = 1 / mix(monitor.primaries[c])[c];

    std::string text = "; The display that the colour tables are shown on.\r\n[general]\r\n"
                       "count=256\r\nluminance=cd\r\n\r\n[chromaticities]\r\n";
    for (std::size_t c = 0; c < 3; ++c)
        text += fmt::format("{0} x={1:.4f}\r\n{0} y={2:.4f}\r\n", names[c], monitor.primaries[c].x,
                            monitor.primaries[c].y);
    text += fmt::format("white x={:.4f}\r\nwhite y={:.4f}\r\n", monitor.white.x, monitor.white.y);
    for (std::size_t c = 0; c < 3; ++c) {
        text += fmt::format("\r\n[{} luminance]\r\n", names[c]);
        for (int drive = 0; drive < 256; ++drive) {
            const double coded = drive / 255.0;
            const double light =
                coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
            text += fmt::format("{}={:.6f}\r\n", drive, light * shares[c] * monitor.luminance);
        }
    }
    return text;
}

} // namespace kelvox::preslib
