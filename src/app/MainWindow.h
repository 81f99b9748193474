#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "app/ChartOverlays.h"
#include "app/ChartSet.h"
#include "app/ChartView.h"
#include "app/Commands.h"
#include "app/FileOpener.h"
#include "app/OpenCharts.h"
#include "app/PanelHost.h"
#include "app/Program.h"

#include <QMainWindow>

#include <chrono>
#include <memory>

namespace kelvox {

class AlarmBanner;
class InstrumentColumn;
class Rail;
class SettingsDialog;
class StatusLine;
class TopBar;

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
    [[nodiscard]] int coveredWidth() const; ///< of the chart at the left, by a panel
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
    void buildWindow();
    void buildCommands();
    void addPanelCommands();
    void restyle();
    void fitInstruments();
    void showMenu(const ChartPointer& pointer);
    /// @param group by its text key; empty for the one shown last
    void showSettings(const std::string& group);
    void settingChanged(const QString& key);
    void changeLanguage();
    void chooseSymbols(); ///< paper chart or simplified, as the settings say
    void restoreView();
    void rememberView();
    void rememberWindow(); ///< soon after each change, so that a kill loses nothing

    void connectChart();
    void connectProgram();
    void updateScene();
    void updateVessel();
    void redrawSoon();
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
    TopBar* m_topBar;
    Rail* m_rail;
    StatusLine* m_statusLine;
    InstrumentColumn* m_instruments;
    PanelHost* m_panels;
    AlarmBanner* m_banner;
    ChartOverlays m_overlays;
    OpenCharts m_openCharts;
    std::vector<std::unique_ptr<ChartLayer>> m_layers;
    ChartLayer* m_tool = nullptr;

    QTimer m_redrawTimer;
    QTimer m_rememberTimer;
    std::chrono::system_clock::time_point m_newestAlarm; ///< that the window has come up for
    SettingsDialog* m_settingsDialog = nullptr;
    ChartScene m_scene;
};

} // namespace kelvox
