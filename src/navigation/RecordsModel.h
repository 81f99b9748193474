#pragma once

#include "base/AtomicFile.h"
#include "navigation/EditHistory.h"
#include "navigation/PropertyList.h"
#include "navigation/RecordFile.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace kelvox {

/// An ordered collection of named records with its file, its edits journaled and undoable.
///
/// Records are shared and read-only outside; edit() changes one in place, so pointers to it stay
/// good, also through undo and redo. Names are unique, free of white space at their ends and never
/// empty: the file, the journal and the routes know records by name only, so two of a name or none
/// would lose one of them. Main thread.
template <class Record> class RecordsModel {
public:
    using Pointer = std::shared_ptr<const Record>;
    static constexpr std::size_t notFound = static_cast<std::size_t>(-1);

    RecordsModel(EditHistory& history, Journal::Collection collection)
        : m_history(history)
        , m_collection(collection)
    {
    }
    RecordsModel(const RecordsModel&) = delete;
    RecordsModel& operator=(const RecordsModel&) = delete;
    virtual ~RecordsModel() = default;

    [[nodiscard]] std::size_t count() const { return m_records.size(); }
    [[nodiscard]] Pointer at(std::size_t index) const
    {
        return index < count() ? m_records[index] : nullptr;
    }
    /// All records in order, for loops. edit() may be called within, adding and removing may not.
    [[nodiscard]] const std::deque<Pointer>& objectEnumerator() const { return m_records; }
    [[nodiscard]] std::size_t indexOf(const Pointer& record) const
    {
        const auto it = std::find(m_records.begin(), m_records.end(), record);
        return it == m_records.end() ? notFound : static_cast<std::size_t>(it - m_records.begin());
    }
    /// The record of exactly that name; null when there is none.
    [[nodiscard]] Pointer named(const std::string& name) const
    {
        const auto& names = index();
        const auto it = names.find(name);
        return it == names.end() ? nullptr : it->second;
    }

    /// Takes the record in at the end. A missing name is made, a taken one gets a number.
    Pointer add(Record record) { return insert(std::move(record), count()); }
    Pointer insert(Record record, std::size_t place = 0)
    {
        return take(std::move(record), place, EditHistory::Kind::UserEdit);
    }
    void replace(std::size_t place, Record record)
    {
        if (const auto old = at(place))
            edit(old, [&](Record& it) { it = std::move(record); });
    }
    virtual bool remove(const Pointer& record)
    {
        const auto place = indexOf(record);
        if (place == notFound)
            return false;
        commit({Change(Change::Remove, record, place)}, EditHistory::Kind::UserEdit);
        return true;
    }
    bool remove(std::size_t place) { return remove(at(place)); }
    virtual void removeAll()
    {
        Changes changes;
        for (std::size_t i = 0; i < count(); ++i)
            changes.emplace_back(Change::Remove, m_records[i], i);
        commit(std::move(changes), EditHistory::Kind::UserEdit);
    }
    /// Changes a record of this model. Refused, with nothing changed, when the name would become
    /// empty or another record's.
    bool edit(const Pointer& record, const std::function<void(Record&)>& change)
    {
        if (!record || named(record->name) != record)
            return false;
        auto after = std::make_shared<Record>(*record);
        change(*after);
        tidy(*after);
        if (after->name.empty() || (after->name != record->name && named(after->name)))
            return false;
        if (textOf(*after) == textOf(*record))
            return true;
        Change made(Change::Modify, record);
        made.before = std::make_shared<Record>(*record);
        const bool renamed = after->name != record->name;
        made.after = std::move(after);
        const EditHistory::Group group(m_history);
        commit({std::move(made)}, EditHistory::Kind::UserEdit);
        if (renamed)
            onRenamed(record);
        return true;
    }

    /// Puts the records into the order of this collection. No edit: order is not saved.
    void sort()
    {
        if (!std::is_sorted(m_records.begin(), m_records.end(), &isBefore)) // as files mostly are
            std::stable_sort(m_records.begin(), m_records.end(), &isBefore);
    }

    /// Reads the file in place of what the model holds, then the journal's later edits. A missing
    /// file loads nothing; one that cannot be read is kept under another name. Once per start.
    LoadReport load(const std::filesystem::path& file)
    {
        m_file = file;
        m_records.clear();
        m_index.reset();
        m_history.clear();
        LoadReport report;
        std::error_code ignored;
        if (std::filesystem::exists(std::filesystem::symlink_status(file, ignored)))
            readFileInto(report);
        recover(report);
        sort();
        report.records = count();
        m_hasUnsavedChanges = report.recovered > 0;
        onLoaded();
        notify();
        return report;
    }

    /// Writes the file at once and for good. On failure nothing changed.
    Result<void> save(const std::filesystem::path& file)
    {
        const auto pending = pendingSave(file);
        if (auto ready = pending.prepare(); !ready)
            return ready;
        auto out = AtomicFile::create(file);
        if (!out)
            return tl::unexpected(out.error());
        // Piece by piece: the disk works on one while the next is made.
        PropertyWriter writer;
        Result<void> written;
        const auto handOver = [&] {
            if (written)
                written = out->append(writer.written());
            writer.clear();
        };
        write(writer, [&] {
            if (writer.written().size() >= pieceSize)
                handOver();
        });
        handOver();
        if (written)
            written = out->commit();
        return written ? finishSave(pending) : written;
    }
    /// The same in three steps, so that the middle one, PendingSave::write(), need not hold up the
    /// main thread while the disk works.
    [[nodiscard]] PendingSave beginSave(const std::filesystem::path& file) const
    {
        auto pending = pendingSave(file);
        PropertyWriter writer;
        writer.reserve(count() * bytesPerRecord);
        write(writer, [] {});
        pending.bytes = writer.take();
        return pending;
    }
    Result<void> finishSave(const PendingSave& saved)
    {
        if (!m_file.empty() && saved.file != m_file)
            return {}; // a copy for elsewhere: the model's own file is as it was
        m_file = saved.file;
        auto& journal = m_history.journal();
        if (journal.isOpen()) {
            // What the file's form cannot hold stays in the journal.
            std::vector<Journal::Entry> unsaved;
            for (const auto& record : m_records)
                if (!isSaved(*record))
                    unsaved.push_back({m_collection, record->name, textOf(*record)});
            if (!unsaved.empty())
                if (auto written = journal.append(unsaved, Journal::Reach::Disk); !written)
                    return written;
            if (auto forgotten = journal.forget(m_collection, saved.journalPosition); !forgotten)
                return forgotten;
        }
        if (saved.revision == m_revision)
            m_hasUnsavedChanges = false;
        notify();
        return {};
    }

    [[nodiscard]] bool isChanged() const { return m_hasUnsavedChanges; }
    void setChanged(bool changed)
    {
        m_hasUnsavedChanges = changed;
        notify();
    }
    /// Called after every change, for redrawing and the Save button.
    void setChangeHandler(std::function<void()> handler) { m_changeHandler = std::move(handler); }
    [[nodiscard]] EditHistory& history() const { return m_history; }

protected:
    struct Change {
        enum Kind { Insert, Remove, Modify, Touch };
        Kind kind;
        Pointer object;
        std::size_t place;
        std::shared_ptr<Record> before; ///< of Modify
        std::shared_ptr<Record> after;

        Change(Kind what, Pointer record, std::size_t index = 0)
            : kind(what)
            , object(std::move(record))
            , place(index)
        {
        }
    };
    using Changes = std::vector<Change>;

    /// On how many threads getDictionary() may be called at once.
    [[nodiscard]] virtual std::size_t readers() const { return 1; }
    /// A record from the file's or the journal's entries; nothing where it is to be left out.
    [[nodiscard]] virtual std::optional<Record> getDictionary(const PropertyFields& fields) = 0;
    /// Gives a record without a name, or with a taken one, a free name.
    virtual void makeNameFree(Record& record) = 0;
    /// Cleans texts that users and other programs supplied.
    virtual void tidy(Record& record) const { record.name = trimmed(cleanText(record.name)); }
    [[nodiscard]] virtual bool isSaved(const Record& record) const { return !record.name.empty(); }
    virtual void onRenamed(const Pointer& /*record*/) { } ///< by the user, not by undo
    virtual void onApplied() { } ///< after every change, undo and redo included
    virtual void onLoaded() { }
    virtual void onNameFreed() { }

    Pointer take(Record record, std::size_t place, EditHistory::Kind kind)
    {
        tidy(record);
        if (record.name.empty() || named(record.name))
            makeNameFree(record);
        auto object = std::make_shared<Record>(std::move(record));
        commit({Change(Change::Insert, object, std::min(place, count()))}, kind);
        return object;
    }

    void commit(Changes changes, EditHistory::Kind kind)
    {
        if (changes.empty())
            return;
        auto made = std::make_unique<ModelEdit>(*this, std::move(changes));
        made->redo();
        m_history.commit(std::move(made), kind);
    }
    /// Writes records to the journal again because something they name has another name now.
    void touch(const std::vector<Pointer>& records)
    {
        Changes changes;
        for (const auto& record : records)
            changes.emplace_back(Change::Touch, record);
        commit(std::move(changes), EditHistory::Kind::UserEdit);
    }
    [[nodiscard]] static std::string textOf(const Record& record)
    {
        PropertyWriter writer;
        buildDictionary(record, writer);
        return writer.take();
    }

private:
    static constexpr std::size_t bytesPerRecord = 640; // a track point's; others grow if they must
    static constexpr std::size_t pieceSize = std::size_t{1} << 18;
    using Index = std::unordered_map<std::string, Pointer>;

    class ModelEdit final : public Edit {
    public:
        ModelEdit(RecordsModel& model, Changes changes)
            : m_model(model)
            , m_changes(std::move(changes))
        {
        }
        void undo() override { m_model.apply(m_changes, Change::Insert, &Change::before); }
        void redo() override { m_model.apply(m_changes, Change::Remove, &Change::after); }
        void describe(std::vector<Journal::Entry>& entries) const override
        {
            std::unordered_set<std::string> names;
            for (const auto& change : m_changes) {
                names.insert(change.object->name);
                if (change.before)
                    names.insert({change.before->name, change.after->name});
            }
            for (const auto& name : names) {
                const auto record = m_model.named(name);
                entries.push_back({m_model.m_collection, name,
                                   record ? std::optional(textOf(*record)) : std::nullopt});
            }
        }

    private:
        RecordsModel& m_model;
        Changes m_changes;
    };

    static void buildKey(const Record& record, PropertyWriter& writer) { writer.key(record.name); }
    static void buildDictionary(const Record& record, PropertyWriter& writer)
    {
        writer.beginDictionary();
        record.write(writer);
        writer.endDictionary();
    }

    [[nodiscard]] PendingSave pendingSave(const std::filesystem::path& file) const
    {
        return {.file = file,
                .bytes = {},
                .journalPosition = m_history.journal().position(),
                .revision = m_revision,
                .refusal = m_file.empty() || file == m_file ? refusal() : std::string()};
    }
    /// The whole file; `afterEach` record the writer may be emptied.
    void write(PropertyWriter& writer, const auto& afterEach) const
    {
        writer.beginDocument();
        for (const auto& record : m_records) {
            if (!isSaved(*record))
                continue;
            buildKey(*record, writer);
            buildDictionary(*record, writer);
            writer.newLine();
            afterEach();
        }
        writer.endDocument();
    }

    /// @param removing the kind of change that takes objects out in this direction
    /// @param value the state to put modified objects into
    void apply(const Changes& changes, typename Change::Kind removing,
               std::shared_ptr<Record> Change::*value)
    {
        std::unordered_set<const Record*> leaving;
        std::size_t place = 0; // of the last one of those
        std::vector<const Change*> coming;
        for (const auto& change : changes) {
            if (change.kind == Change::Modify)
                assign(change.object, *(change.*value));
            else if (change.kind == removing) {
                leaving.insert(change.object.get());
                place = change.place;
            } else if (change.kind != Change::Touch)
                coming.push_back(&change);
        }
        takeOut(leaving, place);
        putIn(coming);
        ++m_revision;
        m_hasUnsavedChanges = true;
        onApplied();
        notify();
    }

    void assign(const Pointer& object, const Record& value)
    {
        const bool renamed = object->name != value.name;
        if (renamed && m_index) {
            m_index->erase(object->name);
            (*m_index)[value.name] = object;
        }
        // The objects were made by this model, and not const.
        const_cast<Record&>(*object) = value;
        if (renamed)
            onNameFreed();
    }

    /// @param place where a single one most likely stands
    void takeOut(const std::unordered_set<const Record*>& leaving, std::size_t place)
    {
        if (leaving.empty())
            return;
        if (m_index)
            for (const Record* record : leaving)
                m_index->erase(record->name);
        if (leaving.size() == 1) {
            // Taking back a long import takes back thousands of these, one by one.
            const auto isIt = [&](const auto& record) { return record.get() == *leaving.begin(); };
            auto it = m_records.begin() + static_cast<std::ptrdiff_t>(std::min(place, count()));
            if (it == m_records.end() || !isIt(*it))
                it = std::find_if(m_records.begin(), m_records.end(), isIt);
            if (it != m_records.end())
                m_records.erase(it);
        } else {
            std::erase_if(m_records, [&](const auto& r) { return leaving.contains(r.get()); });
        }
        onNameFreed();
    }

    void putIn(std::vector<const Change*>& coming)
    {
        if (m_index)
            for (const auto* change : coming)
                m_index->emplace(change->object->name, change->object);
        if (coming.empty())
            return; // edits keep the enumeration alive
        if (coming.size() == 1) {
            const auto place = static_cast<std::ptrdiff_t>(std::min(coming[0]->place, count()));
            m_records.insert(m_records.begin() + place, coming[0]->object);
            return;
        }
        std::stable_sort(coming.begin(), coming.end(),
                         [](const auto* a, const auto* b) { return a->place < b->place; });
        std::deque<Pointer> merged;
        std::size_t old = 0;
        for (const auto* change : coming) {
            while (merged.size() < change->place && old < m_records.size())
                merged.push_back(std::move(m_records[old++]));
            merged.push_back(change->object);
        }
        while (old < m_records.size())
            merged.push_back(std::move(m_records[old++]));
        m_records.swap(merged);
    }

    const Index& index() const
    {
        if (!m_index) {
            m_index.emplace();
            m_index->reserve(count());
            for (const auto& record : m_records)
                m_index->emplace(record->name, record); // the first of a name wins
        }
        return *m_index;
    }

    void readFileInto(LoadReport& report)
    {
        struct Part {
            std::vector<Pointer> records;
            std::size_t passedOver = 0;
            bool keysDiffer = false;
        };
        std::vector<Part> parts(readers());
        const auto take = [&](std::size_t number, std::string_view key,
                              const PropertyFields& fields) {
            Part& part = parts[number];
            auto record = getDictionary(fields);
            if (!record) {
                ++part.passedOver;
                return;
            }
            part.keysDiffer = part.keysDiffer || record->name != key;
            part.records.push_back(std::make_shared<Record>(std::move(*record)));
        };
        auto read =
            readRecordFile(m_file,
                           {.parts = parts.size(),
                            .restart = [&] { std::fill(parts.begin(), parts.end(), Part()); },
                            .record = take});
        if (!read) {
            setAside(report, std::move(read.error()));
            return;
        }
        report.passedOver += *read;
        bool keysDiffer = false;
        for (auto& part : parts) {
            m_records.insert(m_records.end(), std::make_move_iterator(part.records.begin()),
                             std::make_move_iterator(part.records.end()));
            report.passedOver += part.passedOver;
            keysDiffer = keysDiffer || part.keysDiffer;
        }
        if (keysDiffer)
            separateNames();
    }

    /// Why the model's own file must stay as it is; empty when it may be replaced.
    [[nodiscard]] std::string refusal() const
    {
        if (m_history.journal().isInUseElsewhere())
            return "another running copy of the program has it open; not replaced";
        return m_mayReplaceFile ? "" : "holds data that could not be read; not replaced";
    }

    void setAside(LoadReport& report, Error error)
    {
        error.message = m_file.string() + ": " + error.message;
        std::error_code ignored;
        m_mayReplaceFile = false;
        if (!m_history.journal().isInUseElsewhere()) // or else it is not ours to move
            if (const auto kept = keepUnderAnotherName(m_file)) {
                report.keptAs = *kept;
                std::filesystem::remove(m_file, ignored);
                m_mayReplaceFile = true;
            }
        report.error = std::move(error);
    }

    /// A file from elsewhere may say one name twice.
    void separateNames()
    {
        auto records = std::exchange(m_records, {});
        m_index.reset();
        for (auto& record : records) {
            auto& own = const_cast<Record&>(*record);
            tidy(own);
            if (own.name.empty() || named(own.name))
                makeNameFree(own);
            m_index->emplace(own.name, record);
            m_records.push_back(std::move(record));
        }
    }

    void recover(LoadReport& report)
    {
        const auto& recovered = m_history.journal().recovered(m_collection);
        for (const auto& [name, text] : recovered) {
            const auto old = named(name);
            ++report.recovered;
            std::optional<Record> record;
            if (text) {
                const auto fields = readDictionary(*text);
                if (fields)
                    record = getDictionary(*fields);
                if (!record) {
                    ++report.passedOver;
                    continue;
                }
            }
            if (!record && old)
                takeOut({old.get()}, indexOf(old));
            else if (record && old)
                const_cast<Record&>(*old) = std::move(*record);
            else if (record) {
                m_records.push_back(std::make_shared<Record>(std::move(*record)));
                m_index->emplace(name, m_records.back());
            }
        }
    }

    static bool isBefore(const Pointer& a, const Pointer& b) { return comesBefore(*a, *b); }
    void notify() const
    {
        if (m_changeHandler)
            m_changeHandler();
    }

    EditHistory& m_history;
    Journal::Collection m_collection;
    std::deque<Pointer> m_records;
    mutable std::optional<Index> m_index; // made when first asked for
    std::filesystem::path m_file;
    std::uint64_t m_revision = 0;
    bool m_hasUnsavedChanges = false;
    bool m_mayReplaceFile = true; // false: it could neither be read nor kept elsewhere
    std::function<void()> m_changeHandler;
};

} // namespace kelvox
