#pragma once

#include "base/Clock.h"
#include "base/Executor.h"
#include "connections/ConnectionStatus.h"
#include "connections/Recording.h"
#include "connections/Serial.h"
#include "connections/WakeUp.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>

namespace kelvox {

/// Which ports a consumer wants, and what is said to the receiver when they open and close.
struct PortPlan {
    bool hasPort = true; ///< false: the data comes in on another consumer's port
    std::string port;
    std::string rate;
    Serial::FlowControl flow = Serial::FlowControl::None;
    /// What a receiver is told; reader thread. restart() waits for one that changes its protocol.
    using Setup = std::function<void(Serial& port, const std::function<void()>& restart)>;
    Setup initialise = {}; ///< after opening
    Setup beforeReopening = {}; ///< before an open port is closed to be opened again
    enum class Repeat { Off, SamePort, OwnPort };
    Repeat repeat = Repeat::Off;
    std::string repeatPort = {};
    std::string repeatRate = {};
};

/// Reads one consumer's lines from its serial port, from a log file or from the simulator, and
/// opens the port again by itself when it is lost.
///
/// Lives for the program's life. The thread is the only one that reads; request() and the setters
/// belong to the main thread.
class ReaderThread {
public:
    enum class Command { None = 0, Open = 1, Close = 2, Clear = 3, CloseAndReport = 4 };

    /// The consumer's side.
    class Owner {
    public:
        virtual ~Owner() = default;
        // On the main thread, the reader waiting:
        [[nodiscard]] virtual bool connectsAtStart() = 0;
        [[nodiscard]] virtual PortPlan portPlan() = 0;
        // On the main thread, the reader not waiting:
        virtual void connectionOpened() { }
        virtual void connectionClosed() { }
        virtual void openPortFail(const std::string& /*port*/, const std::string& /*reason*/) { }
        virtual void statusChanged(const ConnectionStatus&) { }
        virtual void logFileEnded() { }
        // On the reader thread:
        virtual void showInMonitor(std::string_view line) = 0;
        /// Lines in order, cut before their start character, none without one.
        virtual void takeLines(std::span<const std::string_view> lines) = 0;
    };

    /// Seconds of the thread's waits.
    struct Pace {
        double start = 3;
        double idle = 1;
        double simulator = 0.2;
        double restart = 1; ///< of a receiver
    };

    ReaderThread(Owner& owner, Executor& main, const Clock& clock, Pace pace);
    ReaderThread(Owner& owner, Executor& main, const Clock& clock)
        : ReaderThread(owner, main, clock, Pace())
    {
    }
    ~ReaderThread();
    ReaderThread(const ReaderThread&) = delete;
    ReaderThread& operator=(const ReaderThread&) = delete;

    void start();
    /// Ends the thread. The executor must not be the one the thread waits for: see HandOver.
    void stop();

    void request(Command command);
    /// Open at the user's wish, lost ports being opened again.
    [[nodiscard]] ConnectionStatus status() const;
    [[nodiscard]] bool isOpen() const;
    /// Looks at once whether a lost port can be opened again: after waking up, or a device came.
    void retryNow();

    /// Lines of the simulator, five calls a second; an empty function switches it off.
    void setSimulator(std::function<std::vector<std::string>()> nextLines);
    /// Plays a log file instead of the port; null ends that.
    void setLogFile(std::shared_ptr<Replay> log);
    [[nodiscard]] bool isReadingLogFile() const;

    /// Writes to the repeat port, or to the port itself. Any thread; false when it is not open.
    bool writeRepeat(std::string_view line);
    bool writePort(std::string_view line);

private:
    void run();
    void execute(Command command);
    void open();
    void openRepeat(const PortPlan& plan);
    void closePorts();
    void lost(const std::string& reason);
    void readPort();
    void readSimulator();
    void readLogFile();
    void deliver(std::span<const std::string_view> lines);
    void wait(double seconds);
    void waitForRestart();
    void setStatus(ConnectionStatus status);
    void tellMain(std::function<void(Owner&)> call);

    Owner& m_owner;
    Executor& m_main;
    const Clock& m_clock;
    Pace m_pace;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    WakeUp m_wakeUp;

    mutable std::mutex m_mutex; // for all down to m_log
    std::condition_variable m_changed;
    bool m_woken = false;
    Command m_command = Command::None;
    ConnectionStatus m_status;
    std::function<std::vector<std::string>()> m_simulator;
    std::shared_ptr<Replay> m_log;

    std::mutex m_portMutex; // opening, closing and writing; only this thread reads
    Serial m_port;
    Serial m_repeatPort;
    bool m_repeatsToPort = false;

    // The reader thread's own.
    PortPlan m_plan;
    bool m_wanted = false; // the user wants it open
    bool m_withoutPort = false; // open, but without a port of its own
    Backoff m_backoff;
    LineBuffer m_lines{256};
    std::string m_bytes;
};

} // namespace kelvox
