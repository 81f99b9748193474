#include "base/Strings.h"

#include "base/StringCatalog.h"

#include <cassert>
#include <charconv>
#include <span>
#include <vector>

namespace kelvox {

namespace {
constexpr std::string_view englishTable =
#include "EnglishStrings.inc"
    ;

/// One pass from left to right, so that braces in an argument are never taken for places.
std::string filled(std::string_view pattern, std::span<const std::string_view> arguments)
{
    std::string text;
    while (!pattern.empty()) {
        const std::size_t open = pattern.find('{');
        text += pattern.substr(0, open);
        if (open == std::string_view::npos)
            break;
        pattern.remove_prefix(open);
        std::size_t number = 0;
        const char* const end = pattern.data() + pattern.size();
        const auto [after, error] = std::from_chars(pattern.data() + 1, end, number);
        if (error == std::errc() && after != end && *after == '}' && number < arguments.size()) {
            text += arguments[number];
            pattern.remove_prefix(static_cast<std::size_t>(after - pattern.data()) + 1);
        } else {
            text += '{';
            pattern.remove_prefix(1);
        }
    }
    return text;
}
} // namespace

void Strings::overlay(const Strings& other)
{
    for (const auto& [key, text] : other.m_texts)
        m_texts.insert_or_assign(key, text);
}

std::string Strings::text(std::string_view key, Arguments arguments) const
{
    return filled(text(key), arguments);
}

std::string Strings::counted(std::string_view key, std::size_t count, Arguments arguments) const
{
    const std::string name(key);
    std::string form = name + (count == 0 ? ".zero" : count == 1 ? ".one" : ".other");
    if (!contains(form))
        form = name + ".other";
    const std::string number = std::to_string(count);
    std::vector<std::string_view> all{number};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return filled(text(form), all);
}

const Strings& englishStrings()
{
    static const Strings texts = [] {
        auto parsed = parseStrings(englishTable);
        assert(parsed);
        return parsed ? *std::move(parsed) : Strings();
    }();
    return texts;
}

} // namespace kelvox
