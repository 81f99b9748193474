#include "ais/AISModel.h"

#include <algorithm>

namespace kelvox {
namespace {

auto placeOf(const std::vector<AISPosition*>& sorted, std::int32_t mmsi)
{
    return std::lower_bound(
        sorted.begin(), sorted.end(), mmsi,
        [](const AISPosition* position, std::int32_t key) { return position->mmsi() < key; });
}

} // namespace

AISModel& AISModel::ais()
{
    static const SystemClock clock;
    static AISModel model(clock);
    return model;
}

AISPosition* AISModel::find(std::int32_t mmsi) const
{
    const auto it = m_positions.find(mmsi);
    return it == m_positions.end() ? nullptr : it->second.get();
}

AISPosition* AISModel::aisPositionWithMMSI(std::int32_t mmsi)
{
    if (auto* known = find(mmsi))
        return known;
    if (count() >= maximumCount)
        return nullptr;
    auto& made = m_positions.emplace(mmsi, std::make_unique<AISPosition>(mmsi)).first->second;
    made->markDate(m_clock.now());
    m_sorted.push_back(made.get());
    sortPositions();
    reloadData();
    return made.get();
}

void AISModel::sortPositions()
{
    // All but the last are in order already.
    const auto last = m_sorted.end() - 1;
    const auto place = std::upper_bound(
        m_sorted.begin(), last, *last,
        [](const AISPosition* a, const AISPosition* b) { return a->mmsi() < b->mmsi(); });
    std::rotate(place, last, m_sorted.end());
}

std::optional<std::size_t> AISModel::indexOfPosition(std::int32_t mmsi) const
{
    const auto place = placeOf(m_sorted, mmsi);
    if (place == m_sorted.end() || (*place)->mmsi() != mmsi)
        return std::nullopt;
    return static_cast<std::size_t>(place - m_sorted.begin());
}

void AISModel::removePosition(std::int32_t mmsi)
{
    const auto index = indexOfPosition(mmsi);
    if (!index)
        return;
    m_sorted.erase(m_sorted.begin() + static_cast<std::ptrdiff_t>(*index));
    m_positions.erase(mmsi);
    reloadData();
}

void AISModel::removeAll()
{
    for (const auto* target : m_sorted)
        setNeedsDisplayForAISPosition(*target);
    m_sorted.clear();
    m_positions.clear();
    reloadData();
}

} // namespace kelvox
