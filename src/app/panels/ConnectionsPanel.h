#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"
#include "positioning/GPSSettingsController.h"

#include <QTimer>

#include <string>
#include <vector>

class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QVBoxLayout;

namespace kelvox {

class MonitorDialog;
class Program;

/// One consumer's connection: its state with the reason and the remedy, its port, recording and
/// replay, and the monitor.
class SerialPage final : public QWidget {
    Q_OBJECT
public:
    SerialPage(ChartHost& host, ConsumerRole role, QWidget* parent);
    void refresh();
    void listPorts(); ///< as the system has them now

private:
    void buildPort(QVBoxLayout& rows);
    void buildLog(QVBoxLayout& rows);
    [[nodiscard]] std::string key(const char* name) const;
    void toggleRecording();
    void chooseReplay();
    void showMonitor();

    ChartHost& m_host;
    ConsumerRole m_role;
    QLabel* m_state;
    QPushButton* m_open;
    QPushButton* m_close;
    QComboBox* m_port = nullptr;
    QPushButton* m_record = nullptr;
    QPushButton* m_replay = nullptr;
    QComboBox* m_speed = nullptr;
    QLabel* m_recordState = nullptr;
    MonitorDialog* m_monitor = nullptr;
    QString m_recordFile;
};

/// Where the live data come from and go to: the three serial connections, the network, repeating
/// with the autopilot's sentences, and the simulator.
class ConnectionsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit ConnectionsPanel(ChartHost& host);
    [[nodiscard]] int preferredWidth() const override { return 420; }
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum Row { GPS, Instruments, AIS, Network, Repeat, Simulator };
    QWidget* makeNetworkPage();
    QWidget* makeRepeatPage();
    QWidget* makeSimulatorPage();
    void addRow(const char* titleKey, QWidget* page);
    void refresh();
    void setRow(Row row, const QString& state, int kind);

    ChartHost& m_host;
    QListWidget* m_rows;
    QStackedWidget* m_pages;
    std::vector<SerialPage*> m_serial;
    QLabel* m_networkState = nullptr;
    QPushButton* m_simulate = nullptr;
    QDoubleSpinBox* m_simulatedSpeed = nullptr;
    QDoubleSpinBox* m_simulatedHeading = nullptr;
    QTimer m_retryTimer; ///< counts down to the next try while something waits
};

} // namespace kelvox
