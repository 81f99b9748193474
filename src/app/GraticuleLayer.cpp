#include "app/GraticuleLayer.h"

#include "app/GlassText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

namespace kelvox {

namespace {
constexpr double minute = 1.0 / 60;
constexpr std::array steps{0.01 * minute, 0.02 * minute, 0.05 * minute, 0.1 * minute, 0.2 * minute,
                           0.5 * minute,  1 * minute,    2 * minute,    5 * minute,   10 * minute,
                           20 * minute,   30 * minute,   1.0,           2.0,          5.0,
                           10.0,          20.0,          30.0};

double ordinateOf(double latitude)
{
    return std::asinh(std::tan(latitude * std::numbers::pi / 180));
}

double latitudeOf(double ordinate)
{
    return std::atan(std::sinh(ordinate)) * 180 / std::numbers::pi;
}

/// The part of a line inside the view (Liang and Barsky, 1984).
std::optional<QLineF> clipped(const QLineF& line, const QRectF& view)
{
    double from = 0;
    double to = 1;
    const auto cut = [&](double delta, double distance) {
        if (delta == 0)
            return distance >= 0;
        const double at = distance / delta;
        if (delta < 0)
            from = std::max(from, at);
        else
            to = std::min(to, at);
        return from < to;
    };
    const bool inside = cut(-line.dx(), line.x1() - view.left())
        && cut(line.dx(), view.right() - line.x1()) && cut(-line.dy(), line.y1() - view.top())
        && cut(line.dy(), view.bottom() - line.y1());
    if (!inside)
        return std::nullopt;
    return QLineF(line.pointAt(from), line.pointAt(to));
}
} // namespace

double GraticuleLayer::stepFor(double degrees)
{
    const auto* const it = std::lower_bound(steps.begin(), steps.end(), degrees);
    return it == steps.end() ? steps.back() : *it;
}

QString GraticuleLayer::figure(double degrees, double step, const char* signs)
{
    degrees -= 360 * std::floor((degrees + 180) / 360);
    const QChar sign = QLatin1Char(degrees < 0 ? signs[1] : signs[0]);
    // Whole hundredths of a minute: what the finest step needs, without rounding to 60.
    const auto hundredths = std::llround(std::abs(degrees) * 6000);
    const auto whole = static_cast<int>(hundredths / 6000);
    const double minutes = static_cast<double>(hundredths % 6000) / 100;
    if (step >= 1)
        return QStringLiteral("%1°%2").arg(whole).arg(sign);
    const int decimals = step >= minute * 0.999 ? 0 : step >= 0.1 * minute * 0.999 ? 1 : 2;
    return QStringLiteral("%1°%2'%3")
        .arg(whole)
        .arg(minutes, decimals > 0 ? 3 + decimals : 2, 'f', decimals, QLatin1Char('0'))
        .arg(sign);
}

void GraticuleLayer::paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look)
{
    if (!m_isShown())
        return;
    constexpr double wanted = 150; // widget pixels between lines
    const Rect box = frame.coveredBox(0);
    const QRectF view(0, 0, frame.width / frame.pixelsPerPoint,
                      frame.height / frame.pixelsPerPoint);
    const AffineTransform toPixels = frame.toPixels();
    const auto at = [&](double longitude, double ordinate) {
        const Point p = toPixels.map({longitude, ordinate});
        return QPointF(p.x / frame.pixelsPerPoint, p.y / frame.pixelsPerPoint);
    };
    const double degreesPerPixel = frame.pixelsPerPoint / std::hypot(toPixels.a, toPixels.b);
    const double middle = latitudeOf((box.bottom + box.top) / 2);
    const double longitudeStep = stepFor(wanted * look.scale * degreesPerPixel);
    const double latitudeStep =
        stepFor(wanted * look.scale * degreesPerPixel * std::cos(middle * std::numbers::pi / 180));

    QColor ink = look.color("CHGRD");
    const GlassText letters{look.color("CHBLK"), look.color("DEPDW"), 11 * look.scale, false};
    ink.setAlphaF(0.6F);
    const double inset = 10 * look.scale;
    const auto drawLine = [&](const QLineF& whole, const QString& words) {
        const auto line = clipped(whole, view);
        if (!line)
            return;
        painter.setPen(QPen(ink, 1));
        painter.drawLine(*line);
        const double away = letters.width(words) / 2 + inset;
        if (line->length() < 4 * away)
            return;
        const QPointF along(line->dx() / line->length(), line->dy() / line->length());
        const bool steep = std::abs(along.y()) > std::abs(along.x());
        letters.paint(painter, line->p1() + along * (steep ? inset + 6 * look.scale : away), words);
    };
    constexpr double longest = 400; // lines; a guard only
    const double firstLongitude = std::ceil(box.left / longitudeStep);
    for (double i = 0; i < longest && (firstLongitude + i) * longitudeStep <= box.right; ++i) {
        const double longitude = (firstLongitude + i) * longitudeStep;
        drawLine({at(longitude, box.top), at(longitude, box.bottom)},
                 figure(longitude, longitudeStep, "EW"));
    }
    const double highest = std::min(latitudeOf(box.top), 84.0);
    const double firstLatitude = std::ceil(std::max(latitudeOf(box.bottom), -84.0) / latitudeStep);
    for (double i = 0; i < longest && (firstLatitude + i) * latitudeStep <= highest; ++i) {
        const double latitude = (firstLatitude + i) * latitudeStep;
        drawLine({at(box.left, ordinateOf(latitude)), at(box.right, ordinateOf(latitude))},
                 figure(latitude, latitudeStep, "NS"));
    }
}

} // namespace kelvox
