#pragma once

#include "base/Position.h"
#include "base/Result.h"
#include "raster/ChartBytes.h"
#include "raster/Palette.h"
#include "raster/Polynomial.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// What the text header of a BSB/KAP chart says, and where its image begins.
struct BSBHeader {
    std::string name; ///< at most 128 bytes of the file's text, as UTF-8
    std::string number;
    int width = 0; ///< pixels
    int height = 0;
    int dotsPerInch = 0; ///< 0 when not given
    Palettes palettes;
    std::vector<ReferencePoint> referencePoints;
    std::vector<Position> border; ///< polygon of the charted area, in the chart's own datum
    GeoPolynomials polynomials; ///< as given, else fitted to the reference points
    float phaseShift = 0; ///< degrees added to longitudes before the polynomials
    double latitudeShift = 0; ///< degrees to add to the chart's latitudes for WGS 84
    double longitudeShift = 0;
    int scale = 0; ///< denominator, 0 when not given
    bool hasSkew = false;
    float skew = 0; ///< degrees counter-clockwise that bring the picture north up
    std::string datum;
    std::string projection;
    std::string depthUnits;
    std::string soundingDatum;
    std::string edition; ///< date as printed; the order of day and month is not fixed
    std::string noticeDate; ///< of the last notice to mariners put in
    double version = 0;
    bool compressed = false; ///< the image is in the unpublished compressed form
    int depth = 0; ///< bits of a colour number, 1 to 7
    std::size_t imageStart = 0; ///< offset of the first byte after the depth
};

/// Largest width and height taken; more is a broken or hostile header.
inline constexpr int maximumRasterSide = 1 << 18;

/// Whether the bytes are a chart: "BSB/" or "NOS/" at one of the offsets 0 to 1995 of a file of at
/// least 2000 bytes, plainly or with 9 added to every byte as in the older scrambled files.
[[nodiscard]] Result<ChartBytes> findHeader(std::span<const char> file);

/// Reads the header from the file's first byte to the bit depth.
///
/// @param companion text of a geo-referencing file beside the chart, empty when there is none:
/// lines of the same form whose REF, PLY, DTM, CPH and polynomials are taken
[[nodiscard]] Result<BSBHeader> readBSBHeader(const ChartBytes& file,
                                              std::string_view companion = {});

/// Splits header text into logical lines: a line that begins with a space continues the one before,
/// joined by a comma. Lines end at CR, LF or both; empty ones are left out.
[[nodiscard]] std::vector<std::string> logicalLines(std::string_view text);

/// The pieces between "," and "=", trimmed of blanks; empty pieces stay.
[[nodiscard]] std::vector<std::string_view> headerTokens(std::string_view text);

} // namespace kelvox
