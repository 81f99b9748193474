#pragma once

#include "ais/AISModel.h"
#include "base/Path.h"
#include "base/Settings.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvox {

/// How the chart lies in the view. View points; x grows to the right, y upward.
struct AISView {
    std::function<Point(Position)> pointAt;
    std::function<double(double latitude)> pointsPerMetre;
    double rotation = 0; ///< degrees by which the chart is turned counter-clockwise
    Rect visible; ///< targets that do not reach into it are left out
};

/// What the user wants to see.
struct AISDisplay {
    bool showUnderway = true;
    bool showStationary = true;
    bool showVesselNames = true;
    bool showAISClassB = true;
    double vectorMinutes = 6; ///< how far course vectors look ahead; 0 for none
    double symbolLength = 16; ///< view points from bow to stern of a triangle
    std::optional<std::int32_t> selected = {};
    std::optional<std::int32_t> alarmed = {};

    /// From the filters' own keys and "aisVectorMinutes"; a key never set leaves the default.
    [[nodiscard]] static AISDisplay fromSettings(const Settings& settings);
    /// Whether the filters let the target through. Radar targets, the cursor and the receiver are
    /// no AIS vessels: only their own show() hides them.
    [[nodiscard]] bool shows(const AISPosition& target) const;
};

/// One target as it is to be drawn, in view points. Every outline is closed by its first point.
struct AISSymbol {
    enum class Shape {
        ClassA, ///< triangle
        ClassB, ///< narrower, with a notch in its stern
        TrueOutline, ///< hull to scale
        Own, ///< two circles
        Radar, ///< circle
        Cursor, ///< cross
        Receiver ///< diamond
    };

    std::int32_t mmsi = 0;
    Shape shape = Shape::ClassA;
    bool classB = false; ///< also for a true outline
    bool own = false;
    bool timedOut = false;
    bool stationary = false;
    bool selected = false;
    bool alarmed = false;
    Point at; ///< the antenna
    double reach = 0; ///< nothing but the label lies farther from `at`
    Path outline; ///< to be filled and stroked; the cursor's cross only stroked
    Path headingLine; ///< ahead of the bow; empty without a heading or at rest
    Path courseVector; ///< over ground, from `at`; empty at rest
    Path strike; ///< crosses out a timed-out target
    std::string label; ///< empty when there is none to show
    Point labelAt; ///< middle of the text's side that faces the symbol
    bool labelOnLeft = false; ///< the text ends at labelAt instead of beginning there
};

/// The targets of a view as shapes, and which of them is under the pointer. Belongs to the thread
/// that updates it.
///
/// Symbols lie in the order in which to draw them: the selected target last, on top. Updating
/// again reuses the memory of the symbols before.
class AISPicture {
public:
    void update(std::span<const AISPosition* const> targets, const AISView& view,
                const AISDisplay& display, AISPosition::Time now);
    void update(const AISModel& model, const AISView& view, const AISDisplay& display,
                AISPosition::Time now)
    {
        update(model.positionEnumerator(), view, display, now);
    }
    /// Whether update() would make a symbol of the target: what to take along for a picture that
    /// another thread makes.
    [[nodiscard]] static bool isSeen(const AISPosition& target, const AISView& view,
                                     const AISDisplay& display)
    {
        return placeOf(target, view, display).has_value();
    }
    [[nodiscard]] std::span<const AISSymbol> symbols() const { return {m_symbols.data(), m_count}; }
    /// The target whose outline holds the point or lies within the tolerance, view points; of
    /// several the one whose antenna is nearest.
    [[nodiscard]] std::optional<std::int32_t> targetAt(Point point, double tolerance) const;

private:
    struct Place {
        Point at;
        double pointsPerFoot;
    };
    [[nodiscard]] static std::optional<Place>
    placeOf(const AISPosition& target, const AISView& view, const AISDisplay& display);

    std::vector<AISSymbol> m_symbols; // the first m_count are in use
    std::size_t m_count = 0;
};

} // namespace kelvox
