#include "connections/TCPIPController.h"

namespace kelvox {

TCPIPController::TCPIPController(TCPConnectionModel& model, TCPConnectionModel::Owner& owner,
                                 Executor& main, Settings& settings, const Strings& strings,
                                 Alarms& alarms)
    : m_model(model)
    , m_owner(owner)
    , m_main(main)
    , m_settings(settings)
    , m_strings(strings)
    , m_alarms(alarms)
{
}

TCPIPController::~TCPIPController()
{
    if (m_hostThread.joinable())
        m_hostThread.join();
}

TCPIPController::NetworkSettings TCPIPController::loadSettings() const
{
    const NetworkSettings defaults;
    return {.clientHost = m_settings.text("tcpipClientHost", defaultClientHost()),
            .clientPort = m_settings.text("tcpipClientPort", defaults.clientPort),
            .clientModeTCP = m_settings.boolean("tcpipClientModeTCP"),
            .clientModeUDP = m_settings.boolean("tcpipClientModeUDP"),
            .serverPort = m_settings.text("tcpipServerPort", defaults.serverPort),
            .serverEnable = m_settings.boolean("tcpipServerEnable"),
            .serverGPS = m_settings.boolean("tcpipServerGPS"),
            .serverInstruments = m_settings.boolean("tcpipServerInstruments"),
            .serverAIS = m_settings.boolean("tcpipServerAIS"),
            .serverLimitToProcessed = m_settings.boolean("tcpipServerLimitToProcessed")};
}

void TCPIPController::saveSettings(const NetworkSettings& values)
{
    m_settings.set("tcpipClientHost", values.clientHost);
    m_settings.set("tcpipClientPort", values.clientPort);
    m_settings.set("tcpipClientModeTCP", values.clientModeTCP);
    m_settings.set("tcpipClientModeUDP", values.clientModeUDP);
    m_settings.set("tcpipServerPort", values.serverPort);
    m_settings.set("tcpipServerEnable", values.serverEnable);
    m_settings.set("tcpipServerGPS", values.serverGPS);
    m_settings.set("tcpipServerInstruments", values.serverInstruments);
    m_settings.set("tcpipServerAIS", values.serverAIS);
    m_settings.set("tcpipServerLimitToProcessed", values.serverLimitToProcessed);
}

void TCPIPController::connect()
{
    const auto values = loadSettings();
    m_model.setServerTransmit({.gps = values.serverGPS,
                               .instruments = values.serverInstruments,
                               .ais = values.serverAIS});
    m_model.setServerLimitToProcessed(values.serverLimitToProcessed);

    m_model.closeClientConnection();
    if (values.clientModeTCP) {
        if (!m_model.createClientConnection(m_owner, values.clientHost, values.clientPort))
            fail("tcpipClientModeTCP");
    } else if (values.clientModeUDP) {
        if (!m_model.createClientUDPConnection(m_owner, values.clientPort))
            fail("tcpipClientModeUDP");
    }
    if (!values.serverEnable)
        m_model.closeServerConnection();
    else if (!m_model.createServerConnection(values.serverPort))
        fail("tcpipServerEnable");
    updateConnections();
}

void TCPIPController::disconnect()
{
    m_model.closeClientConnection();
    m_model.closeServerConnection();
    updateConnections();
}

void TCPIPController::fail(const char* key)
{
    m_settings.set(key, false);
    m_alarms.show({.key = "NSFailConnect",
                   .message = m_strings.text("NSFailConnect"),
                   .informativeText = m_model.lastError(),
                   .button = m_strings.text("NSOK")});
}

void TCPIPController::updateConnections()
{
    if (m_update)
        m_update();
}

void TCPIPController::clientWasClosed()
{
    if (m_clientClosed)
        m_clientClosed();
}

void TCPIPController::lookUpServerHost()
{
    if (m_hostThread.joinable())
        m_hostThread.join();
    m_hostThread = std::thread([this] {
        m_main.post([this, host = localHostAddress()] {
            m_serverHost = host.value_or(m_strings.text("NSUnknown"));
            updateConnections();
        });
    });
}

} // namespace kelvox
