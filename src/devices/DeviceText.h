#pragma once

#include "navigation/ChartMarker.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kelvox {

/// What a text field of a receiver can hold: capitals and digits always.
struct TextRule {
    std::size_t longest = 0; ///< characters
    enum class LowerCase { No, Yes } lowerCase = LowerCase::No;
    std::string_view others = {}; ///< characters that are held beside letters and digits
    char substitute = '\0'; ///< stands for a character that is not held; NUL: it is left out
};

/// UTF-8 as the field holds it: letters without their accents, cut, no blanks at the ends.
/// Doing it twice changes nothing more.
[[nodiscard]] std::string deviceText(std::string_view text, const TextRule& rule);

/// The text of a fixed field of a receiver as UTF-8: up to the first NUL, no blanks at the ends.
[[nodiscard]] std::string textFromDevice(std::string_view field);

/// Gives waypoints and routes the names that a receiver can hold, never one name to two of them.
///
/// Receivers that show capitals only take "Bay" and "BAY" for one, so case does not count. Names
/// that fit as they are keep them; of the others, those that would meet end in a number.
class DeviceNames {
public:
    using Renamed = std::vector<std::pair<std::string, std::string>>; ///< the user's, the device's

    explicit DeviceNames(const TextRule& rule)
        : m_rule(rule)
    {
    }
    /// What is to be named later. The same name at the same place is the same waypoint.
    void announce(const Waypoint& waypoint) { announce(key(waypoint), waypoint.name); }
    void announce(std::string key, const std::string& name);
    /// @return the names that had to be changed
    const Renamed& assign();
    /// After assign(), for what was announced.
    [[nodiscard]] const std::string& name(const Waypoint& waypoint) const
    {
        return name(key(waypoint));
    }
    [[nodiscard]] const std::string& name(const std::string& key) const { return m_names.at(key); }

private:
    [[nodiscard]] static std::string key(const Waypoint& waypoint);
    [[nodiscard]] std::string freeName(const std::string& wanted);
    [[nodiscard]] bool take(const std::string& name);

    TextRule m_rule;
    std::vector<std::pair<std::string, std::string>> m_announced; ///< key, name
    std::unordered_map<std::string, std::string> m_names;
    std::unordered_set<std::string> m_taken; ///< in capitals
    std::unordered_map<std::string, unsigned> m_nextNumber;
    Renamed m_renamed;
};

} // namespace kelvox
