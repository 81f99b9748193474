#pragma once

namespace kelvox {

class MainWindow;

/// Gives a new window its panels, in the order of the rail, and the layers that go with them.
void addPanelsAndLayers(MainWindow& window);

} // namespace kelvox
