#pragma once

#include "app/ChartHost.h"
#include "app/ChartsModel.h"
#include "app/SidePanel.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QTableView;

namespace kelvox {

class ChartOutlineLayer;

/// The chart library: the user's folders and what lies in them.
class ChartsPanel final : public SidePanel {
    Q_OBJECT
public:
    /// @param outlines brings out the chart under the pointer; outlives the panel
    ChartsPanel(ChartHost& host, ChartOutlineLayer& outlines);
    [[nodiscard]] int preferredWidth() const override { return 520; }

    [[nodiscard]] ChartsModel& model() { return *m_model; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void buildFolders();
    void buildList();
    void reload();
    void addFolder();
    void removePlace();
    void point(const QModelIndex& index);
    void updateStatus();

    ChartHost& m_host;
    ChartOutlineLayer& m_outlines;
    QListWidget* m_places;
    QPushButton* m_remove = nullptr;
    QLineEdit* m_search;
    ChartsModel* m_model;
    QTableView* m_list;
    QLabel* m_status;
    QProgressBar* m_progress;
    QPushButton* m_cancel;
};

} // namespace kelvox
