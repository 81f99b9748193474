#include "devices/Furuno.h"
#include "devices/Magellan.h"

#include "connections/SentenceText.h"
#include "connections/SirfSetup.h"
#include "devices/Emulator.h"
#include "devices/Records.h"

#include <gtest/gtest.h>

#include <sstream>

namespace kelvox {
namespace {

using Code = Error::Code;
using Kind = Fault::Kind;
constexpr ExchangeKinds waypointsAndRoutes{.tracks = false};

std::string lineOf(const std::string& sentence)
{
    return completeSentence(sentence, AddChecksum::Yes);
}

class LineEmulator : public Emulator {
public:
    using Emulator::Emulator;
    void hear(std::string_view bytes) override
    {
        m_heard += bytes;
        for (std::size_t end = 0; (end = m_heard.find('\n')) != m_heard.npos;) {
            const auto line = m_heard.substr(0, end + 1);
            m_heard.erase(0, end + 1);
            lines.push_back(line.substr(0, line.find_last_not_of("\r\n") + 1));
            take(line);
        }
    }
    std::vector<std::string> lines; ///< all that was heard

protected:
    virtual void take(const std::string& line) = 0;
    [[nodiscard]] std::string stranger() const override
    {
        return lineOf("$GPGLL,5230.000,N,01315.000,E");
    }

private:
    std::string m_heard;
};

/// Says a list without being asked, once the user has gone to its menu.
class ReciterEmulator final : public LineEmulator {
public:
    using LineEmulator::LineEmulator;
    std::vector<std::string> list;
    void recite()
    {
        for (const auto& line : list)
            say(line, 2);
    }

private:
    void take(const std::string& /*line*/) override { }
};

class MagellanEmulator final : public LineEmulator {
public:
    explicit MagellanEmulator(int product, Fault fault = {})
        : LineEmulator(fault)
        , m_product(product)
    {
    }
    std::vector<std::string> waypoints, routes, tracks; ///< sentences without checksum
    std::vector<std::string> taken;
    bool isQuiet = false, inHandShake = false, listEnded = false, knowsDates = true;

private:
    void take(const std::string& line) override
    {
        if (isDeafNow())
            return;
        const auto star = line.find('*');
        const auto text = line.substr(0, star);
        if (star == line.npos || lineOf(text) != line)
            return; // not answered, so it comes again
        if (text.starts_with("$PMGNCSM"))
            return;
        if (inHandShake)
            say(lineOf("$PMGNCSM," + line.substr(star + 1, 2)));
        if (text == "$PMGNCMD,HANDON" || text == "$PMGNCMD,HANDOFF")
            inHandShake = text == "$PMGNCMD,HANDON";
        else if (text == "$PMGNCMD,NMEAOFF" || text == "$PMGNCMD,NMEAON")
            isQuiet = text == "$PMGNCMD,NMEAOFF";
        else if (text == "$PMGNCMD,VERSION")
            say(lineOf("$PMGNVER,0" + std::to_string(m_product) + ",4.01,Sea Rover"));
        else if (text == "$PMGNCMD,WAYPOINT")
            sayList(waypoints);
        else if (text == "$PMGNCMD,ROUTE")
            sayList(routes);
        else if (text == "$PMGNCMD,TRACK" || (text == "$PMGNCMD,TRACK,2" && knowsDates))
            sayList(tracks);
        else if (text == "$PMGNCMD,TRACK,2")
            say(lineOf("$PMGNCMD,UNABLE"));
        else if (text == "$PMGNCMD,END")
            listEnded = true;
        else if (taken.empty() || taken.back() != text)
            taken.push_back(text);
    }
    void sayList(const std::vector<std::string>& list)
    {
        for (const auto& sentence : list)
            say(lineOf(sentence));
        say(lineOf("$PMGNCMD,END"));
    }
    int m_product;
};

template <typename Receiver, typename Transfer> struct Session {
    template <typename... Arguments>
    explicit Session(Arguments... arguments)
        : receiver(arguments...)
        , transfer(clock,
                   {stop.get_token(), {}, [this](const auto& key) { messages.push_back(key); }},
                   GPSTransfer::Timing())
    {
        transfer.setPort(std::make_unique<EmulatedLine>(clock, receiver));
    }
    ManualClock clock;
    std::stop_source stop;
    std::vector<std::string> messages;
    Receiver receiver;
    Transfer transfer;
};
using MagellanSession = Session<MagellanEmulator, Magellan>;
using FurunoSession = Session<ReciterEmulator, Furuno>;

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const auto& line : lines)
        text += line + '\n';
    return text;
}

TEST(PositionFields, MinutesComeRoundToADegree)
{
    EXPECT_EQ(positionFields({.longitude = -86.84544, .latitude = 35.82498}, 3),
              "3549.499,N,08650.726,W");
    EXPECT_EQ(positionFields({.longitude = 9.99999999, .latitude = -0.5}, 3),
              "0030.000,S,01000.000,E");
}

TEST(Magellan, PublishedSentences)
{
    const auto old = Magellan::Family::ofProduct(15);
    const auto home = Magellan::waypointFromSentence(
        "$PMGNWPL,3549.499,N,08650.827,W,0000257,M,HOME,HOME,c", old);
    ASSERT_TRUE(home);
    EXPECT_NEAR(home->latitude, 35.82498, 1e-5);
    EXPECT_NEAR(home->longitude, -86.84712, 1e-5);
    EXPECT_EQ(namesOf({*home}), "HOME HOME");
    EXPECT_EQ(home->iconIndex, iconIndex("NAVAIDRED")) << "the red buoy";
    EXPECT_EQ(Magellan::waypointFromSentence("$PMGNWPL,4809.43440,N,01135.06121,E,0,M,A\x1B"
                                             "2CB,,a",
                                             old)
                  ->name,
              "A,B");
    const auto plain = Magellan::routeFromSentence("$PMGNRTE,4,1,c,1,DAD,a,Anna,a");
    EXPECT_EQ(plain->names, (std::vector<std::string>{"DAD", "Anna"}));
    EXPECT_EQ(plain->route, "");
    const auto named = Magellan::routeFromSentence(
        "$PMGNRTE,3,1,c,1,Muenchen_Route,Muenchner-Freiheit,a,Engl-Garten-1,a");
    EXPECT_EQ(named->route, "Muenchen_Route");
    EXPECT_EQ(named->names.size(), 2U);
    const auto dated =
        Magellan::trackFromSentence("$PMGNTRK,3605.259,N,08644.389,W,00151,M,201444.61,A,,020302");
    ASSERT_TRUE(dated && dated->track.date);
    // 2002-03-02 20:14:44 UTC
    EXPECT_EQ(dated->track.date->time_since_epoch(), std::chrono::seconds(1015100084));
    EXPECT_EQ(Magellan::trackFromSentence("$PMGNTRK,3334.530,N,11739.837,W,00000,M,034414.24,A")
                  ->track.date,
              std::nullopt);
    const auto longest =
        place("ABCDEFGHIJ", -89.12345, -179.12345, std::string(60, 'm'), "RESTAURANT");
    EXPECT_EQ(lineOf(Magellan::waypointSentence(longest, Magellan::Family::ofProduct(33))).size(),
              82U);
}

TEST(Magellan, ReceivesEverythingWithoutHandShake)
{
    MagellanSession session(37);
    session.receiver.waypoints = {"$PMGNWPL,3549.499,N,08650.827,W,0,M,HOME,quiet berth,w",
                                  "$PMGNWPL,3600.000,S,08650.000,E,0,M,Away,,a"};
    session.receiver.routes = {"$PMGNRTE,2,1,c,1,Trip,HOME,a,Away,a",
                               "$PMGNRTE,2,2,c,1,Trip,HOME,a,Lost,a"};
    session.receiver.tracks = {"$PMGNTRK,3605.259,N,08644.389,W,0,M,201444.61,A,,020302",
                               "$PMGNTRK,3605.260,N,08644.389,W,0,M,201445.61,V,,020302",
                               "$PMGNTRK,3605.261,N,08644.389,W,0,M,201446.61,A,,020302"};
    ExchangeRecords records;
    const auto received = session.transfer.receive({}, records);
    ASSERT_TRUE(received) << received.error().message;
    EXPECT_EQ(session.transfer.ident(), "Sea Rover");
    EXPECT_EQ(namesOf(records.waypoints), "HOME quiet berth; Away ");
    EXPECT_EQ(records.waypoints[0].iconIndex, iconIndex("MARINA"));
    ASSERT_EQ(records.routes.size(), 1U);
    EXPECT_EQ(records.routes[0].name, "Trip");
    EXPECT_EQ(records.routes[0].points.size(), 3U);
    EXPECT_EQ(records.passedOverCount, 1U) << "the route's point that is no waypoint";
    ASSERT_EQ(records.tracks.size(), 2U);
    EXPECT_TRUE(startsTrackLine(records.tracks, 1)) << "the pause parts the lines";
    EXPECT_FALSE(session.receiver.inHandShake);
    EXPECT_FALSE(session.receiver.isQuiet) << "its NMEA is on again";

    session.receiver.knowsDates = false;
    records = {};
    ASSERT_TRUE(session.transfer.receive({.waypoints = false, .routes = false}, records));
    EXPECT_EQ(records.tracks.size(), 2U);
}

TEST(Magellan, SendsWithHandShake)
{
    ExchangeRecords mine;
    const auto a = place("Anchorage North", 50.25, -1.5, "good, sand", "ANCHOR");
    const auto b = place("Anchorage South", 50.125, -1.5, "", "SHIPWRECK");
    mine.waypoints = {a, b};
    mine.routes = {{"Round", {a, b, a}}};
    mine.tracks.resize(3);
    MagellanSession session(37);
    const auto sent = session.transfer.send({}, mine);
    ASSERT_TRUE(sent) << sent.error().message;
    EXPECT_EQ(joined(session.receiver.taken),
              "$PMGNWPL,5015.00000,N,00130.00000,W,0,M,Anchorag,good- sand,a\n"
              "$PMGNWPL,5007.50000,N,00130.00000,W,0,M,Anchora2,,ao\n"
              "$PMGNRTE,2,1,c,,Round,Anchorag,a,Anchora2,ao\n"
              "$PMGNRTE,2,2,c,,Round,Anchorag,a\n");
    EXPECT_TRUE(session.receiver.listEnded);
    EXPECT_FALSE(session.receiver.inHandShake);
    EXPECT_EQ(session.transfer.leftOut(), 3U);
    EXPECT_EQ(
        session.transfer.renamed(),
        (DeviceNames::Renamed{{"Anchorage North", "Anchorag"}, {"Anchorage South", "Anchora2"}}));
    MagellanSession old(15);
    mine.tracks.clear();
    ASSERT_TRUE(old.transfer.send({}, mine));
    EXPECT_EQ(old.receiver.taken[2], "$PMGNRTE,2,1,c,,ANCHOR,a,ANCHO2,a");
}

TEST(Magellan, WholeOrNotAtAllWhateverGoesWrong)
{
    ExchangeRecords mine;
    mine.waypoints = {place("A", 1, 1, "one"), place("B", 2, 2, "two")};
    for (const bool sends : {false, true})
        for (const auto kind : {Kind::LoseByte, Kind::SpoilByte, Kind::Late, Kind::StrangerFirst,
                                Kind::NotHeard, Kind::PulledOut})
            for (std::size_t at = 0; at < 6; ++at) {
                SCOPED_TRACE(std::to_string(static_cast<int>(kind)) + " " + std::to_string(at));
                MagellanSession session(37, Fault{kind, at});
                ExchangeRecords records;
                if (sends) {
                    const auto sent = session.transfer.send({}, mine);
                    EXPECT_EQ(sent.has_value(), kind != Kind::PulledOut);
                    EXPECT_TRUE(!sent || session.receiver.taken.size() == 2);
                    continue;
                }
                session.receiver.waypoints = {"$PMGNWPL,3549.499,N,08650.827,W,0,M,A,one,w",
                                              "$PMGNWPL,3600.000,S,08650.000,E,0,M,B,two,a"};
                session.receiver.routes = {"$PMGNRTE,1,1,c,1,R,A,a,B,a"};
                const auto received = session.transfer.receive(waypointsAndRoutes, records);
                EXPECT_EQ(received.has_value(), kind != Kind::PulledOut);
                if (received) {
                    EXPECT_EQ(namesOf(records.waypoints), "A one; B two");
                    EXPECT_EQ(records.routes.size(), 1U);
                }
            }
}

TEST(Furuno, UploadByThePublishedLayout)
{
    ExchangeRecords mine;
    std::vector<Waypoint> points;
    for (int i = 1; i < 10; ++i)
        points.push_back(place("WP000" + std::to_string(i), 40, i));
    mine.waypoints = {place("Anchor bay", 40.205333, 9.969667, "Sand, 4 m", "ANCHOR")};
    mine.routes = {{"Harbour", points}};
    FurunoSession session;
    ASSERT_TRUE(session.transfer.send({}, mine));
    const auto& lines = session.receiver.lines;
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[0], "$PFEC,GPwpl,4012.320,N,00958.180,E,ANCHOR,,@xSAND- 4 M,A,,,,");
    EXPECT_EQ(lines[10],
              "$GPRTE,2,1,C,01, WP0001, WP0002, WP0003, WP0004, WP0005, WP0006, WP0007"
              ", WP0008");
    EXPECT_EQ(lines[11], "$GPRTE,2,2,C,01, WP0009");
    EXPECT_EQ(lines[12], "$PFEC,GPrtc,01,HARBOUR");
    EXPECT_EQ(lines[13], "$PFEC,GPxfr,CTL,E");
    EXPECT_EQ(session.transfer.sent().waypoints, 1U);
    EXPECT_EQ(session.transfer.sent().routes, 1U);
    mine.routes[0].points.resize(33, points[0]);
    EXPECT_EQ(session.transfer.send({}, mine).error().code, Code::OutOfRange);
}

TEST(Furuno, NoLineGoesOutBeforeTheReceiverListens)
{
    ManualClock clock;
    std::stop_source stop;
    ReciterEmulator receiver;
    std::string asked;
    Furuno furuno(clock,
                  {.stop = stop.get_token(),
                   .prepare =
                       [&](const std::string& key) {
                           asked = key;
                           stop.request_stop(); // the user thinks better of it
                       }},
                  {});
    furuno.setPort(std::make_unique<EmulatedLine>(clock, receiver));
    ExchangeRecords mine;
    mine.waypoints = {place("BAY", 1, 1)};
    EXPECT_EQ(furuno.send({}, mine).error().code, Code::Cancelled);
    EXPECT_EQ(asked, "NSStartLoadingAtReceiver");
    EXPECT_TRUE(receiver.lines.empty());
}

TEST(Furuno, DownloadIsTakenWhenItsLastLineCame)
{
    const std::vector<std::string> list = {
        "$PFEC,GPwpl,4012.32,N,00958.18,E,WP0000,3,@q00:53 25MAR22,A,,,,\r\n",
        "$PFEC,GPwpl,4012.320,S,00958.180,W,BAY   ,,@x,V,,,,\r\n",
        "$GPRTE,1,1,C,01, WP0000,-BAY   \r\n", "$PFEC,GPrtc,01,HARBOUR\r\n"};
    for (const bool ends : {true, false}) {
        FurunoSession session;
        session.receiver.list = list;
        if (ends)
            session.receiver.list.emplace_back("$PFEC,GPxfr,CTL,E\r\n");
        session.receiver.recite();
        ExchangeRecords records;
        session.transfer.serialPort().write("\r\n"); // the receiver's turn
        const auto received = session.transfer.receive(waypointsAndRoutes, records);
        EXPECT_EQ(session.messages, std::vector<std::string>{"NSStartSavingAtReceiver"});
        ASSERT_EQ(received.has_value(), ends);
        if (!ends)
            continue;
        EXPECT_EQ(namesOf(records.waypoints), "WP0000 00:53 25MAR22; BAY ");
        EXPECT_NEAR(records.waypoints[1].latitude, -40.20533, 1e-5);
        EXPECT_EQ(records.waypoints[1].iconIndex, iconIndex("ANCHOR"));
        EXPECT_FALSE(records.waypoints[1].show);
        ASSERT_EQ(records.routes.size(), 1U);
        EXPECT_EQ(records.routes[0].name, "HARBOUR");
        EXPECT_EQ(namesOf(records.routes[0].points), "WP0000 00:53 25MAR22; BAY ");
    }
}

TEST(NmeaTransfer, WaypointsAndRoutesBothWays)
{
    ExchangeRecords mine;
    for (int i = 1; i < 15; ++i)
        mine.waypoints.push_back(place("WP000" + std::to_string(i), 50 + i, -i));
    mine.routes = {{"Home", mine.waypoints}};
    Session<ReciterEmulator, NmeaTransfer> sender;
    ASSERT_TRUE(sender.transfer.send({}, mine));
    EXPECT_EQ(sender.receiver.lines[0], "$GPWPL,5100.0000,N,00100.0000,W,WP0001*5A");
    for (const auto& line : sender.receiver.lines)
        EXPECT_LE(line.size(), 80U);

    Session<ReciterEmulator, NmeaTransfer> session;
    // It sends round and round, and we come in the middle of a sentence.
    session.receiver.list = {"100.0000,N,00100.0000,W,WP0001*5A\r\n"};
    for (int round = 0; round < 3; ++round)
        for (const auto& line : sender.receiver.lines)
            session.receiver.list.push_back(line + "\r\n");
    session.receiver.recite();
    session.transfer.serialPort().write("\r\n");
    ExchangeRecords records;
    const auto received = session.transfer.receive(waypointsAndRoutes, records);
    ASSERT_TRUE(received) << received.error().message;
    EXPECT_EQ(namesOf(records.waypoints), namesOf(mine.waypoints));
    ASSERT_EQ(records.routes.size(), 1U);
    EXPECT_EQ(namesOf(records.routes[0].points), namesOf(mine.waypoints));

    Session<ReciterEmulator, NmeaTransfer> silent;
    EXPECT_EQ(silent.transfer.receive(waypointsAndRoutes, records).error().code, Code::Truncated);
}

TEST(Sirf, GoesThroughItsBinaryProtocolToNmea)
{
    class Chip final : public Emulator {
    public:
        void hear(std::string_view bytes) override { heard += bytes; }
        std::string heard;

    private:
        [[nodiscard]] std::string stranger() const override { return {}; }
    } chip;
    ManualClock clock;
    Sirf sirf(clock, {}, GPSTransfer::Timing(), 4800);
    sirf.setPort(std::make_unique<EmulatedLine>(clock, chip));
    ASSERT_TRUE(sirf.startPrivate());
    EXPECT_EQ(chip.heard, "$PSRF100,0,4800,8,1,0*0F\r\n" + sirfToNmea(4800));
    EXPECT_GE(clock.monotonicSeconds(), 1) << "it restarts in between";
}

} // namespace
} // namespace kelvox
