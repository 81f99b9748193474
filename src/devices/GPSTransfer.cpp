#include "devices/GPSTransfer.h"

#include "devices/SerialLine.h"

namespace kelvox {
namespace {

/// The points a receiver can be given; the number of the others is added up.
template <typename Marker>
std::vector<Marker> placed(const std::vector<Marker>& markers, std::size_t& without)
{
    std::vector<Marker> result;
    result.reserve(markers.size());
    for (const auto& marker : markers) {
        if (marker.isInsideTheChart())
            result.push_back(marker);
        else
            ++without;
    }
    return result;
}

} // namespace

GPSTransfer::GPSTransfer(const Clock& clock, Hooks hooks, const Timing& timing)
    : m_clock(clock)
    , m_hooks(std::move(hooks))
    , m_timing(timing)
{
}

Result<void> GPSTransfer::setPort(const std::string& name, const std::string& rate,
                                  Serial::FlowControl flow)
{
    auto line = SerialLine::open(name, rate, flow, m_clock, m_hooks.stop);
    if (!line) {
        message("NSFailConnect");
        return tl::unexpected(std::move(line.error()));
    }
    m_line = std::move(*line);
    return {};
}

template <typename Work> Result<void> GPSTransfer::inPrivate(const Work& work)
{
    if (!m_line)
        return failure(Error::Code::CannotOpen, "No port was set.");
    if (isStopped())
        return cancelled();
    m_renamed.clear();
    m_leftOut = 0;
    m_tracksLeftOut = 0;
    m_sent = {};
    progress({});
    auto done = startPrivate();
    if (done)
        done = work();
    stopPrivate();
    // A stop makes all kinds of things fail; it is the stop that the user is told of.
    if (!done && isStopped())
        return cancelled();
    return done;
}

Result<void> GPSTransfer::receive(const ExchangeKinds& kinds, ExchangeRecords& records)
{
    prepareToReceive(kinds);
    return inPrivate([&] { return receiveRecords(kinds, records); });
}

Result<void> GPSTransfer::send(const ExchangeKinds& kinds, const ExchangeRecords& records)
{
    return inPrivate([&] {
        ExchangeRecords sent;
        if (kinds.waypoints)
            sent.waypoints = placed(records.waypoints, m_leftOut);
        if (kinds.routes)
            for (const auto& route : records.routes) {
                auto points = placed(route.points, m_leftOut);
                if (!points.empty())
                    sent.routes.push_back({route.name, std::move(points)});
            }
        if (kinds.tracks)
            sent.tracks = placed(records.tracks, m_leftOut);
        auto done = sendRecords(sent);
        m_leftOut += m_tracksLeftOut;
        if (done)
            m_sent = {.waypoints = sent.waypoints.size(),
                      .routes = sent.routes.size(),
                      .trackPoints = sent.tracks.size() - m_tracksLeftOut};
        return done;
    });
}

void GPSTransfer::progress(const TransferProgress& progress) const
{
    if (m_hooks.progress)
        m_hooks.progress(progress);
}

void GPSTransfer::message(const std::string& key) const
{
    if (m_hooks.message)
        m_hooks.message(key);
}

void GPSTransfer::prepare(const std::string& key) const
{
    if (m_hooks.prepare)
        m_hooks.prepare(key);
    else
        message(key);
}

void GPSTransfer::addRenamed(const DeviceNames::Renamed& renamed)
{
    m_renamed.insert(m_renamed.end(), renamed.begin(), renamed.end());
}

void GPSTransfer::makeQuiet(double longest) const
{
    const double deadline = m_clock.monotonicSeconds() + longest;
    std::string ignored;
    while (m_clock.monotonicSeconds() < deadline
           && m_line->read(ignored, m_timing.silence) == DeviceLine::ReadStatus::Data)
        ignored.clear();
    m_line->flush();
}

void GPSTransfer::pause(double seconds) const
{
    const double deadline = m_clock.monotonicSeconds() + seconds;
    std::string ignored;
    for (double left = seconds; left > 0 && !isStopped();
         left = deadline - m_clock.monotonicSeconds()) {
        if (m_line->read(ignored, left) == DeviceLine::ReadStatus::Closed)
            return;
        ignored.clear();
    }
}

tl::unexpected<Error> GPSTransfer::cancelled()
{
    return failure(Error::Code::Cancelled, "The transfer was cancelled.");
}

tl::unexpected<Error> GPSTransfer::gone()
{
    return failure(Error::Code::CannotOpen,
                   "The receiver is gone. Check its cable and start the transfer again.");
}

tl::unexpected<Error> GPSTransfer::noAnswer()
{
    return failure(Error::Code::Truncated,
                   "The receiver does not answer. Check that it is on, its interface setting, the "
                   "port and the baud rate.");
}

bool startsTrackLine(const std::vector<Track>& points, std::size_t index)
{
    return index == 0 || points[index].color != points[index - 1].color;
}

void TrackLineColors::startLine(TrackColor wanted)
{
    constexpr float step = 0.05F;
    if (m_any && wanted == m_color) {
        const auto moved = [](float component) {
            return component + step <= 1 ? component + step : component - step;
        };
        wanted = {moved(wanted.red), moved(wanted.green), moved(wanted.blue)};
    }
    m_color = wanted;
    m_any = true;
}

void keepWaypoint(Waypoint waypoint, ExchangeRecords& records)
{
    if (waypoint.isInsideTheChart())
        records.waypoint(std::move(waypoint));
    else
        records.passedOver();
}

void keepTrackPoint(Track point, ExchangeRecords& records)
{
    if (point.isInsideTheChart())
        records.trackPoint(std::move(point));
    else
        records.passedOver();
}

} // namespace kelvox
