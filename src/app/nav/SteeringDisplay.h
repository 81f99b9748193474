#pragma once

#include "app/nav/NavActions.h"

#include <QToolButton>
#include <QWidget>

namespace kelvox {

/// The way to the active waypoint, to be read at a glance: to which side to steer and how far off
/// the leg, distance, bearing, time, speed made good. Shown while there is an active waypoint.
class SteeringDisplay final : public QWidget {
    Q_OBJECT
public:
    explicit SteeringDisplay(NavActions& actions, QWidget* parent = nullptr);
    void restyle();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    /// Everything that is shown, so that nothing is painted anew that looks the same.
    struct Shown {
        QString name, route, distance, bearing, time, velocity, crossTrack;
        double offShare = 0; ///< of the limit; -1 to 1 and beyond, positive to starboard
        bool known = false; ///< the cross-track error
        bool beyond = false;
        bool stale = false;
        bool operator==(const Shown&) const = default;
    };
    void refresh();
    [[nodiscard]] Shown current() const;
    void paintCrossTrack(QPainter& painter, const QRectF& box) const;

    NavActions& m_actions;
    QToolButton* m_stop;
    Shown m_shown;
};

} // namespace kelvox
