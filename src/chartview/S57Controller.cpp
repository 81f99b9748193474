#include "chartview/S57Controller.h"

#include "raster/RasterChart.h"

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
// Inches around the equator and along a meridian circle. They differ, so the sheet is 0.16 % taller
// than a true Mercator grid: on purpose.
constexpr float equatorInches = 1'577'762'304.0F;
constexpr float meridianInches = 1'575'118'208.0F;
constexpr double radiansPerDegree = 0.017453292519943295;

/// A counter-clockwise turn about the origin, by degrees brought into 0 to 360.
AffineTransform turn(double degrees)
{
    const double angle = (degrees - 360 * std::floor(degrees / 360)) * radiansPerDegree;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    return {c, s, -s, c, 0, 0};
}
} // namespace

S57Controller::S57Controller(unsigned dpi)
    : m_dpi(std::min(dpi, maximumDpi))
{
    chartSize();
}

void S57Controller::chartSize()
{
    const auto resolution = static_cast<float>(m_dpi);
    const auto denominator = static_cast<float>(m_scale);
    m_sheet.width = resolution * equatorInches / denominator;
    m_sheet.height = resolution * meridianInches / denominator;
}

void S57Controller::setRotate(float degrees)
{
    if (degrees == m_rotate)
        return;
    m_rotate = degrees;
    if (m_rotate != 0) {
        const double angle = (360.0 - m_rotate) * radiansPerDegree;
        m_cos = static_cast<float>(std::cos(angle));
        m_sin = static_cast<float>(std::sin(angle));
    }
    if (m_bsbChart) {
        m_bsbChart->setRotate(degrees);
        calcBSBScale();
    }
}

void S57Controller::setRotatePosition(double longitude, double latitude)
{
    m_rotatePoint = unrotatedPoint({longitude, latitude});
}

float S57Controller::mercatorOrdinate(double latitude)
{
    const float radians = static_cast<float>(latitude) * static_cast<float>(radiansPerDegree);
    return std::log(1.0F / std::cos(radians) + std::tan(radians));
}

Point S57Controller::unrotatedPoint(Position position) const
{
    const double ordinate = mercatorOrdinate(position.latitude);
    return {(position.longitude + 180) / 360 * m_sheet.width,
            m_sheet.height * (ordinate / value85 + 1) * 0.5};
}

Point S57Controller::mercatorPositionToPoint(Position position) const
{
    const Point p = unrotatedPoint(position);
    if (m_rotate == 0)
        return p;
    const Point from = p - m_rotatePoint;
    return {m_rotatePoint.x + from.x * m_cos + from.y * m_sin,
            m_rotatePoint.y - from.x * m_sin + from.y * m_cos};
}

AffineTransform S57Controller::mercatorTransform() const
{
    const double perDegree = m_sheet.width / 360;
    const double perOrdinate = m_sheet.height * 0.5 / value85;
    const Point origin{m_sheet.width / 2, m_sheet.height / 2};
    if (m_rotate == 0)
        return {perDegree, 0, 0, perOrdinate, origin.x, origin.y};
    const double c = m_cos;
    const double s = m_sin;
    const Point from = origin - m_rotatePoint;
    return {perDegree * c,
            -perDegree * s,
            perOrdinate * s,
            perOrdinate * c,
            m_rotatePoint.x + from.x * c + from.y * s,
            m_rotatePoint.y - from.x * s + from.y * c};
}

Position S57Controller::mercatorPointToPosition(Point point) const
{
    if (m_rotate != 0) {
        const Point from = point - m_rotatePoint;
        point = {m_rotatePoint.x + from.x * m_cos - from.y * m_sin,
                 m_rotatePoint.y + from.x * m_sin + from.y * m_cos};
    }
    const auto ordinate =
        static_cast<float>((2 * point.y / m_sheet.height - 1) * static_cast<double>(value85));
    const float latitude = std::atan(std::sinh(ordinate)) * 180.0F / 3.1415927F;
    return {point.x / m_sheet.width * 360 - 180, latitude};
}

void S57Controller::setBSBChart(std::shared_ptr<RasterChart> chart)
{
    m_bsbChart = std::move(chart);
    if (!m_bsbChart)
        return;
    m_bsbChart->setRotate(m_rotate);
    m_bsbChart->resetAngleTransform();
    calcBSBScale();
}

void S57Controller::calcBSBScale()
{
    if (!m_bsbChart)
        return;
    m_bsbOrigin = mercatorPositionToPoint(m_bsbChart->originOnGPSPosition());
    m_bsbExtent = mercatorPositionToPoint(m_bsbChart->extentOnGPSPosition());
    const auto dx = static_cast<float>(std::abs(m_bsbOrigin.x - m_bsbExtent.x) + 1);
    const auto dy = static_cast<float>(std::abs(m_bsbOrigin.y - m_bsbExtent.y) + 1);
    const Point along = m_bsbChart->rotatedPoint({dx, dy});
    const Size pixels = m_bsbChart->size();
    m_bsbScale = static_cast<float>(
        (std::abs(along.x) / pixels.width + std::abs(along.y) / pixels.height) * 0.5);
    const double degrees = static_cast<double>(m_bsbChart->angle()) + m_rotate;
    m_bsbForward = turn(degrees);
    m_bsbInverse = turn(360 - degrees);
}

Point S57Controller::positionToPoint(Position position) const
{
    return m_bsbChart ? bsbPositionToPoint(position) : mercatorPositionToPoint(position);
}

Position S57Controller::pointToPosition(Point point) const
{
    return m_bsbChart ? bsbPointToPosition(point) : mercatorPointToPosition(point);
}

Point S57Controller::bsbPositionToPoint(Position position) const
{
    const Point turned = m_bsbForward.map(m_bsbChart->positionToPoint(position));
    return m_bsbOrigin + turned * m_bsbScale;
}

Position S57Controller::bsbPointToPosition(Point point) const
{
    const Point pixels = (point - m_bsbOrigin) * (1.0 / m_bsbScale);
    return m_bsbChart->pointToPosition(m_bsbInverse.map(pixels));
}

} // namespace kelvox
