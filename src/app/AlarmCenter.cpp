#include "app/AlarmCenter.h"

#include "app/AlarmVoice.h"
#include "base/File.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace kelvox {

namespace {
using Json = nlohmann::json;
using TimePoint = std::chrono::system_clock::time_point;

/// What the boat does not run aground or collide for.
const std::set<std::string, std::less<>> cautions{"NSWaypointArrivalAlarm", "NSCrossTrackAlarm",
                                                  "NSFailConnect", "NSLibraryProblems"};

long long seconds(TimePoint time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

TimePoint fromSeconds(long long value)
{
    return TimePoint(std::chrono::seconds(value));
}
} // namespace

AlarmCenter::AlarmCenter(const Clock& clock, std::filesystem::path history, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_file(std::move(history))
    , m_voice(std::make_unique<AlarmVoice>(m_file.empty() ? std::filesystem::path()
                                                          : m_file.parent_path() / "sounds"))
{
    readHistory();
}

AlarmCenter::~AlarmCenter() = default;

void AlarmCenter::beep()
{
    m_voice->beep();
}

void AlarmCenter::playSound(const std::string& name)
{
    m_voice->playSound(name);
}

void AlarmCenter::speak(const std::string& text)
{
    m_voice->speak(text);
}

void AlarmCenter::show(const Alert& alert)
{
    if (isShown(alert.key))
        return;
    m_history.push_front({.key = alert.key,
                          .message = alert.message,
                          .informativeText = alert.informativeText,
                          .button = alert.button,
                          .urgency = cautions.contains(alert.key) ? AlarmEntry::Urgency::Caution
                                                                  : AlarmEntry::Urgency::Danger,
                          .raised = m_clock.now()});
    if (m_history.size() > longestHistory)
        m_history.pop_back();
    writeHistory();
    emit changed();
}

bool AlarmCenter::isShown(const std::string& key) const
{
    return std::ranges::any_of(m_history, [&](const AlarmEntry& entry) {
        return entry.key == key && !entry.acknowledged;
    });
}

std::vector<AlarmEntry> AlarmCenter::active() const
{
    std::vector<AlarmEntry> result;
    std::ranges::copy_if(m_history, std::back_inserter(result),
                         [](const AlarmEntry& entry) { return !entry.acknowledged; });
    std::ranges::stable_sort(result, std::greater(), &AlarmEntry::urgency);
    return result;
}

void AlarmCenter::acknowledge(const std::string& key)
{
    for (AlarmEntry& entry : m_history)
        if (entry.key == key && !entry.acknowledged)
            entry.acknowledged = m_clock.now();
    writeHistory();
    emit acknowledged(QString::fromStdString(key));
    emit changed();
}

void AlarmCenter::acknowledgeAll()
{
    for (const AlarmEntry& entry : active())
        acknowledge(entry.key);
}

void AlarmCenter::clearHistory()
{
    std::erase_if(m_history,
                  [](const AlarmEntry& entry) { return entry.acknowledged.has_value(); });
    writeHistory();
    emit changed();
}

void AlarmCenter::readHistory()
{
    const auto bytes = m_file.empty() ? Result<std::string>() : readFile(m_file, 16U << 20U);
    const Json json = bytes ? Json::parse(*bytes, nullptr, false) : Json();
    if (!json.is_array())
        return;
    for (const Json& entry : json) {
        if (!entry.is_object() || m_history.size() == longestHistory)
            continue;
        const auto textOf = [&](const char* name) {
            const auto it = entry.find(name);
            return it != entry.end() && it->is_string() ? it->get<std::string>() : std::string();
        };
        const auto timeOf = [&](const char* name) {
            const auto it = entry.find(name);
            return it != entry.end() && it->is_number_integer() ? it->get<long long>() : 0;
        };
        const auto raised = fromSeconds(timeOf("raised"));
        // What was never acknowledged ended with the program.
        const long long ended = timeOf("acknowledged");
        m_history.push_back({.key = textOf("key"),
                             .message = textOf("message"),
                             .informativeText = textOf("information"),
                             .button = {},
                             .urgency = cautions.contains(textOf("key"))
                                 ? AlarmEntry::Urgency::Caution
                                 : AlarmEntry::Urgency::Danger,
                             .raised = raised,
                             .acknowledged = ended != 0 ? fromSeconds(ended) : raised});
    }
}

void AlarmCenter::writeHistory() const
{
    if (m_file.empty())
        return;
    Json json = Json::array();
    for (const AlarmEntry& entry : m_history) {
        Json item{{"key", entry.key},
                  {"message", entry.message},
                  {"information", entry.informativeText},
                  {"raised", seconds(entry.raised)}};
        if (entry.acknowledged)
            item["acknowledged"] = seconds(*entry.acknowledged);
        json.push_back(std::move(item));
    }
    // A history that cannot be written must not hide the alarm itself.
    (void)writeFileAtomically(m_file, json.dump(1, ' ', false, Json::error_handler_t::replace));
}

} // namespace kelvox
