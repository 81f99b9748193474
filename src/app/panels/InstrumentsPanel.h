#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

class QListWidget;
class QPushButton;

namespace kelvox {

class GaugeStack;

/// The instruments as big gauges, and which of them there are, in which order.
class InstrumentsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit InstrumentsPanel(ChartHost& host);
    [[nodiscard]] int preferredWidth() const override { return 400; }
    void restyle() override;

private:
    void fillChoice();
    void takeChoice();
    void moveChoice(int by);

    ChartHost& m_host;
    QWidget* m_chooser;
    QListWidget* m_choice;
    QPushButton* m_chooseButton;
    QPushButton* m_upButton;
    QPushButton* m_downButton;
};

} // namespace kelvox
