#include "navigation/RecordNames.h"

#include <fmt/format.h>

namespace kelvox {

std::optional<std::string> firstFreeName(std::string_view prefix, int& lowestFree,
                                         const IsTaken& isTaken)
{
    for (; lowestFree <= 9999; ++lowestFree) {
        auto name = fmt::format("{}{:04}", prefix, lowestFree);
        if (!isTaken(name))
            return name;
    }
    return std::nullopt;
}

std::string numberedName(const std::string& name, const IsTaken& isTaken)
{
    for (int number = 2;; ++number)
        if (auto numbered = fmt::format("{} {}", name, number); !isTaken(numbered))
            return numbered;
}

} // namespace kelvox
