#include "devices/DeviceTransfer.h"

#include "devices/Furuno.h"
#include "devices/Garmin.h"
#include "devices/Magellan.h"
#include "devices/NmeaTransfer.h"

#include <charconv>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace kelvox {

const char* usualRate(DeviceType type)
{
    return type == DeviceType::Garmin ? "9600" : "4800";
}

std::unique_ptr<GPSTransfer> makeTransfer(const DeviceJob& job, const Clock& clock,
                                          GPSTransfer::Hooks hooks,
                                          const GPSTransfer::Timing& timing)
{
    switch (job.type) {
    case DeviceType::Garmin:
        return std::make_unique<Garmin>(clock, std::move(hooks), timing);
    case DeviceType::Magellan:
        return std::make_unique<Magellan>(clock, std::move(hooks), timing);
    case DeviceType::Furuno:
        return std::make_unique<Furuno>(clock, std::move(hooks), timing);
    case DeviceType::SiRF: {
        int bitsPerSecond = 4800;
        std::from_chars(job.rate.data(), job.rate.data() + job.rate.size(), bitsPerSecond);
        return std::make_unique<Sirf>(clock, std::move(hooks), timing, bitsPerSecond);
    }
    case DeviceType::NMEA:
        break;
    }
    return std::make_unique<NmeaTransfer>(clock, std::move(hooks), timing);
}

DeviceResult performTransfer(const DeviceJob& job, const Clock& clock, GPSTransfer::Hooks hooks)
{
    const auto transfer = makeTransfer(job, clock, std::move(hooks), GPSTransfer::Timing());
    if (auto opened = transfer->setPort(job.port, job.rate, job.flow); !opened)
        return {.error = std::move(opened.error())};
    return performTransfer(job, *transfer);
}

DeviceResult performTransfer(const DeviceJob& job, GPSTransfer& transfer)
{
    DeviceResult result;
    const auto done = job.direction == DeviceJob::Direction::Receive
        ? transfer.receive(job.kinds, result.records)
        : transfer.send(job.direction == DeviceJob::Direction::Send
                            ? job.kinds
                            : ExchangeKinds{.waypoints = false, .routes = false, .tracks = false},
                        job.records);
    if (!done) {
        result.error = done.error();
        result.records = {};
    }
    result.ident = transfer.ident();
    result.renamed = transfer.renamed();
    result.sent = transfer.sent();
    result.leftOut = transfer.leftOut();
    return result;
}

void handOver(const ExchangeRecords& records, ExchangeTarget& target)
{
    for (const auto& waypoint : records.waypoints)
        target.waypoint(waypoint);
    for (const auto& route : records.routes) {
        for (const auto& waypoint : route.points)
            target.routePoint(waypoint);
        target.endRoute(route.name);
    }
    for (const auto& point : records.tracks)
        target.trackPoint(point);
    for (std::size_t i = 0; i < records.passedOverCount; ++i)
        target.passedOver();
}

struct DeviceTransfer::Shared {
    std::mutex mutex;
    std::condition_variable_any proceeds;
    /// What the thread says and the main thread has not heard yet: the latest counts.
    std::optional<TransferProgress> progress;
    bool mayProceed = false;
};

DeviceTransfer::DeviceTransfer(Executor& main, const Clock& clock)
    : m_main(main)
    , m_clock(clock)
    , m_shared(std::make_shared<Shared>())
{
}

DeviceTransfer::~DeviceTransfer()
{
    m_main.close();
    m_thread.request_stop();
}

bool DeviceTransfer::start(DeviceJob job, Handlers handlers)
{
    if (m_isRunning)
        return false;
    m_isRunning = true;
    m_handlers = std::move(handlers);
    m_shared->mayProceed = false;
    const bool asks = static_cast<bool>(m_handlers.prepare);
    m_thread = std::jthread([this, asks, job = std::move(job)](const std::stop_token& stop) {
        const auto showProgress = [this](const TransferProgress& progress) {
            const std::scoped_lock lock(m_shared->mutex);
            if (std::exchange(m_shared->progress, progress))
                return; // the main thread is told already that there is something
            m_main.post([this] {
                std::optional<TransferProgress> latest;
                {
                    const std::scoped_lock heard(m_shared->mutex);
                    latest = std::exchange(m_shared->progress, std::nullopt);
                }
                if (latest && m_handlers.progress)
                    m_handlers.progress(*latest);
            });
        };
        const auto showMessage = [this](const std::string& key) {
            m_main.post([this, key] {
                if (m_handlers.message)
                    m_handlers.message(key);
            });
        };
        const auto prepare = [this, stop](const std::string& key) {
            m_main.post([this, key] {
                if (m_handlers.prepare)
                    m_handlers.prepare(key);
            });
            std::unique_lock lock(m_shared->mutex);
            m_shared->proceeds.wait(lock, stop, [this] { return m_shared->mayProceed; });
            m_shared->mayProceed = false;
        };
        GPSTransfer::Hooks hooks{.stop = stop, .progress = showProgress, .message = showMessage};
        if (asks)
            hooks.prepare = prepare;
        auto result = performTransfer(job, m_clock, std::move(hooks));
        auto kept = std::make_shared<DeviceResult>(std::move(result));
        m_main.post([this, kept = std::move(kept)] { finish(std::move(*kept)); });
    });
    return true;
}

void DeviceTransfer::proceed()
{
    const std::scoped_lock lock(m_shared->mutex);
    m_shared->mayProceed = true;
    m_shared->proceeds.notify_all();
}

void DeviceTransfer::cancel()
{
    m_thread.request_stop();
}

void DeviceTransfer::finish(DeviceResult result)
{
    m_thread.join(); // it is at its end
    m_isRunning = false;
    const auto handlers = std::exchange(m_handlers, {});
    if (handlers.finished)
        handlers.finished(std::move(result)); // this object may be gone after it
}

} // namespace kelvox
