#pragma once

#include "navigation/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

/// "2026-07-04T12:30:05", with a fraction and a zone ("Z", "+02:00", "-0330") where they follow;
/// UTC without a zone.
[[nodiscard]] std::optional<Date> parseIsoDate(std::string_view text);

/// A date as real programs write it, the time of day and the zone optional, e.g. "4 Jul 2026
/// 12:30", "Sat, 04 Jul 2026 12:30:05 +0200", "07/04/2026 0:30 PM" (month first), "4.7.2026" (day
/// first), "2026/07/04", "20260704 123005", or seconds since 1970. UTC without a zone.
[[nodiscard]] std::optional<Date> parseLenientDate(std::string_view text);

[[nodiscard]] std::string isoDate(Date date); ///< UTC, "%Y-%m-%dT%H:%M:%SZ"
[[nodiscard]] std::string plainDate(Date date); ///< "2026-07-04 12:30:05 +0000"

} // namespace kelvox
