#pragma once

#include "ais/AISController.h"
#include "base/Strings.h"

#include <utility>
#include <vector>

namespace kelvox {

/// An AIS controller with everything around it on the calling thread, its connection open; without
/// alarms handed in nobody is alarmed. For tools, benchmarks and tests.
class AISStation {
public:
    /// Keeps what is posted until somebody says that the program is idle.
    class IdleQueue final : public Executor {
    public:
        void post(std::function<void()> work) override { m_work.push_back(std::move(work)); }
        void performAndWait(std::function<void()> work) override { work(); }
        /// The number of pieces of work done.
        std::size_t run()
        {
            const auto work = std::exchange(m_work, {});
            for (const auto& item : work)
                item();
            return work.size();
        }

    private:
        std::vector<std::function<void()>> m_work;
    };

    explicit AISStation(Alarms* alarms = nullptr)
        : m_alarms(alarms ? *alarms : m_noAlarms)
    {
        controller.setConnectionOpen(true);
    }

private:
    struct NoAlarms final : Alarms {
        void beep() override { }
        void playSound(const std::string&) override { }
        void speak(const std::string&) override { }
        void show(const Alert&) override { }
        [[nodiscard]] bool isShown(const std::string&) const override { return false; }
    };
    InlineExecutor m_main;
    NoAlarms m_noAlarms;
    Alarms& m_alarms;

public:
    IdleQueue idle;
    ManualClock clock;
    MemorySettings settings;
    Compass compass;
    AISModel model{clock};
    AISController controller{{.main = m_main,
                              .idle = idle,
                              .clock = clock,
                              .settings = settings,
                              .strings = englishStrings(),
                              .alarms = m_alarms,
                              .compass = compass,
                              .model = model}};
};

} // namespace kelvox
