#pragma once

#include "app/SidePanel.h"
#include "app/nav/NavActions.h"
#include "app/panels/TrackTable.h"

class QCheckBox;
class QPushButton;
class QSpinBox;
class QToolButton;

namespace kelvox {

class ListView;

/// Recording of the track, and its lines.
class TracksPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit TracksPanel(NavActions& actions);

    void show(std::size_t firstOfLine);
    using SidePanel::show;
    [[nodiscard]] int preferredWidth() const override { return 400; }
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void refreshSettings();
    void followSelection();
    void lineChosen();
    void chooseColor();
    [[nodiscard]] std::vector<std::size_t> selected() const;

    NavActions& m_actions;
    TrackTable* m_table;
    QCheckBox* m_record;
    QSpinBox* m_interval;
    QToolButton* m_color;
    QPushButton* m_newLine;
    ListView* m_list;
    QPushButton* m_show;
    QPushButton* m_route;
    QPushButton* m_delete;
    QToolButton* m_import;
    QToolButton* m_export;
    bool m_following = false;
};

} // namespace kelvox
