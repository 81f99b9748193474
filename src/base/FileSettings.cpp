#include "base/FileSettings.h"

#include "base/File.h"

#include <nlohmann/json.hpp>

namespace kelvox {

namespace {
constexpr std::size_t longestFile = 16U << 20U;

using Json = nlohmann::json;

Json toJson(const Settings::Value& value)
{
    return std::visit([](const auto& v) { return Json(v); }, value);
}

std::optional<Settings::Value> toValue(const Json& json)
{
    if (json.is_boolean())
        return json.get<bool>();
    if (json.is_number_unsigned() && json.get<unsigned long long>() > (1ULL << 62U))
        return json.get<double>();
    if (json.is_number_integer())
        return json.get<long long>();
    if (json.is_number_float())
        return json.get<double>();
    if (json.is_string())
        return json.get<std::string>();
    return std::nullopt;
}
} // namespace

Result<FileSettings::Contents> FileSettings::read(const std::filesystem::path& file)
{
    const auto bytes = readFile(file, longestFile);
    if (!bytes)
        return tl::unexpected(bytes.error());
    const Json json = Json::parse(*bytes, nullptr, false);
    if (!json.is_object())
        return failure(Error::Code::BadSyntax, file.string() + ": no settings file");
    Contents contents;
    for (const auto& [key, entry] : json.items()) {
        if (auto value = toValue(entry))
            contents.values.emplace(key, std::move(*value));
        else
            contents.others.emplace(key, entry.dump());
    }
    return contents;
}

Result<void> FileSettings::load(const std::filesystem::path& file)
{
    m_file = file;
    m_contents = {};
    m_changed = false;
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return {};
    auto contents = read(file);
    if (contents) {
        m_contents = std::move(*contents);
        return {};
    }
    auto aside = file;
    aside += ".broken";
    std::filesystem::rename(file, aside, error);
    if (error) { // it stays as it is, and what is set from now on is not kept
        m_file.clear();
        return tl::unexpected(contents.error());
    }
    return failure(contents.error().code,
                   contents.error().message + "; it was kept as " + aside.string());
}

Result<void> FileSettings::save()
{
    if (!m_changed || m_file.empty())
        return {};
    auto written = writeFileAtomically(m_file, asJson());
    if (written)
        m_changed = false;
    return written;
}

const Settings::Value* FileSettings::find(std::string_view key) const
{
    const auto it = m_contents.values.find(key);
    if (it != m_contents.values.end())
        return &it->second;
    const auto standard = m_standards.find(key);
    return standard == m_standards.end() ? nullptr : &standard->second;
}

void FileSettings::set(std::string_view key, Value value)
{
    const auto it = m_contents.values.find(key);
    if (it != m_contents.values.end() && it->second == value)
        return;
    m_contents.values.insert_or_assign(std::string(key), std::move(value));
    m_changed = true;
    if (m_handler)
        m_handler(key);
}

void FileSettings::remove(std::string_view key)
{
    const auto it = m_contents.values.find(key);
    if (it == m_contents.values.end())
        return;
    m_contents.values.erase(it);
    m_changed = true;
    if (m_handler)
        m_handler(key);
}

std::string FileSettings::asJson() const
{
    Json json = Json::object();
    for (const auto& [key, written] : m_contents.others)
        json[key] = Json::parse(written, nullptr, false);
    for (const auto& [key, value] : m_contents.values)
        json[key] = toJson(value);
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

Result<void> FileSettings::exportTo(const std::filesystem::path& file) const
{
    return writeFileAtomically(file, asJson());
}

Result<std::size_t> FileSettings::importFrom(const std::filesystem::path& file)
{
    auto contents = read(file);
    if (!contents)
        return tl::unexpected(contents.error());
    for (auto& [key, value] : contents->values)
        set(key, std::move(value));
    return contents->values.size();
}

} // namespace kelvox
