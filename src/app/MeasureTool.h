#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"

#include <QObject>

#include <optional>
#include <vector>

namespace kelvox {

/// Measures distances and bearings: each click sets a point, the line to the pointer shows the next
/// leg. The Backspace key takes the last point back; Esc ends.
class MeasureTool final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    /// Belongs to the host's window.
    explicit MeasureTool(ChartHost& host);

    void start();
    void startAt(Position position); ///< with the first point set
    void stop();
    [[nodiscard]] bool isActive() const { return m_host.tool() == this; }
    void removeLast();
    [[nodiscard]] const std::vector<Position>& points() const { return m_points; }
    /// Along all legs, great circles, in nautical miles.
    [[nodiscard]] double miles() const;

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    bool click(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool doubleClick(const ChartPointer& pointer, const ViewFrame& frame) override;
    void hover(const ChartPointer& pointer, const ViewFrame& frame) override;
    bool cancel() override;
    [[nodiscard]] bool wantsHover() const override { return true; }
    bool eventFilter(QObject* object, QEvent* event) override;

signals:
    void changed(); ///< begun, ended, or another point

private:
    ChartHost& m_host;
    std::vector<Position> m_points;
    std::optional<Position> m_pointer;
};

} // namespace kelvox
