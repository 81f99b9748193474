#pragma once

#include <string>

namespace kelvox {

/// Speech and sound of alarms. Where the machine has neither, the calls do nothing more than ask
/// the desktop for its beep: an alarm is always shown as well.
class AlarmVoice {
public:
    void beep();
    void playSound(const std::string& name);
    void speak(const std::string& text);
};

} // namespace kelvox
