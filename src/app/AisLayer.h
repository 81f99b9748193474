#pragma once

#include "app/AisImages.h"
#include "app/ChartHost.h"
#include "app/ChartLayer.h"

namespace kelvox {

class LiveData;

/// The traffic around the vessel. A click on a target selects it and opens its card, a double click
/// centres the chart on it.
class AisLayer final : public ChartLayer {
public:
    AisLayer(LiveData& live, ChartHost& host)
        : m_live(live)
        , m_host(host)
    {
    }
    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    [[nodiscard]] std::optional<ChartItem> itemAt(const ChartPointer& pointer,
                                                  const ViewFrame& frame) override;
    void addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;

    /// The number of targets that the last picture shows.
    [[nodiscard]] std::size_t shownTargets() const { return m_picture.symbols().size(); }

private:
    [[nodiscard]] const AISPosition* targetAt(const ChartPointer& pointer,
                                              const ViewFrame& frame) const;
    void open(std::int32_t mmsi);
    void paintVectors(QPainter& painter, const ViewFrame& frame, const LayerLook& look) const;
    void paintLabels(QPainter& painter, const ViewFrame& frame);

    LiveData& m_live;
    ChartHost& m_host;
    AISPicture m_picture;
    AisImages m_images;
};

} // namespace kelvox
