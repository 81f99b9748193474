#pragma once

#include "navigation/ChartMarker.h"
#include "navigation/NavMath.h"
#include "navigation/RecordsModel.h"

#include <thread>

namespace kelvox {

/// What the collections of waypoints and of track points have in common.
template <class Marker> class ChartMarkersModel : public RecordsModel<Marker> {
public:
    using Pointer = typename RecordsModel<Marker>::Pointer;
    using RecordsModel<Marker>::RecordsModel;

    [[nodiscard]] Pointer chartMarker(std::size_t index) const { return this->at(index); }
    [[nodiscard]] Pointer firstChartMarker() const { return this->at(0); }
    [[nodiscard]] Pointer lastChartMarker() const { return this->at(this->count() - 1); }
    Result<void> saveChartMarkers(const std::filesystem::path& file) { return this->save(file); }
    LoadReport loadChartMarkers(const std::filesystem::path& file) { return this->load(file); }

    /// The nearest marker within so many miles; null when there is none.
    [[nodiscard]] Pointer nearest(Position position, float miles) const
    {
        Pointer best;
        for (const auto& marker : this->objectEnumerator()) {
            if (!marker->hasPosition())
                continue;
            const float distance = NavMath::distanceFromPoint(position, marker->positionOnGPS());
            if (distance <= miles && (!best || distance < miles)) {
                miles = distance;
                best = marker;
            }
        }
        return best;
    }

protected:
    [[nodiscard]] std::size_t readers() const final
    {
        constexpr unsigned enough = 4; // beyond it the disk is what takes the time
        return std::clamp(std::thread::hardware_concurrency(), 1U, enough);
    }
    std::optional<Marker> getDictionary(const PropertyFields& fields) override
    {
        Marker marker;
        marker.read(fields);
        if (!marker.isInsideTheChart())
            return std::nullopt;
        return marker;
    }
    void tidy(Marker& marker) const override
    {
        RecordsModel<Marker>::tidy(marker);
        marker.description = cleanText(marker.description);
    }
};

} // namespace kelvox
