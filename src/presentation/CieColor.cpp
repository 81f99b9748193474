#include "presentation/CieColor.h"

#include "presentation/TextFields.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

namespace kelvox {

namespace {
constexpr std::array<Chromaticity, 3> srgbPrimaries{{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}}};
constexpr Chromaticity libraryWhite{0.28, 0.31};
constexpr Chromaticity d65{0.3127, 0.3290};
constexpr double candelasPerFootLambert = 3.42; // on purpose: the exact factor is 3.426

constexpr std::array<const char*, 3> channelNames{"red", "green", "blue"};

using Matrix = std::array<LinearColor, 3>; // rows

LinearColor tristimulus(Chromaticity c)
{
    return {c.x / c.y, 1, (1 - c.x - c.y) / c.y};
}

double determinant(const LinearColor& a, const LinearColor& b, const LinearColor& c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - b[0] * (a[1] * c[2] - a[2] * c[1])
        + c[0] * (a[1] * b[2] - a[2] * b[1]);
}

/// The factors by which the three columns add up to the target, by Cramer's rule.
LinearColor mixture(const Matrix& columns, const LinearColor& target)
{
    const double whole = determinant(columns[0], columns[1], columns[2]);
    return {determinant(target, columns[1], columns[2]) / whole,
            determinant(columns[0], target, columns[2]) / whole,
            determinant(columns[0], columns[1], target) / whole};
}

std::uint8_t toByte(double value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

using Section = std::map<std::string, std::string, std::less<>>;

std::map<std::string, Section, std::less<>> readSections(std::string_view ini)
{
    std::map<std::string, Section, std::less<>> sections;
    Section* current = nullptr;
    forEachPart(ini, '\n', [&](std::string_view line) {
        line = trimmed(line);
        if (line.empty() || line.front() == ';' || line.front() == '#')
            return;
        if (line.front() == '[' && line.back() == ']') {
            current = &sections[std::string(trimmed(line.substr(1, line.size() - 2)))];
            return;
        }
        const auto equals = line.find('=');
        if (current && equals != std::string_view::npos)
            current->insert_or_assign(std::string(trimmed(line.substr(0, equals))),
                                      std::string(trimmed(line.substr(equals + 1))));
    });
    return sections;
}

const std::string* find(const Section& section, const std::string& key)
{
    const auto it = section.find(key);
    return it == section.end() ? nullptr : &it->second;
}

void readChromaticity(const Section& section, const std::string& name, Chromaticity& into)
{
    const std::string* x = find(section, name + " x");
    const std::string* y = find(section, name + " y");
    if (x && y && decimalValue(*y) > 0)
        into = {decimalValue(*x), decimalValue(*y)};
}
} // namespace

LinearColor linearFromCie(const CieColor& color, const std::array<Chromaticity, 3>& primaries,
                          Chromaticity white, double whiteLuminance)
{
    if (!(color.luminance > 0) || !(color.y > 0))
        return {};
    const Matrix columns{tristimulus(primaries[0]), tristimulus(primaries[1]),
                         tristimulus(primaries[2])};
    const LinearColor shares = mixture(columns, tristimulus(white));
    const LinearColor light = mixture(columns, tristimulus({color.x, color.y}));
    LinearColor result{};
    for (std::size_t c = 0; c < 3; ++c)
        result[c] = light[c] / shares[c] * color.luminance / whiteLuminance;
    return result;
}

LinearColor fitIntoDisplay(LinearColor color, double grey)
{
    for (double& part : color)
        if (!std::isfinite(part))
            part = 0;
    const double least = *std::min_element(color.begin(), color.end());
    if (least < 0) {
        const double paling = grey > 0 ? -least / (grey - least) : 1;
        for (double& part : color)
            part = std::max(0.0, part + paling * (std::max(grey, 0.0) - part));
    }
    const double brightest = *std::max_element(color.begin(), color.end());
    if (brightest > 1)
        for (double& part : color)
            part /= brightest;
    return color;
}

Result<MonitorCalibration> MonitorCalibration::parse(std::string_view ini)
{
    const auto sections = readSections(ini);
    const auto section = [&](const std::string& name) {
        const auto it = sections.find(name);
        return it == sections.end() ? Section() : it->second;
    };
    const Section general = section("general");
    const std::string* unit = find(general, "luminance");
    const double factor = unit && *unit == "fl" ? candelasPerFootLambert : 1;

    MonitorCalibration calibration;
    calibration.m_primaries = srgbPrimaries;
    calibration.m_white = libraryWhite;
    const Section chromaticities = section("chromaticities");
    for (std::size_t c = 0; c < 3; ++c)
        readChromaticity(chromaticities, channelNames[c], calibration.m_primaries[c]);
    readChromaticity(chromaticities, "white", calibration.m_white);

    const std::array<Section, 3> curves{section("red luminance"), section("green luminance"),
                                        section("blue luminance")};
    for (int drive = 0; drive <= 255; ++drive) {
        const std::string key = std::to_string(drive);
        if (!find(curves[0], key))
            continue;
        Entry entry{drive, {}};
        for (std::size_t c = 0; c < 3; ++c) {
            const std::string* value = find(curves[c], key);
            if (!value)
                return failure(Error::Code::Truncated,
                               "drive value " + key + " has no " + channelNames[c] + " luminance");
            entry.luminance[c] = std::clamp(decimalValue(*value) * factor, 0.0, 1e6);
            // A display that darkens when driven harder is noise of the measurement.
            if (!calibration.m_entries.empty())
                entry.luminance[c] =
                    std::max(entry.luminance[c], calibration.m_entries.back().luminance[c]);
        }
        calibration.m_entries.push_back(entry);
    }
    const std::string* count = find(general, "count");
    const auto wanted = static_cast<std::size_t>(std::max(2, count ? integerValue(*count) : 0));
    if (calibration.m_entries.size() < wanted)
        return failure(Error::Code::Truncated,
                       "calibration holds " + std::to_string(calibration.m_entries.size()) + " of "
                           + std::to_string(wanted) + " drive values");
    for (std::size_t c = 0; c < 3; ++c)
        if (!(calibration.m_entries.back().luminance[c] > 0))
            return failure(Error::Code::OutOfRange,
                           std::string("the ") + channelNames[c] + " channel has no light");
    return calibration;
}

double MonitorCalibration::whiteLuminance() const
{
    const LinearColor& full = m_entries.back().luminance;
    return full[0] + full[1] + full[2];
}

double MonitorCalibration::drive(std::size_t channel, double share) const
{
    const double wanted = share * m_entries.back().luminance[channel];
    const auto above = std::lower_bound(
        m_entries.begin(), m_entries.end(), wanted,
        [channel](const Entry& entry, double value) { return entry.luminance[channel] < value; });
    if (above == m_entries.begin())
        return above->drive;
    if (above == m_entries.end())
        return m_entries.back().drive;
    const Entry& below = *(above - 1);
    const double step = above->luminance[channel] - below.luminance[channel];
    const double part = (wanted - below.luminance[channel]) / step;
    return below.drive + part * (above->drive - below.drive);
}

DisplayColor MonitorCalibration::color(const CieColor& color) const
{
    const LinearColor linear =
        fitIntoDisplay(linearFromCie(color, m_primaries, m_white, whiteLuminance()),
                       color.luminance / whiteLuminance());
    return {toByte(drive(0, linear[0])), toByte(drive(1, linear[1])), toByte(drive(2, linear[2]))};
}

DisplayColor standardColor(const CieColor& color)
{
    const LinearColor linear =
        fitIntoDisplay(linearFromCie(color, srgbPrimaries, d65, libraryWhiteLuminance),
                       color.luminance / libraryWhiteLuminance);
    const auto coded = [](double v) {
        return toByte(255 * (v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055));
    };
    return {coded(linear[0]), coded(linear[1]), coded(linear[2])};
}

} // namespace kelvox
