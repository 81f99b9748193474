// kelvox-tool device: waypoints, routes and tracks to and from GPS receivers.

#include "base/Strings.h"
#include "devices/DeviceTransfer.h"
#include "exchange/ExchangeFile.h"
#include "tool/Command.h"

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <map>
#include <memory>
#include <thread>

namespace kelvox {
namespace {

struct Options {
    DeviceType type = DeviceType::Garmin;
    std::string port, rate, file;
    bool waypoints = false, routes = false, tracks = false;
    bool quiet = false;
};

/// Turns Ctrl-C and a wish to end into a stop, so that the receiver is left in order.
class StopOnSignal {
public:
    StopOnSignal()
    {
        ::sigemptyset(&m_signals);
        ::sigaddset(&m_signals, SIGINT);
        ::sigaddset(&m_signals, SIGTERM);
        ::sigaddset(&m_signals, SIGHUP);
        ::pthread_sigmask(SIG_BLOCK, &m_signals, nullptr); // before there are other threads
        m_watcher = std::jthread([this](const std::stop_token& done) {
            const timespec wait{0, 200'000'000};
            while (!done.stop_requested())
                if (::sigtimedwait(&m_signals, nullptr, &wait) > 0)
                    m_stop.request_stop();
        });
    }
    [[nodiscard]] std::stop_token token() const { return m_stop.get_token(); }

private:
    sigset_t m_signals{};
    std::stop_source m_stop;
    std::jthread m_watcher;
};

/// Where somebody sits at the terminal; a script has done its part already.
void waitForEnter(const std::stop_token& stop)
{
    if (::isatty(STDIN_FILENO) == 0)
        return;
    std::fprintf(stderr, "Press Enter when that is done.\n");
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (!stop.stop_requested() && ::poll(&input, 1, 200) == 0) { }
    if (input.revents != 0)
        (void)std::getchar();
}

void show(const TransferProgress& progress)
{
    using Kind = TransferProgress::Kind;
    const char* what = progress.kind == Kind::Waypoints ? "waypoints"
        : progress.kind == Kind::Routes                 ? "route records"
        : progress.kind == Kind::Tracks                 ? "track points"
                                                        : "records";
    switch (progress.phase) {
    case TransferProgress::Phase::Identifying:
        std::fprintf(stderr, "Asking the receiver...\n");
        break;
    case TransferProgress::Phase::Waiting:
        std::fprintf(stderr, "Waiting for the receiver...\n");
        break;
    case TransferProgress::Phase::Receiving:
    case TransferProgress::Phase::Sending:
        const char* verb =
            progress.phase == TransferProgress::Phase::Sending ? "Sending" : "Receiving";
        if (progress.total > 0)
            std::fprintf(stderr, "\r%s %s: %zu of %zu", verb, what, progress.done, progress.total);
        else
            std::fprintf(stderr, "\r%s %s: %zu", verb, what, progress.done);
        if (progress.done == progress.total && progress.total > 0)
            std::fputc('\n', stderr);
        break;
    }
}

void report(const DeviceResult& result)
{
    for (const auto& [name, given] : result.renamed)
        std::fprintf(stderr, "\"%s\" is \"%s\" in the receiver\n", name.c_str(), given.c_str());
    if (result.leftOut > 0)
        std::fprintf(stderr, "%zu records were left out: no place, or the receiver has no such\n",
                     result.leftOut);
    if (result.records.passedOverCount > 0)
        std::fprintf(stderr, "%zu records of the receiver have no place: passed over\n",
                     result.records.passedOverCount);
}

void run(Tool& tool, const Options& options, DeviceJob::Direction direction)
{
    using Direction = DeviceJob::Direction;
    const bool all = !options.waypoints && !options.routes && !options.tracks;
    DeviceJob job{.type = options.type,
                  .port = options.port,
                  .rate = options.rate.empty() ? usualRate(options.type) : options.rate,
                  .direction = direction,
                  .kinds = {.waypoints = all || options.waypoints,
                            .routes = all || options.routes,
                            .tracks = all || options.tracks}};
    // Only Garmin and Magellan receivers send tracks: not asking for any takes what there is.
    if (all && direction == Direction::Receive
        && (options.type != DeviceType::Garmin && options.type != DeviceType::Magellan))
        job.kinds.tracks = false;
    if (direction == Direction::Send) {
        const auto read = readExchangeFile(options.file, job.kinds, job.records);
        if (!read)
            return tool.fail(options.file + ": " + read.error().message);
    }
    const StopOnSignal stop;
    const auto tell = [](const std::string& key) {
        std::fprintf(stderr, "%s\n", englishStrings().text(key).c_str());
    };
    GPSTransfer::Hooks hooks{.stop = stop.token(), .message = tell};
    hooks.prepare = [&](const std::string& key) {
        tell(key);
        waitForEnter(stop.token());
    };
    if (!options.quiet)
        hooks.progress = show;
    const auto result = performTransfer(job, SystemClock(), std::move(hooks));
    if (result.error && !options.quiet)
        std::fputc('\n', stderr); // after the line of the progress
    if (result.error)
        return tool.fail(options.port + ": " + result.error->message);
    report(result);
    if (direction == Direction::Identify)
        std::printf("%s\n", result.ident.c_str());
    if (direction != Direction::Receive)
        return;
    if (const auto written = writeExchangeFile(options.file, job.kinds, result.records); !written)
        tool.fail(options.file + ": " + written.error().message);
}

} // namespace

void addDeviceCommand(Tool& tool)
{
    const auto options = std::make_shared<Options>();
    auto* device = tool.command(
        "device", "Waypoints, routes and tracks to and from a GPS receiver on a serial port");
    device->require_subcommand(1);
    static const std::map<std::string, DeviceType> types = {{"garmin", DeviceType::Garmin},
                                                            {"nmea", DeviceType::NMEA},
                                                            {"sirf", DeviceType::SiRF},
                                                            {"magellan", DeviceType::Magellan},
                                                            {"furuno", DeviceType::Furuno}};
    const auto add = [&](const char* name, const char* description, const char* file,
                         DeviceJob::Direction direction) {
        auto* command = device->add_subcommand(name, description);
        command->add_option("PORT", options->port, "e.g. /dev/ttyUSB0")->required();
        if (file)
            command->add_option("FILE", options->file, file)->required();
        command->add_option("--type", options->type, "make of the receiver")
            ->transform(CLI::CheckedTransformer(types))
            ->option_text("garmin|magellan|furuno|sirf|nmea");
        command->add_option("--rate", options->rate, "baud rate; 9600 for Garmin, else 4800");
        command->add_flag("--quiet", options->quiet, "no progress");
        if (file) {
            command->add_flag("--waypoints", options->waypoints,
                              "only these; several options add up");
            command->add_flag("--routes", options->routes, "only these");
            command->add_flag("--tracks", options->tracks, "only these");
        }
        command->callback([&tool, options, direction] { run(tool, *options, direction); });
    };
    add("identify", "Asks the receiver what it is", nullptr, DeviceJob::Direction::Identify);
    add("receive", "Writes what the receiver holds into a file",
        "file to write: GPX, KML or CSV by its extension; left alone when the transfer fails",
        DeviceJob::Direction::Receive);
    add("send", "Sends a file to the receiver", "GPX, KML, KMZ or CSV file to read",
        DeviceJob::Direction::Send);
    device->footer("Ctrl-C ends a transfer and leaves the receiver in order.");
}

} // namespace kelvox
