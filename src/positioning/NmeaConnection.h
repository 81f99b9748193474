#pragma once

#include "connections/LineConsumer.h"
#include "connections/MonitorLog.h"
#include "connections/ReaderThread.h"
#include "connections/Recording.h"
#include "connections/TCPConnectionModel.h"
#include "positioning/GPSSettingsController.h"
#include "positioning/Repeater.h"

#include <atomic>
#include <functional>

namespace kelvox {

/// One consumer's way to its data: reader thread, monitor log, recording, and for the GPS consumer
/// the network client and the repeat port.
///
/// Used on the main thread; what the reader thread calls is marked in the bases. The executor is a
/// HandOver, closed before the connections are destroyed.
class NmeaConnection final : public ReaderThread::Owner,
                             public TCPConnectionModel::Owner,
                             public RepeatOutput {
public:
    struct Services {
        Executor& main;
        const Clock& clock;
        const Settings& settings;
        TCPConnectionModel* network = nullptr; ///< whose server gets the lines; may be missing
    };
    NmeaConnection(ConsumerRole role, LineConsumer& consumer, const Services& services,
                   ReaderThread::Pace pace);
    NmeaConnection(ConsumerRole role, LineConsumer& consumer, const Services& services)
        : NmeaConnection(role, consumer, services, ReaderThread::Pace())
    {
    }
    ~NmeaConnection() override;

    void start() { m_reader.start(); }
    void stop() { m_reader.stop(); }
    void open() { m_reader.request(ReaderThread::Command::Open); }
    void close() { m_reader.request(ReaderThread::Command::Close); }
    void applicationWillSleep();
    /// Opens again what was open before, and what is to be open from the start.
    void applicationWillWake();

    [[nodiscard]] ReaderThread& reader() { return m_reader; }
    [[nodiscard]] MonitorLog& monitor() { return m_monitor; }
    [[nodiscard]] Recorder& recorder() { return m_recorder; }

    /// The port that repeatToInstruments() means.
    void setInstruments(NmeaConnection* instruments) { m_instruments = instruments; }
    /// What a Garmin receiver is told after opening.
    void setGarminSetup(PortPlan::Setup setup) { m_garminSetup = std::move(setup); }
    /// Whether the settings name the port, for reading or for repeating.
    [[nodiscard]] bool usesPort(const std::string& path) const;
    /// Closes the port, if it is open or to be opened, for somebody else who needs it, and calls
    /// back on the main thread when it is free.
    void lendPort(std::function<void()> isFree);
    void takePortBack(); ///< opens it again if it was lent
    /// For the lost-position alarm and the displays: opened, closed, waiting.
    void setChanged(std::function<void()> changed) { m_changed = std::move(changed); }
    /// "Cannot open …" with its remedy.
    void setOpenFailed(std::function<void(const std::string& reason)> failed)
    {
        m_openFailed = std::move(failed);
    }

    [[nodiscard]] bool connectsAtStart() override { return m_settings.connectAtStartup(); }
    [[nodiscard]] PortPlan portPlan() override;
    void connectionOpened() override { changed(); }
    void connectionClosed() override;
    void statusChanged(const ConnectionStatus&) override { changed(); }
    void logFileEnded() override { changed(); }
    void openPortFail(const std::string& port, const std::string& reason) override;
    void showInMonitor(std::string_view line) override { m_monitor.append(line); }
    void takeLines(std::span<const std::string_view> lines) override;

    void readNMEASentences(std::span<const std::string_view> lines) override;
    void readNMEASentenceOverflow() override;

    void writeToRepeatTarget(std::string_view line) override;
    void writeToClients(std::string_view line) override;

private:
    void changed() const
    {
        if (m_changed)
            m_changed();
    }
    [[nodiscard]] bool serverTransmits() const;

    ConsumerRole m_role;
    LineConsumer& m_consumer;
    GPSSettingsController m_settings;
    TCPConnectionModel* m_network;
    NmeaConnection* m_instruments = nullptr;
    PortPlan::Setup m_garminSetup;
    std::function<void()> m_portIsFree;
    bool m_isLent = false;
    std::function<void()> m_changed;
    std::function<void(const std::string&)> m_openFailed;
    std::atomic<bool> m_repeatToInstruments{false};
    bool m_openBeforeSleep = false;
    MonitorLog m_monitor;
    Recorder m_recorder;
    ReaderThread m_reader; // last: its thread uses all the others
};

} // namespace kelvox
