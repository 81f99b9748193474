#pragma once

#include "app/AlarmBanner.h"
#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/Commands.h"
#include "app/FileOpener.h"
#include "app/PanelHost.h"
#include "app/Program.h"
#include "navigation/PositionFormatter.h"

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>

#include <memory>
#include <optional>
#include <tuple>

class QScrollArea;

namespace kelvox {

class InstrumentColumn;
class SettingsDialog;

/// A chart window: the chart edge to edge, a slim bar above, a rail at the left, instruments at the
/// right, a status line below. Several may be open on one program.
class MainWindow final : public QMainWindow, public ChartHost {
    Q_OBJECT
public:
    explicit MainWindow(Program& program);
    ~MainWindow() override;

    /// Opens cells, folders and catalogues in addition to those shown.
    void open(const std::vector<std::filesystem::path>& paths);
    void openDemo() override;
    /// The last start ended in a crash: says so and offers what was open then.
    void offerRestore(const std::filesystem::path& report);
    /// Opens what was open when the program was left. False when that was nothing.
    bool openRemembered();

    [[nodiscard]] Program& program() override { return m_program; }
    [[nodiscard]] ChartView& chart() override { return *m_chart; }
    [[nodiscard]] Commands& commands() override { return m_commands; }
    [[nodiscard]] ChartSet& charts() override { return m_charts; }
    [[nodiscard]] QWidget& window() override { return *this; }
    SidePanel* openPanel(const QString& name) override;
    void showPosition(Position position) override;
    void showNote(const QString& note) override;
    void showCard(const QString& title, QWidget* content) override;
    void setTool(ChartLayer* tool) override;
    [[nodiscard]] ChartLayer* tool() const override { return m_tool; }
    void openFiles(const std::vector<std::filesystem::path>& files) override;
    void setChartPlaces(const std::vector<std::filesystem::path>& places) override;
    [[nodiscard]] bool isPanelOpen(const QString& name) const { return m_panels->isOpen(name); }
    /// The field in the middle of the upper bar.
    void setSearch(QWidget* search);

    /// A layer above those there are; the window owns it.
    void addLayer(std::unique_ptr<ChartLayer> layer);
    void addPanel(SidePanel* panel);
    [[nodiscard]] InstrumentColumn& instruments() { return *m_instruments; }
    [[nodiscard]] FileOpener& fileOpener() { return m_fileOpener; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void buildCommands();
    void addPanelCommands();
    void buildMenu();
    void buildTopBar();
    void buildRail();
    void buildStatusLine();
    void restyle();
    void layOutRail(); ///< all buttons at once where there is room
    void fitInstruments();
    void placeOverlays();
    void showMenu(const ChartPointer& pointer);
    /// @param group by its text key; empty for the one shown last
    void showSettings(const std::string& group);
    void settingChanged(const QString& key);
    void chooseSymbols(); ///< paper chart or simplified, as the settings say
    void restoreView();
    void rememberView();
    void rememberWindow(); ///< soon after each change, so that a kill loses nothing

    void connectCharts();
    void chartsFound();
    void scanFinished(int found);
    void rememberCharts();
    void fitAll();
    [[nodiscard]] std::tuple<double, double, int> shownView() const;
    void closeCharts();
    void updateScene();
    void updateStatus();
    void updateCursor();
    void updateVessel();
    void updateRail();
    void updateAlarms();
    void setFollowing(bool on);
    void setCourseUp(bool on);
    void chooseFiles();
    void chooseFolder();
    void manOverboard();

    Program& m_program;
    Commands m_commands;
    FileOpener m_fileOpener;
    ChartSet m_charts;
    QWidget* m_area; ///< all that lies over the chart has this parent
    ChartView* m_chart;
    QFrame* m_topBar;
    QFrame* m_rail;
    QWidget* m_railContent = nullptr;
    QFrame* m_statusLine;
    InstrumentColumn* m_instruments;
    PanelHost* m_panels;
    AlarmBanner* m_banner;
    QPushButton* m_mobButton;
    QToolButton* m_menuButton = nullptr;
    QToolButton* m_schemeButton = nullptr;
    QToolButton* m_alarmsButton = nullptr;
    std::vector<std::pair<QToolButton*, QString>> m_railButtons; ///< with the icon's name
    std::vector<std::pair<QToolButton*, SidePanel*>> m_panelButtons;
    std::vector<std::unique_ptr<ChartLayer>> m_layers;
    ChartLayer* m_tool = nullptr;

    QLabel* m_note;
    QTimer m_noteTimer;
    QTimer m_rememberTimer;
    QFrame* m_card;
    QLabel* m_cardTitle;
    QScrollArea* m_cardScroll = nullptr;
    QWidget* m_cardContent = nullptr;

    SettingsDialog* m_settingsDialog = nullptr;
    ChartScene m_scene;
    bool m_fitWhenLoaded = false;
    /// What was fitted when the first charts were found, in latitude, longitude and scale.
    std::optional<std::tuple<double, double, int>> m_fittedView;
    bool m_remembersCharts = false; ///< not while the demo charts are shown
    NSPositionFormatter m_latitude;
    NSPositionFormatter m_longitude;
    QLabel* m_positionLabel = nullptr;
    QLabel* m_rangeLabel = nullptr;
    QLabel* m_scaleLabel = nullptr;
    QLabel* m_rotationLabel = nullptr;
    QLabel* m_cellLabel = nullptr;
    QLabel* m_gpsLabel = nullptr;
};

} // namespace kelvox
