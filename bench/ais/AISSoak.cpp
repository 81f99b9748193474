// An hour of heavy traffic on a clock that runs as fast as it can: 5,000 targets at 500 reports a
// second, some leaving and others coming, with a fix and two pictures a second, the ageing timer
// and the list reload when idle. Ends with 1 when memory grew after the first quarter of an hour.

#include "Traffic.h"
#include "ais/AISPicture.h"
#include "ais/AISStation.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <unistd.h>

namespace {

long residentKilobytes()
{
    std::ifstream statm("/proc/self/statm");
    long pages = 0;
    statm >> pages >> pages;
    return pages * (::sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

int main()
{
    using namespace kelvox;
    constexpr int seconds = 3600;
    constexpr int settled = 1000; // the first departed have expired
    constexpr std::size_t fleet = 5000;
    constexpr std::size_t reportsASecond = 500;

    AISStation station;
    station.settings.set("aisProximityDistance", 1.0);
    Traffic traffic(fleet);
    AISPicture picture;
    const AISView view{.pointAt =
                           [](Position p) {
                               return Point{p.longitude * 900, p.latitude * 1400};
                           },
                       .pointsPerMetre = [](double) { return 0.008; },
                       .visible = {-1e6, -1e6, 1e6, 1e6}};
    const SystemClock wall;
    const double start = wall.monotonicSeconds();
    double slowestFrame = 0;
    double slowestReload = 0;
    const auto timed = [&wall](double& slowest, auto work) {
        const double begin = wall.monotonicSeconds();
        work();
        slowest = std::max(slowest, wall.monotonicSeconds() - begin);
    };
    long settledKilobytes = 0;
    std::size_t mostTargets = 0;
    std::size_t next = 0;
    for (int second = 0; second < seconds; ++second) {
        for (std::size_t i = 0; i < reportsASecond; ++i, next = (next + 1) % fleet) {
            station.controller.processRawSentence(traffic.next(next));
            if (i % 50 == 0)
                station.controller.processRawSentence(traffic.name(next));
            if (i % 250 == 249)
                timed(slowestFrame,
                      [&] { picture.update(station.model, view, {}, station.clock.now()); });
        }
        traffic.replace(static_cast<std::size_t>(traffic.number(0, fleet - 1)));
        station.clock.advance(std::chrono::seconds(1));
        station.controller.setProximityAlarm(second % 60 == 0);
        station.controller.plotPosition({.longitude = 0, .latitude = 50 + second * 1e-4});
        if (second % AISController::timerPeriod.count() == 0)
            station.controller.aisPositionTimer();
        timed(slowestReload, [&] { station.idle.run(); });
        mostTargets = std::max(mostTargets, station.model.count());
        if (second == settled)
            settledKilobytes = residentKilobytes();
        if (second % 600 == 599)
            std::printf("%4d s: %zu targets, %ld kB\n", second + 1, station.model.count(),
                        residentKilobytes());
    }
    const long grown = residentKilobytes() - settledKilobytes;
    const double took = wall.monotonicSeconds() - start;
    std::printf("%d s of traffic in %.1f s (%.0f times real time), at most %zu targets\n"
                "slowest picture %.2f ms, slowest list reload %.2f ms, memory %+ld kB since %d s\n",
                seconds, took, seconds / took, mostTargets, slowestFrame * 1000,
                slowestReload * 1000, grown, settled);
    constexpr long allowedGrowth = 1024; // the heap's own rounding
    return grown > allowedGrowth ? 1 : 0;
}
