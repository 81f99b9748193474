#pragma once

#include "base/Result.h"
#include "presentation/DisplayColor.h"

#include <array>
#include <string_view>
#include <vector>

namespace kelvox {

/// A colour as the presentation library states it: CIE 1931 chromaticity and luminance in cd/m2.
struct CieColor {
    double x = 0;
    double y = 0;
    double luminance = 0;
};

/// Chromaticity of a primary or of a white.
struct Chromaticity {
    double x = 0;
    double y = 0;
};

/// Linear red, green and blue.
using LinearColor = std::array<double, 3>;

/// The library's brightest colour, the deepest water by day, is the display's white.
inline constexpr double libraryWhiteLuminance = 80;

/// The amounts of the three primaries that mix to the colour; the white of the given chromaticity
/// at whiteLuminance is (1, 1, 1). Additive mixture after Grassmann as in SMPTE RP 177: column c of
/// the matrix is (x/y, 1, (1-x-y)/y) of primary c, times the luminance it has in the white.
[[nodiscard]] LinearColor linearFromCie(const CieColor& color,
                                        const std::array<Chromaticity, 3>& primaries,
                                        Chromaticity white, double whiteLuminance);

/// Brings a mixture into what a display can show. What has less than nothing of a primary is paled
/// towards the grey of its own luminance, given as a share of the white; what is too bright is
/// dimmed as a whole. So the hue stays, and nothing becomes brighter than asked for.
[[nodiscard]] LinearColor fitIntoDisplay(LinearColor color, double grey);

/// What a display shows for each drive value 0 to 255, from the calibration file.
///
/// The file has the sections [general] (count, luminance: "cd" or "fl"), [chromaticities] (keys
/// "red x" to "white y") and [red luminance], [green luminance], [blue luminance] with a key for
/// each measured drive value. Chromaticities that are absent are those of sRGB; an absent white is
/// that of the library, (0.28, 0.31).
class MonitorCalibration {
public:
    /// Fails when the table is not complete: a drive value that is not in all three sections,
    /// fewer values than `count`, fewer than two, or a channel without light.
    [[nodiscard]] static Result<MonitorCalibration> parse(std::string_view ini);

    /// Mixes the primaries, each as a share of its full light, and looks the drive values up in the
    /// luminance curves, linearly between measured values.
    [[nodiscard]] DisplayColor color(const CieColor& color) const;
    /// Luminance in cd/m2 of all channels at full drive.
    [[nodiscard]] double whiteLuminance() const;

private:
    struct Entry {
        int drive = 0;
        LinearColor luminance{}; ///< cd/m2, never falling from one entry to the next
    };
    [[nodiscard]] double drive(std::size_t channel, double share) const;

    std::vector<Entry> m_entries; ///< by rising drive value
    std::array<Chromaticity, 3> m_primaries{};
    Chromaticity m_white;
};

/// For a display without calibration: IEC 61966-2-1 (sRGB), 80 cd/m2 being full white.
[[nodiscard]] DisplayColor standardColor(const CieColor& color);

} // namespace kelvox
