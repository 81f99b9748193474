#include "app/CrashReport.h"
#include "app/nav/NavActions.h"
#include "base/Folders.h"
#include "scenarios/Scenario.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>

namespace kelvox {
namespace {

constexpr const char* folderVariable = "KELVOX_SCENARIO_FOLDER";

class RecoveryTest : public Scenario {
protected:
    /// Runs the case DISABLED_SailsUntilItIsKilled of this program in the folder of this one, and
    /// ends it by a signal when it says that it is under way.
    void sailUntil(int signal)
    {
        QProcess other;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(folderVariable),
                           QString::fromStdString(folder().string()));
        other.setProcessEnvironment(environment);
        other.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--gtest_also_run_disabled_tests"),
                     QStringLiteral("--gtest_filter=*DISABLED_SailsUntilItIsKilled")});
        const auto underWay = folder() / "under-way";
        waitFor([&] { return std::filesystem::exists(underWay); }, "the other program",
                std::chrono::seconds(60));
        ASSERT_EQ(::kill(static_cast<pid_t>(other.processId()), signal), 0);
        EXPECT_TRUE(other.waitForFinished());
        EXPECT_EQ(other.exitStatus(), QProcess::CrashExit);
    }
};

TEST_F(RecoveryTest, DISABLED_SailsUntilItIsKilled)
{
    const std::filesystem::path shared = qEnvironmentVariable(folderVariable).toStdString();
    ASSERT_FALSE(shared.empty());
    CrashReport::install(shared / "state", "Kelvox, a test");
    startIn(shared);
    window().openFiles({folders::applicationResources() / "demo"}); // not as the demo: remembered
    run("view.dusk");
    chart().setScale(25'000);
    chart().centerOn({.longitude = -27.41, .latitude = 47.55});
    window().openPanel(QStringLiteral("tracks"));
    auto* actions = window().findChild<NavActions*>();
    for (int i = 0; i < 50; ++i)
        (void)actions->dropWaypoint({.longitude = -27.4 + i / 1000.0, .latitude = 47.5});
    // Settings are written half a second after the last change.
    waitFor(
        [&] {
            FileSettings kept;
            return kept.load(shared / "config" / "settings.json")
                && kept.integer("chart.scale") == 25'000 && kept.text("panel.open") == "tracks";
        },
        "the settings on disk");
    std::filesystem::create_directory(shared / "under-way");
    waitFor([] { return false; }, "the signal", std::chrono::minutes(2));
}

TEST_F(RecoveryTest, NothingIsLostWhenItIsKilled)
{
    sailUntil(SIGKILL);
    startEmpty();
    EXPECT_EQ(program().waypoints().count(), 50U);
    EXPECT_EQ(program().scheme(), ColorScheme::Dusk);
    EXPECT_TRUE(window().isPanelOpen(QStringLiteral("tracks")));
    ASSERT_TRUE(window().openRemembered());
    waitForPicture();
    EXPECT_EQ(chart().scale(), 25'000);
    EXPECT_NEAR(chart().center().longitude, -27.41, 1e-4);
    EXPECT_NEAR(chart().center().latitude, 47.55, 1e-4);
    EXPECT_FALSE(CrashReport::takeLast(folder() / "state")) << "a kill is no crash";
}

TEST_F(RecoveryTest, ACrashLeavesAReportAndTheNextStartOffersToRestore)
{
    sailUntil(SIGSEGV);
    const auto report = CrashReport::takeLast(folder() / "state");
    ASSERT_TRUE(report);
    EXPECT_GT(std::filesystem::file_size(*report), 20U);
    startEmpty();
    EXPECT_EQ(program().waypoints().count(), 50U);
    window().offerRestore(*report);
    shot(QStringLiteral("after-a-crash"));
    click(QStringLiteral("restoreView"));
    waitForPicture();
    EXPECT_EQ(chart().scale(), 25'000);
}

} // namespace
} // namespace kelvox
