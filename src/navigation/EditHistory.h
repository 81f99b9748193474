#pragma once

#include "base/Clock.h"
#include "navigation/Journal.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kelvox {

/// Changes of one collection that belong together and are already in force.
class Edit {
public:
    virtual ~Edit() = default;
    virtual void undo() = 0;
    virtual void redo() = 0;
    /// The state of every record it touches, as it is now, for the journal.
    virtual void describe(std::vector<Journal::Entry>& entries) const = 0;
};

/// The one history of all waypoints, routes and tracks: every edit goes through it to the journal,
/// and back again when the user takes it back. Main thread. Must outlive the models.
class EditHistory {
public:
    explicit EditHistory(const Clock& clock = systemClock());

    /// Before the models load. See Journal::open(). Without a journal edits live in memory only.
    Result<std::optional<std::filesystem::path>> openJournal(const std::filesystem::path& path);
    [[nodiscard]] Journal& journal() { return m_journal; }
    /// Whether an edit waits for the disk (the default) or only for the system.
    void setReach(Journal::Reach reach) { m_reach = reach; }
    /// Told when the journal cannot be written, e.g. because the disk is full.
    void setErrorHandler(std::function<void(const Error&)> handler);

    /// Edits made while a group lives are one step to the user and whole or absent after a kill.
    class [[nodiscard]] Group {
    public:
        explicit Group(EditHistory& history)
            : m_history(history)
        {
            ++m_history.m_depth;
        }
        Group(const Group&) = delete;
        Group& operator=(const Group&) = delete;
        ~Group()
        {
            --m_history.m_depth;
            m_history.closeGroup();
        }

    private:
        EditHistory& m_history;
    };

    /// A recording is journaled, reaching the disk at least once a second, but is no step of undo;
    /// it does not wait for the end of a step around it, such as a long import.
    enum class Kind { UserEdit, Recording };
    void commit(std::unique_ptr<Edit> edit, Kind kind);

    [[nodiscard]] bool canUndo() const { return !m_done.empty() && m_depth == 0; }
    [[nodiscard]] bool canRedo() const { return !m_undone.empty() && m_depth == 0; }
    bool undo(); ///< false when there is nothing to take back
    bool redo();
    void clear(); ///< forgets all steps; records and journal stay
    /// Another number after every step, undo and redo: whether a step is still the last one.
    [[nodiscard]] unsigned long revision() const { return m_revision; }

private:
    using Step = std::vector<std::unique_ptr<Edit>>;
    static const Clock& systemClock();
    void closeGroup();
    void closeStep();
    void write(const std::vector<Journal::Entry>& entries, Kind kind);
    void writeStateOf(const Step& step);

    const Clock& m_clock;
    Journal m_journal;
    Journal::Reach m_reach = Journal::Reach::Disk;
    std::function<void(const Error&)> m_errorHandler;
    double m_lastSync = 0;
    int m_depth = 0;
    unsigned long m_revision = 0;
    Step m_open; // the step of the group that lives
    std::vector<Journal::Entry> m_recorded; // within the innermost group
    std::deque<Step> m_done;
    std::deque<Step> m_undone;
};

} // namespace kelvox
