#pragma once

#include "base/NoValue.h"
#include "base/Result.h"
#include "base/Strings.h"
#include "navigation/UnitsModel.h"

#include <string>
#include <string_view>

namespace kelvox {

// The formatters turn a stored value (knots, nautical miles, feet, degrees Fahrenheit, degrees,
// hours) into the text that panels and lists show, in the unit of the moment. `noValue` stands for
// a value that is not known. A unit code the program does not know gives an empty text. The units
// and strings must outlive the formatter.

class ValueFormatter {
public:
    explicit ValueFormatter(const UnitsModel& units = UnitsModel::units())
        : m_units(units)
    {
    }
    virtual ~ValueFormatter() = default;
    [[nodiscard]] virtual std::string stringForObjectValue(double value) const = 0;
    /// The text is one number and nothing behind it; it is taken as it stands, in no unit.
    [[nodiscard]] static Result<double> getObjectValue(std::string_view text);

protected:
    [[nodiscard]] const UnitsModel& units() const { return m_units; }

private:
    const UnitsModel& m_units;
};

/// Speed over ground or through water, knots.
class NSSogFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    void setShowUnits(bool show) { m_showUnits = show; }
    [[nodiscard]] std::string stringForObjectValue(double knots) const override;

private:
    bool m_showUnits = true;
};

/// Wind speed, knots.
class NSAwsFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double knots) const override;
};

/// Distance to a waypoint, nautical miles; "---" when unknown or negative.
class NSDtwFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    void setShowFeet(bool feet) { m_showFeet = feet; } ///< else yards
    void setShowFractional(bool show) { m_showFractional = show; }
    void setShowSign(bool show) { m_showSign = show; }
    [[nodiscard]] std::string stringForObjectValue(double miles) const override;

private:
    bool m_showFeet = true;
    bool m_showFractional = true;
    bool m_showSign = false;
};

/// Cross-track error, nautical miles.
class NSXteFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double miles) const override;
};

/// Course or bearing, degrees true; shown magnetic on demand.
class NSCogFormatter final : public ValueFormatter {
public:
    explicit NSCogFormatter(const Strings& strings, const UnitsModel& units = UnitsModel::units())
        : ValueFormatter(units)
        , m_strings(strings)
    {
    }
    void setMagnetic(bool magnetic) { m_magnetic = magnetic; }
    void setVariation(float degrees) { m_variation = degrees; } ///< east positive
    [[nodiscard]] std::string stringForObjectValue(double degrees) const override;

private:
    const Strings& m_strings;
    bool m_magnetic = false;
    float m_variation = 0;
};

/// Time to go, hours.
class NSEtaFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double hours) const override;
};

/// Water depth, feet.
class NSDptFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double feet) const override;
};

/// Temperature, degrees Fahrenheit.
class NSTmpFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double fahrenheit) const override;
};

/// Wind angle relative to the bow, degrees, starboard positive.
class NSAwaFormatter final : public ValueFormatter {
public:
    explicit NSAwaFormatter(const Strings& strings, const UnitsModel& units = UnitsModel::units())
        : ValueFormatter(units)
        , m_strings(strings)
    {
    }
    [[nodiscard]] std::string stringForObjectValue(double degrees) const override;

private:
    const Strings& m_strings;
};

/// Lengths and heights, feet.
class NSLenFormatter final : public ValueFormatter {
public:
    using ValueFormatter::ValueFormatter;
    [[nodiscard]] std::string stringForObjectValue(double feet) const override;
};

} // namespace kelvox
