#include "app/CompanionBus.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QFile>

namespace kelvox {

namespace {
bool isCompanion(const QString& name)
{
    const auto companion = QString::fromLatin1(CompanionBus::companionName);
    return name == companion || name.startsWith(companion + QLatin1Char('.'));
}
} // namespace

CompanionBus::CompanionBus(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
{
    if (!m_bus.isConnected())
        return;
    auto* watcher = new QDBusServiceWatcher(QString::fromLatin1(companionName) + QLatin1Char('*'),
                                            m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& name, const QString& /*before*/, const QString& owner) {
                setCompanion(name, !owner.isEmpty());
            });
    // Those that run already.
    auto* listed = new QDBusPendingCallWatcher(
        m_bus.interface()->asyncCall(QStringLiteral("ListNames")), this);
    connect(listed, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                const QDBusPendingReply<QStringList> names = *call;
                if (names.isValid())
                    for (const QString& name : names.value())
                        setCompanion(name, true);
                call->deleteLater();
            });
}

QDBusConnection CompanionBus::userBus()
{
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        && (folder.isEmpty() || !QFile::exists(folder + QStringLiteral("/bus"))))
        return QDBusConnection(QStringLiteral("kelvox-no-bus"));
    return QDBusConnection::sessionBus();
}

void CompanionBus::setCompanion(const QString& name, bool runs)
{
    if (!isCompanion(name))
        return;
    const bool changed = runs ? m_companions.insert(name).second : m_companions.erase(name) > 0;
    if (changed)
        emit companionsChanged();
}

void CompanionBus::post(const std::string& name, const std::string& text)
{
    auto message = QDBusMessage::createSignal(
        QLatin1String(objectPath), QLatin1String(interfaceName), QString::fromStdString(name));
    message << QString::fromStdString(text);
    m_bus.send(message);
}

} // namespace kelvox
