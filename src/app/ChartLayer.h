#pragma once

#include "base/Position.h"
#include "chartview/ViewFrame.h"
#include "presentation/S52Render.h"

#include <QPainter>
#include <QString>
#include <QTransform>

#include <functional>
#include <optional>

class QMenu;

namespace kelvox {

/// What a layer paints with.
struct LayerLook {
    const Portrayal& portrayal; ///< the chart's colours
    double scale = 1; ///< of the interface
    enum class Medium { Screen, Paper } medium = Medium::Screen; ///< paper waits until all is drawn
    /// Of a token of the presentation library; magenta where it has none.
    [[nodiscard]] QColor color(const char* token) const;
};

/// Where the mouse is, for layers and tools.
struct ChartPointer {
    QPointF at; ///< widget pixels
    Position position;
    Qt::KeyboardModifiers modifiers;
};

/// A thing on the chart that the user can point at.
struct ChartItem {
    QString name; ///< what a tooltip and a menu call it
    Position position;
    std::function<void()> open; ///< shows it in its panel
};

/// From the pixels of one picture of the chart to those of another: what moves, turns and scales an
/// old picture into a new view.
[[nodiscard]] QTransform moveBetween(const ViewFrame& from, const ViewFrame& to);

/// Something painted over the chart that changes on its own: vessel, targets, routes, weather. The
/// mouse is offered to layers from the topmost to the lowest before it moves the chart.
class ChartLayer {
public:
    virtual ~ChartLayer() = default;
    /// @param painter antialiased, in display points of the frame (device pixels divided by its
    /// pixelsPerPoint), so that one unit is one widget pixel
    virtual void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) = 0;
    /// Under the pointer; nothing where it has nothing.
    [[nodiscard]] virtual std::optional<ChartItem> itemAt(const ChartPointer&, const ViewFrame&)
    {
        return std::nullopt;
    }
    /// Adds what can be done with what lies there to the chart's menu.
    virtual void addToMenu(QMenu&, const ChartPointer&, const ViewFrame&) { }

    // Each true takes the event away from layers beneath and from the chart. A press that was taken
    // gets the moves and the release, too.
    virtual bool press(const ChartPointer&, const ViewFrame&) { return false; }
    virtual void move(const ChartPointer&, const ViewFrame&) { }
    virtual void release(const ChartPointer&, const ViewFrame&) { }
    virtual bool click(const ChartPointer&, const ViewFrame&) { return false; }
    virtual bool doubleClick(const ChartPointer&, const ViewFrame&) { return false; }
    virtual void hover(const ChartPointer&, const ViewFrame&) { }
    virtual bool cancel() { return false; } ///< Esc: ends a drag or a tool
    /// Whether hover() has to be called at all: only a tool at work wants every move.
    [[nodiscard]] virtual bool wantsHover() const { return false; }

protected:
    /// The place of a position in display points, in double precision, on the side of the date line
    /// that the frame shows.
    [[nodiscard]] static QPointF pointOf(Position position, const ViewFrame& frame);
};

} // namespace kelvox
