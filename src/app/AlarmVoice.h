#pragma once

#include "app/Speech.h"

#include <QObject>

#include <filesystem>

class QProcess;

namespace kelvox {

/// Speech and sound of alarms. Neither is ever waited for: speech has a thread of its own, sounds
/// are played by the sound system's player as a process. Where the machine has neither, the desktop
/// is asked for its beep: an alarm is always shown as well. Main thread.
class AlarmVoice final : public QObject {
    Q_OBJECT
public:
    /// @param folder where the tones lie as files for the player; empty for beeps only
    explicit AlarmVoice(std::filesystem::path folder, QObject* parent = nullptr);
    ~AlarmVoice() override;

    void beep();
    void playSound(const std::string& name); ///< see AlarmTones.h
    void speak(const std::string& text);

private:
    std::filesystem::path m_folder;
    Speech m_speech;
    QProcess* m_player = nullptr; ///< while a tone is heard
};

} // namespace kelvox
