// Sentences a second through the whole chain: frame, check, look up, decode, apply. A mixed log as
// a boat sends it; beside it the bare reading of the same lines and, where it is installed, the
// position daemon's own decoder as a process of its own on the same file.

#include "connections/SentenceText.h"
#include "positioning/OwnVessel.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace kelvox {
namespace {

std::vector<std::string> mixedLog()
{
    static constexpr const char* sentences[] = {
        "$GPRMC,085411.000,A,5222.3215,N,00454.5778,E,0.58,251.34,030414,,,A",
        "$GPGGA,085411.000,5222.3215,N,00454.5778,E,1,4,2.95,16.0,M,47.0,M,,",
        "$GPGSA,A,3,16,23,13,29,,,,,,,,,3.11,2.95,0.99",
        "$GPGSV,3,1,11,23,79,267,29,13,67,183,28,20,57,252,22,16,51,072,36",
        "$GPVTG,251.34,T,,M,0.58,N,1.07,K,A",
        "$GPGLL,5222.3215,N,00454.5778,E,085411.000,A,A",
        "$IIHDG,182.1,00.0,E,2.0,E",
        "$IIVHW,181.0,T,179.0,M,06.11,N,11.31,K",
        "$IIDBT,036.9,f,011.3,M,006.1,F",
        "$IIMTW,12.5,C",
        "$IIMWV,084.0,T,06.64,N,A",
        "$IIVPW,4.71,N,,",
    };
    std::vector<std::string> lines;
    for (int i = 0; i < 1000; ++i)
        for (const auto* sentence : sentences)
            lines.push_back(completeSentence(sentence, AddChecksum::Yes));
    return lines;
}

const std::string& logFile()
{
    static const std::string name = [] {
        std::string path = "/tmp/kelvox-bench-XXXXXX";
        ::close(::mkstemp(path.data()));
        std::ofstream file(path, std::ios::binary);
        for (int i = 0; i < 10; ++i)
            for (const auto& line : mixedLog())
                file << line;
        return path;
    }();
    return name;
}

void countSentences(benchmark::State& state, std::size_t each)
{
    state.counters["sentences/s"] =
        benchmark::Counter(static_cast<double>(each) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate);
}

void parseAndApply(benchmark::State& state)
{
    const auto lines = mixedLog();
    const SystemClock clock;
    OwnVessel vessel(clock);
    while (state.KeepRunning())
        for (const auto& line : lines)
            benchmark::DoNotOptimize(vessel.gps.processRawSentence(line));
    countSentences(state, lines.size());
}
BENCHMARK(parseAndApply);

void parseAndApplyInBatches(benchmark::State& state)
{
    const auto log = mixedLog();
    const std::vector<std::string_view> lines(log.begin(), log.end());
    const SystemClock clock;
    OwnVessel vessel(clock);
    constexpr std::size_t batch = 40;
    while (state.KeepRunning())
        for (std::size_t at = 0; at < lines.size(); at += batch)
            vessel.gps.processLines({lines.data() + at, batch});
    countSentences(state, lines.size());
}
BENCHMARK(parseAndApplyInBatches);

/// Processor time of a shell command, its children's included.
double processorSeconds(const std::string& command)
{
    const auto used = [] {
        rusage usage{};
        ::getrusage(RUSAGE_CHILDREN, &usage);
        const auto seconds = [](timeval t) {
            return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    };
    const double before = used();
    if (std::system(command.c_str()) != 0) // NOLINT: a fixed command
        return 0;
    return used() - before;
}

void process(benchmark::State& state, const std::string& command)
{
    while (state.KeepRunning()) {
        const auto seconds = processorSeconds(command + " < " + logFile() + " > /dev/null 2>&1");
        if (seconds <= 0) {
            state.SkipWithError("not there");
            return;
        }
        state.SetIterationTime(seconds);
    }
    countSentences(state, mixedLog().size() * 10);
}

std::string ownTool()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "kelvox-tool";
}
BENCHMARK_CAPTURE(process, kelvoxTool, ownTool() + " nmea --summary -")->UseManualTime();
BENCHMARK_CAPTURE(process, kelvoxToolEveryLine, ownTool() + " nmea -")->UseManualTime();
BENCHMARK_CAPTURE(process, gpsdecode, std::string("gpsdecode"))->UseManualTime();

} // namespace
} // namespace kelvox

BENCHMARK_MAIN();
