#pragma once

#include "base/Alarms.h"
#include "base/Settings.h"
#include "base/Strings.h"
#include "connections/TCPConnectionModel.h"

#include <functional>
#include <thread>

namespace kelvox {

/// The user's network settings, and switching the connections on and off by them. Main thread.
class TCPIPController final : public TCPConnectionModel::Observer {
public:
    struct NetworkSettings {
        std::string clientHost; ///< "tcpipClientHost"
        std::string clientPort = "2114"; ///< "tcpipClientPort"
        bool clientModeTCP = false; ///< "tcpipClientModeTCP"
        bool clientModeUDP = false; ///< "tcpipClientModeUDP"; TCP goes first
        std::string serverPort = "2114"; ///< "tcpipServerPort"
        bool serverEnable = false; ///< "tcpipServerEnable"
        bool serverGPS = false; ///< "tcpipServerGPS"
        bool serverInstruments = false; ///< "tcpipServerInstruments"
        bool serverAIS = false; ///< "tcpipServerAIS"
        bool serverLimitToProcessed = false; ///< "tcpipServerLimitToProcessed"
        friend bool operator==(const NetworkSettings&, const NetworkSettings&) = default;
    };

    TCPIPController(TCPConnectionModel& model, TCPConnectionModel::Owner& owner, Executor& main,
                    Settings& settings, const Strings& strings, Alarms& alarms);
    ~TCPIPController() override;

    [[nodiscard]] NetworkSettings loadSettings() const;
    void saveSettings(const NetworkSettings& values);
    [[nodiscard]] static std::string defaultClientHost() { return "127.0.0.1"; }

    /// Opens what the settings say and closes the rest; a switch whose connection cannot be made
    /// is turned back off with the message "NSFailConnect".
    void connect();
    void disconnect(); ///< leaves the switches as they are
    /// Called after anything changed, with the state of the controls to be read again.
    void setUpdate(std::function<void()> update) { m_update = std::move(update); }
    /// Called when the client connection closed or timed out: "gpsConnectionClosedNotification".
    void setClientClosed(std::function<void()> closed) { m_clientClosed = std::move(closed); }

    /// Finds this machine's address on a thread of its own, then sets serverHost().
    void lookUpServerHost();
    [[nodiscard]] const std::string& serverHost() const { return m_serverHost; }

    void clientSocketTimedOut() override { clientWasClosed(); }
    void clientSocketDisconnected() override { clientWasClosed(); }
    void updateConnections() override;

private:
    void fail(const char* key);
    void clientWasClosed();

    TCPConnectionModel& m_model;
    TCPConnectionModel::Owner& m_owner;
    Executor& m_main;
    Settings& m_settings;
    const Strings& m_strings;
    Alarms& m_alarms;
    std::function<void()> m_update;
    std::function<void()> m_clientClosed;
    std::string m_serverHost;
    std::thread m_hostThread;
};

} // namespace kelvox
