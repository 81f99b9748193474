#include "presentation/S52Module.h"

#include "presentation/TextFields.h"

#include <optional>
#include <utility>

namespace kelvox {

namespace {
constexpr std::size_t headLength = 9;

bool isAccepted(std::string_view line)
{
    return line.size() >= headLength
        && static_cast<std::size_t>(integerValue(line.substr(4, 5))) + headLength == line.size();
}
} // namespace

std::string_view S52Field::fieldIdentification() const
{
    return part(fieldString, 0, 4);
}

std::string_view S52Field::fieldValue() const
{
    return part(fieldString, headLength);
}

std::vector<S52Module> S52Module::modules(const std::vector<std::string>& lines)
{
    std::vector<S52Module> result;
    std::optional<S52Module> open;
    for (const std::string& line : lines) {
        if (!isAccepted(line))
            continue;
        const std::string_view tag = part(line, 0, 4);
        if (tag == "0001") {
            open.emplace();
        } else if (tag == "****") {
            if (open)
                result.push_back(std::move(*open));
            open.reset();
        } else if (open) {
            open->s52FieldsArray.push_back({line.substr(0, line.rfind(S52Field::unitSeparator))});
        }
    }
    return result;
}

} // namespace kelvox
