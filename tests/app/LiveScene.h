#pragma once

#include "app/EventLoop.h"
#include "app/LiveData.h"
#include "base/Strings.h"
#include "connections/SentenceText.h"

#include <set>

namespace kelvox {

/// Alarms that only note who was called.
class NotedAlarms final : public Alarms {
public:
    void beep() override { }
    void playSound(const std::string&) override { }
    void speak(const std::string& text) override { spoken.push_back(text); }
    void show(const Alert& alert) override { shown.insert(alert.key); }
    [[nodiscard]] bool isShown(const std::string& key) const override
    {
        return shown.contains(key);
    }
    std::vector<std::string> spoken;
    std::set<std::string> shown;
};

class NotedBus final : public NotificationBus {
public:
    [[nodiscard]] bool companionRuns() const override { return true; }
    void post(const std::string& name, const std::string& text) override
    {
        posted.push_back(name + ' ' + text);
    }
    std::vector<std::string> posted;
};

/// Live data with everything around it; the reader threads do not wait three seconds first.
struct LiveScene {
    MemorySettings settings;
    NotedAlarms alarms;
    NotedBus bus;
    SystemClock clock;
    MainExecutor main;
    std::unique_ptr<LiveData> live;

    LiveScene() { settings.set("ais.useGPSPort", true); }
    void start()
    {
        live = std::make_unique<LiveData>(
            LiveData::Services{settings, englishStrings(), alarms, clock, main, bus},
            ReaderThread::Pace{.start = 0.01, .idle = 0.05, .simulator = 0.005});
        live->start();
    }
    void set(const char* key, Settings::Value value)
    {
        settings.set(key, std::move(value));
        if (live)
            live->settingChanged(key);
    }
    [[nodiscard]] static std::string line(const std::string& text)
    {
        return completeSentence(text, AddChecksum::Yes);
    }
    [[nodiscard]] static std::string rmc(const char* latitude)
    {
        return line(std::string("$GPRMC,120000,A,") + latitude
                    + ",N,01030.000,E,6.0,090.0,010126,,");
    }
};

} // namespace kelvox
