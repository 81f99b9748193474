#include "app/DeviceSession.h"

#include <QPointer>

#include <utility>

namespace kelvox {

DeviceSession::DeviceSession(LiveData& live, Executor& main, QObject* parent)
    : QObject(parent)
    , m_live(live)
    , m_transfer(main, live.clock())
{
}

bool DeviceSession::start(DeviceJob job)
{
    if (std::exchange(m_isRunning, true))
        return false;
    m_isCancelled = false;
    m_progress = {};
    m_question.clear();
    m_message.clear();
    m_job = std::move(job);
    emit changed();
    m_live.lendPort(m_job.port, [session = QPointer(this)] {
        if (session)
            session->portIsFree();
    });
    return true;
}

void DeviceSession::portIsFree()
{
    if (m_isCancelled) { // while a connection was giving the port up
        finish({.error = Error{Error::Code::Cancelled, "The transfer was cancelled."}});
        return;
    }
    auto records = std::exchange(m_job.records, {});
    DeviceJob job = m_job;
    job.records = std::move(records);
    m_transfer.start(std::move(job),
                     {.progress =
                          [this](const TransferProgress& progress) {
                              m_progress = progress;
                              emit changed();
                          },
                      .message =
                          [this](const std::string& key) {
                              m_message = key;
                              emit changed();
                          },
                      .prepare =
                          [this](const std::string& key) {
                              m_question = key;
                              emit changed();
                          },
                      .finished = [this](const DeviceResult& result) { finish(result); }});
}

void DeviceSession::proceed()
{
    m_question.clear();
    m_transfer.proceed();
    emit changed();
}

void DeviceSession::cancel()
{
    if (!m_isRunning || std::exchange(m_isCancelled, true))
        return;
    m_question.clear();
    m_transfer.cancel();
    emit changed();
}

void DeviceSession::finish(const DeviceResult& result)
{
    m_isRunning = false;
    m_question.clear();
    m_live.takePortBack();
    emit changed();
    emit finished(result);
}

} // namespace kelvox
