#pragma once

#include "app/ChartLayer.h"

#include <functional>

namespace kelvox {

/// Lines of latitude and longitude at round steps, with their figures at the edge of the view.
class GraticuleLayer final : public ChartLayer {
public:
    /// @param isShown asked at each painting
    explicit GraticuleLayer(std::function<bool()> isShown)
        : m_isShown(std::move(isShown))
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

    /// The round step in degrees that is at least as wide as asked.
    [[nodiscard]] static double stepFor(double degrees);
    /// A figure of a line, with as many decimals as the step needs.
    [[nodiscard]] static QString figure(double degrees, double step, const char* signs);

private:
    std::function<bool()> m_isShown;
};

} // namespace kelvox
