#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

#include <functional>
#include <vector>

class QCheckBox;
class QGridLayout;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace kelvox {

/// Which alarms keep watch and at what distance, those that wait for their button, and those that
/// were.
class AlarmsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit AlarmsPanel(ChartHost& host);
    [[nodiscard]] int preferredWidth() const override { return 420; }
    void restyle() override { reload(); }

private:
    struct Watch {
        QCheckBox* box;
        std::function<bool()> isOn;
        std::function<bool()> isPossible;
    };
    QGridLayout* makeWatches();
    void addWatch(QGridLayout& grid, const char* labelKey, Watch watch,
                  const std::function<void(bool)>& set, QWidget* number);
    void refreshWatches();
    void reload();

    ChartHost& m_host;
    std::vector<Watch> m_watches;
    QLabel* m_lostPosition;
    QTreeWidget* m_list;
    QLabel* m_empty;
    QPushButton* m_acknowledge;
    QPushButton* m_clear;
};

} // namespace kelvox
