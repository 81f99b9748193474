#pragma once

#include "base/Position.h"
#include "base/Rect.h"

#include <memory>

namespace kelvox {

class RasterChart;

/// An affine transform of the plane: (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    [[nodiscard]] constexpr Point map(Point p) const
    {
        return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty};
    }
};

/// Maps positions to view points and back.
///
/// View points are display points on the chart sheet: x grows eastwards from 180° W, y northwards
/// from 85° S. Positions poleward of 85° map outside the sheet; nothing is clamped. With a raster
/// chart attached, positionToPoint() and pointToPosition() lie on that chart instead.
/// A copy is a snapshot that another thread may use while no raster chart is attached.
class S57Controller {
public:
    static constexpr unsigned maximumDpi = 66;
    static constexpr float value85 = 3.1313007F; ///< Mercator ordinate of latitude 85°

    /// @param dpi screen resolution in dots per inch; more than 66 counts as 66
    explicit S57Controller(unsigned dpi);

    /// The scale denominator, e.g. 50'000 for 1:50 000. Takes effect at chartSize().
    void setScale(int denominator) { m_scale = denominator; }
    [[nodiscard]] int scale() const { return m_scale; }
    [[nodiscard]] unsigned dpi() const { return m_dpi; }
    /// Recomputes the size of the sheet from resolution and scale.
    void chartSize();
    /// View points around 360° of longitude and from 85° S to 85° N.
    [[nodiscard]] Size sheet() const { return m_sheet; }

    /// Degrees by which the chart is turned counter-clockwise (y grows upward); 0 turns it off.
    void setRotate(float degrees);
    [[nodiscard]] float rotate() const { return m_rotate; }
    /// The pivot of the rotation.
    void setRotatePosition(double longitude, double latitude);
    /// The same by an unrotated view point, which single precision cannot hold as a position.
    void setRotatePoint(Point pivot) { m_rotatePoint = pivot; }
    [[nodiscard]] Point rotatePoint() const { return m_rotatePoint; }
    void setCourseUp(bool on) { m_courseUp = on; }
    [[nodiscard]] bool courseUp() const { return m_courseUp; }

    /// Attaches a raster chart, or none with null.
    void setBSBChart(std::shared_ptr<RasterChart> chart);
    [[nodiscard]] const std::shared_ptr<RasterChart>& bsbChart() const { return m_bsbChart; }
    /// Recomputes the mapping onto the raster chart; done when one is attached and at each turn.
    void calcBSBScale();
    [[nodiscard]] float bsbScale() const { return m_bsbScale; } ///< view points per raster pixel

    [[nodiscard]] Point positionToPoint(Position position) const;
    [[nodiscard]] Position pointToPosition(Point point) const;
    [[nodiscard]] Point mercatorPositionToPoint(Position position) const;
    /// Inverse in single precision: the latitude comes back within 5e-5 degrees up to 70° and
    /// within 2e-4 degrees up to 85°.
    [[nodiscard]] Position mercatorPointToPosition(Point point) const;
    [[nodiscard]] Point bsbPositionToPoint(Position position) const;
    [[nodiscard]] Position bsbPointToPosition(Point point) const;

    /// The Mercator ordinate ln(1/cos φ + tan φ) in single precision, on purpose: every place of a
    /// chart goes through it. Not finite at and beyond the poles.
    [[nodiscard]] static float mercatorOrdinate(double latitude);
    /// Longitude in degrees and mercatorOrdinate() to the view point, rotation included: what
    /// mercatorPositionToPoint() does after its logarithm, for whoever has kept the ordinate.
    [[nodiscard]] AffineTransform mercatorTransform() const;

private:
    [[nodiscard]] Point unrotatedPoint(Position position) const;

    unsigned m_dpi;
    int m_scale = 200'000;
    Size m_sheet;
    float m_rotate = 0;
    float m_cos = 1; ///< of 360° - rotate
    float m_sin = 0;
    Point m_rotatePoint;
    bool m_courseUp = false;
    std::shared_ptr<RasterChart> m_bsbChart;
    float m_bsbScale = 1;
    Point m_bsbOrigin;
    Point m_bsbExtent;
    AffineTransform m_bsbForward;
    AffineTransform m_bsbInverse;
};

} // namespace kelvox
