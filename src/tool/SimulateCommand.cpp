// kelvox-tool simulate: the simulator's stream on standard output.

#include "positioning/NMEASimulator.h"
#include "tool/Command.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <thread>

namespace kelvox {
namespace {

constexpr double pace = 0.2; // seconds from sentence to sentence

struct Options {
    std::string description;
    double latitude = 59.88;
    double longitude = 10.66;
    double speed = 5;
    double heading = 180;
    double variation = 0;
    double seconds = 0;
    unsigned seed = 1;
    bool fast = false;
};

void run(Tool& tool, const CLI::App& command, const Options& options)
{
    ManualClock clock(std::chrono::system_clock::now());
    NMEASimulator simulator(clock, options.seed);
    SimulatorDescription start;
    start.start = Position{.longitude = options.longitude, .latitude = options.latitude};
    simulator.apply(start);
    if (!options.description.empty()) {
        const auto read = simulator.fromFile(options.description);
        if (!read) {
            tool.fail(read.error().message);
            return;
        }
    }
    const bool described = !options.description.empty();
    if (!described || command.count("--speed"))
        simulator.setSpeed(static_cast<float>(options.speed));
    if (!described || command.count("--heading"))
        simulator.setHeading(static_cast<float>(options.heading));
    if (!described || command.count("--variation"))
        simulator.setVariation(static_cast<float>(options.variation));
    simulator.setRunning(true);

    const auto calls = static_cast<long long>(std::llround(options.seconds / pace));
    for (long long call = 0; options.seconds <= 0 || call < calls; ++call) {
        for (const auto& line : simulator.nextLines())
            if (std::fwrite(line.data(), 1, line.size(), stdout) != line.size()) {
                tool.fail("standard output: cannot write");
                return;
            }
        clock.advance(std::chrono::duration<double>(pace));
        if (!options.fast) {
            std::fflush(stdout);
            std::this_thread::sleep_for(std::chrono::duration<double>(pace));
        }
    }
}

} // namespace

void addSimulateCommand(Tool& tool)
{
    auto options = std::make_shared<Options>();
    auto* command = tool.command("simulate",
                                 "Writes the NMEA 0183 sentences of a simulated boat, five a "
                                 "second, until stopped.");
    command->add_option("--description", options->description,
                        "JSON file with start, speed, heading, route and AIS traffic");
    command->add_option("--latitude", options->latitude, "start, degrees north")
        ->check(CLI::Range(-89.0, 89.0));
    command->add_option("--longitude", options->longitude, "start, degrees east")
        ->check(CLI::Range(-180.0, 180.0));
    command->add_option("--speed", options->speed, "knots")->check(CLI::Range(0.0, 100.0));
    command->add_option("--heading", options->heading, "degrees true")
        ->check(CLI::Range(0.0, 360.0));
    command->add_option("--variation", options->variation, "degrees, east positive")
        ->check(CLI::Range(-180.0, 180.0));
    command->add_option("--seconds", options->seconds, "stop after so much of the boat's time")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--seed", options->seed, "for other wind, depth and temperature");
    command->add_flag("--fast", options->fast, "do not wait between sentences");
    command->callback([&tool, command, options] { run(tool, *command, *options); });
}

} // namespace kelvox
