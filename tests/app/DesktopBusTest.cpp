#include "app/CompanionBus.h"
#include "app/EventLoop.h"
#include "app/SleepWatch.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QProcess>
#include <QStandardPaths>

namespace kelvox {

namespace {
/// Hears the signals of a bus.
class Listener final : public QObject {
    Q_OBJECT
public:
    QStringList heard;
public slots:
    void hear(const QString& text) { heard << text; }
};

/// A bus of the test's own.
class DesktopBus : public testing::Test {
protected:
    void SetUp() override
    {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            GTEST_SKIP() << "dbus-daemon is not installed";
        m_daemon.start(daemon,
                       {QStringLiteral("--session"), QStringLiteral("--nofork"),
                        QStringLiteral("--print-address")});
        ASSERT_TRUE(m_daemon.waitForReadyRead(20'000));
        m_address = QString::fromLatin1(m_daemon.readLine()).trimmed();
    }
    void TearDown() override
    {
        for (const QString& name : m_names)
            QDBusConnection::disconnectFromBus(name);
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    QDBusConnection connection()
    {
        m_names << QStringLiteral("test%1").arg(m_names.size());
        return QDBusConnection::connectToBus(m_address, m_names.back());
    }

private:
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};

TEST_F(DesktopBus, PositionsGoOutOnlyWhileACompanionOwnsItsName)
{
    auto other = connection();
    ASSERT_TRUE(other.isConnected());
    Listener listener;
    ASSERT_TRUE(other.connect(QString(), QLatin1String(CompanionBus::objectPath),
                              QLatin1String(CompanionBus::interfaceName),
                              QStringLiteral("gpsPosition"), &listener, SLOT(hear(QString))));
    // One that runs before the program does.
    ASSERT_TRUE(other.registerService(QStringLiteral("org.kelvox.Companion.Watch")));
    CompanionBus bus(connection());
    ASSERT_TRUE(runUntil([&] { return bus.companionRuns(); }));

    ManualClock clock;
    GPSNotification notification(clock, bus);
    notification.postGPSPosition({.longitude = 10.5, .latitude = 59.9}, 6, 90);
    ASSERT_TRUE(runUntil([&] { return !listener.heard.isEmpty(); }));
    EXPECT_EQ(listener.heard.front().toStdString(),
              "10.500000 59.900000 6.000000 90.000000 -1000.000000");

    ASSERT_TRUE(other.unregisterService(QStringLiteral("org.kelvox.Companion.Watch")));
    ASSERT_TRUE(runUntil([&] { return !bus.companionRuns(); }));
    // A name that only begins alike is no companion.
    ASSERT_TRUE(other.registerService(QStringLiteral("org.kelvox.Companionable")));
    ASSERT_TRUE(other.registerService(QStringLiteral("org.kelvox.Companion")));
    ASSERT_TRUE(runUntil([&] { return bus.companionRuns(); }));
    ASSERT_TRUE(other.unregisterService(QStringLiteral("org.kelvox.Companion")));
    EXPECT_TRUE(runUntil([&] { return !bus.companionRuns(); }));
}

TEST_F(DesktopBus, SleepAndWakingAreHeardFromTheLoginManagerOnly)
{
    auto manager = connection();
    auto stranger = connection();
    ASSERT_TRUE(manager.registerService(QStringLiteral("org.freedesktop.login1")));
    SleepWatch watch(connection());
    int sleeps = 0;
    int wakes = 0;
    QObject::connect(&watch, &SleepWatch::willSleep, [&] { ++sleeps; });
    QObject::connect(&watch, &SleepWatch::hasWoken, [&] { ++wakes; });
    const auto announce = [](QDBusConnection& from, bool begins) {
        auto message = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                                  QStringLiteral("org.freedesktop.login1.Manager"),
                                                  QStringLiteral("PrepareForSleep"));
        message << begins;
        from.send(message);
    };
    announce(stranger, true);
    announce(manager, true);
    ASSERT_TRUE(runUntil([&] { return sleeps > 0; }));
    announce(manager, false);
    ASSERT_TRUE(runUntil([&] { return wakes > 0; }));
    EXPECT_EQ(sleeps, 1);
}

TEST(CompanionBus, WithoutABusThereIsNobodyAndNothingFails)
{
    CompanionBus bus(CompanionBus::userBus());
    bus.post("gpsPosition", "0 0 0 0 0");
    EXPECT_FALSE(bus.companionRuns());
}
} // namespace
} // namespace kelvox

#include "DesktopBusTest.moc"
