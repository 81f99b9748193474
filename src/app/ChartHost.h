#pragma once

#include "base/Position.h"

#include <QString>

#include <filesystem>
#include <vector>

class QMenu;
class QWidget;

namespace kelvox {

class ChartLayer;
class ChartSet;
class ChartView;
class Commands;
class SidePanel;
class Program;

/// A chart window as its panels and layers see it. Main thread.
class ChartHost {
public:
    virtual ~ChartHost() = default;
    [[nodiscard]] virtual Program& program() = 0;
    [[nodiscard]] virtual ChartView& chart() = 0;
    [[nodiscard]] virtual Commands& commands() = 0;
    [[nodiscard]] virtual ChartSet& charts() = 0;
    [[nodiscard]] virtual QWidget& window() = 0; ///< parent of dialogs

    /// Opens a panel, or brings it to the front where it floats. Null when there is none.
    virtual SidePanel* openPanel(const QString& name) = 0;
    /// Moves the chart so that the position is in the middle, and stops following the vessel.
    virtual void showPosition(Position position) = 0;
    /// A short note over the chart that goes by itself.
    virtual void showNote(const QString& text) = 0;
    /// A card over the chart's lower right corner with one widget, closed by its cross, Esc or the
    /// next card. Takes the widget over; null only closes.
    virtual void showCard(const QString& title, QWidget* content) = 0;
    /// Takes the place above all layers until it is put away with null; not owned.
    virtual void setTool(ChartLayer* tool) = 0;
    [[nodiscard]] virtual ChartLayer* tool() const = 0;
    /// Opens or imports what the files are: charts, exchange files, weather.
    virtual void openFiles(const std::vector<std::filesystem::path>& files) = 0;
    /// The folders and files whose charts are shown, in place of the present ones; remembered.
    virtual void setChartPlaces(const std::vector<std::filesystem::path>& places) = 0;
    /// Opens the demo charts and lets the simulated vessel sail in them.
    virtual void openDemo() = 0;
};

} // namespace kelvox
