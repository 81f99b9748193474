#include "weather/Beaufort.h"

#include <array>
#include <limits>

namespace kelvox {

std::span<const BeaufortRow> beaufortScale()
{
    static constexpr std::array<BeaufortRow, 13> rows = {{
        {0, 0.5, {150, 170, 190}},
        {0.5, 3.5, {110, 165, 215}},
        {3.5, 6.5, {60, 140, 215}},
        {6.5, 10.5, {25, 150, 170}},
        {10.5, 16.5, {35, 160, 80}},
        {16.5, 21.5, {130, 175, 20}},
        {21.5, 27.5, {225, 180, 0}},
        {27.5, 33.5, {240, 130, 0}},
        {33.5, 40.5, {225, 60, 20}},
        {40.5, 47.5, {190, 0, 45}},
        {47.5, 55.5, {165, 0, 115}},
        {55.5, 63.5, {120, 0, 150}},
        {63.5, std::numeric_limits<double>::infinity(), {70, 0, 110}},
    }};
    return rows;
}

} // namespace kelvox
