#include "s57/S57Coordinate.h"

#include "chartview/S57Controller.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvox {

namespace {
constexpr double feetPerMetre = 3.2808399;
constexpr double feetPerFathom = 6;
constexpr double tenthsUpTo = 31; ///< metres: deeper ones are known to the metre only
constexpr double feetUpTo = 11; ///< fathoms: deeper ones are shown without feet
constexpr float smallFigure = 10;
constexpr float largeFigure = 13;

/// Towards the shoaler: a depth is cut, a drying height goes up. The hundredth forgives what single
/// precision left of a round value.
double cut(double value, bool dries)
{
    return dries ? std::ceil(value - 0.01) : std::floor(value + 0.01);
}

/// Splits whole small units, e.g. feet, into large ones and the rest.
S57DepthText figureOf(double units, double perWhole, bool withRest, const S57Depth& sounding,
                      S57Depth::Form form)
{
    S57DepthText text;
    text.size = form == S57Depth::Form::Large ? largeFigure : smallFigure;
    text.dries = sounding.depth < 0;
    if (!std::isfinite(sounding.depth))
        return text;
    const double rest = std::fmod(units, perWhole);
    text.figure = fmt::format("{:.0f}", (units - rest) / perWhole);
    if (withRest && rest != 0)
        text.subscript = fmt::format("{:.0f}", rest);
    return text;
}
} // namespace

Point S57Coordinate::coordinateToPoint(const S57Controller& view) const
{
    return view.positionToPoint(positionOnGPS());
}

S57DepthText S57Depth::depthInFeet(Form form) const
{
    const double metres = std::abs(static_cast<double>(depth));
    return figureOf(cut(metres * feetPerMetre, depth < 0), 1, false, *this, form);
}

S57DepthText S57Depth::depthInMetres(Form form) const
{
    const double metres = std::abs(static_cast<double>(depth));
    if (metres >= tenthsUpTo)
        return figureOf(cut(metres, depth < 0), 1, false, *this, form);
    return figureOf(cut(metres * 10, depth < 0), 10, true, *this, form);
}

S57DepthText S57Depth::depthInFathoms(Form form) const
{
    const double metres = std::abs(static_cast<double>(depth));
    const double feet = cut(metres * feetPerMetre, depth < 0);
    return figureOf(feet, feetPerFathom, feet < feetUpTo * feetPerFathom, *this, form);
}

} // namespace kelvox
