#pragma once

#include "app/ChartHost.h"

#include <QObject>

#include <optional>
#include <tuple>

namespace kelvox {

/// Which charts a window shows: opened, closed, remembered for the next start, and brought into
/// view once they are found.
class OpenCharts final : public QObject {
    Q_OBJECT
public:
    explicit OpenCharts(ChartHost& host);

    /// Cells, folders and catalogues in addition to those shown.
    void open(const std::vector<std::filesystem::path>& paths);
    void openDemo(); ///< which is not remembered
    /// What was open when the program was left, in the view of that time. False when that was
    /// nothing.
    bool openRemembered();
    void setPlaces(const std::vector<std::filesystem::path>& places);
    void takeOver(const OpenCharts& other); ///< the charts of another window
    void close();
    void fitAll();

signals:
    void found(); ///< there are other charts than before

private:
    /// In latitude, longitude and scale.
    using View = std::tuple<double, double, int>;

    void chartsFound();
    void scanFinished(int charts);
    void remember();
    void choose(); ///< cells or rasters, as the settings say
    [[nodiscard]] View shownView() const;

    ChartHost& m_host;
    bool m_fitWhenLoaded = false;
    std::optional<View> m_fittedView; ///< what was fitted when the first charts were found
    bool m_remembers = false; ///< not while the demo charts are shown
};

} // namespace kelvox
