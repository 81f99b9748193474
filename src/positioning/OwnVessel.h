#pragma once

#include "base/Strings.h"
#include "positioning/GPSController.h"
#include "positioning/InstrumentsController.h"

namespace kelvox {

/// Alarms that nobody is told of.
class NullAlarms final : public Alarms {
public:
    void beep() override { }
    void playSound(const std::string&) override { }
    void speak(const std::string&) override { }
    void show(const Alert&) override { }
    [[nodiscard]] bool isShown(const std::string&) const override { return false; }
};

/// A bus without anybody else on it.
class NullNotificationBus final : public NotificationBus {
public:
    [[nodiscard]] bool companionRuns() const override { return false; }
    void post(const std::string&, const std::string&) override { }
};

/// Receiver and instruments on one line, everything on the calling thread, no alarms: for tools,
/// benchmarks and tests that only want to know what the sentences say.
class OwnVessel {
public:
    explicit OwnVessel(const Clock& clock)
        : notification(clock, m_bus)
        , instruments(executor, clock, withSharedPort(settings), englishStrings(), compass)
        , gps({executor, clock, settings, englishStrings(), m_alarms, notification, compass})
    {
        gps.setInstruments(&instruments);
    }

private:
    static const Settings& withSharedPort(Settings& settings)
    {
        settings.set("instruments.useGPSPort", true);
        return settings;
    }

    NullNotificationBus m_bus;
    NullAlarms m_alarms;

public:
    InlineExecutor executor;
    MemorySettings settings;
    Compass compass;
    GPSNotification notification;
    InstrumentsController instruments;
    GPSController gps;
};

} // namespace kelvox
