#pragma once

#include "app/SidePanel.h"
#include "app/nav/NavActions.h"
#include "devices/DeviceTransfer.h"

#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace kelvox {

/// Waypoints, routes and tracks to and from a receiver: which one and where it is connected, what
/// is to be sent or received, how far it is, and what became of it.
class DevicesPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit DevicesPanel(NavActions& actions);
    ~DevicesPanel() override;

    /// Makes these records the ones to be sent.
    void choose(const QString& name, ExchangeRecords records);
    void restyle() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildReceiver(QVBoxLayout& rows);
    void buildReceive(QVBoxLayout& rows);
    void buildSend(QVBoxLayout& rows);
    void buildRunning(QVBoxLayout& rows);
    void listChoices();
    void refresh();
    void refreshRunning();
    void start(DeviceJob::Direction direction);
    void finished(const DeviceResult& result);
    [[nodiscard]] DeviceType type() const;
    [[nodiscard]] std::string port() const;
    [[nodiscard]] ExchangeKinds wantedKinds() const;
    [[nodiscard]] QString sentWords(const DeviceResult& result) const;

    struct Choice {
        QString label;
        std::function<ExchangeRecords()> records;
    };

    NavActions& m_actions;
    DeviceSession& m_session;
    std::vector<Choice> m_choices;
    bool m_hasChosen = false; ///< the first choice is that of choose()
    bool m_isMine = false; ///< the transfer that runs was started here
    QWidget* m_setup;
    QComboBox* m_type = nullptr;
    QComboBox* m_port = nullptr;
    std::string m_shownPort; ///< when the ports were listed last
    QComboBox* m_rate = nullptr;
    QLabel* m_hint = nullptr;
    QLabel* m_lends = nullptr;
    QPushButton* m_identify = nullptr;
    QCheckBox* m_waypoints = nullptr;
    QCheckBox* m_routes = nullptr;
    QCheckBox* m_tracks = nullptr;
    QPushButton* m_receive = nullptr;
    QComboBox* m_what = nullptr;
    QPushButton* m_send = nullptr;
    QWidget* m_running;
    QLabel* m_doing = nullptr;
    QLabel* m_ask = nullptr;
    QProgressBar* m_bar = nullptr;
    QPushButton* m_proceed = nullptr;
    QPushButton* m_cancel = nullptr;
    QLabel* m_result;
};

} // namespace kelvox
