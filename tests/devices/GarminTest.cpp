#include "devices/Garmin.h"

#include "devices/GarminEmulator.h"
#include "devices/Records.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {
namespace {

using Code = Error::Code;
using Kind = Fault::Kind;
using Types = std::vector<std::uint16_t>;
constexpr ExchangeKinds waypointsOnly{.routes = false, .tracks = false};
constexpr ExchangeKinds routesOnly{.waypoints = false, .tracks = false};
constexpr ExchangeKinds tracksOnly{.waypoints = false, .routes = false};

// 50.25 N 1.5 W, as published.
const std::string placeBytes = bytes({0xBC, 0xBB, 0xBB, 0x23, 0xEF, 0xEE, 0xEE, 0xFE});
const std::string unknownReal = bytes({0x51, 0x59, 0x04, 0x69});

std::string publishedD100()
{
    return "WP0001" + placeBytes + std::string(4, '\0') + "HARBOUR" + std::string(33, ' ');
}

std::string publishedD108()
{
    auto record = bytes({0, 0xFF, 0, 0x60, 0x12, 0}) + std::string(6, '\0')
        + std::string(12, '\xFF') + placeBytes + unknownReal + unknownReal + unknownReal + "    "
        + std::string("WP0001\0HARBOUR\0", 15);
    record.resize(154);
    return record;
}

/// A session with an emulated receiver.
struct Session {
    explicit Session(std::vector<std::uint16_t> dataTypes, Fault fault = {})
        : receiver(std::move(dataTypes), fault)
        , garmin(clock,
                 {stop.get_token(),
                  [this](const TransferProgress& it) {
                      progress.push_back(it);
                      if (it.done == stopAfter && it.phase != TransferProgress::Phase::Identifying)
                          stop.request_stop();
                  },
                  [this](const std::string& key) { messages.push_back(key); }})
    {
        garmin.setPort(std::make_unique<EmulatedLine>(clock, receiver));
    }
    Result<ExchangeRecords> receive(const ExchangeKinds& kinds)
    {
        ExchangeRecords records;
        const auto received = garmin.receive(kinds, records);
        return received ? Result<ExchangeRecords>(records) : tl::unexpected(received.error());
    }

    ManualClock clock;
    std::stop_source stop;
    std::size_t stopAfter = 1000;
    std::vector<TransferProgress> progress;
    std::vector<std::string> messages;
    GarminEmulator receiver;
    Garmin garmin;
};

TEST(GarminPacket, PublishedPackets)
{
    const auto check = [](int id, const std::string& data, const std::string& wire) {
        EXPECT_EQ(garminFrame(static_cast<std::uint8_t>(id), data), wire) << id;
        std::size_t at = 0;
        const auto read = readGarminPacket([&]() -> std::optional<std::uint8_t> {
            return at < wire.size() ? std::optional(static_cast<std::uint8_t>(wire[at++]))
                                    : std::nullopt;
        });
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(*read, (GarminPacket{static_cast<std::uint8_t>(id), data}));
        EXPECT_EQ(at, wire.size());
    };
    check(254, {}, bytes({0x10, 0xFE, 0, 2, 0x10, 3}));
    check(6, bytes({0xFF, 0}), bytes({0x10, 6, 2, 0xFF, 0, 0xF9, 0x10, 3}));
    check(10, bytes({7, 0}), bytes({0x10, 0x0A, 2, 7, 0, 0xED, 0x10, 3}));
    check(27, bytes({16, 0}), bytes({0x10, 0x1B, 2, 0x10, 0x10, 0, 0xD3, 0x10, 3}));
    // Size and checksum of 16 are doubled as well.
    check(35, std::string(16, 'a'),
          bytes({0x10, 0x23, 0x10, 0x10}) + std::string(16, 'a') + bytes({0xBD, 0x10, 3}));
    check(35, bytes({0xCC}), bytes({0x10, 0x23, 1, 0xCC, 0x10, 0x10, 0x10, 3}));
}

TEST(GarminPacket, RefusesWhatIsDamaged)
{
    const auto codeOf = [](std::string wire) {
        std::size_t at = 0;
        const auto read = readGarminPacket([&]() -> std::optional<std::uint8_t> {
            return at < wire.size() ? std::optional(static_cast<std::uint8_t>(wire[at++]))
                                    : std::nullopt;
        });
        return read ? std::nullopt : std::optional(read.error().code);
    };
    const auto wire = garminFrame(35, bytes({1, 2, 3, 4}));
    for (std::size_t length = 0; length < wire.size(); ++length)
        EXPECT_EQ(codeOf(wire.substr(0, length)), Code::Truncated) << length;
    for (std::size_t i = 0; i < wire.size(); ++i) {
        auto spoilt = wire;
        spoilt[i] = static_cast<char>(spoilt[i] ^ 0x40);
        EXPECT_TRUE(codeOf(spoilt)) << "byte " << i;
    }
    auto otherEnd = wire;
    otherEnd.back() = 4;
    EXPECT_EQ(codeOf(otherEnd), std::nullopt);
}

TEST(GarminRecords, PlacesInSemicircles)
{
    const auto latitude = [](double degrees) {
        return semicircles({.longitude = 0, .latitude = degrees}).latitude;
    };
    EXPECT_EQ(latitude(45), 536870912);
    EXPECT_EQ(latitude(-45), -536870912);
    EXPECT_EQ(latitude(50.25), 599505852);
    EXPECT_EQ(semicircles({.longitude = -1.5, .latitude = 0}).longitude, -17895697);
    EXPECT_EQ(semicircles({.longitude = 180, .latitude = 0}).longitude, -2147483647 - 1);
    EXPECT_EQ(semicircles({}), (Semicircles{0x7FFFFFFF, 0x7FFFFFFF}));
    EXPECT_FALSE(positionOf({0x7FFFFFFF, 0x7FFFFFFF}).isKnown());
    EXPECT_FALSE(positionOf({(1 << 30) + 1, 0}).isKnown()) << "beyond the pole";
    EXPECT_EQ(positionOf({536870912, -536870912}), (Position{.longitude = -45, .latitude = 45}));

    // There and back within one, as waypoints keep them too.
    constexpr double one = 180.0 / 2147483648.0;
    for (double degrees = -89.9; degrees < 90; degrees += 0.73519) {
        const Position exact{.longitude = degrees * 2, .latitude = degrees};
        const auto back = positionOf(semicircles(exact));
        EXPECT_NEAR(back.latitude, exact.latitude, one);
        EXPECT_NEAR(back.longitude, exact.longitude, one);
        const auto kept = place("A", degrees, degrees * 2);
        const auto again =
            GarminRecords::makeWaypointWithD108(GarminRecords::makeD108WaypointType(kept));
        EXPECT_NEAR(again->latitude, kept.latitude, one);
        EXPECT_NEAR(again->longitude, kept.longitude, one);
    }
}

TEST(GarminRecords, WaypointTypesByTheirPublishedLayout)
{
    const auto harbour = place("WP0001", 50.25, -1.5, "HARBOUR");
    EXPECT_EQ(GarminRecords::makeD100WaypointType(harbour), publishedD100());
    EXPECT_EQ(GarminRecords::makeD108WaypointType(harbour), publishedD108());

    const auto fuel = place("WP0001", 50.25, -1.5, "HARBOUR", "FUEL");
    const auto symbol = bytes({8, 0});
    struct Row {
        int type;
        std::string record;
        std::size_t size, placeAt, symbolAt, nameAt, commentAt;
        std::optional<Waypoint> (*read)(std::string_view);
    };
    constexpr std::size_t none = 0;
    const Row rows[] = {
        {100, GarminRecords::makeD100WaypointType(fuel), 58, 6, none, 0, 18,
         GarminRecords::makeWaypointWithD100},
        {108, GarminRecords::makeD108WaypointType(fuel), 154, 24, 4, 48, 55,
         GarminRecords::makeWaypointWithD108},
        {109, GarminRecords::makeD109WaypointType(fuel), 158, 24, 4, 52, 59,
         GarminRecords::makeWaypointWithD109},
        {110, GarminRecords::makeD110WaypointType(fuel), 168, 24, 4, 62, 69,
         GarminRecords::makeWaypointWithD110},
        {150, GarminRecords::makeD150WaypointType(fuel), 119, 9, none, 0, 75,
         GarminRecords::makeWaypointWithD150},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(row.record.size(), row.size);
        EXPECT_EQ(row.record.substr(row.placeAt, 8), placeBytes);
        EXPECT_EQ(row.record.substr(row.nameAt, 6), "WP0001");
        EXPECT_EQ(row.record.substr(row.commentAt, 7), "HARBOUR");
        if (row.symbolAt != none) {
            EXPECT_EQ(row.record.substr(row.symbolAt, 2), symbol);
        }
        const auto back = row.read(row.record + "more");
        ASSERT_TRUE(back);
        EXPECT_EQ(back->name, "WP0001");
        EXPECT_EQ(back->description, "HARBOUR");
        EXPECT_EQ(back->iconIndex, row.symbolAt != none ? iconIndex("FUEL") : 0);
        EXPECT_EQ(back->positionOnGPS(), fuel.positionOnGPS());
        for (std::size_t length = 0; length < row.placeAt + 8; ++length)
            EXPECT_FALSE(row.read(std::string_view(row.record).substr(0, length))) << length;
    }
    EXPECT_EQ(rows[2].record.substr(0, 4), bytes({1, 0, 0x1F, 0x70}));
    EXPECT_EQ(rows[3].record.substr(0, 4), bytes({1, 0, 0x1F, 0x80}));
    EXPECT_EQ(rows[4].record[8], 4) << "a user's waypoint";
}

TEST(GarminRecords, NamesThatAreTooLongOrForeign)
{
    auto waypoint = place(std::string(80, 'n'), 1, 1,
                          "Gr\xC3\xBC\xC3\x9F"
                          "e, "
                              + std::string(80, 'c'));
    EXPECT_EQ(GarminRecords::makeD108WaypointType(waypoint).size(), 154U)
        << "texts at their longest";
    const auto long108 =
        GarminRecords::makeWaypointWithD108(GarminRecords::makeD108WaypointType(waypoint));
    EXPECT_EQ(long108->name, std::string(50, 'n'));
    EXPECT_EQ(long108->description.substr(0, 8),
              "Grus"
              "e, c")
        << "50 characters, none foreign";
    const auto d100 =
        GarminRecords::makeWaypointWithD100(GarminRecords::makeD100WaypointType(waypoint));
    EXPECT_EQ(d100->name, "NNNNNN");
    EXPECT_EQ(d100->description.substr(0, 8), "GRUSE- C");
    // A receiver of the West writes single bytes.
    EXPECT_EQ(GarminRecords::makeWaypointWithD100("K\xF8"
                                                  "ge  "
                                                  + publishedD100().substr(6))
                  ->name,
              "K\xC3\xB8ge");
}

TEST(GarminRecords, RoutesAndTracks)
{
    EXPECT_EQ(GarminRecords::makeD201RouteType(1, "Home"), "\x01HOME                ");
    const auto link = GarminRecords::makeD210RouteType({});
    EXPECT_EQ(link.size(), 71U);
    EXPECT_EQ(link.substr(0, 21),
              bytes({3, 0}) + std::string(6, '\0') + std::string(12, '\xFF') + '\0');

    // 2001-09-09 01:46:40 UTC is 1000000000 after 1970.
    Track track;
    track.setPositionOnGPS({.longitude = -1.5, .latitude = 50.25});
    track.date = Date(std::chrono::seconds(1000000000));
    track.depth = 32.8084F; // 10 m
    track.temperature = 68; // 20 °C
    const auto time = bytes({0x00, 0x7E, 0xFD, 0x15}); // 368934400 of its own count
    const auto ten = bytes({0, 0, 0x20, 0x41});
    const auto twenty = bytes({0, 0, 0xA0, 0x41});
    const std::string d300 = placeBytes + time + '\x01';
    const std::string d301 = placeBytes + time + unknownReal + ten + '\x01';
    const std::string d302 = placeBytes + time + unknownReal + ten + twenty + '\x01';
    EXPECT_EQ(GarminRecords::makeD300TrackType({track, true}), d300);
    EXPECT_EQ(GarminRecords::makeD301TrackType({track, true}).size(), d301.size());
    EXPECT_EQ(GarminRecords::makeD302TrackType({track, true}).size(), d302.size());
    const auto read = GarminRecords::makeTrackWithD302(d302 + "round");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->track.date, track.date);
    EXPECT_TRUE(read->startsLine);
    EXPECT_FLOAT_EQ(read->track.depth, track.depth);
    EXPECT_FLOAT_EQ(read->track.temperature, 68);
    EXPECT_FLOAT_EQ(GarminRecords::makeTrackWithD301(d301)->track.depth, track.depth);
    EXPECT_FALSE(GarminRecords::makeTrackWithD302(d301));
    auto unknown = d301;
    unknown.replace(8, 4, "\xFF\xFF\xFF\xFF").replace(16, 4, unknownReal);
    EXPECT_EQ(GarminRecords::makeTrackWithD301(unknown)->track.date, std::nullopt);
    EXPECT_FALSE(isKnown(GarminRecords::makeTrackWithD301(unknown)->track.depth));
    EXPECT_EQ(GarminRecords::colorFromD310(GarminRecords::makeD310TrackType("A", {0.9F, 0.1F, 0})),
              (TrackColor{1, 0, 0}));
}

TEST(Garmin, IdentifiesReceivers)
{
    Session modern({108, 202, 210, 310, 301});
    EXPECT_TRUE(modern.garmin.send({}, {}));
    EXPECT_EQ(modern.garmin.ident(), "Yacht Plotter 3");
    EXPECT_TRUE(modern.garmin.capabilities().usesD108WaypointType());
    EXPECT_TRUE(modern.garmin.capabilities().usesD210RouteType());
    EXPECT_TRUE(modern.garmin.capabilities().usesD310TrackType());
    EXPECT_FALSE(modern.garmin.capabilities().usesD109WaypointType());

    Session old({}); // from before capability arrays
    EXPECT_TRUE(old.garmin.send({}, {}));
    EXPECT_EQ(old.garmin.ident(), "Yacht Plotter 3");
    EXPECT_FALSE(old.garmin.capabilities().usesD108WaypointType());
}

TEST(Garmin, WaypointsBothWaysInEveryType)
{
    for (const std::uint16_t type : Types{100, 108, 109, 110, 150}) {
        SCOPED_TRACE(type);
        Session session({type});
        ExchangeRecords mine;
        mine.waypoints = {place("WP0001", 50.25, -1.5, "HARBOUR", "ANCHOR"),
                          place("WP0002", -33.5, 151.25, "", "LIGHT")};
        for (int i = 3; i < 30; ++i)
            mine.waypoints.push_back(place("WP00" + std::to_string(i + 10), i, -i));
        ASSERT_TRUE(session.garmin.send(waypointsOnly, mine));
        EXPECT_EQ(session.receiver.listsTaken, 1U);
        ASSERT_EQ(session.receiver.taken.size(), mine.waypoints.size());
        EXPECT_EQ(session.progress.back().done, mine.waypoints.size());
        session.receiver.memory[7] = session.receiver.taken;
        const auto records = session.receive(waypointsOnly);
        ASSERT_TRUE(records) << records.error().message;
        EXPECT_EQ(namesOf(records->waypoints), namesOf(mine.waypoints));
        EXPECT_EQ(records->waypoints[1].positionOnGPS(), mine.waypoints[1].positionOnGPS());
        const bool hasSymbols = type >= 108 && type <= 110;
        EXPECT_EQ(records->waypoints[0].iconIndex, hasSymbols ? iconIndex("ANCHOR") : 0);
        EXPECT_EQ(session.messages, std::vector<std::string>{"NSSlaveMode"});
    }
}

TEST(Garmin, RoutesBothWaysWithAndWithoutLinks)
{
    ExchangeRecords mine;
    const auto a = place("ALFA", 1, 1);
    const auto b = place("BRAVO", 2, 2);
    mine.routes = {{"There", {a, b, place("CHARLIE LONG", 3, 3)}}, {"Back", {b, a}}};
    for (const bool links : {false, true}) {
        Session session(links ? Types{100, 201, 210} : Types{100, 201});
        GarminEmulator::Packets all;
        for (const auto& route : mine.routes) {
            ExchangeRecords one;
            one.routes = {route};
            ASSERT_TRUE(session.garmin.send(routesOnly, one));
            std::string ids;
            for (const auto& packet : session.receiver.taken)
                ids += std::to_string(packet.id) + ' ';
            if (route.points.size() == 2) {
                EXPECT_EQ(ids, links ? "29 30 98 30 " : "29 30 30 ");
            }
            all.insert(all.end(), session.receiver.taken.begin(), session.receiver.taken.end());
        }
        session.receiver.memory[4] = all;
        const auto records = session.receive(routesOnly);
        ASSERT_TRUE(records) << records.error().message;
        ASSERT_EQ(records->routes.size(), 2U);
        EXPECT_EQ(records->routes[0].name, "THERE");
        EXPECT_EQ(namesOf(records->routes[0].points), "ALFA ; BRAVO ; CHARLI ");
        EXPECT_EQ(records->routes[1].name, "BACK");
        EXPECT_EQ(namesOf(records->routes[1].points), "BRAVO ; ALFA ");
        EXPECT_TRUE(records->waypoints.empty()) << "they come with the import of the route";
    }
}

TEST(Garmin, TracksBothWaysInEveryType)
{
    ExchangeRecords mine;
    for (int i = 0; i < 6; ++i) {
        Track point;
        point.setPositionOnGPS({.longitude = -1.5, .latitude = 50 + i * 0.1});
        point.date = Date(std::chrono::seconds(1000000000 + i));
        point.depth = 10;
        point.color = i < 4 ? TrackColor{1, 0, 0} : TrackColor{0, 0, 1};
        mine.tracks.push_back(point);
    }
    for (const std::uint16_t type : Types{300, 301, 302})
        for (const std::uint16_t header : Types{0, 310, 311, 312}) {
            SCOPED_TRACE(std::to_string(type) + " " + std::to_string(header));
            Session session({108, type, header});
            ASSERT_TRUE(session.garmin.send(tracksOnly, mine));
            EXPECT_EQ(session.receiver.taken.size(), header == 0 ? 6U : 7U);
            session.receiver.memory[6] = session.receiver.taken;
            const auto records = session.receive(tracksOnly);
            ASSERT_TRUE(records) << records.error().message;
            ASSERT_EQ(records->tracks.size(), 6U);
            for (std::size_t i = 0; i < 6; ++i) {
                EXPECT_EQ(records->tracks[i].date, mine.tracks[i].date);
                EXPECT_NEAR(records->tracks[i].latitude, mine.tracks[i].latitude, 1e-5);
                EXPECT_EQ(isKnown(records->tracks[i].depth), type != 300);
                EXPECT_EQ(startsTrackLine(records->tracks, i), startsTrackLine(mine.tracks, i));
            }
            EXPECT_EQ(records->tracks[0].color == (TrackColor{1, 0, 0}),
                      header == 310 || header == 312);
        }
}

/// Wherever a fault strikes: all of it or a failure, and what can be mended is mended.
TEST(Garmin, ReceivesWholeOrNotAtAllWhateverGoesWrong)
{
    const auto run = [](Fault fault, std::size_t* said) {
        Session session({108, 300}, fault);
        for (int i = 0; i < 4; ++i) {
            const auto name = "WP000" + std::to_string(i);
            auto record = publishedD108();
            record.replace(48, 6, name);
            session.receiver.memory[7].push_back({35, record});
        }
        const auto records = session.receive(waypointsOnly);
        if (said)
            *said = session.receiver.saidCount();
        if (!records)
            return records.error().message;
        return namesOf(records->waypoints);
    };
    std::size_t said = 0;
    const auto whole = run({}, &said);
    EXPECT_EQ(whole, "WP0000 HARBOUR; WP0001 HARBOUR; WP0002 HARBOUR; WP0003 HARBOUR");
    ASSERT_GT(said, 8U);
    for (std::size_t at = 0; at < said; ++at) {
        SCOPED_TRACE(at);
        EXPECT_EQ(run({Kind::LoseByte, at}, nullptr), whole);
        EXPECT_EQ(run({Kind::SpoilByte, at}, nullptr), whole);
        EXPECT_EQ(run({Kind::Swallow, at}, nullptr), whole);
        EXPECT_EQ(run({Kind::Late, at}, nullptr), whole);
        EXPECT_EQ(run({Kind::StrangerFirst, at}, nullptr), whole);
        EXPECT_EQ(run({Kind::NotHeard, at}, nullptr), whole);
        EXPECT_NE(run({Kind::PulledOut, at}, nullptr).find("The receiver is gone"),
                  std::string::npos);
    }
}

TEST(Garmin, SendsWholeOrSaysSoWhateverGoesWrong)
{
    ExchangeRecords mine;
    mine.routes = {{"HOME", {place("A", 1, 1), place("B", 2, 2), place("C", 3, 3)}}};
    const auto run = [&](Fault fault) {
        Session session({108, 210}, fault);
        const auto sent = session.garmin.send(routesOnly, mine);
        EXPECT_EQ(sent.has_value(), session.receiver.listsTaken > 0)
            << "what is said of it is what became of it";
        EXPECT_TRUE(!sent || session.receiver.taken.size() == 6) << session.receiver.taken.size();
        return sent ? std::string() : sent.error().message;
    };
    for (std::size_t at = 0; at < 12; ++at) {
        SCOPED_TRACE(at);
        for (const auto kind : {Kind::LoseByte, Kind::SpoilByte, Kind::Swallow, Kind::Late,
                                Kind::StrangerFirst, Kind::NotHeard})
            EXPECT_EQ(run({kind, at}), "") << static_cast<int>(kind);
    }
    for (std::size_t at = 0; at < 11; ++at)
        EXPECT_NE(run({Kind::PulledOut, at}).find("The receiver is gone"), std::string::npos) << at;
}

TEST(Garmin, ListsThatEndEarlyAreNoLists)
{
    Session session({108});
    auto& memory = session.receiver.memory[7];
    memory = {{35, publishedD108()}, {35, "too short"}};
    EXPECT_EQ(session.receive(waypointsOnly).error().code, Code::BadSyntax);
    EXPECT_TRUE(session.receiver.wasAborted) << "and the receiver is told that it is over";
    // A receiver that leaves out what it announced.
    memory = {{35, publishedD108()}, {12, bytes({7, 0})}};
    const auto records = session.receive(waypointsOnly);
    ASSERT_FALSE(records);
    EXPECT_NE(records.error().message.find("announced 2 records and sent 1"), std::string::npos);
}

TEST(Garmin, AReceiverThatNeverComesToThePointDoesNotHoldUs)
{
    Session session({108});
    session.receiver.talksOfItself = true;
    session.receiver.memory[7] = {{35, publishedD108()}};
    EXPECT_TRUE(session.receive(waypointsOnly)) << "what nobody asked for is passed over";

    class Babbler final : public Emulator {
    public:
        void hear(std::string_view) override { say(GarminEmulator::frame(51, "x")); }

    private:
        [[nodiscard]] std::string stranger() const override { return {}; }
    } babbler;
    Garmin garmin(session.clock, {});
    garmin.setPort(std::make_unique<EmulatedLine>(session.clock, babbler));
    ExchangeRecords records;
    EXPECT_EQ(garmin.receive(waypointsOnly, records).error().code, Code::Truncated);
}

TEST(Garmin, CancellingLeavesTheReceiverInOrder)
{
    ExchangeRecords mine;
    for (int i = 0; i < 9; ++i)
        mine.waypoints.push_back(place("WP000" + std::to_string(i), i, i));
    Session session({108});
    session.stopAfter = 3;
    const auto sent = session.garmin.send(waypointsOnly, mine);
    ASSERT_FALSE(sent);
    EXPECT_EQ(sent.error().code, Code::Cancelled);
    EXPECT_TRUE(session.receiver.wasAborted);
    EXPECT_EQ(session.receiver.listsTaken, 0U);

    Session receiving({108});
    for (int i = 0; i < 9; ++i)
        receiving.receiver.memory[7].push_back({35, publishedD108() + std::string(1, char(i))});
    receiving.stopAfter = 2;
    const auto received = receiving.receive(waypointsOnly);
    ASSERT_FALSE(received);
    EXPECT_EQ(received.error().code, Code::Cancelled);
    EXPECT_TRUE(receiving.receiver.wasAborted);
}

} // namespace
} // namespace kelvox
