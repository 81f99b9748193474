#pragma once

#include "positioning/GPSNotification.h"

#include <QDBusConnection>
#include <QObject>

#include <set>

namespace kelvox {

/// The way to companion programs of the same user: the session bus.
///
/// A companion is whoever owns the bus name "org.kelvox.Companion" or one below it, such as
/// "org.kelvox.Companion.Watch". While one runs, what is posted goes out as a signal of that name
/// from the object "/org/kelvox/Kelvox", interface "org.kelvox.Kelvox", with the text as its one
/// argument. Without a bus there are no companions. Nothing here waits for an answer.
class CompanionBus final : public QObject, public NotificationBus {
    Q_OBJECT
public:
    static constexpr const char* companionName = "org.kelvox.Companion";
    static constexpr const char* objectPath = "/org/kelvox/Kelvox";
    static constexpr const char* interfaceName = "org.kelvox.Kelvox";

    explicit CompanionBus(const QDBusConnection& bus, QObject* parent = nullptr);
    /// That of the user's session. A bus is never started only to find nobody on it.
    [[nodiscard]] static QDBusConnection userBus();

    [[nodiscard]] bool companionRuns() const override { return !m_companions.empty(); }
    void post(const std::string& name, const std::string& text) override;

signals:
    void companionsChanged();

private:
    void setCompanion(const QString& name, bool runs);

    QDBusConnection m_bus;
    std::set<QString> m_companions; ///< names that are owned
};

} // namespace kelvox
