#pragma once

#include <QDBusConnection>
#include <QObject>

namespace kelvox {

/// Tells when the computer goes to sleep and when it wakes, as the login manager announces it on
/// the system bus. Without one it stays silent.
class SleepWatch final : public QObject {
    Q_OBJECT
public:
    explicit SleepWatch(QDBusConnection bus, QObject* parent = nullptr);
    /// That of the machine, where there is one.
    [[nodiscard]] static QDBusConnection machineBus();

signals:
    void willSleep();
    void hasWoken();

private slots:
    void prepareForSleep(bool begins);
};

} // namespace kelvox
