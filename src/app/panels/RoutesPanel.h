#pragma once

#include "app/SidePanel.h"
#include "app/nav/NavActions.h"
#include "app/panels/RouteTables.h"

class QCheckBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace kelvox {

class ListView;

/// The routes, the points of the one that is selected, and following one with its alarms.
class RoutesPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit RoutesPanel(NavActions& actions);

    void show(const RoutePointer& route, std::size_t index = Route::notFound);
    using SidePanel::show;
    [[nodiscard]] int preferredWidth() const override { return 400; }
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeFollowing();
    void refresh();
    void refreshPoints();
    void refreshFollowing();
    void followSelection();
    void routeChosen();
    void pointChosen();
    void rename();
    void moreMenu();
    void joinMenu(QMenu& menu, const RoutePointer& route);
    [[nodiscard]] std::vector<RoutePointer> selected() const;
    [[nodiscard]] std::size_t selectedPoint() const;

    NavActions& m_actions;
    RouteTable* m_routes;
    RoutePointTable* m_points;
    QLineEdit* m_search;
    ListView* m_list;
    QLineEdit* m_name;
    QLabel* m_reason;
    QDoubleSpinBox* m_speed;
    ListView* m_pointList;
    QLabel* m_total;
    QPushButton* m_new;
    QPushButton* m_follow;
    QToolButton* m_up;
    QToolButton* m_down;
    QToolButton* m_print;
    QToolButton* m_more;
    QCheckBox* m_autoNext;
    QCheckBox* m_arrival;
    QCheckBox* m_crossTrack;
    QDoubleSpinBox* m_arrivalDistance;
    QDoubleSpinBox* m_crossTrackDistance;
    bool m_following = false; ///< the selection is being taken over from the chart
};

} // namespace kelvox
