#pragma once

#include "base/Position.h"
#include "base/Rect.h"
#include "chartview/ViewFrame.h"

#include <QPolygonF>

#include <vector>

namespace kelvox {

[[nodiscard]] SheetPlace sheetPlaceOf(Position position);

/// The way from the sheet to the display points of one frame, ready for thousands of places.
class SheetToPoints {
public:
    explicit SheetToPoints(const ViewFrame& frame);
    [[nodiscard]] QPointF operator()(SheetPlace place) const
    {
        return m_origin + m_east * place.x + m_north * place.y;
    }
    /// What the frame shows of the sheet, grown by a margin of display points; runs past 0 and 1.
    [[nodiscard]] Rect visible(double margin) const;
    /// The place on the side of the date line that the frame shows.
    [[nodiscard]] QPointF nearest(SheetPlace place) const;

private:
    QPointF m_origin;
    QPointF m_east; ///< display points for the whole width of the sheet
    QPointF m_north;
    double m_width; ///< of the frame, display points
    double m_height;
    SheetPlace m_middle;
};

/// A line over the sheet that runs on across the date line instead of turning back.
struct SheetLine {
    std::vector<SheetPlace> places;
    Rect box;

    void add(Position position);
    /// By the great circle where that can be told from the straight line, in tenths.
    void addLeg(Position from, Position to);
    /// Calls draw(polygon) with the line's visible parts, thinned to what the eye can tell, once
    /// for each side of the date line on which it shows.
    template <typename Draw>
    void project(const SheetToPoints& toPoints, double margin, Draw&& draw) const
    {
        const Rect visible = toPoints.visible(margin);
        if (places.empty() || box.top < visible.bottom || box.bottom > visible.top)
            return;
        for (double turn = firstTurn(visible); box.left + turn <= visible.right; ++turn)
            projectTurned(toPoints, visible, turn, draw);
    }

private:
    [[nodiscard]] double firstTurn(const Rect& visible) const;
    template <typename Draw>
    void projectTurned(const SheetToPoints& toPoints, const Rect& visible, double turn,
                       Draw&& draw) const
    {
        constexpr double finest = 0.7; // display points between vertices
        const auto turned = [turn](SheetPlace place) { return Point{place.x + turn, place.y}; };
        const auto project = [&](Point p) { return toPoints({p.x, p.y}); };
        QPolygonF part;
        const auto flush = [&] {
            if (!part.isEmpty())
                draw(part);
            part.clear();
        };
        if (places.size() == 1 && visible.contains(turned(places.front())))
            part << project(turned(places.front()));
        for (std::size_t i = 1; i < places.size(); ++i) {
            const Point from = turned(places[i - 1]);
            const Point to = turned(places[i]);
            Point begin = from;
            Point end = to;
            if (!clip(begin, end, visible)) {
                flush();
                continue;
            }
            if (begin != from)
                flush();
            if (part.isEmpty())
                part << project(begin);
            const QPointF p = project(end);
            if (end != to || i + 1 == places.size()
                || (p - part.last()).manhattanLength() >= finest)
                part << p;
            if (end != to)
                flush();
        }
        flush();
    }
    /// Cuts the piece to the box; false where none of it lies within.
    [[nodiscard]] static bool clip(Point& begin, Point& end, const Rect& box);
};

} // namespace kelvox
