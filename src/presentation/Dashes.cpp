#include "presentation/Dashes.h"

#include <cmath>

namespace kelvox {

void appendDashes(std::span<const Point> line, Dashes dashes, double along, Path& result)
{
    const double period = dashes.period();
    if (line.empty() || !(dashes.on > 0) || !(dashes.off > 0))
        return;
    double phase = along - period * std::floor(along / period);
    bool drawing = phase < dashes.on;
    if (drawing)
        result.moveTo(line.front());
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point a = line[i - 1];
        const Point step = line[i] - a;
        const double length = std::hypot(step.x, step.y);
        double walked = 0;
        for (;;) {
            const double left = (drawing ? dashes.on : period) - phase;
            if (!(walked + left < length))
                break;
            walked += left;
            const Point at = a + step * (walked / length);
            if (drawing)
                result.lineTo(at);
            else
                result.moveTo(at);
            phase = drawing ? dashes.on : 0;
            drawing = !drawing;
        }
        phase += length - walked;
        if (drawing && length > 0)
            result.lineTo(line[i]);
    }
}

} // namespace kelvox
