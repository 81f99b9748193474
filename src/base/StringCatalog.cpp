#include "base/StringCatalog.h"

#include "base/File.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace kelvox {

namespace {
using Json = nlohmann::json;

constexpr std::size_t largestTable = std::size_t{4} << 20;

/// "de_AT" of "de_AT.UTF-8@euro"; nothing for what is no plain name, which could leave the folder.
std::string localeName(std::string_view name)
{
    const std::string plain(name.substr(0, name.find_first_of(".@")));
    const bool isName = std::ranges::all_of(plain, [](unsigned char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || c == '_';
    });
    return isName ? plain : std::string();
}

std::string languageOf(const std::string& locale)
{
    return locale.substr(0, locale.find('_'));
}

Error badText(const std::string& key)
{
    return {Error::Code::BadSyntax, key + ": a text or its forms are expected", 0};
}
} // namespace

Result<Strings> parseStrings(std::string_view json)
{
    const Json table = Json::parse(json, nullptr, false);
    if (!table.is_object())
        return failure(Error::Code::BadSyntax, "not a table of texts");
    Strings strings;
    for (const auto& [key, value] : table.items()) {
        if (value.is_string()) {
            strings.set(key, value.get<std::string>());
        } else if (value.is_object()) {
            for (const auto& [form, text] : value.items()) {
                if (!text.is_string() || (form != "zero" && form != "one" && form != "other"))
                    return tl::unexpected(badText(key));
                strings.set(std::string(key).append(".").append(form), text.get<std::string>());
            }
        } else {
            return tl::unexpected(badText(key));
        }
    }
    return strings;
}

Result<void> StringCatalog::setLanguage(std::string_view name)
{
    const std::string locale = localeName(name);
    const std::string language = languageOf(locale);
    Strings strings = englishStrings();
    bool found = language == "en";
    std::optional<Error> problem;
    std::vector<std::string> tables{language};
    if (locale != language)
        tables.push_back(locale);
    for (const std::string& table : tables)
        for (const auto& folder : m_folders) {
            const auto path = folder / (table + ".json");
            std::error_code ignored;
            if (table.empty() || !std::filesystem::exists(path, ignored))
                continue;
            auto text = readFile(path, largestTable);
            const auto parsed = text ? parseStrings(*text) : tl::unexpected(text.error());
            if (parsed) {
                strings.overlay(*parsed);
                found = true;
            } else {
                problem = parsed.error();
                problem->message = path.string() + ": " + problem->message;
            }
        }
    m_strings = std::move(strings);
    m_language = found ? language : "en";
    if (problem)
        return tl::unexpected(*problem);
    if (!found)
        return failure(Error::Code::Unsupported,
                       "no texts in the language \"" + std::string(name) + '"');
    return {};
}

std::vector<std::string> StringCatalog::languages() const
{
    std::set<std::string> names{"en"};
    for (const auto& folder : m_folders) {
        std::error_code error;
        for (std::filesystem::directory_iterator entry(folder, error), end; entry != end;
             entry.increment(error))
            if (entry->path().extension() == ".json")
                names.insert(languageOf(entry->path().stem().string()));
    }
    return {names.begin(), names.end()};
}

std::string StringCatalog::preferredLanguage(const Environment& environment) const
{
    std::string locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        if (locale.empty())
            locale = environment(variable).value_or("");
    // As everywhere on the desktop, the C locale asks for no translation whatever LANGUAGE says.
    if (locale.empty() || locale == "POSIX" || languageOf(localeName(locale)) == "C")
        return "en";
    std::string list = environment("LANGUAGE").value_or("") + ':' + locale;
    const auto known = languages();
    while (!list.empty()) {
        const std::size_t colon = list.find(':');
        std::string name = localeName(list.substr(0, colon));
        if (std::ranges::binary_search(known, languageOf(name)))
            return name;
        list.erase(0, colon == std::string::npos ? colon : colon + 1);
    }
    return "en";
}

} // namespace kelvox
