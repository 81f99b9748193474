#pragma once

#include "app/ChartHost.h"
#include "app/PlaceIndex.h"

#include <QLineEdit>

#include <functional>
#include <optional>

class QListWidget;

namespace kelvox {

class PickLayer;

/// Finds as one types: typed positions, waypoints, vessels, places on the charts, charts, commands.
class SearchBox final : public QLineEdit {
    Q_OBJECT
public:
    /// @param picks marks the place that is chosen; outlives the box
    SearchBox(ChartHost& host, PickLayer& picks, QWidget* parent);

    struct Result {
        QString name;
        QString detail;
        QString icon;
        std::optional<Position> position; ///< shown on the chart when chosen
        std::function<void()> open; ///< called as well, where there is one
    };
    [[nodiscard]] std::vector<Result> find(const QString& words) const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void gatherNames(); ///< of charts that came since the last time, on a worker
    void search();
    void choose(int row);
    void addVessels(std::vector<Result>& results, const QString& words) const;
    void addWaypoints(std::vector<Result>& results, const QString& words) const;
    void addCharts(std::vector<Result>& results, const QString& words) const;
    void addCommands(std::vector<Result>& results, const QString& words) const;

    ChartHost& m_host;
    PickLayer& m_picks;
    QListWidget* m_list;
    PlaceIndex m_places;
    std::vector<Result> m_results;
};

} // namespace kelvox
