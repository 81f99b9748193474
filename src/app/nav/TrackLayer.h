#pragma once

#include "app/ChartLayer.h"
#include "app/LayerPicture.h"
#include "app/nav/NavActions.h"
#include "app/nav/SheetLine.h"
#include "navigation/TrackLines.h"

#include <QObject>

#include <memory>
#include <vector>

namespace kelvox {

/// The recorded track. Its lines are laid out on the sheet when points come, and projected when the
/// view moves; a view that stands still only draws them again. A long one is painted on a worker.
class TrackLayer final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    explicit TrackLayer(NavActions& actions);

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    void addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame) override;
    [[nodiscard]] std::optional<ChartItem> itemAt(const ChartPointer& pointer,
                                                  const ViewFrame& frame) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;

private:
    /// A part of a line that is culled as one.
    struct Chunk {
        std::size_t line; ///< first point of the line it belongs to
        TrackColor color;
        SheetLine way;
    };
    struct DrawnPart {
        std::size_t line;
        TrackColor color;
        QPolygonF points; ///< display points
    };
    using Chunks = std::vector<Chunk>;
    using Parts = std::vector<DrawnPart>;
    /// How lines are drawn; holds what a worker may look at.
    struct Style;

    void layOut();
    void project(const ViewFrame& frame);
    [[nodiscard]] static Parts partsOf(const Chunks& chunks, const ViewFrame& frame);
    static void paintParts(QPainter& painter, const Parts& parts, const Style& style);
    static void paintParts(QImage& picture, double pixelsPerPoint, const Parts& parts,
                           const Style& style);
    [[nodiscard]] std::optional<std::size_t> lineAt(QPointF point, const ViewFrame& frame) const;

    NavActions& m_actions;
    bool m_layOut = true;
    std::shared_ptr<const Chunks> m_chunks = std::make_shared<Chunks>();
    std::size_t m_points = 0; ///< in the chunks
    // What lies under the pointer, of the picture or of what was painted with the chart.
    std::shared_ptr<const Parts> m_parts = std::make_shared<Parts>();
    std::shared_ptr<const Parts> m_coming; ///< with the next picture
    ViewFrame m_frame; ///< that the parts are for
    LayerPicture m_picture;
    double m_interfaceScale = 1;
};

} // namespace kelvox
