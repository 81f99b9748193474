#pragma once

#include "app/ChartLayer.h"
#include "app/nav/NavActions.h"
#include "app/nav/SheetLine.h"
#include "navigation/TrackLines.h"

#include <QObject>

#include <vector>

namespace kelvox {

/// The recorded track. Its lines are laid out on the sheet when points come, and projected when the
/// view moves; a view that stands still only draws them again.
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
        QPolygonF points;
    };
    void layOut();
    void project(const ViewFrame& frame);
    [[nodiscard]] std::optional<std::size_t> lineAt(QPointF point) const;

    NavActions& m_actions;
    bool m_layOut = true;
    std::vector<Chunk> m_chunks;
    std::vector<DrawnPart> m_parts;
    // The view that the parts are for.
    Point m_center;
    int m_scale = 0;
    float m_rotation = 0;
    Size m_size;
    double m_interfaceScale = 1;
};

} // namespace kelvox
