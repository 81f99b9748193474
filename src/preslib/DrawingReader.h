#pragma once

#include "preslib/Library.h"
#include "preslib/Outline.h"
#include "preslib/Words.h"

#include <string>
#include <string_view>

namespace kelvox::preslib {

/// Reads symbols, line styles, patterns and figures as text drawings.
///
/// The form is told in resources/preslib/README.md. Files are read one after another: a drawing
/// may use whatever was drawn before it.
class DrawingReader {
public:
    DrawingReader(Library& library, Diagnostics& diagnostics)
        : m_library(library)
        , m_diagnostics(diagnostics)
    {
    }
    void read(const std::filesystem::path& file, std::string_view text);

private:
    void beginDrawing(Words& words);
    void endDrawing();
    void command(Words& words);

    void readBox(Words& words);
    void readTile(Words& words);
    void readOrigin(Words& words);
    void readPen(Words& words);
    void readEdge(Words& words);
    void readUse(Words& words);
    void readText(Words& words);
    /// The line described by "line", "loop", "circle", "arc", "ellipse" and their parameters.
    [[nodiscard]] std::vector<Polyline> readLine(const std::string& verb, Words& words);
    void readArea(const std::string& verb, Words& words);
    [[nodiscard]] std::vector<std::vector<Knot>> readKnots(Words& words);
    [[nodiscard]] Point readPoint(Words& words); ///< moved to the pivot
    [[nodiscard]] Point readPair(Words& words);
    [[nodiscard]] double readNumber(Words& words);

    void addLines(std::vector<Polyline> lines);
    void addAreas(std::vector<Polyline> rings); ///< with the edge, if there is one
    void addShape(Shape shape);
    [[nodiscard]] Shape shape(Shape::Kind kind) const;
    [[nodiscard]] const Drawing* find(const std::string& name) const;
    void complain(const std::string& message) { m_diagnostics.add(m_place, message); }

    struct Pen {
        std::string token;
        int width = 1;
        bool halfClear = false;
    };

    Library& m_library;
    Diagnostics& m_diagnostics;
    Place m_place;
    bool m_isOpen = false;
    Drawing m_drawing;
    Pen m_pen;
    Pen m_edge;
    Point m_origin; ///< of the co-ordinates as written, seen from the pivot
    bool m_hasBox = false;
};

/// The pen of whoever uses a figure.
inline constexpr const char* inkToken = "INK";

} // namespace kelvox::preslib
