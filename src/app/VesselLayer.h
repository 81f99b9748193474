#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"

namespace kelvox {

class LiveData;

/// The own vessel, to scale where the chart is large enough for its size, with the lines of its
/// course and heading; and the circle of the anchor watch with the way the vessel swung.
class VesselLayer final : public ChartLayer {
public:
    explicit VesselLayer(ChartHost& host)
        : m_host(host)
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    [[nodiscard]] std::optional<ChartItem> itemAt(const ChartPointer& pointer,
                                                  const ViewFrame& frame) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;

private:
    void paintAnchor(QPainter& painter, const ViewFrame& frame, const LayerLook& look);
    void paintVessel(QPainter& painter, const ViewFrame& frame, const LayerLook& look);
    [[nodiscard]] LiveData& live() const;

    ChartHost& m_host;
};

} // namespace kelvox
