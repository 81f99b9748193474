#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"

#include <QTimer>

#include <stop_token>

class QLabel;
class QProgressBar;
class QPushButton;
class QSlider;
class QToolButton;
class QTreeWidget;

namespace kelvox {

/// Whether a file is one of weather by its name.
[[nodiscard]] bool isWeatherFile(const std::filesystem::path& file);

/// Weather files: what they hold, the time that is shown, and the values under the pointer.
class WeatherPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit WeatherPanel(ChartHost& host);
    ~WeatherPanel() override;

    /// Reads a file on a worker; one asked for later takes its place.
    void open(const std::filesystem::path& file);
    void restyle() override;

signals:
    void loaded(); ///< a file was read, or could not be

private:
    void buildFile();
    void buildTime();
    void buildSwitches();
    void chooseFile();
    void showExtent(); ///< zooms to the weather when it lies outside the view
    void closeFile();
    void exportKml();
    void reload();
    void updateTime();
    void updateValues();
    void stepBy(bool forward);
    void setPlaying(bool on);

    ChartHost& m_host;
    QLabel* m_file = nullptr;
    QProgressBar* m_progress = nullptr;
    QPushButton* m_cancel = nullptr;
    QToolButton* m_close = nullptr;
    QPushButton* m_export = nullptr;
    QWidget* m_timeBox = nullptr;
    QLabel* m_time = nullptr;
    QSlider* m_slider = nullptr;
    QToolButton* m_previous = nullptr;
    QToolButton* m_play = nullptr;
    QToolButton* m_next = nullptr;
    QLabel* m_values = nullptr;
    QTreeWidget* m_fields = nullptr;
    QTimer m_playTimer;
    std::stop_source m_loading; ///< of the file asked for last: only that one is taken
    std::stop_source m_exporting;
    bool m_isExporting = false; ///< then its button cancels
};

} // namespace kelvox
