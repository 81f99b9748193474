#pragma once

#include "ais/AISPicture.h"
#include "app/ChartLayer.h"
#include "app/LiveData.h"

namespace kelvox {

/// The own vessel and the traffic around it.
class VesselLayer final : public ChartLayer {
public:
    explicit VesselLayer(LiveData& live)
        : m_live(live)
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;

private:
    LiveData& m_live;
    AISPicture m_picture;
};

} // namespace kelvox
