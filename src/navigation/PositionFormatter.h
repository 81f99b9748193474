#pragma once

#include "base/Result.h"
#include "base/Strings.h"
#include "navigation/UnitsModel.h"

#include <string>
#include <string_view>

namespace kelvox {

/// One axis of a position as text in the user's position format, and back. UTF-8.
///
/// Every displayed text of the formats is read back within its last digit (format 3: 0.1 second,
/// because seconds above 59.9 show as 59.9). Longitude 0 is written west, latitude 0 north, on
/// purpose. Both references must outlive the formatter.
class NSPositionFormatter {
public:
    enum Orientation { Latitude, Longitude };
    NSPositionFormatter(int orientation, const Strings& strings,
                        const UnitsModel& units = UnitsModel::units())
        : m_orientation(orientation)
        , m_strings(strings)
        , m_units(units)
    {
    }
    /// Two leading blanks on latitudes, so that they stand in line with longitudes.
    void setAlign(bool align) { m_align = align; }
    void setPositionFormat1MinutesHighPrecision(bool high) { m_highPrecision = high; }

    /// Empty for an unknown position and for a format the program does not know.
    [[nodiscard]] std::string stringForObjectValue(double degrees) const;

    /// Reads text in the current format. Blanks are allowed between the parts; the hemisphere
    /// letter is required. The error carries the localised message and the byte where reading
    /// stopped.
    [[nodiscard]] Result<double> getObjectValue(std::string_view text) const;

    /// While typing: only digits, the point and hemisphere letters.
    [[nodiscard]] static bool isPartialStringValid(std::string_view text);

    /// The field of an NMEA sentence: degrees and minutes without separator, without hemisphere.
    [[nodiscard]] std::string nmeaFormat(double degrees) const;

private:
    [[nodiscard]] bool isLatitude() const { return m_orientation == Latitude; }
    [[nodiscard]] char hemisphere(double degrees) const;

    int m_orientation;
    const Strings& m_strings;
    const UnitsModel& m_units;
    bool m_align = false;
    bool m_highPrecision = true;
};

} // namespace kelvox
