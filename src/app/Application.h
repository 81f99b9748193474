#pragma once

#include <QApplication>
#include <QByteArray>

#include <chrono>
#include <functional>

namespace kelvox {

/// The application, which knows how long each event holds up the window.
class Application final : public QApplication {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds longestStall{100};

    Application(int& argc, char** argv);

    /// An event that took longer than longestStall: how long by the clock, how much of that the
    /// thread was working (the rest it waited, or other programs had the processor), and the class
    /// and name of what it was for. Loops of dialogs and menus within an event do not count.
    /// Logged when none is set and the environment has KELVOX_WATCHDOG.
    using StallHandler =
        std::function<void(std::chrono::milliseconds duration, std::chrono::milliseconds working,
                           const QByteArray& receiver)>;
    void setStallHandler(StallHandler handler) { m_handler = std::move(handler); }

    bool notify(QObject* receiver, QEvent* event) override;

private:
    StallHandler m_handler;
    int m_level = -1; ///< of the event loop whose event is measured; -1 for none
    int m_innerEvents = 0; ///< counts up with each event of a loop within a measured event
};

} // namespace kelvox
