#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

#include <QTimer>

#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QTableView;

namespace kelvox {

class AisTableModel;
class AisTargetDetails;

/// The targets in a table with search and sorting, which of them the chart shows, the proximity
/// alarm, and all about the selected one.
class AisPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit AisPanel(ChartHost& host);
    [[nodiscard]] int preferredWidth() const override { return 480; }
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void reload();
    void showSelection();
    void select(const QModelIndex& index);
    bool eventFilter(QObject* watched, QEvent* event) override;

    ChartHost& m_host;
    AisTableModel* m_model;
    QLineEdit* m_search;
    QTableView* m_table;
    QLabel* m_empty;
    QLabel* m_count;
    QCheckBox* m_alarm;
    AisTargetDetails* m_details;
    std::optional<std::int32_t> m_shown; ///< the target that was scrolled to
    QTimer m_reloadTimer;
};

} // namespace kelvox
