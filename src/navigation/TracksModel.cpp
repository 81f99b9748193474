#include "navigation/TracksModel.h"

#include "navigation/TextSearch.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace kelvox {

namespace {
constexpr int pauseAllowance = 30; // seconds beyond the interval that still make no new line

std::int64_t numberOf(const std::string& name)
{
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc{} && end == name.data() + name.size() && number < INT64_MAX / 2
        ? number
        : 0;
}
} // namespace

bool comesBefore(const Track& a, const Track& b)
{
    if (a.date != b.date)
        return a.date < b.date; // points without a date come first
    return naturalLess(a.name, b.name);
}

bool startsLine(const Track& previous, const Track& point, int startTrackInterval)
{
    if (startTrackInterval < TracksModel::longestPause && point.date && previous.date
        && *point.date - *previous.date > std::chrono::seconds(startTrackInterval + pauseAllowance))
        return true;
    return point.color != previous.color;
}

TracksModel::TracksModel(EditHistory& history)
    : ChartMarkersModel(history, Journal::Collection::Tracks)
{
}

bool TracksModel::add(Track point, std::chrono::seconds interval)
{
    const bool recording = interval.count() != 0;
    const auto kind = recording ? EditHistory::Kind::Recording : EditHistory::Kind::UserEdit;
    const auto last = lastTrack();
    if (recording && !m_addNext && point.date && last && last->date
        && *point.date < *last->date + interval)
        return false;

    const bool before = isChanged();
    const auto same = !recording && point.date ? pointOfDate(*point.date) : nullptr;
    auto byDate = std::exchange(m_byDate, {});
    const EditHistory::Group group(history());
    if (same) {
        point.name = same->name;
        edit(same, [&](Track& old) { old = std::move(point); });
    } else {
        const auto taken = take(std::move(point), count(), kind);
        m_nextName = std::max(m_nextName, numberOf(taken->name) + 1);
        if (!byDate.empty() && taken->date)
            byDate.emplace(taken->date->time_since_epoch().count(), taken);
        dropOldest(kind);
        m_addNext = false;
    }
    m_byDate = std::move(byDate);
    if (!recording)
        setChanged(before);
    return true;
}

void TracksModel::dropOldest(EditHistory::Kind kind)
{
    if (count() > mostPoints)
        removeRun(0, count() - mostPoints, kind);
}

TrackPointer TracksModel::pointOfDate(Date date)
{
    if (m_byDate.empty())
        for (const auto& point : objectEnumerator())
            if (point->date)
                m_byDate.emplace(point->date->time_since_epoch().count(), point);
    const auto it = m_byDate.find(date.time_since_epoch().count());
    // A point that the limit has dropped may still stand in the table.
    return it != m_byDate.end() && named(it->second->name) == it->second ? it->second : nullptr;
}

bool TracksModel::isStart(std::size_t index) const
{
    if (index >= count())
        return false;
    if (index == 0)
        return true;
    return startsLine(*at(index - 1), *at(index), m_startTrackInterval);
}

void TracksModel::remove(std::size_t first, std::size_t number)
{
    removeRun(first, number, EditHistory::Kind::UserEdit);
}

void TracksModel::removeRun(std::size_t first, std::size_t number, EditHistory::Kind kind)
{
    Changes changes;
    for (std::size_t i = first; i < count() && i - first < number; ++i)
        changes.emplace_back(Change::Remove, at(i), i);
    commit(std::move(changes), kind);
}

TrackPointer TracksModel::previousTrack(const TrackPointer& point) const
{
    const auto index = indexOf(point);
    return index == notFound || index == 0 ? nullptr : at(index - 1);
}

TrackPointer TracksModel::nextTrack(const TrackPointer& point) const
{
    const auto index = indexOf(point);
    return index == notFound ? nullptr : at(index + 1);
}

void TracksModel::makeNameFree(Track& point)
{
    // The second of recording, as importers name their points; later where that is taken.
    const auto second = point.date
        ? std::chrono::floor<std::chrono::seconds>(*point.date).time_since_epoch().count()
        : 0;
    m_nextName = std::max<std::int64_t>(m_nextName, second);
    while (named(std::to_string(m_nextName)))
        ++m_nextName;
    point.name = std::to_string(m_nextName);
}

void TracksModel::onLoaded()
{
    m_addNext = false;
    m_byDate.clear();
    m_nextName = 1;
    for (const auto& point : objectEnumerator())
        m_nextName = std::max(m_nextName, numberOf(point->name) + 1);
}

} // namespace kelvox
