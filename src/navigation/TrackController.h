#pragma once

#include "navigation/TracksModel.h"

#include <functional>
#include <utility>

namespace kelvox {

/// The commands of the track list. Main thread.
class TrackController {
public:
    explicit TrackController(TracksModel& tracks)
        : m_tracks(tracks)
    {
    }
    void setAbortEditing(std::function<void()> abort) { m_abortEditing = std::move(abort); }

    /// Ends editing in the list; the next point begins at once, whatever the interval.
    void onTrackNew()
    {
        if (m_abortEditing)
            m_abortEditing();
        m_tracks.addNext();
    }
    /// Selects the nearest point within 0.25 NM of a click; null selects none.
    TrackPointer selectPosition(double longitude, double latitude)
    {
        m_selected = m_tracks.trackAt({longitude, latitude});
        return m_selected;
    }
    [[nodiscard]] const TrackPointer& selected() const { return m_selected; }

private:
    TracksModel& m_tracks;
    TrackPointer m_selected;
    std::function<void()> m_abortEditing;
};

} // namespace kelvox
