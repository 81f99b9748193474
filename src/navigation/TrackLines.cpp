#include "navigation/TrackLines.h"

#include "navigation/NavMath.h"

namespace kelvox {

float TrackLine::hours() const
{
    if (!begin || !end || *end <= *begin)
        return static_cast<float>(noValue);
    return std::chrono::duration<float, std::ratio<3600>>(*end - *begin).count();
}

float TrackLine::knots() const
{
    const float duration = hours();
    return isKnown(duration) ? miles / duration : static_cast<float>(noValue);
}

std::vector<TrackLine> trackLines(const TracksModel& tracks)
{
    std::vector<TrackLine> lines;
    Position before;
    std::size_t index = 0;
    for (const auto& point : tracks.objectEnumerator()) {
        if (tracks.isStart(index)) {
            TrackLine line;
            line.first = index;
            line.color = point->color;
            lines.push_back(line);
            before = {};
        }
        TrackLine& line = lines.back();
        ++line.count;
        if (point->date) {
            if (!line.begin)
                line.begin = point->date;
            line.end = point->date;
        }
        if (point->hasPosition()) {
            const Position here = point->positionOnGPS();
            if (before.isKnown())
                line.miles += NavMath::distanceFromPoint(before, here);
            before = here;
        }
        ++index;
    }
    return lines;
}

} // namespace kelvox
