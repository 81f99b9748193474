#include "raster/KapWriter.h"

#include <array>
#include <cstddef>
#include <string_view>

#include <fmt/format.h>

namespace kelvox {

namespace {
constexpr std::string_view newLine = "\r\n";
constexpr std::size_t smallestFile = 2000;

void addPalette(std::string& text, std::string_view keyword, const Palette& palette)
{
    for (std::size_t i = 1; i < palette.size(); ++i)
        text += fmt::format("{}/{},{},{},{}\r\n", keyword, i, palette[i].red, palette[i].green,
                            palette[i].blue);
}

void addPolynomial(std::string& text, std::string_view keyword, const Polynomial& polynomial)
{
    text += fmt::format("{}/{}", keyword, polynomial.level);
    constexpr std::array<std::size_t, 6> terms{0, 3, 6, 10, 11, 12};
    const std::size_t count =
        polynomial.level >= 0 && polynomial.level <= 5 ? terms[polynomial.level] : 12;
    for (std::size_t i = 0; i < count; ++i)
        text += fmt::format("{}{:.16g}", i > 0 && i % 3 == 0 ? "\r\n    " : ",",
                            polynomial.coefficients[i]);
    text += newLine;
}

std::string headerText(const KapDescription& chart)
{
    std::string text = fmt::format(
        "VER/2.0\r\nBSB/NA={}\r\n    NU={},RA={},{},DU={}\r\n"
        "KNP/SC={},GD={},PR={},PP={:.6f},PI=UNKNOWN\r\n    SP=UNKNOWN,SK={:.7f},TA={:.7f}\r\n"
        "    UN={},SD={},DX=UNKNOWN,DY=UNKNOWN\r\nCED/SE=1,RE=1,ED={}\r\nOST/1\r\nIFM/{}\r\n",
        chart.name, chart.number, chart.width, chart.height, chart.dotsPerInch, chart.scale,
        chart.datum, chart.projection, chart.projectionParameter, chart.skew, chart.skew + 90,
        chart.depthUnits, chart.soundingDatum, chart.edition, chart.depth);
    addPalette(text, "RGB", chart.colors);
    addPalette(text, "DAY", chart.day);
    addPalette(text, "DSK", chart.dusk);
    addPalette(text, "NGT", chart.night);
    for (std::size_t i = 0; i < chart.referencePoints.size(); ++i) {
        const auto& point = chart.referencePoints[i];
        text += fmt::format("REF/{},{},{},{:.10f},{:.10f}\r\n", i + 1, point.x, point.y,
                            point.latitude, point.longitude);
    }
    for (std::size_t i = 0; i < chart.border.size(); ++i)
        text += fmt::format("PLY/{},{:.10f},{:.10f}\r\n", i + 1, chart.border[i].latitude,
                            chart.border[i].longitude);
    text += fmt::format("DTM/{:.6f},{:.6f}\r\n", chart.latitudeShiftSeconds,
                        chart.longitudeShiftSeconds);
    if (chart.phaseShift)
        text += fmt::format("CPH/{:.10f}\r\n", *chart.phaseShift);
    if (chart.polynomials) {
        addPolynomial(text, "WPX", chart.polynomials->wpx);
        addPolynomial(text, "PWX", chart.polynomials->pwx);
        addPolynomial(text, "WPY", chart.polynomials->wpy);
        addPolynomial(text, "PWY", chart.polynomials->pwy);
    }
    text += chart.extraLines;
    while (text.size() < smallestFile)
        text += "! This line fills the header up to the length that readers expect.\r\n";
    return text;
}

/// Groups of seven bits, most significant first, the top bit set on all but the last.
void addNumber(std::string& bytes, unsigned value)
{
    int shift = 28;
    while (shift > 0 && value >> shift == 0)
        shift -= 7;
    for (; shift > 0; shift -= 7)
        bytes += static_cast<char>(0x80 | (value >> shift & 0x7F));
    bytes += static_cast<char>(value & 0x7F);
}

void addRun(std::string& bytes, int depth, std::uint8_t color, unsigned length)
{
    const int countBits = 7 - depth;
    const unsigned count = length - 1;
    int groups = 0; // of seven bits after the first byte
    while (count >> (7 * groups) >= 1U << countBits)
        ++groups;
    const unsigned first = static_cast<unsigned>(color) << countBits | count >> (7 * groups);
    bytes += static_cast<char>(first | (groups > 0 ? 0x80U : 0U));
    while (groups-- > 0)
        bytes += static_cast<char>((count >> (7 * groups) & 0x7F) | (groups > 0 ? 0x80U : 0U));
}

void addRow(std::string& bytes, int depth, std::span<const std::uint8_t> colors)
{
    for (std::size_t start = 0; start < colors.size();) {
        std::size_t end = start + 1;
        while (end < colors.size() && colors[end] == colors[start])
            ++end;
        addRun(bytes, depth, colors[start], static_cast<unsigned>(end - start));
        start = end;
    }
    bytes += '\0';
}

void addBigEndian(std::string& bytes, std::size_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
}
} // namespace

std::string writeKap(const KapDescription& chart, const KapRow& row)
{
    std::string bytes = headerText(chart);
    if (chart.headerEnd == KapDescription::HeaderEnd::LineBefore)
        bytes += "\x1A\r\n";
    bytes += '\x1A';
    bytes += '\0';
    bytes += static_cast<char>(chart.depth);

    std::vector<std::size_t> offsets;
    std::vector<std::uint8_t> colors(static_cast<std::size_t>(chart.width));
    for (int y = 0; y < chart.height; ++y) {
        offsets.push_back(bytes.size());
        row(y, colors);
        addNumber(bytes, static_cast<unsigned>(y + chart.firstRowNumber));
        addRow(bytes, chart.depth, colors);
    }
    if (chart.writeIndex) {
        offsets.push_back(bytes.size());
        for (const std::size_t offset : offsets)
            addBigEndian(bytes, offset);
    }
    if (chart.scrambled)
        for (char& byte : bytes)
            byte = static_cast<char>(byte + 9);
    return bytes;
}

} // namespace kelvox
