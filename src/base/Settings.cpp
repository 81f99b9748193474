#include "base/Settings.h"

#include <charconv>
#include <cmath>
#include <type_traits>

namespace kelvox {

namespace {
double parse(const std::string& text, double fallback)
{
    double value = fallback;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? value : fallback;
}

double asNumber(const Settings::Value& value, double fallback)
{
    return std::visit(
        [&](const auto& v) -> double {
            if constexpr (std::is_same_v<std::decay_t<decltype(v)>, std::string>)
                return parse(v, fallback);
            else
                return static_cast<double>(v);
        },
        value);
}
} // namespace

bool Settings::boolean(std::string_view key, bool fallback) const
{
    const Value* value = find(key);
    if (!value)
        return fallback;
    if (const auto* words = std::get_if<std::string>(value)) {
        if (*words == "true" || *words == "false")
            return *words == "true";
    }
    return asNumber(*value, fallback ? 1 : 0) != 0;
}

long long Settings::integer(std::string_view key, long long fallback) const
{
    const Value* value = find(key);
    if (!value)
        return fallback;
    if (const auto* whole = std::get_if<long long>(value))
        return *whole;
    const double number = asNumber(*value, static_cast<double>(fallback));
    return std::abs(number) < 9e18 ? static_cast<long long>(number) : fallback;
}

double Settings::number(std::string_view key, double fallback) const
{
    const Value* value = find(key);
    return value ? asNumber(*value, fallback) : fallback;
}

std::string Settings::text(std::string_view key, std::string fallback) const
{
    const Value* value = find(key);
    const auto* words = value ? std::get_if<std::string>(value) : nullptr;
    if (words)
        fallback = *words;
    return fallback;
}

const Settings::Value* MemorySettings::find(std::string_view key) const
{
    const auto it = m_values.find(key);
    return it == m_values.end() ? nullptr : &it->second;
}

void MemorySettings::set(std::string_view key, Value value)
{
    m_values.insert_or_assign(std::string(key), std::move(value));
}

} // namespace kelvox
