#pragma once

#include "base/Result.h"
#include "base/Settings.h"

#include <filesystem>
#include <functional>
#include <vector>

namespace kelvox {

/// The user's settings in one JSON file, an object of plain values by key. Main thread.
///
/// set() changes the memory only; save() writes the file atomically, and does nothing while the
/// two agree. Values of other kinds (lists, objects) that a later version wrote are kept.
class FileSettings final : public Settings {
public:
    /// Reads the file in place of what is held. A missing file is no error. One that cannot be read
    /// as settings is moved aside (".broken") so that nothing of the user's is overwritten.
    [[nodiscard]] Result<void> load(const std::filesystem::path& file);
    [[nodiscard]] Result<void> save();
    [[nodiscard]] bool hasUnsavedChanges() const { return m_changed; }

    using Values = std::map<std::string, Value, std::less<>>;
    /// What find() gives for keys that were never set; not written to the file.
    void setStandards(Values standards) { m_standards = std::move(standards); }

    [[nodiscard]] const Value* find(std::string_view key) const override;
    /// Whether the key has a value of its own, be it the standard one.
    [[nodiscard]] bool isSet(std::string_view key) const { return m_contents.values.contains(key); }
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key); ///< back to the standard
    /// Told of every key whose value is another one now.
    void setChangeHandler(std::function<void(std::string_view key)> handler)
    {
        m_handler = std::move(handler);
    }

    /// All of them for another computer, or into this one: only values that are of a known kind.
    [[nodiscard]] Result<void> exportTo(const std::filesystem::path& file) const;
    /// The number of settings taken over.
    [[nodiscard]] Result<std::size_t> importFrom(const std::filesystem::path& file);

private:
    struct Contents {
        Values values;
        std::map<std::string, std::string> others; ///< JSON texts of what is not ours to read
    };
    [[nodiscard]] static Result<Contents> read(const std::filesystem::path& file);
    [[nodiscard]] std::string asJson() const;

    std::filesystem::path m_file;
    Contents m_contents;
    Values m_standards;
    std::function<void(std::string_view)> m_handler;
    bool m_changed = false;
};

} // namespace kelvox
