#pragma once

#include "base/Result.h"
#include "base/Strings.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace kelvox {

/// Reads a table of texts: a JSON object of key and text, e.g. {"NSPort": "Port"}. A text that
/// depends on a count is an object of its forms, {KEY: {"one": "{0} cell", "other":
/// "{0} cells"}}, kept under "KEY.one" and "KEY.other"; "zero" may be added.
[[nodiscard]] Result<Strings> parseStrings(std::string_view json);

/// The program's texts in the language of the user, in English where that has none.
///
/// Tables are files "de.json" or "de_AT.json" in one or more folders, UTF-8. A table is laid over
/// what stands before it: the built-in English, then the language, then its regional form, and
/// within each the folders in their order, so that a user can correct or add a language.
class StringCatalog {
public:
    explicit StringCatalog(std::vector<std::filesystem::path> folders)
        : m_folders(std::move(folders))
    {
    }
    /// Takes up a language, e.g. "de", "de_AT.UTF-8" or "en". Fails, and leaves that table out,
    /// when one cannot be read; a language without any table fails and gives English.
    Result<void> setLanguage(std::string_view name);
    [[nodiscard]] const std::string& language() const { return m_language; } ///< "de"

    /// The same object for the life of the catalogue, whatever the language.
    [[nodiscard]] const Strings& strings() const { return m_strings; }
    /// "en" and the languages that have a table, sorted.
    [[nodiscard]] std::vector<std::string> languages() const;

    /// The first language of the user's environment that has a table, else "en". The order is that
    /// of POSIX messages: LANGUAGE (a list), LC_ALL, LC_MESSAGES, LANG.
    using Environment = std::function<std::optional<std::string>(const char*)>;
    [[nodiscard]] std::string preferredLanguage(const Environment& environment) const;

private:
    std::vector<std::filesystem::path> m_folders;
    std::string m_language = "en";
    Strings m_strings = englishStrings();
};

} // namespace kelvox
