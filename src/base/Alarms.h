#pragma once

#include <string>

namespace kelvox {

/// The ways a module reaches the user: voice, sound, and an alert over the chart. Main thread.
///
/// The module that raises an alarm reads the `audio` and `visual` settings and calls what they
/// allow; the program behind this interface speaks, beeps and shows. Tests record the calls.
class Alarms {
public:
    virtual ~Alarms() = default;
    virtual void beep() = 0;
    virtual void playSound(const std::string& name) = 0; ///< a system sound chosen by the user
    virtual void speak(const std::string& text) = 0; ///< already in the user's language

    struct Alert {
        std::string key; ///< e.g. "NSAnchorAlarm"; one alert of a key is shown at a time
        std::string message;
        std::string informativeText;
        std::string button; ///< usually the text of "NSOK"
    };
    virtual void show(const Alert& alert) = 0;
    /// Whether the alert of this key is still waiting for its button.
    [[nodiscard]] virtual bool isShown(const std::string& key) const = 0;
};

} // namespace kelvox
