#include "app/PlaceIndex.h"

#include "navigation/NavMath.h"
#include "navigation/TextSearch.h"
#include "s57/S57Object.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <tuple>

namespace kelvox {

std::shared_ptr<const PlaceIndex::Places> PlaceIndex::placesOf(const CellGeometry& geometry)
{
    auto places = std::make_shared<Places>();
    std::set<std::pair<std::string, int>> seen;
    const auto& features = geometry.cell().s57Features();
    for (std::size_t i = 0; i < features.size(); ++i) {
        const auto name = features[i]->featureAttributeStringValue(s57attribute::OBJNAM);
        if (name.empty())
            continue;
        const auto anchor = geometry.anchor(i);
        if (!anchor || !seen.emplace(std::string(name), features[i]->objectCode()).second)
            continue;
        places->push_back(
            {.name = std::string(name),
             .folded = foldedCase(name),
             .className = S57ObjectCatalogue::className(features[i]->objectCode()),
             .position = {.longitude = anchor->x,
                          .latitude = std::atan(std::sinh(anchor->y)) * 180 / std::numbers::pi}});
    }
    return places;
}

PlaceIndex::Cells PlaceIndex::missing(const Cells& cells)
{
    std::erase_if(m_cells, [&](const auto& entry) {
        return std::ranges::find(cells, entry.first) == cells.end();
    });
    Cells missing;
    for (const auto& cell : cells)
        if (!m_cells.contains(cell))
            missing.push_back(cell);
    return missing;
}

void PlaceIndex::add(const std::shared_ptr<const CellGeometry>& cell,
                     std::shared_ptr<const Places> places)
{
    m_cells[cell] = std::move(places);
}

std::vector<PlaceIndex::Place> PlaceIndex::find(std::string_view text, Position near,
                                                std::size_t atMost) const
{
    constexpr float same = 1; // nautical mile: the same object in cells of other scales
    struct Found {
        const Place* place;
        bool begins;
        float miles;
    };
    std::vector<Found> found;
    const std::string wanted = foldedCase(text);
    for (const auto& [cell, places] : m_cells)
        for (const Place& place : *places)
            if (const auto at = place.folded.find(wanted); at != std::string::npos)
                found.push_back(
                    {&place, at == 0, NavMath::distanceFromPoint(near, place.position)});
    std::ranges::sort(found, [](const Found& a, const Found& b) {
        return std::tuple(!a.begins, a.miles) < std::tuple(!b.begins, b.miles);
    });
    std::vector<Place> result;
    for (const Found& one : found) {
        if (result.size() >= atMost)
            break;
        const bool known = std::ranges::any_of(result, [&](const Place& other) {
            return other.folded == one.place->folded && other.className == one.place->className
                && NavMath::distanceFromPoint(other.position, one.place->position) < same;
        });
        if (!known)
            result.push_back(*one.place);
    }
    return result;
}

} // namespace kelvox
