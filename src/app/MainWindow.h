#pragma once

#include "app/ChartLoader.h"
#include "app/ChartView.h"
#include "app/LiveLayer.h"
#include "base/Strings.h"
#include "navigation/PositionFormatter.h"
#include "presentation/S52Render.h"

#include <QLabel>
#include <QMainWindow>

namespace kelvox {

/// The program's window: the chart edge to edge, a slim bar above, a status line below.
class MainWindow final : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(S52Model& library, WorkerPool& pool);

    /// Opens cells, folders and catalogues in addition to those shown.
    void open(const std::vector<std::filesystem::path>& paths);
    /// Opens the demo charts and lets the simulated vessel sail in them.
    void openDemo(const std::filesystem::path& resources);

private:
    enum class Palette { Day, Dusk, Night };
    void buildMenus();
    void buildStatusBar();
    void setPalette(Palette palette);
    void applyStyle(const S52CcieMap& colors);
    void addCell(const std::shared_ptr<const CellGeometry>& geometry);
    void loadingFinished(int cells);
    void fitAll();
    void closeCharts();
    void updateScene();
    void updateStatus();
    void updateCursor();
    void updateVessel();
    void setFollowing(bool on);
    void chooseFiles();
    void chooseFolder();

    S52Model& m_library;
    S52Render m_presentation;
    ChartLoader m_loader;
    LiveData m_live;
    LiveLayer m_liveLayer;
    ChartView* m_chart;
    ChartScene m_scene;
    bool m_fitWhenLoaded = false;
    NSPositionFormatter m_latitude;
    NSPositionFormatter m_longitude;
    QLabel* m_positionLabel = nullptr;
    QLabel* m_scaleLabel = nullptr;
    QLabel* m_rotationLabel = nullptr;
    QLabel* m_cellLabel = nullptr;
    QLabel* m_vesselLabel = nullptr;
    QAction* m_followAction = nullptr;
};

} // namespace kelvox
