// The user's data at full size: 10,000 waypoints, 1,000 routes, 50,000 track points. The library's
// reading of the same track stands beside ours. The folder of the files is TMPDIR's.

#include "base/File.h"
#include "navigation/Scene.h"
#include "navigation/ValueFormatters.h"
#include "navigation/WaypointController.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <fmt/format.h>
#include <random>

namespace kelvox {
namespace {

struct NoAlarms final : Alarms {
    void beep() override { }
    void playSound(const std::string& /*name*/) override { }
    void speak(const std::string& /*text*/) override { }
    void show(const Alert& /*alert*/) override { }
    [[nodiscard]] bool isShown(const std::string& /*key*/) const override { return false; }
};

const TemporaryFolder& folder()
{
    static const TemporaryFolder made;
    return made;
}

bool fill(Scene& scene)
{
    std::mt19937 random(1);
    std::uniform_real_distribution<> longitude(-179, 179);
    std::uniform_real_distribution<> latitude(-80, 80);
    std::uniform_real_distribution<float> value(0, 359);
    {
        const EditHistory::Group group(scene.history);
        for (int i = 0; i < 10'000; ++i) {
            Waypoint waypoint;
            waypoint.description = fmt::format("number {} of a long list", i);
            waypoint.setPositionOnGPS({longitude(random), latitude(random)});
            if (i % 3 == 0)
                waypoint.groups.insert("Imported");
            scene.waypoints.add(std::move(waypoint));
        }
        for (int i = 0; i < 1000; ++i) {
            Route route;
            for (int leg = 0; leg < 20; ++leg)
                route.addWaypointReference(scene.waypoints.waypoint(random() % 10'000));
            scene.routes.add(std::move(route));
        }
        for (int i = 0; i < 50'000; ++i) {
            Track point = trackPoint(i * 10, {longitude(random), latitude(random)});
            point.cog = std::round(value(random) * 10) / 10;
            point.sog = std::round(value(random)) / 10;
            point.heading = point.cog;
            point.speed = point.sog;
            point.depth = std::round(value(random) * 10) / 10;
            point.temperature = 59.5F;
            point.windAngle = -35;
            point.windSpeed = 12.3F;
            scene.tracks.add(std::move(point), std::chrono::seconds(1));
        }
    }
    return scene.save();
}

Scene& fullScene()
{
    static Scene scene(folder().path());
    static const bool filled = fill(scene);
    (void)filled;
    return scene;
}

void searchWaypoints(benchmark::State& state)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        benchmark::DoNotOptimize(scene.waypoints.waypointsThatMatch("99"));
}
BENCHMARK(searchWaypoints)->Unit(benchmark::kMillisecond);

void searchRoutes(benchmark::State& state)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        benchmark::DoNotOptimize(scene.routes.routesThatMatch("99"));
}
BENCHMARK(searchRoutes)->Unit(benchmark::kMillisecond);

template <class Model> void load(benchmark::State& state, Model Scene::*model, const char* file)
{
    fullScene();
    Scene scene;
    scene.waypoints.load(folder().path() / "waypoints.plist"); // routes want them
    while (state.KeepRunning())
        benchmark::DoNotOptimize((scene.*model).load(folder().path() / file).records);
}
BENCHMARK_CAPTURE(load, waypoints, &Scene::waypoints, "waypoints.plist")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(load, routes, &Scene::routes, "routes.plist")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(load, tracks, &Scene::tracks, "tracks.plist")->Unit(benchmark::kMillisecond);

void loadTracksByTheLibrary(benchmark::State& state)
{
    fullScene();
    while (state.KeepRunning()) {
        const auto bytes = readFile(folder().path() / "tracks.plist").value();
        plist_t list = nullptr;
        plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
        plist_free(list);
    }
}
BENCHMARK(loadTracksByTheLibrary)->Unit(benchmark::kMillisecond);

/// What the main thread does for a save; the disk's part may run elsewhere.
template <class Model> void beginSave(benchmark::State& state, Model Scene::*model)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        benchmark::DoNotOptimize((scene.*model).beginSave(folder().path() / "x.plist"));
}
BENCHMARK_CAPTURE(beginSave, waypoints, &Scene::waypoints)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(beginSave, routes, &Scene::routes)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(beginSave, tracks, &Scene::tracks)->Unit(benchmark::kMillisecond);

template <class Model> void save(benchmark::State& state, Model Scene::*model, const char* file)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        benchmark::DoNotOptimize((scene.*model).save(folder().path() / file));
}
BENCHMARK_CAPTURE(save, waypoints, &Scene::waypoints, "waypoints.plist")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(save, routes, &Scene::routes, "routes.plist")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(save, tracks, &Scene::tracks, "tracks.plist")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

/// All rows of the waypoint list as text: distance and bearing from the vessel.
void listWaypoints(benchmark::State& state)
{
    auto& scene = fullScene();
    NoAlarms alarms;
    const MemorySettings settings;
    const Strings strings;
    WaypointController controller(scene.waypoints, alarms, settings, strings);
    controller.plotPosition({10, 55});
    const UnitsModel units;
    const NSDtwFormatter distance(units);
    const NSCogFormatter bearing(strings, units);
    while (state.KeepRunning()) {
        controller.fromWaypoints(noValue, noValue);
        for (const auto& waypoint : scene.waypoints.sortedByDistanceFromPosition()) {
            benchmark::DoNotOptimize(distance.stringForObjectValue(waypoint->distanceFromPosition));
            benchmark::DoNotOptimize(bearing.stringForObjectValue(waypoint->bearingFromPosition));
        }
    }
}
BENCHMARK(listWaypoints)->Unit(benchmark::kMillisecond);

void listRoutes(benchmark::State& state)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        for (const auto& route : scene.routes.objectEnumerator())
            benchmark::DoNotOptimize(route->distance(0, route->count() - 1));
}
BENCHMARK(listRoutes)->Unit(benchmark::kMillisecond);

void listTrackLines(benchmark::State& state)
{
    auto& scene = fullScene();
    while (state.KeepRunning())
        for (std::size_t i = 0; i < scene.tracks.count(); ++i)
            benchmark::DoNotOptimize(scene.tracks.isStart(i));
}
BENCHMARK(listTrackLines)->Unit(benchmark::kMillisecond);

void recordAPoint(benchmark::State& state)
{
    auto& scene = fullScene();
    static int second = 1'000'000; // goes on over repetitions: older points are refused
    while (state.KeepRunning())
        scene.tracks.add(trackPoint(++second), std::chrono::seconds(1));
}
BENCHMARK(recordAPoint)->Unit(benchmark::kMicrosecond)->Iterations(10'000);

void variation(benchmark::State& state)
{
    while (state.KeepRunning())
        benchmark::DoNotOptimize(NavMath::variationForDay({10, 55}, 2461000));
}
BENCHMARK(variation)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace kelvox

BENCHMARK_MAIN();
