#pragma once

#include "navigation/ChartMarkersModel.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace kelvox {

[[nodiscard]] bool comesBefore(const Track& a, const Track& b); ///< by date
/// Whether a line begins with the second of two points in a row: see TracksModel::isStart().
[[nodiscard]] bool startsLine(const Track& previous, const Track& point, int startTrackInterval);

/// The recorded track, oldest point first: at most 50,000 points. See RecordsModel.
class TracksModel final : public ChartMarkersModel<Track> {
public:
    explicit TracksModel(EditHistory& history);
    static TracksModel& tracks(); ///< the shared instance

    static constexpr const char* fileName = "Preferences/KelvoxTracks.plist";
    static constexpr std::size_t mostPoints = 50'000;
    static constexpr int longestPause = 10'800; ///< seconds; from here on none begins a new line
    static constexpr float pickingDistanceNM = 0.25F;

    /// Records a point; with an interval it is refused while the last one is younger than that.
    /// With interval 0 (import) a point of exactly the same date is replaced instead, and the model
    /// is not marked changed: the importer does that once. The oldest points give way at the limit.
    /// A point without a name gets one.
    /// @return whether the point was taken
    bool add(Track point, std::chrono::seconds interval);
    void addNext() { m_addNext = true; } ///< the next point is taken whatever the interval

    /// The first of a line: the first point at all, one after a long pause, or one of another
    /// colour.
    [[nodiscard]] bool isStart(std::size_t index) const;
    [[nodiscard]] bool isStart(const TrackPointer& point) const { return isStart(indexOf(point)); }
    [[nodiscard]] int startTrackInterval() const { return m_startTrackInterval; }
    void setStartTrackInterval(int seconds) { m_startTrackInterval = seconds; }

    using ChartMarkersModel::remove;
    void remove(std::size_t first, std::size_t count); ///< a run of points
    [[nodiscard]] TrackPointer track(std::size_t index) const { return at(index); }
    [[nodiscard]] TrackPointer previousTrack(const TrackPointer& point) const;
    [[nodiscard]] TrackPointer nextTrack(const TrackPointer& point) const;
    [[nodiscard]] TrackPointer firstTrack() const { return firstChartMarker(); }
    [[nodiscard]] TrackPointer lastTrack() const { return lastChartMarker(); }
    [[nodiscard]] TrackPointer trackAt(Position position) const
    {
        return nearest(position, pickingDistanceNM);
    }

    // How the list shows courses.
    void setCompassVariation(float degrees) { m_compassVariation = degrees; }
    [[nodiscard]] float compassVariation() const { return m_compassVariation; }
    void setMagnetic(bool magnetic) { m_magnetic = magnetic; }
    [[nodiscard]] bool magnetic() const { return m_magnetic; }

protected:
    using DateTable = std::unordered_map<Date::rep, TrackPointer>;

    void makeNameFree(Track& point) override;
    /// Gives the table up, buckets and all: clear() goes over those, again and again in a long
    /// undo.
    void onApplied() override { m_byDate = DateTable(); }
    void onLoaded() override;

private:
    [[nodiscard]] TrackPointer pointOfDate(Date date);
    void dropOldest(EditHistory::Kind kind);
    void removeRun(std::size_t first, std::size_t number, EditHistory::Kind kind);

    bool m_addNext = false;
    int m_startTrackInterval = 900;
    float m_compassVariation = 0;
    bool m_magnetic = false;
    std::int64_t m_nextName = 0; // above every number used as a name
    // Made when an import first asks for a date; any change but an import's own makes it void.
    DateTable m_byDate;
};

} // namespace kelvox
