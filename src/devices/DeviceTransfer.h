#pragma once

#include "base/Clock.h"
#include "base/Executor.h"
#include "connections/HandOver.h"
#include "devices/GPSTransfer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kelvox {

/// Makes of receivers. The first three bear the numbers of the "type" of the GPS settings.
enum class DeviceType { Garmin = 0, NMEA = 1, SiRF = 2, Magellan = 3, Furuno = 4 };

/// The rate that receivers of the type use when they leave the shop, e.g. "9600".
[[nodiscard]] const char* usualRate(DeviceType type);

/// What is to be done.
struct DeviceJob {
    enum class Direction { Identify, Receive, Send };
    DeviceType type = DeviceType::Garmin;
    std::string port = {}; ///< as in the GPS settings
    std::string rate = {};
    Serial::FlowControl flow = Serial::FlowControl::None;
    Direction direction = Direction::Receive;
    ExchangeKinds kinds = {};
    ExchangeRecords records = {}; ///< to be sent
};

/// What became of it.
struct DeviceResult {
    std::optional<Error> error = std::nullopt; ///< code Cancelled when it was stopped
    ExchangeRecords records = {}; ///< received; nothing at all unless all of it came
    std::string ident = {}; ///< what the receiver says it is
    DeviceNames::Renamed renamed = {}; ///< sent under other names: the user's, the device's
    GPSTransfer::Sent sent = {};
    std::size_t leftOut = 0; ///< not sent: without a place, or of a kind the receiver does not take

    [[nodiscard]] bool succeeded() const { return !error; }
};

[[nodiscard]] std::unique_ptr<GPSTransfer> makeTransfer(const DeviceJob& job, const Clock& clock,
                                                        GPSTransfer::Hooks hooks,
                                                        const GPSTransfer::Timing& timing);
/// Does the job on the calling thread. The port must be free.
[[nodiscard]] DeviceResult performTransfer(const DeviceJob& job, const Clock& clock,
                                           GPSTransfer::Hooks hooks);
/// The same with a transfer whose line is set already.
[[nodiscard]] DeviceResult performTransfer(const DeviceJob& job, GPSTransfer& transfer);

/// Gives all records to a target such as the import into the user's models.
void handOver(const ExchangeRecords& records, ExchangeTarget& target);

/// Does one job at a time on a thread of its own and tells of it on the main thread.
///
/// Used on the main thread. The executor runs its work there and not on the calling thread.
class DeviceTransfer {
public:
    struct Handlers {
        std::function<void(const TransferProgress&)> progress =
            {}; ///< the latest; some are skipped
        std::function<void(const std::string& key)> message = {}; ///< e.g. "NSFailConnect"
        /// What the user has to do at the receiver, e.g. "NSSlaveMode": the transfer waits for
        /// proceed(). Without it the message is told and the transfer goes on.
        std::function<void(const std::string& key)> prepare = {};
        /// Once for each start; another may be started here, or this object destroyed.
        std::function<void(DeviceResult)> finished = {};
    };

    DeviceTransfer(Executor& main, const Clock& clock);
    /// Cancels, waits for the receiver to be left in order, and tells nothing more.
    ~DeviceTransfer();
    DeviceTransfer(const DeviceTransfer&) = delete;
    DeviceTransfer& operator=(const DeviceTransfer&) = delete;

    /// @return false while another job is running
    bool start(DeviceJob job, Handlers handlers);
    void proceed(); ///< the user has done what was asked for
    /// finished() follows, after the receiver was left in order.
    void cancel();
    [[nodiscard]] bool isRunning() const { return m_isRunning; }

private:
    struct Shared;
    void finish(DeviceResult result);

    HandOver m_main;
    const Clock& m_clock;
    Handlers m_handlers;
    std::shared_ptr<Shared> m_shared;
    std::jthread m_thread;
    bool m_isRunning = false;
};

} // namespace kelvox
