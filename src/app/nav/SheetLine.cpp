#include "app/nav/SheetLine.h"

#include "chartview/S57Controller.h"
#include "navigation/NavMath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvox {

SheetPlace sheetPlaceOf(Position position)
{
    constexpr double topOrdinate = S57Controller::value85;
    constexpr double pole =
        89.9; // nothing is drawn beyond 85°, but the ordinate has to be a number
    const double latitude = std::clamp(position.latitude, -pole, pole) * std::numbers::pi / 180;
    const double ordinate = std::asinh(std::tan(latitude));
    return {(position.longitude + 180) / 360, (ordinate / topOrdinate + 1) / 2};
}

SheetToPoints::SheetToPoints(const ViewFrame& frame)
    : m_width(frame.width / frame.pixelsPerPoint)
    , m_height(frame.height / frame.pixelsPerPoint)
    , m_middle(frame.placeOf({frame.width / 2.0, frame.height / 2.0}))
{
    const auto at = [&](SheetPlace place) {
        const Point p = frame.pixelOf(place);
        return QPointF(p.x, p.y) / frame.pixelsPerPoint;
    };
    m_origin = at({0, 0});
    m_east = at({1, 0}) - m_origin;
    m_north = at({0, 1}) - m_origin;
}

Rect SheetToPoints::visible(double margin) const
{
    const double determinant = m_east.x() * m_north.y() - m_east.y() * m_north.x();
    Rect box;
    for (const double x : {-margin, m_width + margin})
        for (const double y : {-margin, m_height + margin}) {
            const QPointF p = QPointF(x, y) - m_origin;
            box.include(Point{(p.x() * m_north.y() - p.y() * m_north.x()) / determinant,
                              (m_east.x() * p.y() - m_east.y() * p.x()) / determinant});
        }
    return box;
}

QPointF SheetToPoints::nearest(SheetPlace place) const
{
    place.x += std::round(m_middle.x - place.x);
    return (*this)(place);
}

void SheetLine::add(Position position)
{
    SheetPlace place = sheetPlaceOf(position);
    if (!places.empty())
        place.x += std::round(places.back().x - place.x); // the short way round
    places.push_back(place);
    box.include(Point{place.x, place.y});
}

void SheetLine::addLeg(Position from, Position to)
{
    constexpr float straight = 20; // NM: below, the arc leaves the straight line by metres only
    if (places.empty())
        add(from);
    if (NavMath::distanceFromPoint(from, to) > straight)
        for (int tenth = 1; tenth < 10; ++tenth)
            add(NavMath::intermediatePosition(from, to, static_cast<float>(tenth) / 10));
    add(to);
}

double SheetLine::firstTurn(const Rect& visible) const
{
    return std::ceil(visible.left - box.right);
}

// A pen pays for every pixel of a line, also for those far outside: legs over an ocean are cut.
bool SheetLine::clip(Point& begin, Point& end, const Rect& box)
{
    if (box.contains(begin) && box.contains(end))
        return true;
    const Point along = end - begin;
    double first = 0; // shares of the piece, after Liang and Barsky
    double last = 1;
    const auto cut = [&](double slope, double room) {
        if (slope == 0)
            return room >= 0;
        const double share = room / slope;
        if (slope < 0)
            first = std::max(first, share);
        else
            last = std::min(last, share);
        return first <= last;
    };
    if (!cut(-along.x, begin.x - box.left) || !cut(along.x, box.right - begin.x)
        || !cut(-along.y, begin.y - box.bottom) || !cut(along.y, box.top - begin.y))
        return false;
    const Point from = begin;
    if (first > 0)
        begin = from + along * first;
    if (last < 1)
        end = from + along * last;
    return true;
}

} // namespace kelvox
