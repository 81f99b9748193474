#include "devices/DeviceTransfer.h"

#include "devices/GarminEmulator.h"
#include "devices/GarminRecords.h"
#include "devices/LiveReceiver.h"
#include "devices/ReceiverSetup.h"
#include "devices/Records.h"
#include "exchange/ModelImport.h"
#include "support/MainLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace kelvox {
namespace {

TEST(DeviceText, WhatAReceiverCanHold)
{
    const TextRule capitals{.longest = 6};
    const TextRule mixed{
        .longest = 8, .lowerCase = TextRule::LowerCase::Yes, .others = " -", .substitute = '-'};
    EXPECT_EQ(deviceText("Port Sea", capitals), "PORTSE");
    EXPECT_EQ(deviceText("\xC3\x85lesund", capitals), "ALESUN") << "without its accent";
    EXPECT_EQ(deviceText("a,b\xE2\x82\xAC", mixed), "a-b-");
    EXPECT_EQ(deviceText("  Buoy 7 and more", mixed), "Buoy 7 a");
    EXPECT_EQ(deviceText("Buoy no 1", mixed), "Buoy no") << "no blank at the end";
    EXPECT_EQ(deviceText("\xC3", mixed), "-") << "broken UTF-8";
    EXPECT_EQ(textFromDevice(std::string_view("BAY \0junk", 9)), "BAY");
}

TEST(DeviceNames, NeverOneNameForTwoWaypoints)
{
    DeviceNames names({.longest = 6});
    const auto exact = place("HARBOU", 1, 1);
    const auto north = place("Harbour North", 2, 2);
    const auto south = place("Harbour South", 3, 3);
    const auto lower = place("harbou", 4, 4);
    const auto foreign = place("\xE6\xB5\xB7", 5, 5);
    const auto twin = place("HARBOU", 6, 6);
    const auto same = north;
    for (const auto* each : {&north, &south, &lower, &exact, &foreign, &twin, &same})
        names.announce(*each);
    names.assign();
    EXPECT_EQ(names.name(exact), "HARBOU") << "what fits keeps its name, wherever it stands";
    EXPECT_EQ(names.name(north), "HARBO2");
    EXPECT_EQ(names.name(south), "HARBO3");
    EXPECT_EQ(names.name(lower), "HARBO4");
    EXPECT_EQ(names.name(foreign), "WP2");
    EXPECT_EQ(names.name(twin), "HARBO5") << "one name at two places: two waypoints";

    DeviceNames many({.longest = 4});
    std::set<std::string> given;
    std::vector<Waypoint> waypoints;
    for (int i = 0; i < 1500; ++i)
        waypoints.push_back(place("Anchorage " + std::to_string(i), i * 0.01, 1));
    for (const auto& waypoint : waypoints)
        many.announce(waypoint);
    many.assign();
    for (const auto& waypoint : waypoints) {
        EXPECT_LE(many.name(waypoint).size(), 4U);
        EXPECT_TRUE(given.insert(many.name(waypoint)).second) << many.name(waypoint);
    }
}

struct Desk {
    DeviceResult perform(DeviceJob job)
    {
        std::optional<DeviceResult> result;
        EXPECT_TRUE(transfer.start(job, {.progress = {}, .message = {}, .finished = [&](auto it) {
                                             thread = std::this_thread::get_id();
                                             result = std::move(it);
                                         }}));
        EXPECT_FALSE(transfer.start(job, {})) << "one at a time";
        EXPECT_TRUE(main.runUntil([&] { return result.has_value(); }));
        EXPECT_EQ(thread, std::this_thread::get_id());
        EXPECT_FALSE(transfer.isRunning());
        return std::move(*result);
    }
    SystemClock clock;
    MainLoop main;
    std::thread::id thread;
    DeviceTransfer transfer{main, clock};
};

GarminEmulator::Packets someWaypoints()
{
    GarminEmulator::Packets packets;
    for (int i = 1; i < 5; ++i)
        packets.push_back(
            {35, GarminRecords::makeD108WaypointType(place("WP000" + std::to_string(i), i, i))});
    return packets;
}

TEST(DeviceTransfer, HandsOverWhatCameInOneStepAndNothingOfAFailure)
{
    const SystemClock clock;
    EditHistory history(clock);
    WaypointsModel waypoints(history);
    RoutesModel routes(history, waypoints);
    TracksModel tracks(history);
    DeviceJob job{.rate = "9600", .kinds = {.routes = false, .tracks = false}};
    for (const bool isPulledOut : {true, false}) {
        GarminEmulator emulator({108}, isPulledOut ? Fault{Fault::Kind::PulledOut, 9} : Fault{});
        emulator.memory[7] = someWaypoints();
        Desk desk;
        LiveReceiver receiver(emulator);
        job.port = receiver.path();
        const auto result = desk.perform(job);
        EXPECT_EQ(result.succeeded(), !isPulledOut);
        EXPECT_EQ(result.ident, "Yacht Plotter 3");
        {
            ModelImport import(waypoints, routes, tracks);
            handOver(result.records, import);
        }
        EXPECT_EQ(waypoints.count(), isPulledOut ? 0U : 4U);
    }
    history.undo();
    EXPECT_EQ(waypoints.count(), 0U) << "one step";
}

TEST(DeviceTransfer, CanBeCancelledAndLeftAtAnyTime)
{
    GarminEmulator emulator({108});
    emulator.memory[7] = someWaypoints();
    LiveReceiver receiver(emulator);
    const DeviceJob job{.port = receiver.path(), .rate = "9600"};
    Desk desk;
    std::optional<DeviceResult> result;
    ASSERT_TRUE(desk.transfer.start(job,
                                    {.progress = [&](const auto&) { desk.transfer.cancel(); },
                                     .message = {},
                                     .finished = [&](auto it) { result = std::move(it); }}));
    ASSERT_TRUE(desk.main.runUntil([&] { return result.has_value(); }));
    ASSERT_TRUE(result->error);
    EXPECT_EQ(result->error->code, Error::Code::Cancelled);
    EXPECT_TRUE(result->records.waypoints.empty());

    bool isTold = false;
    {
        DeviceTransfer short_(desk.main, desk.clock);
        short_.start(job,
                     {.progress = [&](const auto&) { isTold = true; },
                      .message = {},
                      .finished = [&](auto) { isTold = true; }});
    }
    desk.main.post([&] { result.reset(); });
    desk.main.runUntil([&] { return !result; });
    EXPECT_FALSE(isTold) << "nobody is there any more";
}

TEST(ReceiverSetup, AGarminReceiverIsIdentifiedAndAnUnfinishedListEnded)
{
    GarminEmulator emulator({108});
    const SystemClock clock;
    std::string ident;
    {
        LiveReceiver receiver(emulator);
        Serial port;
        ASSERT_TRUE(port.open(receiver.path(), "9600"));
        garminSetup(clock, [&](const std::string& it) { ident = it; })(port, {});
        EXPECT_TRUE(port.isOpen()) << "the connection goes on with it";
    }
    EXPECT_EQ(ident, "Yacht Plotter 3");
    EXPECT_TRUE(emulator.wasAborted);
}

TEST(DeviceTransfer, APortThatIsNotThereIsAFailure)
{
    Desk desk;
    const auto result = desk.perform({.port = "/dev/tty.nothere", .rate = "9600"});
    ASSERT_TRUE(result.error);
    EXPECT_NE(result.error->message.find("Plug it in"), std::string::npos);
}

} // namespace
} // namespace kelvox
