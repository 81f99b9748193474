#include "Scene.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <atomic>
#include <csignal>
#include <ctime>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvox {
namespace {

using namespace std::chrono_literals;

std::string contents(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void fill(const std::filesystem::path& file, const std::string& bytes)
{
    std::ofstream(file, std::ios::binary) << bytes;
}

/// A folder in memory where there is one. To a killed process that is all the same, and thousands
/// of synced saves do not wait for a disk.
struct MemoryFolder {
    MemoryFolder()
    {
        if (std::filesystem::is_directory("/dev/shm"))
            ::setenv("TMPDIR", "/dev/shm", 1);
        folder.emplace();
        ::unsetenv("TMPDIR");
    }
    [[nodiscard]] const std::filesystem::path& path() const { return folder->path(); }
    std::optional<TemporaryFolder> folder;
};

/// Some of everything, with texts that a careless writer would break.
void populate(Scene& scene)
{
    scene.waypoint("A & <B>", {-179.9, -89.9});
    scene.waypoint("\"C\"", {10, 50});
    scene.waypoints.edit(scene.waypoints.waypoint(0), [](Waypoint& it) {
        it.description = "two\nlines\tand \x01 a bell, Latin-1 \xE6 and \xC3\xA6";
        it.groups = {"Fjord & sound", "Imported"};
        it.iconIndex = 7;
        it.show = false;
    });
    Route route;
    route.name = "Trip";
    for (const int index : {0, 1, 0})
        route.addWaypointReference(scene.waypoints.waypoint(index));
    scene.routes.add(std::move(route));
    auto point = trackPoint(5);
    point.cog = 123.4F;
    point.depth = 0.1F;
    point.color = {1, 0.5F, 0};
    scene.tracks.add(point, 1s);
    scene.tracks.add(Track{}, 1s); // not on the chart, never loaded again
}

TEST(Persistence, KeepsEveryFieldAndIsReadableToTheLibrary)
{
    const TemporaryFolder folder;
    std::string before;
    {
        Scene scene(folder.path());
        populate(scene);
        scene.tracks.remove(1, 1);
        before = scene.dump();
        EXPECT_TRUE(scene.waypoints.isChanged());
        ASSERT_TRUE(scene.save());
        EXPECT_FALSE(scene.waypoints.isChanged());
    }
    {
        Scene again(folder.path());
        EXPECT_EQ(again.dump(), before);
        EXPECT_EQ(again.waypointReport.recovered, 0U);
        EXPECT_EQ(Scene::through(*again.routes.route(0)), "A & <B> \"C\" A & <B>");
        EXPECT_EQ(again.waypoints.waypointFromName("A & <B>")->description,
                  "two\nlines\tand   a bell, Latin-1 \u00E6 and \u00E6");
    }

    // Another reader of property lists finds the same form, and its binary form reads back.
    for (const char* name : {"waypoints.plist", "routes.plist", "tracks.plist"}) {
        const auto xml = contents(folder.path() / name);
        plist_t list = nullptr;
        plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &list);
        ASSERT_NE(list, nullptr) << name;
        char* binary = nullptr;
        std::uint32_t length = 0;
        plist_to_bin(list, &binary, &length);
        fill(folder.path() / name, std::string(binary, length));
        plist_to_bin_free(binary);
        plist_free(list);
    }
    Scene fromBinary(folder.path());
    EXPECT_EQ(fromBinary.dump(), before);
}

TEST(Persistence, ReadsOtherWritersAndDropsWhatTheChartCannotHold)
{
    const TemporaryFolder folder;
    // Comments and attributes are for the library; "B" has no name inside, and one is no record.
    fill(folder.path() / "waypoints.plist", R"(<?xml version="1.0"?>
<plist version="1.0"><dict><!-- by hand -->
<key>A</key><dict><key>longitude</key><real>10.5</real><key>latitude</key><integer>50</integer>
<key>name</key><string>A</string></dict>
<key>East</key><dict><key>name</key><string>East</string><key>latitude</key><real>0</real>
<key>longitude</key><real>180</real></dict>
<key>North</key><dict><key>name</key><string>North</string><key>latitude</key><real>90</real>
<key>longitude</key><real>0</real></dict>
<key>odd</key><string>no record</string>
</dict></plist>)");
    fill(folder.path() / "tracks.plist", R"(<plist version="1.0"><dict><key>1</key><dict>
<key>name</key><string>1</string><key>latitude</key><real>5</real><key>longitude</key><real>5</real>
<key>date</key><date>0001-01-01T00:00:00Z</date></dict></dict></plist>)");
    fill(folder.path() / "routes.plist", R"(<plist version="1.0"><dict><key>R</key><dict>
<key>name</key><string>R</string><key>waypoint_0</key><string>A</string>
<key>waypoint_1</key><string>Gone</string><key>waypoint_2</key><string> A </string>
<key>waypoint_4</key><string>A</string></dict></dict></plist>)");
    const Scene scene(folder.path());
    ASSERT_EQ(scene.waypoints.count(), 1U);
    EXPECT_EQ(scene.waypoints.waypoint(0)->positionOnGPS(), (Position{10.5, 50}));
    EXPECT_TRUE(scene.waypoints.waypoint(0)->show);
    EXPECT_EQ(scene.waypointReport.passedOver, 3U);
    ASSERT_EQ(scene.tracks.count(), 1U);
    EXPECT_FALSE(scene.tracks.track(0)->date); // long before the clock begins
    EXPECT_EQ(Scene::through(*scene.routes.route(0)), "A A"); // the missing number 3 ends it
}

TEST(Persistence, ReadsLargeFilesInPiecesAndFindsTheSame)
{
    const TemporaryFolder folder;
    const auto file = folder.path() / "waypoints.plist";
    std::string before;
    std::string own;
    {
        Scene scene(folder.path());
        auto group = std::make_optional<EditHistory::Group>(scene.history);
        for (int i = 0; i < 9000; ++i) {
            Waypoint waypoint;
            waypoint.name = std::to_string(i);
            // Lines and tags in a text must not pass for the beginning of a record.
            waypoint.description = std::string(static_cast<std::size_t>(i % 1000), 'x')
                + "\n<key>no key</key><dict></dict>\n<key>";
            waypoint.setPositionOnGPS({i / 100.0, 50});
            scene.waypoints.add(std::move(waypoint));
        }
        group.reset();
        ASSERT_TRUE(scene.waypoints.save(file));
        before = scene.dump();
        own = contents(file);
        ASSERT_GT(own.size(), 4U << 20);
    }
    EXPECT_EQ(Scene(folder.path()).dump(), before);

    // The same entries broken into lines by another program: lines begin with keys inside records.
    std::string broken;
    for (std::string_view rest = own; !rest.empty();) {
        const auto next = std::min(rest.find("><key>"), rest.size() - 1) + 1;
        broken.append(rest.substr(0, next)) += '\n';
        rest.remove_prefix(next);
    }
    fill(file, broken);
    EXPECT_EQ(Scene(folder.path()).dump(), before);

    // Cut short or damaged in the middle it is not half read.
    for (const auto& bytes : {own.substr(0, own.size() / 2),
                              own.substr(0, own.size() / 2) + '<' + own.substr(own.size() / 2)}) {
        fill(file, bytes);
        const Scene scene(folder.path());
        ASSERT_TRUE(scene.waypointReport.error);
        EXPECT_EQ(scene.waypoints.count(), 0U);
        EXPECT_EQ(contents(scene.waypointReport.keptAs), bytes);
    }
}

TEST(Persistence, KeepsUnreadableFilesUnderAnotherName)
{
    const TemporaryFolder folder;
    const auto file = folder.path() / "waypoints.plist";
    for (const std::string bytes :
         {"", "<plist><dict><key>A</key>", "garbage", "bplist00\x01\x02"}) {
        fill(file, bytes);
        Scene scene(folder.path());
        ASSERT_TRUE(scene.waypointReport.error) << bytes;
        EXPECT_NE(scene.waypointReport.error->message.find("waypoints.plist"), std::string::npos);
        EXPECT_EQ(scene.waypoints.count(), 0U);
        EXPECT_EQ(contents(scene.waypointReport.keptAs), bytes);
        scene.waypoint("new");
        ASSERT_TRUE(scene.save());
        EXPECT_EQ(contents(scene.waypointReport.keptAs), bytes);
        std::filesystem::remove(file);
    }
    // A folder in the file's place can neither be read nor moved: it stays, saving says so.
    std::filesystem::create_directory(file);
    Scene scene(folder.path());
    EXPECT_TRUE(scene.waypointReport.error);
    scene.waypoint("new");
    EXPECT_FALSE(scene.waypoints.save(file));
    EXPECT_TRUE(scene.waypoints.isChanged());
    EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST(Persistence, KeepsTheLastTenSavedStates)
{
    const TemporaryFolder folder;
    Scene scene(folder.path());
    for (int i = 1; i <= 14; ++i) {
        scene.waypoint("W" + std::to_string(i));
        ASSERT_TRUE(scene.save());
    }
    const auto backups = backupsOf(folder.path() / "waypoints.plist");
    ASSERT_EQ(backups.size(), 10U);
    EXPECT_EQ(contents(backups.front()).find("W5"), std::string::npos);
    EXPECT_NE(contents(backups.front()).find("W4"), std::string::npos);
    EXPECT_NE(contents(backups.back()).find("W13"), std::string::npos);
    EXPECT_EQ(contents(backups.back()).find("W14"), std::string::npos);
    EXPECT_FALSE(scene.waypoints.save("/proc/nowhere/waypoints.plist"));
}

TEST(Persistence, ShowsEveryEditAfterAKillWithoutSaving)
{
    const TemporaryFolder folder;
    std::string before;
    {
        Scene scene(folder.path());
        populate(scene);
        ASSERT_TRUE(scene.save());
        const auto waypoint = scene.waypoints.waypointFromName("\"C\"");
        scene.waypoints.edit(waypoint, [](Waypoint& it) { it.name = "See"; });
        scene.route("Empty", ""); // the file's form cannot hold it
        ASSERT_TRUE(scene.routes.save(folder.path() / "routes.plist"));
        scene.tracks.add(trackPoint(9), 1s);
        scene.waypoints.remove(scene.waypoints.waypointFromName("A & <B>"));
        scene.history.undo();
        scene.tracks.remove(1, 1); // the point that has no place
        before = scene.dump();
    }
    Scene again(folder.path());
    EXPECT_EQ(again.dump(), before);
    EXPECT_GT(again.waypointReport.recovered, 0U);
    EXPECT_TRUE(again.waypoints.isChanged());
}

TEST(Journal, ARecordedPointDoesNotWaitForTheEndOfALongStep)
{
    const TemporaryFolder folder;
    Scene scene(folder.path());
    const EditHistory::Group import(scene.history);
    scene.waypoint("imported");
    scene.tracks.add(trackPoint(9), 1s);

    Scene afterAKill;
    (void)afterAKill.history.openJournal(folder.path() / "edits.journal");
    afterAKill.tracks.load(folder.path() / "tracks.plist");
    EXPECT_EQ(afterAKill.tracks.count(), 1U);
}

TEST(Journal, ShowsAWholeNumberOfEditsWhereverItEnds)
{
    const MemoryFolder folder;
    std::vector<std::string> states;
    {
        Scene scene(folder.path());
        states.push_back(scene.dump());
        scene.waypoint("A");
        states.push_back(scene.dump());
        scene.route("R", "A");
        states.push_back(scene.dump());
        scene.waypoints.remove(scene.waypoints.waypoint(0)); // of both collections at once
        states.push_back(scene.dump());
    }
    const auto whole = contents(folder.path() / "edits.journal");
    std::size_t state = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        fill(folder.path() / "edits.journal", whole.substr(0, length));
        {
            Scene scene(folder.path());
            const auto now = scene.dump();
            while (state + 1 < states.size() && now != states[state])
                ++state;
            ASSERT_EQ(now, states[state]) << "cut at " << length;
            ASSERT_FALSE(scene.journalKept);
            scene.waypoint("later"); // goes behind the last whole frame
        }
        ASSERT_NE(Scene(folder.path()).dump().find("later"), std::string::npos) << length;
    }
    EXPECT_EQ(state, states.size() - 1);

    // Damage before the end is not what a kill leaves: the file is kept.
    auto damaged = whole;
    damaged[40] = static_cast<char>(damaged[40] + 1);
    fill(folder.path() / "edits.journal", damaged);
    Scene scene(folder.path());
    ASSERT_TRUE(scene.journalKept);
    EXPECT_EQ(contents(*scene.journalKept), damaged);
}

TEST(Journal, ASecondCopyOfTheProgramSeesAllAndChangesNothing)
{
    const TemporaryFolder folder;
    auto first = std::make_unique<Scene>(folder.path());
    first->waypoint("saved");
    ASSERT_TRUE(first->save());
    first->waypoint("edited");
    const auto journal = contents(folder.path() / "edits.journal");
    const auto file = contents(folder.path() / "waypoints.plist");

    Scene second;
    const auto opened = second.history.openJournal(folder.path() / "edits.journal");
    ASSERT_FALSE(opened);
    EXPECT_TRUE(second.history.journal().isInUseElsewhere());
    second.waypoints.load(folder.path() / "waypoints.plist");
    EXPECT_EQ(second.dump(), first->dump());
    second.waypoint("lost");
    const auto saved = second.waypoints.save(folder.path() / "waypoints.plist");
    ASSERT_FALSE(saved);
    EXPECT_NE(saved.error().message.find("another running copy"), std::string::npos);
    EXPECT_TRUE(second.waypoints.save(folder.path() / "copy.plist")) << "elsewhere is fine";
    EXPECT_EQ(contents(folder.path() / "edits.journal"), journal);
    EXPECT_EQ(contents(folder.path() / "waypoints.plist"), file);

    // What the first copy cannot read is not the second one's to move away.
    fill(folder.path() / "waypoints.plist", "garbage");
    EXPECT_TRUE(second.waypoints.load(folder.path() / "waypoints.plist").keptAs.empty());
    EXPECT_EQ(contents(folder.path() / "waypoints.plist"), "garbage");

    first.reset();
    EXPECT_TRUE(second.history.openJournal(folder.path() / "edits.journal"));
    EXPECT_FALSE(second.history.journal().isInUseElsewhere());
}

/// One random edit. Records are chosen by name order, which loading does not change.
void editAtRandom(Scene& scene, unsigned seed)
{
    std::mt19937 random(seed);
    const auto upTo = [&](std::size_t n) { return n == 0 ? 0 : random() % n; };
    const auto pick = [&](const auto& model) {
        auto all = std::vector(model.objectEnumerator().begin(), model.objectEnumerator().end());
        std::sort(all.begin(), all.end(), [](auto& a, auto& b) { return a->name < b->name; });
        return all.empty() ? nullptr : all[upTo(all.size())];
    };
    const Position position{static_cast<double>(upTo(300)) - 150,
                            static_cast<double>(upTo(150)) - 75};
    const auto waypoint = pick(scene.waypoints);
    const auto route = pick(scene.routes);
    switch (upTo(14)) {
    case 0:
    case 1:
        scene.waypoint("W" + std::to_string(upTo(30)), position);
        break;
    case 2:
        scene.waypoints.editWaypointPosition(waypoint, position);
        break;
    case 3:
        scene.waypoints.edit(waypoint,
                             [&](Waypoint& it) { it.name = "N" + std::to_string(upTo(20)); });
        break;
    case 4:
        if (scene.waypoints.count() > 12)
            scene.waypoints.remove(waypoint);
        break;
    case 5:
        if (scene.routes.count() < 8)
            scene.route("", "");
        break;
    case 6:
    case 7:
        if (route && waypoint)
            scene.routes.edit(route, [&](Route& it) { it.addWaypointReference(waypoint); });
        break;
    case 8:
        if (route && route->count() > 6)
            scene.routes.remove(route);
        break;
    case 9:
        scene.history.undo();
        break;
    case 10:
        scene.history.redo();
        break;
    case 11:
        if (scene.tracks.count() > 20)
            scene.tracks.remove(upTo(5), 1 + upTo(10));
        break;
    case 12:
        scene.tracks.add(trackPoint(static_cast<int>(upTo(50)) - 100, position), 0s);
        break;
    default:
        scene.tracks.add(trackPoint(static_cast<int>(seed % 1'000'000), position), 1s);
    }
}

/// Lets the kernel send SIGKILL so much later, wherever the program is by then.
void dieAfter(long nanoseconds)
{
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer{};
    const itimerspec when{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = nanoseconds + 1}};
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0
        || ::timer_settime(timer, 0, &when, nullptr) != 0)
        ::_exit(1);
}

TEST(Persistence, SurvivesThousandsOfKillsAtAnyInstant)
{
    const MemoryFolder folder;
    auto* done = new (::mmap(nullptr, sizeof(std::atomic<unsigned>), PROT_READ | PROT_WRITE,
                             MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<unsigned>(0);
    std::mt19937 random(20260704);
    unsigned edits = 0;
    unsigned midway = 0;
    auto survivor = std::make_unique<Scene>();
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int kills = 150; // starting a program costs them a hundred times as much
#else
    constexpr int kills = 2000;
#endif
    for (int kill = 0; kill < kills; ++kill) {
        done->store(0);
        const unsigned seed = 1000U * static_cast<unsigned>(kill + 1);
        const long nanoseconds = static_cast<long>(random() % 3'000'000);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) { // the program: loads, edits and saves until the kernel kills it
            dieAfter(nanoseconds);
            Scene scene(folder.path());
            for (unsigned i = 0;; ++i) {
                editAtRandom(scene, seed + i);
                if (i % 16 == 11 && (seed + i) % 3 == 0)
                    (void)scene.save();
                done->store(i + 1);
            }
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);

        // What the program had made, made again by a model without files.
        const unsigned finished = done->load();
        edits += finished;
        for (unsigned i = 0; i < finished; ++i)
            editAtRandom(*survivor, seed + i);
        const std::string before = survivor->dump();
        editAtRandom(*survivor, seed + finished); // may have reached the journal or not
        const std::string after = survivor->dump();

        survivor = std::make_unique<Scene>();
        Scene recovered(folder.path());
        const auto found = recovered.dump();
        ASSERT_TRUE(found == before || found == after)
            << "kill " << kill << " after " << finished << " edits\n"
            << found << "----\n"
            << before;
        ASSERT_FALSE(recovered.journalKept || recovered.waypointReport.error
                     || recovered.routeReport.error || recovered.trackReport.error);
        midway += found != before;
        for (const auto& waypoint : recovered.waypoints.objectEnumerator())
            survivor->waypoints.add(*waypoint);
        for (const auto& old : recovered.routes.objectEnumerator()) {
            Route route;
            route.name = old->name;
            for (const auto& reference : old->waypointReferences())
                route.addWaypointReference(
                    survivor->waypoints.waypointFromName(reference->waypoint->name));
            survivor->routes.add(std::move(route));
        }
        for (const auto& point : recovered.tracks.objectEnumerator())
            survivor->tracks.add(*point, 1s);
        survivor->history.clear();
        ASSERT_EQ(survivor->dump(), found);
    }
    EXPECT_GT(edits, static_cast<unsigned>(kills) / 4);
    EXPECT_GT(midway, 0U) << "no kill fell between an edit's journal and its end";
    RecordProperty("edits", static_cast<int>(edits));
    ::munmap(done, sizeof *done);
}

} // namespace
} // namespace kelvox
