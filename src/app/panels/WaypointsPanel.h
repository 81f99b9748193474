#pragma once

#include "app/SidePanel.h"
#include "app/nav/NavActions.h"
#include "app/panels/WaypointTable.h"

#include <QTimer>

class QComboBox;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace kelvox {

class ListView;
class WaypointEditor;

/// The waypoints: groups, search, distances, and the fields of the one that is selected.
class WaypointsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit WaypointsPanel(NavActions& actions);

    void show(const WaypointPointer& waypoint); ///< selects it, and clears what would hide it
    using SidePanel::show;
    [[nodiscard]] int preferredWidth() const override { return 380; }
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void refreshGroups();
    void followSelection();
    void sendSelected();
    void rowChosen();
    void groupChosen();
    void groupMenu();
    [[nodiscard]] std::vector<WaypointPointer> selected() const;

    NavActions& m_actions;
    WaypointTable* m_table;
    QLineEdit* m_search;
    QComboBox* m_group;
    QToolButton* m_groupButton;
    ListView* m_list;
    QPushButton* m_new;
    QPushButton* m_goto;
    QPushButton* m_delete;
    QToolButton* m_import;
    QToolButton* m_export;
    WaypointEditor* m_editor;
    QTimer m_valuesTimer;
    bool m_following = false; ///< the selection is being taken over from the chart
};

} // namespace kelvox
