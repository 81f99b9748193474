#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

class QPushButton;
class QSlider;

namespace kelvox {

/// What the chart shows and how bright: the switches that are wanted under way.
class DisplayPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit DisplayPanel(ChartHost& host);

private:
    [[nodiscard]] QWidget* makeLight();
    void refresh();

    ChartHost& m_host;
    std::vector<QPushButton*> m_schemes; ///< day, dusk, night
    QSlider* m_brightness = nullptr;
};

} // namespace kelvox
