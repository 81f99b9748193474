#include "navigation/EditHistory.h"

#include <utility>

namespace kelvox {

namespace {
constexpr std::size_t mostSteps = 500;
constexpr double secondsBetweenSyncs = 1;
} // namespace

EditHistory::EditHistory(const Clock& clock)
    : m_clock(clock)
{
}

const Clock& EditHistory::systemClock()
{
    static const SystemClock clock;
    return clock;
}

Result<std::optional<std::filesystem::path>>
EditHistory::openJournal(const std::filesystem::path& path)
{
    return m_journal.open(path);
}

void EditHistory::setErrorHandler(std::function<void(const Error&)> handler)
{
    m_errorHandler = std::move(handler);
}

void EditHistory::commit(std::unique_ptr<Edit> edit, Kind kind)
{
    if (kind == Kind::Recording) {
        std::vector<Journal::Entry> entries;
        edit->describe(entries);
        if (m_depth == 0)
            write(entries, kind);
        else
            m_recorded.insert(m_recorded.end(), std::make_move_iterator(entries.begin()),
                              std::make_move_iterator(entries.end()));
        return;
    }
    m_open.push_back(std::move(edit));
    if (m_depth == 0)
        closeStep();
}

void EditHistory::closeGroup()
{
    if (!m_recorded.empty())
        write(std::exchange(m_recorded, {}), Kind::Recording);
    if (m_depth == 0)
        closeStep();
}

void EditHistory::closeStep()
{
    if (m_open.empty())
        return;
    ++m_revision;
    writeStateOf(m_open);
    m_done.push_back(std::exchange(m_open, {}));
    m_undone.clear();
    if (m_done.size() > mostSteps)
        m_done.pop_front();
}

void EditHistory::writeStateOf(const Step& step)
{
    if (!m_journal.isOpen())
        return;
    std::vector<Journal::Entry> entries;
    for (const auto& edit : step)
        edit->describe(entries);
    write(entries, Kind::UserEdit);
}

void EditHistory::write(const std::vector<Journal::Entry>& entries, Kind kind)
{
    if (!m_journal.isOpen() || entries.empty())
        return;
    auto reach = m_reach;
    if (kind == Kind::Recording && reach == Journal::Reach::Disk) {
        const double now = m_clock.monotonicSeconds();
        if (now - m_lastSync < secondsBetweenSyncs)
            reach = Journal::Reach::System;
        else
            m_lastSync = now;
    }
    const auto written = m_journal.append(entries, reach);
    if (!written && m_errorHandler)
        m_errorHandler(written.error());
}

bool EditHistory::undo()
{
    if (!canUndo())
        return false;
    ++m_revision;
    Step step = std::move(m_done.back());
    m_done.pop_back();
    for (std::size_t i = step.size(); i > 0; --i)
        step[i - 1]->undo();
    writeStateOf(step);
    m_undone.push_back(std::move(step));
    return true;
}

bool EditHistory::redo()
{
    if (!canRedo())
        return false;
    ++m_revision;
    Step step = std::move(m_undone.back());
    m_undone.pop_back();
    for (const auto& edit : step)
        edit->redo();
    writeStateOf(step);
    m_done.push_back(std::move(step));
    return true;
}

void EditHistory::clear()
{
    m_done.clear();
    m_undone.clear();
}

} // namespace kelvox
