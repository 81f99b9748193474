#pragma once

#include "app/AisImages.h"
#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "app/LayerPicture.h"

#include <memory>
#include <vector>

namespace kelvox {

class LiveData;

/// The traffic around the vessel. A click on a target selects it and opens its card, a double click
/// centres the chart on it.
///
/// A few targets are painted with the chart. Of many a worker makes the picture; those that the
/// user watches, the selected one, the one pointed at and the alarmed one, still lie over it as
/// they are now.
class AisLayer final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    AisLayer(LiveData& live, ChartHost& host);

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    [[nodiscard]] std::optional<ChartItem> itemAt(const ChartPointer& pointer,
                                                  const ViewFrame& frame) override;
    void addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;

    /// The number of targets that the last picture shows.
    [[nodiscard]] std::size_t shownTargets() const;

private:
    static constexpr std::size_t mostAtOnce = 200; ///< targets that are painted with the chart

    /// What targets look like, besides themselves.
    struct Style {
        AISDisplay display;
        AISPosition::Time now;
        AisImages::Look images;
        QFont font;
        QColor alarm;
        QColor mark; ///< of the ring around those to be found
        std::optional<std::int32_t> pointed;
    };
    /// What a worker has painted besides the pixels.
    struct Kept {
        AISPicture picture; ///< in display points of its frame
        std::vector<std::int32_t> apart; ///< not painted, only their names' places are kept free
    };
    [[nodiscard]] Style styleOf(const QPainter& painter, const ViewFrame& frame,
                                const LayerLook& look) const;
    static void paintSymbols(QPainter& painter, const Style& style, AisImages& images,
                             const AISPicture& picture, std::span<const std::int32_t> apart);
    static void paintVectors(QPainter& painter, const Style& style, const AISPicture& picture);
    static void paintThinVectors(const PixelBuffer& pixels, const Style& style, const Kept& kept);
    static void paintLabels(QPainter& painter, QSizeF view, AisImages& images,
                            const AISPicture& picture, std::span<const std::int32_t> apart);
    [[nodiscard]] std::vector<std::int32_t> watched() const;
    [[nodiscard]] LayerPicture::Paint snapshot(const Style& style, const ViewFrame& frame);
    [[nodiscard]] const AISPosition* targetAt(const ChartPointer& pointer,
                                              const ViewFrame& frame) const;
    void open(std::int32_t mmsi);

    LiveData& m_live;
    ChartHost& m_host;
    AISPicture m_picture; ///< of those painted with the chart; display points, y up
    AisImages m_images;
    LayerPicture m_others;
    std::shared_ptr<Kept> m_kept; ///< belongs to the picture of the others; null without one
    std::shared_ptr<Kept> m_coming; ///< is the worker's until its picture is there
    std::shared_ptr<Kept> m_spare; ///< lends its memory to the next one
    std::shared_ptr<AisImages> m_workersImages = std::make_shared<AisImages>();
};

} // namespace kelvox
