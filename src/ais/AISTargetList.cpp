#include "ais/AISTargetList.h"

#include <algorithm>
#include <charconv>

namespace kelvox {
namespace {

using Column = AISTargetList::Column;

/// What a row is sorted by: a number, or a text where the column has texts.
struct SortKey {
    bool known = false;
    double number = 0;
    std::string_view text = {};
    std::int32_t mmsi = 0;
};

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

SortKey keyOf(const AISPosition& target, Column column)
{
    const auto number = [&target](double value, bool known) {
        return SortKey{.known = known, .number = value, .mmsi = target.mmsi()};
    };
    const auto value = [&number](float measured) { return number(measured, isKnown(measured)); };
    const auto text = [&target](const std::string& written) {
        return SortKey{.known = !written.empty(), .text = written, .mmsi = target.mmsi()};
    };
    switch (column) {
    case Column::Name:
        return text(target.name());
    case Column::CallSign:
        return text(target.callSign());
    case Column::Destination:
        return text(target.destination());
    case Column::Mmsi:
        return number(target.mmsi(), true);
    case Column::Type:
        return number(target.type(), target.type() != 0);
    case Column::Class:
        return number(static_cast<int>(target.equipmentClass()),
                      target.equipmentClass() != AISClass::Unknown);
    case Column::Distance:
        return value(target.distanceFromPosition());
    case Column::Bearing:
        return value(target.bearingFromPosition());
    case Column::Speed:
        return value(target.sog());
    case Column::Course:
        return value(target.cog());
    case Column::Heading:
        return value(target.hdg());
    case Column::Length:
        return number(target.length(), target.length() > 0);
    case Column::LastReport:
        return number(-std::chrono::duration<double>(target.date().time_since_epoch()).count(),
                      true);
    }
    return {};
}

int compareTexts(std::string_view a, std::string_view b)
{
    const auto common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i)
        if (const int difference = lower(a[i]) - lower(b[i]); difference != 0)
            return difference;
    return a.size() < b.size() ? -1 : a.size() > b.size();
}

bool isBefore(const SortKey& a, const SortKey& b, AISTargetList::Order order)
{
    if (a.known != b.known)
        return a.known;
    int difference = a.number < b.number ? -1 : a.number > b.number;
    if (difference == 0)
        difference = compareTexts(a.text, b.text);
    if (difference == 0 || !a.known)
        return a.mmsi < b.mmsi;
    return order == AISTargetList::Order::Ascending ? difference < 0 : difference > 0;
}

bool holds(std::string_view text, std::string_view lowerCase)
{
    return std::search(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                       [](char a, char b) { return lower(a) == b; })
        != text.end();
}

} // namespace

void AISTargetList::sortBy(Column column, Order order)
{
    m_column = column;
    m_order = order;
    reload();
}

void AISTargetList::search(std::string_view text)
{
    m_search.assign(text);
    std::transform(m_search.begin(), m_search.end(), m_search.begin(), lower);
    reload();
}

bool AISTargetList::isWanted(const AISPosition& target) const
{
    if (m_search.empty())
        return true;
    char digits[12];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), target.mmsi()).ptr;
    return holds(target.name(), m_search) || holds(target.callSign(), m_search)
        || holds(target.destination(), m_search)
        || holds({digits, static_cast<std::size_t>(end - digits)}, m_search);
}

void AISTargetList::reload()
{
    std::vector<SortKey> keys;
    keys.reserve(m_model.count());
    for (const auto* target : m_model.positionEnumerator())
        if (isWanted(*target))
            keys.push_back(keyOf(*target, m_column));
    std::sort(keys.begin(), keys.end(),
              [this](const SortKey& a, const SortKey& b) { return isBefore(a, b, m_order); });
    m_rows.resize(keys.size());
    std::transform(keys.begin(), keys.end(), m_rows.begin(),
                   [](const SortKey& key) { return key.mmsi; });
    if (m_selected && !m_model.find(*m_selected))
        m_selected.reset();
}

std::optional<std::size_t> AISTargetList::selectedRow() const
{
    if (!m_selected)
        return std::nullopt;
    const auto it = std::find(m_rows.begin(), m_rows.end(), *m_selected);
    if (it == m_rows.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - m_rows.begin());
}

} // namespace kelvox
