#pragma once

namespace kelvox {

class MainWindow;

/// Gives a new window what belongs to the chart itself: weather, outlines, graticule, notes, the
/// card of what is under a click, measuring, the views before, and the search.
void addChartTools(MainWindow& window);

} // namespace kelvox
