#pragma once

#include "base/Position.h"
#include "raster/Palette.h"
#include "raster/Polynomial.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvox {

/// What writeKap() puts into a chart's header. Text goes in as it is; no commas or line ends.
struct KapDescription {
    std::string name = "UNTITLED";
    std::string number = "1";
    int width = 0;
    int height = 0;
    int depth = 4; ///< bits of a colour number, 1 to 7
    int dotsPerInch = 254;
    int scale = 50'000;
    std::string datum = "WGS84";
    std::string projection = "MERCATOR";
    double projectionParameter = 0; ///< Mercator: latitude of true scale
    double skew = 0; ///< degrees counter-clockwise that bring the picture north up
    std::string depthUnits = "METRES";
    std::string soundingDatum = "LAT";
    std::string edition = "01/01/2024";
    Palette colors, day, dusk, night; ///< entry 0 is not written: charts count from 1
    std::vector<ReferencePoint> referencePoints;
    std::vector<Position> border;
    std::optional<GeoPolynomials> polynomials; ///< left out: readers fit the reference points
    std::optional<double> phaseShift; ///< degrees
    double latitudeShiftSeconds = 0;
    double longitudeShiftSeconds = 0;
    std::string extraLines; ///< whole header lines with CR LF

    /// Forms met in older files.
    enum class HeaderEnd { Plain, LineBefore };
    HeaderEnd headerEnd = HeaderEnd::Plain;
    int firstRowNumber = 1;
    bool writeIndex = true;
    bool scrambled = false; ///< 9 is added to every byte
};

/// Fills a row, top row first, with colour numbers of 1 and above.
using KapRow = std::function<void(int row, std::span<std::uint8_t> colors)>;

/// A whole KAP file. Its header is padded with comment lines to the 2000 bytes that readers expect.
[[nodiscard]] std::string writeKap(const KapDescription& chart, const KapRow& row);

} // namespace kelvox
