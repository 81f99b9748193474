#pragma once

#include "support/GribWriter.h"

#include <cmath>
#include <string>

namespace kelvox {

/// Wind and pressure over the demo waters every three hours.
inline std::string windForecast(int steps)
{
    constexpr int columns = 61;
    constexpr int rows = 61;
    std::string file;
    for (int step = 0; step < steps; ++step)
        for (const int parameter : {33, 34, 2}) {
            GribSpec spec{.parameter = parameter,
                          .levelType = parameter == 2 ? 102 : 105,
                          .level = parameter == 2 ? 0 : 10,
                          .p1 = 3 * step,
                          .columns = columns,
                          .rows = rows,
                          .latitude = 55'000,
                          .longitude = -35'000,
                          .lastLatitude = 40'000,
                          .lastLongitude = -20'000,
                          .columnStep = 250,
                          .rowStep = 250};
            spec.values.clear();
            for (int i = 0; i < columns * rows; ++i) {
                const double wave = std::sin((i % columns + step) / 9.0) * 12;
                spec.values.emplace_back(parameter == 2 ? 101'300 + wave * 90
                                                        : wave + i / columns / 6.0);
            }
            file += GribWriter::message(spec);
        }
    return file;
}

} // namespace kelvox
