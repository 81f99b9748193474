#include "preslib/DrawingReader.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace kelvox::preslib {

namespace {
constexpr int narrowestPen = 1;
constexpr int widestPen = 2; // what is wider is cut to this when drawn
constexpr double largestNumber = 99999; // five digits

bool isLineVerb(const std::string& verb)
{
    return verb == "line" || verb == "loop" || verb == "circle" || verb == "arc"
        || verb == "ellipse";
}

bool isAreaVerb(const std::string& verb)
{
    return verb == "fill" || verb == "disc" || verb == "oval" || verb == "band";
}

Point turned(Point p, double degrees)
{
    const double angle = degrees * std::numbers::pi / 180;
    return {p.x * std::cos(angle) - p.y * std::sin(angle),
            p.x * std::sin(angle) + p.y * std::cos(angle)};
}
} // namespace

void DrawingReader::read(const std::filesystem::path& file, std::string_view text)
{
    forEachLine(file, text, [&](const Place& place, std::string_view line) {
        Words words(line);
        if (words.isAtEnd())
            return;
        const bool isHeading = line.front() != ' ' && line.front() != '\t';
        if (isHeading)
            endDrawing();
        m_place = place;
        if (isHeading)
            beginDrawing(words);
        else if (m_isOpen)
            command(words);
        else
            complain("a drawing command outside a drawing");
        if (!words.isAtEnd())
            complain("not understood: \"" + words.rest() + '"');
    });
    endDrawing();
}

void DrawingReader::beginDrawing(Words& words)
{
    const std::string kind = words.next();
    m_drawing = {};
    if (kind == "symbol")
        m_drawing.kind = Drawing::Kind::Symbol;
    else if (kind == "linestyle")
        m_drawing.kind = Drawing::Kind::LineStyle;
    else if (kind == "pattern")
        m_drawing.kind = Drawing::Kind::Pattern;
    else if (kind != "figure") {
        complain("a drawing begins with symbol, linestyle, pattern or figure, not with \"" + kind
                 + '"');
        words.rest();
        return;
    }
    m_drawing.name = words.next();
    m_drawing.title = words.rest();
    m_drawing.place = m_place;
    m_isOpen = true;
    m_pen = {m_drawing.kind == Drawing::Kind::Figure ? inkToken : "", 0, false};
    m_edge = {};
    m_origin = {};
    m_hasBox = false;
}

void DrawingReader::endDrawing()
{
    if (!std::exchange(m_isOpen, false))
        return;
    if (m_drawing.kind != Drawing::Kind::Figure) {
        if (!m_hasBox)
            m_diagnostics.add(m_drawing.place, m_drawing.name + " has no box");
        m_library.drawings.push_back(std::move(m_drawing));
    } else if (!m_library.figures.emplace(m_drawing.name, m_drawing).second) {
        m_diagnostics.add(m_drawing.place, "figure " + m_drawing.name + " is drawn twice");
    }
}

void DrawingReader::command(Words& words)
{
    const std::string verb = words.next();
    if (verb == "box")
        readBox(words);
    else if (verb == "tile")
        readTile(words);
    else if (verb == "from")
        readOrigin(words);
    else if (verb == "pen")
        readPen(words);
    else if (verb == "edge")
        readEdge(words);
    else if (verb == "use")
        readUse(words);
    else if (verb == "text")
        readText(words);
    else if (verb == "dotted") {
        const double spacing = readNumber(words);
        const double radius = readNumber(words);
        std::vector<Polyline> all;
        for (const Polyline& line : readLine(words.next(), words))
            std::ranges::move(dots(line, std::max(spacing, 1.0), radius), std::back_inserter(all));
        addAreas(std::move(all));
    } else if (verb == "dashed") {
        const double on = readNumber(words);
        const double off = readNumber(words);
        std::vector<Polyline> all;
        for (const Polyline& line : readLine(words.next(), words))
            std::ranges::move(dashes(line, std::max(on, 1.0), std::max(off, 0.0)),
                              std::back_inserter(all));
        addLines(std::move(all));
    } else if (verb == "circle") {
        Shape circle = shape(Shape::Kind::Circle);
        circle.rings = {{readPoint(words)}};
        circle.radius = readNumber(words);
        addShape(std::move(circle));
    } else if (isLineVerb(verb))
        addLines(readLine(verb, words));
    else if (isAreaVerb(verb))
        readArea(verb, words);
    else
        complain("unknown command \"" + verb + '"');
}

void DrawingReader::readBox(Words& words)
{
    m_drawing.width = wholeNumber(words.next()).value_or(-1);
    const bool by = words.skip("x");
    m_drawing.height = wholeNumber(words.next()).value_or(-1);
    if (!by || m_drawing.width < 0 || m_drawing.height < 0) {
        complain("a box reads: box WIDTH x HEIGHT pivot X,Y");
        words.rest();
        return;
    }
    if (words.skip("pivot")) {
        const Point pivot = readPair(words);
        m_drawing.pivotX = static_cast<int>(pivot.x);
        m_drawing.pivotY = static_cast<int>(pivot.y);
    }
    m_hasBox = true;
}

void DrawingReader::readTile(Words& words)
{
    m_drawing.fillType = words.next();
    m_drawing.spacing = words.next();
    m_drawing.leastDistance = static_cast<int>(readNumber(words));
    m_drawing.greatestDistance = static_cast<int>(readNumber(words));
    if ((m_drawing.fillType != "STG" && m_drawing.fillType != "LIN")
        || (m_drawing.spacing != "CON" && m_drawing.spacing != "SCL"))
        complain("a tile reads: tile STG|LIN CON|SCL LEAST GREATEST");
}

void DrawingReader::readOrigin(Words& words)
{
    const Point corner{static_cast<double>(-m_drawing.pivotX),
                       static_cast<double>(-m_drawing.pivotY)};
    const std::string place = words.next();
    if (place == "corner")
        m_origin = corner;
    else if (place == "middle")
        m_origin = corner + Point{m_drawing.width / 2.0, m_drawing.height / 2.0};
    else if (place == "pivot")
        m_origin = {};
    else
        complain("co-ordinates count from the corner, the middle or the pivot");
    if (!m_hasBox)
        complain("the box comes first");
}

void DrawingReader::readPen(Words& words)
{
    m_pen = {words.next(), m_drawing.kind == Drawing::Kind::Figure ? 0 : narrowestPen, false};
    if (const auto width = wholeNumber(words.peek())) {
        words.next();
        m_pen.width = *width;
        if (*width < narrowestPen || *width > widestPen)
            complain("a pen is 1 or 2 points wide");
    }
    m_pen.halfClear = words.skip("half");
}

void DrawingReader::readEdge(Words& words)
{
    m_edge = {};
    if (words.skip("none"))
        return;
    m_edge.token = words.next();
    if (const auto width = wholeNumber(words.peek())) {
        words.next();
        m_edge.width = *width;
        if (*width < narrowestPen || *width > widestPen)
            complain("an edge is 1 or 2 points wide");
    }
}

double DrawingReader::readNumber(Words& words)
{
    const std::string word = words.next();
    const auto number = decimalNumber(word);
    if (number && std::fabs(*number) <= largestNumber)
        return *number;
    complain("a number is wanted, not \"" + word + '"');
    return 0;
}

Point DrawingReader::readPair(Words& words)
{
    const std::string word = words.next();
    const auto comma = word.find(',');
    if (comma != std::string::npos) {
        const auto x = decimalNumber(std::string_view(word).substr(0, comma));
        const auto y = decimalNumber(std::string_view(word).substr(comma + 1));
        if (x && y && std::fabs(*x) <= largestNumber && std::fabs(*y) <= largestNumber)
            return {*x, *y};
    }
    complain("a point X,Y is wanted, not \"" + word + '"');
    return {};
}

Point DrawingReader::readPoint(Words& words)
{
    return readPair(words) + m_origin;
}

std::vector<std::vector<Knot>> DrawingReader::readKnots(Words& words)
{
    std::vector<std::vector<Knot>> lines(1);
    while (!words.isAtEnd()) {
        if (words.skip("/")) {
            lines.emplace_back();
            continue;
        }
        std::string word = words.next();
        const bool smooth = !word.empty() && word.front() == '~';
        if (smooth)
            word.erase(0, 1);
        Words one(word);
        lines.back().push_back({readPoint(one), smooth});
    }
    for (const auto& line : lines)
        if (line.size() < 2)
            complain("a line has two points or more");
    return lines;
}

std::vector<Polyline> DrawingReader::readLine(const std::string& verb, Words& words)
{
    std::vector<Polyline> result;
    if (verb == "line" || verb == "loop") {
        for (const auto& knots : readKnots(words))
            result.push_back(outline(knots, verb == "loop"));
    } else if (verb == "circle") {
        const Point center = readPoint(words);
        const double radius = readNumber(words);
        result.push_back(ellipse(center, radius, radius));
    } else if (verb == "ellipse") {
        const Point center = readPoint(words);
        const Point radii = readPair(words);
        result.push_back(ellipse(center, radii.x, radii.y));
    } else if (verb == "arc") {
        const Point center = readPoint(words);
        const double radius = readNumber(words);
        const double from = readNumber(words);
        const double to = readNumber(words);
        if (std::fabs(to - from) > 360)
            complain("an arc turns by 360 degrees at most");
        else
            result.push_back(arc(center, radius, radius, from, to));
    } else {
        complain("unknown line \"" + verb + '"');
        words.rest();
    }
    return result;
}

void DrawingReader::readArea(const std::string& verb, Words& words)
{
    if (verb == "disc") {
        Shape disc = shape(Shape::Kind::Disc);
        disc.rings = {{readPoint(words)}};
        disc.radius = readNumber(words);
        Shape rim = disc;
        addShape(std::move(disc));
        if (!m_edge.token.empty()) {
            rim.kind = Shape::Kind::Circle;
            rim.token = m_edge.token;
            rim.width = m_edge.width;
            rim.halfClear = false;
            addShape(std::move(rim));
        }
        return;
    }
    std::vector<Polyline> rings;
    if (verb == "oval") {
        const Point center = readPoint(words);
        const Point radii = readPair(words);
        rings.push_back(ellipse(center, radii.x, radii.y));
    } else if (verb == "band") {
        const double width = readNumber(words);
        for (const auto& knots : readKnots(words))
            rings.push_back(band(outline(knots, false), width));
    } else {
        for (const auto& knots : readKnots(words)) {
            Polyline ring = outline(knots, true);
            // Rings after the first are holes: they run the other way round.
            if (!rings.empty() && (signedArea(ring) > 0) == (signedArea(rings.front()) > 0))
                std::ranges::reverse(ring);
            rings.push_back(std::move(ring));
        }
    }
    addAreas(std::move(rings));
}

void DrawingReader::readUse(Words& words)
{
    const std::string name = words.next();
    const Drawing* used = find(name);
    if (!used) {
        complain("nothing named " + name + " was drawn before");
        words.rest();
        return;
    }
    Point at = m_origin;
    double turn = 0;
    double scale = 1;
    bool mirror = false;
    int width = 0;
    std::vector<std::pair<std::string, std::string>> colors;
    while (!words.isAtEnd()) {
        const std::string word = words.next();
        const auto arrow = word.find('>');
        if (word == "at")
            at = readPoint(words);
        else if (word == "turn")
            turn = readNumber(words);
        else if (word == "scale")
            scale = readNumber(words);
        else if (word == "mirror")
            mirror = true;
        else if (word == "pen")
            width = static_cast<int>(readNumber(words));
        else if (arrow != std::string::npos)
            colors.emplace_back(word.substr(0, arrow), word.substr(arrow + 1));
        else
            complain("unknown word \"" + word + "\" after use");
    }
    for (Shape copy : used->shapes) {
        for (auto& ring : copy.rings)
            for (Point& p : ring)
                p = turned({mirror ? -p.x : p.x, p.y}, turn) * scale + at;
        copy.radius *= scale;
        if (copy.token == inkToken) {
            copy.token = m_pen.token;
            copy.halfClear = copy.halfClear || m_pen.halfClear;
        }
        if (copy.width == 0)
            copy.width = m_pen.width;
        if (width > 0)
            copy.width = width;
        for (const auto& [from, to] : colors)
            if (copy.token == from) {
                copy.token = to;
                break;
            }
        addShape(std::move(copy));
    }
}

void DrawingReader::readText(Words& words)
{
    constexpr double cellHeight = 100; // of the figures that letters are drawn as
    constexpr double gap = 28;
    const std::string text = words.next();
    Point at = m_origin;
    double height = cellHeight;
    bool middle = false;
    while (!words.isAtEnd()) {
        const std::string word = words.next();
        if (word == "at")
            at = readPoint(words);
        else if (word == "height")
            height = readNumber(words);
        else if (word == "middle")
            middle = true;
        else
            complain("unknown word \"" + word + "\" after text");
    }
    const double scale = height / cellHeight;
    std::vector<const Drawing*> letters;
    double length = -gap;
    for (const char c : text) {
        const Drawing* letter = find(std::string("letter-") + c);
        if (!letter) {
            complain(std::string("the letter ") + c + " was not drawn before");
            return;
        }
        letters.push_back(letter);
        length += letter->width + gap;
    }
    if (middle)
        at = at - Point{length / 2, cellHeight / 2} * scale;
    for (const Drawing* letter : letters) {
        for (Shape copy : letter->shapes) {
            for (auto& ring : copy.rings)
                for (Point& p : ring)
                    p = p * scale + at;
            copy.radius *= scale;
            copy.token = m_pen.token;
            copy.width = m_pen.width;
            copy.halfClear = m_pen.halfClear;
            addShape(std::move(copy));
        }
        at.x += (letter->width + gap) * scale;
    }
}

void DrawingReader::addLines(std::vector<Polyline> lines)
{
    if (lines.empty())
        return;
    Shape line = shape(Shape::Kind::Line);
    line.rings = std::move(lines);
    addShape(std::move(line));
}

void DrawingReader::addAreas(std::vector<Polyline> rings)
{
    if (rings.empty())
        return;
    Shape area = shape(Shape::Kind::Area);
    area.rings = std::move(rings);
    Shape rim = area;
    addShape(std::move(area));
    if (!m_edge.token.empty()) {
        rim.kind = Shape::Kind::Line;
        rim.token = m_edge.token;
        rim.width = m_edge.width;
        rim.halfClear = false;
        addShape(std::move(rim));
    }
}

Shape DrawingReader::shape(Shape::Kind kind) const
{
    Shape result;
    result.kind = kind;
    result.token = m_pen.token;
    result.width = m_pen.width;
    result.halfClear = m_pen.halfClear;
    return result;
}

void DrawingReader::addShape(Shape shape)
{
    if (shape.token.empty())
        complain("no pen was chosen");
    m_drawing.shapes.push_back(std::move(shape));
}

const Drawing* DrawingReader::find(const std::string& name) const
{
    if (const auto figure = m_library.figures.find(name); figure != m_library.figures.end())
        return &figure->second;
    const auto drawn = std::ranges::find_if(m_library.drawings, [&](const Drawing& drawing) {
        return drawing.name == name && drawing.kind == Drawing::Kind::Symbol;
    });
    return drawn == m_library.drawings.end() ? nullptr : &*drawn;
}

} // namespace kelvox::preslib
