#pragma once

#include "app/LiveData.h"
#include "devices/DeviceTransfer.h"

#include <QObject>

namespace kelvox {

/// The transfer with a receiver that is going on, one at a time for the whole program. A live
/// connection that has the receiver's port lends it and gets it back. Main thread.
class DeviceSession final : public QObject {
    Q_OBJECT
public:
    DeviceSession(LiveData& live, Executor& main, QObject* parent = nullptr);

    /// False while another one is running.
    bool start(DeviceJob job);
    void proceed(); ///< the user has done what question() asks for
    void cancel(); ///< finished() follows, after the receiver was left in order
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    [[nodiscard]] bool isCancelled() const { return m_isCancelled; }

    /// Of the one that is running; its records were handed on.
    [[nodiscard]] const DeviceJob& job() const { return m_job; }
    [[nodiscard]] const TransferProgress& progress() const { return m_progress; }
    /// What the user has to do before it goes on, a text key; empty when there is nothing.
    [[nodiscard]] const std::string& question() const { return m_question; }
    /// What else was said, a text key, e.g. "NSStartAtReceiver".
    [[nodiscard]] const std::string& message() const { return m_message; }

signals:
    void changed();
    void finished(const kelvox::DeviceResult& result); ///< once for each start()

private:
    void portIsFree();
    void finish(const DeviceResult& result);

    LiveData& m_live;
    DeviceJob m_job;
    TransferProgress m_progress;
    std::string m_question;
    std::string m_message;
    bool m_isRunning = false;
    bool m_isCancelled = false;
    DeviceTransfer m_transfer; // last: it ends first
};

} // namespace kelvox
