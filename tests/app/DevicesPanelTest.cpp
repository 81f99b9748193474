#include "app/panels/DevicesPanel.h"
#include "app/NavScene.h"
#include "devices/GarminEmulator.h"
#include "devices/GarminRecords.h"
#include "devices/LiveReceiver.h"
#include "devices/Records.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>

namespace kelvox {
namespace {

using State = ConnectionStatus::State;

/// The panel as the user works it, with an emulated receiver on a pseudo-terminal.
class DevicesPanelTest : public NavScene {
protected:
    DevicesPanelTest()
    {
        program.settings().set("device.tracks", false);
        program.settings().set("device.routes", false);
    }
    void openPanel()
    {
        panel = dynamic_cast<DevicesPanel*>(window.openPanel(QStringLiteral("devices")));
        ASSERT_TRUE(panel);
    }
    void choosePort(const LiveReceiver& receiver)
    {
        program.settings().set("device.port", receiver.path());
    }
    void press(const char* name)
    {
        auto* button = panel->findChild<QPushButton*>(QLatin1String(name));
        ASSERT_TRUE(button && button->isEnabled()) << name;
        button->click();
    }
    [[nodiscard]] bool asks() const
    {
        return panel->findChild<QPushButton*>(QStringLiteral("deviceProceed"))->isVisible();
    }
    [[nodiscard]] QString result() const
    {
        return panel->findChild<QLabel*>(QStringLiteral("deviceResult"))->text();
    }
    void waitForEnd()
    {
        waitFor([&] { return !program.devices().isRunning(); });
    }
    DevicesPanel* panel = nullptr;
};

TEST_F(DevicesPanelTest, ReceivesAsOneStepWhileTheConnectionLendsItsPort)
{
    GarminEmulator emulator({108});
    for (int i = 1; i < 5; ++i)
        emulator.memory[7].push_back(
            {35, GarminRecords::makeD108WaypointType(place("BUOY" + std::to_string(i), i, i))});
    const LiveReceiver receiver(emulator);
    waypoint("MINE", {300, 300});
    // The position comes in on the very port; nothing was chosen for the transfer.
    program.settings().set("serialPort", receiver.path());
    program.live().open(ConsumerRole::GPS);
    const auto state = [&] { return program.live().status(ConsumerRole::GPS).state; };
    waitFor([&] { return state() == State::Open; });

    openPanel();
    press("deviceReceive");
    waitFor([&] { return asks(); });
    EXPECT_EQ(state(), State::Closed);
    EXPECT_EQ(program.waypoints().count(), 1U);
    press("deviceProceed");
    waitForEnd();
    EXPECT_TRUE(result().contains(QStringLiteral("Yacht Plotter 3"))) << result().toStdString();
    waitFor([&] { return program.waypoints().count() == 5; });
    waitFor([&] { return state() == State::Open; });
    program.undo();
    EXPECT_EQ(program.waypoints().count(), 1U) << "one step";
}

TEST_F(DevicesPanelTest, AReceiverThatIsPulledOutLeavesTheUsersRecordsAlone)
{
    GarminEmulator emulator({108}, {Fault::Kind::PulledOut, 9});
    emulator.memory[7].assign(20, {35, GarminRecords::makeD108WaypointType(place("BUOY", 1, 1))});
    const LiveReceiver receiver(emulator);
    choosePort(receiver);
    waypoint("MINE", {300, 300});
    openPanel();
    press("deviceReceive");
    waitFor([&] { return asks(); });
    press("deviceProceed");
    waitForEnd();
    EXPECT_TRUE(result().contains(QStringLiteral("gone"))) << result().toStdString();
    settle();
    EXPECT_EQ(program.waypoints().count(), 1U);
    EXPECT_TRUE(panel->findChild<QPushButton*>(QStringLiteral("deviceReceive"))->isEnabled());
}

TEST_F(DevicesPanelTest, SendsWhatIsChosenInAListAndTellsOfNewNames)
{
    GarminEmulator emulator({100});
    const LiveReceiver receiver(emulator);
    choosePort(receiver);
    const auto trip = route(
        "Trip", {waypoint("Harbour North", {300, 300}), waypoint("Harbour South", {400, 300})});
    waypoint("ELSEWHERE", {500, 500});
    ExchangeRecords records;
    records.waypoints.push_back(*trip->waypointReferences().front()->waypoint);
    actions().sendToReceiver(QStringLiteral("Harbour North"), records);
    openPanel();
    EXPECT_EQ(panel->findChild<QComboBox*>(QStringLiteral("deviceWhat"))->currentText(),
              QStringLiteral("Harbour North"));
    press("deviceSend");
    waitForEnd();
    ASSERT_EQ(emulator.taken.size(), 1U) << result().toStdString();
    EXPECT_EQ(emulator.taken.front().data.substr(0, 6), "HARBOU");
    EXPECT_TRUE(result().contains(QStringLiteral("Harbour North is HARBOU")))
        << result().toStdString();
}

TEST_F(DevicesPanelTest, CancellingWhileTheUserIsAskedEndsIt)
{
    GarminEmulator emulator({108});
    const LiveReceiver receiver(emulator);
    choosePort(receiver);
    openPanel();
    press("deviceReceive");
    waitFor([&] { return asks(); });
    press("deviceCancel");
    waitForEnd();
    EXPECT_TRUE(result().contains(QStringLiteral("cancelled"))) << result().toStdString();
    EXPECT_EQ(emulator.saidCount(), 0U) << "nothing was asked of the receiver";
}

} // namespace
} // namespace kelvox
