#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace kelvox {

using IsTaken = std::function<bool(const std::string& name)>;

/// The first free name of the form "<prefix>%04u" from 1 to 9999; nothing when all are taken.
/// @param lowestFree no number below it is free; moved on to the number found
[[nodiscard]] std::optional<std::string> firstFreeName(std::string_view prefix, int& lowestFree,
                                                       const IsTaken& isTaken);
/// The first free one of "<name> 2", "<name> 3" and so on.
[[nodiscard]] std::string numberedName(const std::string& name, const IsTaken& isTaken);

} // namespace kelvox
