#include "app/panels/Panels.h"

#include "app/ChartTools.h"
#include "app/MainWindow.h"
#include "app/panels/AlarmsPanel.h"

namespace kelvox {

void addPanelsAndLayers(MainWindow& window)
{
    addChartTools(window); // weather, charts, display
    window.addPanel(new AlarmsPanel(window));
}

} // namespace kelvox
