#pragma once

#include "base/Path.h"
#include "presentation/DisplayColor.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// One colour of a colour table under its five-letter token, e.g. "CHMGD".
struct S52Ccie {
    std::string ctokString;
    DisplayColor color;
};

/// The colours of one scheme by token.
using S52CcieMap = std::map<std::string, S52Ccie, std::less<>>;

/// One colour scheme: "DAY", "DUSK" or "NIGHT".
struct S52Cols {
    std::string modnString;
    int rcidNumber = 0;
    std::string statString;
    std::string ctusString; ///< the name of the table
    S52CcieMap ccieDictionary;

    [[nodiscard]] const S52CcieMap& ccie() const { return ccieDictionary; }
};

/// One vector command: what it does and its parameters as text, e.g. PD and "120,40".
struct S52Vct {
    enum Instruction { Unknown, AA, CI, EP, FP, PD, PM, PU, SC, SP, ST, SW };

    int instruction = Unknown;
    std::string parametersString;

    /// Zero for a command that is not known.
    [[nodiscard]] static int instructionFor(std::string_view command);
};

/// One drawable piece of a symbol, line style or pattern. Display points, y up, the pivot at (0,
/// 0).
///
/// A filled path is closed by its chords; the rings of a hole run against those around it.
struct S52Path {
    Path path;
    DisplayColor color;
    bool fill = false;
    double lineWidth = 0; ///< display points; counts for stroked paths only
};

/// What symbols, line styles and patterns have in common. Lengths are 0.01 mm, y down.
struct S52Item {
    static constexpr double scaleTransform = 0.028; ///< display points in 0.01 mm, exactly this
    static constexpr double widestPen = 2.0; ///< display points

    std::string modnString;
    int rcidNumber = 0;
    std::string statString;
    std::string poString; ///< exposition: what the figure stands for
    std::string nmString; ///< eight characters
    std::string dfString; ///< "V" (vector) or "R" (raster)
    int clNumber = 0; ///< pivot column
    int rwNumber = 0; ///< pivot row
    int hlNumber = 0; ///< box width
    int vlNumber = 0; ///< box height
    int xcNumber = 0; ///< left edge of the box
    int xrNumber = 0; ///< upper edge of the box
    std::vector<S52Vct> vctArray;
    std::vector<S52Path> s52PathArray;
    std::map<char, std::string> crfDictionary; ///< colour letter to token
    std::optional<S52Ccie> s52Ccie; ///< first pen colour, cached by the renderer

    [[nodiscard]] const std::vector<S52Vct>& vct() const { return vctArray; }
    [[nodiscard]] const std::vector<S52Path>& s52Path() const { return s52PathArray; }
    [[nodiscard]] const std::map<char, std::string>& crf() const { return crfDictionary; }

    /// The translation, in display points with y up, that brings the pivot to the origin.
    [[nodiscard]] Point pivotTransform() const
    {
        return {-clNumber * scaleTransform, rwNumber * scaleTransform};
    }
    /// The box in 0.01 mm with y up, the pivot not yet at the origin.
    [[nodiscard]] Rect rect() const
    {
        return {static_cast<double>(xcNumber), -(static_cast<double>(xrNumber) + vlNumber),
                static_cast<double>(xcNumber) + hlNumber, -static_cast<double>(xrNumber)};
    }

    void setColorReference(std::string_view text); ///< groups of a letter and a token
    void addVectorCommands(std::string_view text); ///< commands between semicolons
    /// Runs the vector commands with the colours given and replaces s52PathArray by the outcome.
    void processVct(const S52CcieMap& colors);
};

struct S52Symb : S52Item { };

struct S52Lnst : S52Item { };

struct S52Patt : S52Item {
    std::string patpString; ///< "STG" (staggered) or "LIN" (in rows)
    std::string paspString; ///< "CON" (constant) or "SCL" (with the scale)
    int pamiNumber = 0; ///< least distance between figures
    int pamaNumber = 0; ///< greatest distance
};

} // namespace kelvox
