#include "devices/DeviceText.h"

#include "navigation/PropertyList.h"

#include <fmt/format.h>

#include <array>

namespace kelvox {
namespace {

bool isLower(char c)
{
    return c >= 'a' && c <= 'z';
}

char upper(char c)
{
    return isLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The letter under the accent for U+00C0 to U+00FF; a blank where there is none.
constexpr std::string_view latinLetters =
    "AAAAAAACEEEEIIIIDNOOOOO OUUUUYTsaaaaaaaceeeeiiiidnooooo ouuuuyty";

/// One character of UTF-8 off the front, in ASCII where it has a likeness there, else NUL.
char takeCharacter(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80)
        return static_cast<char>(first);
    unsigned following = 0;
    unsigned last = 0;
    while (!text.empty() && (static_cast<unsigned char>(text.front()) & 0xC0) == 0x80) {
        last = static_cast<unsigned char>(text.front()) & 0x3F;
        text.remove_prefix(1);
        ++following;
    }
    if (first == 0xC3 && following == 1 && latinLetters[last] != ' ')
        return latinLetters[last];
    return '\0';
}

bool isHeld(char c, const TextRule& rule)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || isLower(c)
        || (c != '\0' && rule.others.find(c) != std::string_view::npos);
}

std::string inCapitals(std::string text)
{
    for (char& c : text)
        c = upper(c);
    return text;
}

} // namespace

std::string deviceText(std::string_view text, const TextRule& rule)
{
    std::string held;
    while (!text.empty() && held.size() < rule.longest) {
        char c = takeCharacter(text);
        if (rule.lowerCase == TextRule::LowerCase::No)
            c = upper(c);
        if (c == '\n' || c == '\t' || c == '\r')
            c = ' ';
        if (!isHeld(c, rule))
            c = rule.substitute;
        if (c != '\0' && !(c == ' ' && held.empty()))
            held += c;
    }
    return std::string(trimmed(held));
}

std::string textFromDevice(std::string_view field)
{
    return std::string(trimmed(cleanText(field.substr(0, field.find('\0')))));
}

std::string DeviceNames::key(const Waypoint& waypoint)
{
    return fmt::format("{}\n{} {}", waypoint.name, waypoint.latitude, waypoint.longitude);
}

void DeviceNames::announce(std::string key, const std::string& name)
{
    if (m_names.try_emplace(key).second)
        m_announced.emplace_back(std::move(key), name);
}

bool DeviceNames::take(const std::string& name)
{
    return !name.empty() && m_taken.insert(inCapitals(name)).second;
}

std::string DeviceNames::freeName(const std::string& wanted)
{
    if (take(wanted))
        return wanted;
    const std::string stem = wanted.empty() ? "WP" : wanted;
    auto& number = m_nextNumber.try_emplace(inCapitals(stem), 2U).first->second;
    for (;; ++number) {
        const auto digits = std::to_string(number);
        const auto room = m_rule.longest - std::min(m_rule.longest, digits.size());
        auto name = std::string(trimmed(stem.substr(0, room))) + digits;
        if (take(name))
            return name;
    }
}

const DeviceNames::Renamed& DeviceNames::assign()
{
    for (const auto& [key, name] : m_announced)
        if (deviceText(name, m_rule) == name && take(name))
            m_names[key] = name;
    for (const auto& [key, name] : m_announced) {
        auto& given = m_names[key];
        if (!given.empty())
            continue;
        given = freeName(deviceText(name, m_rule));
        m_renamed.emplace_back(name, given);
    }
    m_announced.clear();
    return m_renamed;
}

} // namespace kelvox
