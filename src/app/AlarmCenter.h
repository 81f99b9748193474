#pragma once

#include "base/Alarms.h"
#include "base/Clock.h"

#include <QObject>

#include <chrono>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace kelvox {

class AlarmVoice;

/// An alarm as the user meets it.
struct AlarmEntry {
    enum class Urgency { Caution, Danger }; ///< amber, red
    std::string key;
    std::string message;
    std::string informativeText;
    std::string button;
    Urgency urgency = Urgency::Danger;
    std::chrono::system_clock::time_point raised;
    std::optional<std::chrono::system_clock::time_point> acknowledged = {};
};

/// All alarms of the program in one place: spoken, sounded, waiting for their button, and kept in
/// a history that outlives the program. Main thread.
class AlarmCenter final : public QObject, public Alarms {
    Q_OBJECT
public:
    /// @param history where the past alarms are kept; empty for nowhere
    AlarmCenter(const Clock& clock, std::filesystem::path history, QObject* parent = nullptr);
    ~AlarmCenter() override;

    void beep() override;
    void playSound(const std::string& name) override;
    void speak(const std::string& text) override;
    void show(const Alert& alert) override;
    [[nodiscard]] bool isShown(const std::string& key) const override;

    /// Those that wait for their button, the most urgent and newest first.
    [[nodiscard]] std::vector<AlarmEntry> active() const;
    /// Newest first, the active ones included.
    [[nodiscard]] const std::deque<AlarmEntry>& history() const { return m_history; }
    void acknowledge(const std::string& key);
    void acknowledgeAll();
    void clearHistory();

signals:
    void changed();
    void acknowledged(const QString& key);

private:
    static constexpr std::size_t longestHistory = 1000;
    void readHistory();
    void writeHistory() const;

    const Clock& m_clock;
    std::filesystem::path m_file;
    std::deque<AlarmEntry> m_history;
    std::unique_ptr<AlarmVoice> m_voice;
};

} // namespace kelvox
