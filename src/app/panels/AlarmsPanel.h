#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

class QTreeWidget;
class QPushButton;

namespace kelvox {

/// The alarms that wait and those that were.
class AlarmsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit AlarmsPanel(ChartHost& host);

private:
    void reload();

    ChartHost& m_host;
    QTreeWidget* m_list;
    QPushButton* m_acknowledge;
    QPushButton* m_clear;
};

} // namespace kelvox
