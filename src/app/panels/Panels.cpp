#include "app/panels/Panels.h"

#include "app/MainWindow.h"
#include "app/panels/AlarmsPanel.h"

namespace kelvox {

void addPanelsAndLayers(MainWindow& window)
{
    window.addPanel(new AlarmsPanel(window));
}

} // namespace kelvox
