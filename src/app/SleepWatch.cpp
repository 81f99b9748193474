#include "app/SleepWatch.h"

#include <QFile>

namespace kelvox {

SleepWatch::SleepWatch(QDBusConnection bus, QObject* parent)
    : QObject(parent)
{
    if (bus.isConnected())
        bus.connect(QStringLiteral("org.freedesktop.login1"),
                    QStringLiteral("/org/freedesktop/login1"),
                    QStringLiteral("org.freedesktop.login1.Manager"),
                    QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));
}

QDBusConnection SleepWatch::machineBus()
{
    if (qEnvironmentVariableIsEmpty("DBUS_SYSTEM_BUS_ADDRESS")
        && !QFile::exists(QStringLiteral("/run/dbus/system_bus_socket")))
        return QDBusConnection(QStringLiteral("kelvox-no-bus"));
    return QDBusConnection::systemBus();
}

void SleepWatch::prepareForSleep(bool begins)
{
    if (begins)
        emit willSleep();
    else
        emit hasWoken();
}

} // namespace kelvox
