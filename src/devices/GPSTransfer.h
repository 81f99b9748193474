#pragma once

#include "base/Clock.h"
#include "base/Result.h"
#include "connections/Serial.h"
#include "devices/DeviceLine.h"
#include "devices/DeviceText.h"
#include "exchange/ExchangeFile.h"
#include "exchange/ExchangeTarget.h"

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace kelvox {

/// How far a transfer is.
struct TransferProgress {
    enum class Phase {
        Identifying,
        Waiting, ///< for the user to start it at the receiver
        Receiving,
        Sending
    };
    enum class Kind { Any, Waypoints, Routes, Tracks };
    Phase phase = Phase::Identifying;
    Kind kind = Kind::Any;
    std::size_t done = 0; ///< records
    std::size_t total = 0; ///< 0: not known

    friend bool operator==(const TransferProgress&, const TransferProgress&) = default;
};

/// Exchanges waypoints, routes and tracks with a receiver: what all makes have in common.
///
/// Works on the calling thread, which waits; DeviceTransfer runs it on one of its own. What is
/// received is handed out only by the caller, after all of it has come: on failure the records hold
/// what had come until then.
class GPSTransfer {
public:
    /// Seconds, and how often a thing is tried.
    struct Timing {
        double answer = 3; ///< for a receiver to answer
        double silence = 0.5; ///< after which a line counts as quiet
        double restart = 1; ///< for a receiver that changes its protocol
        double menu = 60; ///< for the user to start a transfer at the receiver
        int attempts = 3;
    };
    struct Hooks {
        std::stop_token stop = {};
        std::function<void(const TransferProgress&)> progress = {};
        std::function<void(const std::string& key)> message =
            {}; ///< for the user, e.g. "NSFailConnect"
        /// Something that the user has to do at the receiver first, e.g. "NSSlaveMode": returns
        /// when it is done, or when a stop is asked for. Without it the message is only told.
        std::function<void(const std::string& key)> prepare = {};
    };
    /// What went into a receiver.
    struct Sent {
        std::size_t waypoints = 0; ///< without those that only routes go through
        std::size_t routes = 0;
        std::size_t trackPoints = 0;
    };

    GPSTransfer(const Clock& clock, Hooks hooks, const Timing& timing);
    virtual ~GPSTransfer() = default;
    GPSTransfer(const GPSTransfer&) = delete;
    GPSTransfer& operator=(const GPSTransfer&) = delete;

    /// Opens a serial port. The error says what to do.
    [[nodiscard]] Result<void> setPort(const std::string& name, const std::string& rate,
                                       Serial::FlowControl flow);
    void setPort(std::unique_ptr<DeviceLine> line) { m_line = std::move(line); }
    /// Once a port is set.
    [[nodiscard]] DeviceLine& serialPort() const { return *m_line; }

    /// All kinds asked for, whole or failure. The receiver is left as it was found, also after a
    /// failure and when stopped, which is the failure Cancelled.
    [[nodiscard]] Result<void> receive(const ExchangeKinds& kinds, ExchangeRecords& records);
    [[nodiscard]] Result<void> send(const ExchangeKinds& kinds, const ExchangeRecords& records);

    /// Takes the line for the transfer: makes it quiet, initialises and identifies the receiver.
    [[nodiscard]] virtual Result<void> startPrivate() = 0;
    /// Leaves the receiver as it was found, whatever was going on; never fails.
    virtual void stopPrivate() = 0;

    [[nodiscard]] const std::string& ident() const { return m_ident; } ///< what the receiver is
    /// Names that had to be changed to go into the receiver.
    [[nodiscard]] const DeviceNames::Renamed& renamed() const { return m_renamed; }
    /// Sent records that were left out: without a position, or of a kind that the receiver lacks.
    [[nodiscard]] std::size_t leftOut() const { return m_leftOut; }
    /// Of the last send() that succeeded.
    [[nodiscard]] const Sent& sent() const { return m_sent; }

protected:
    virtual void prepareToReceive(const ExchangeKinds&) { } ///< tells the user what to do
    [[nodiscard]] virtual Result<void> receiveRecords(const ExchangeKinds& kinds,
                                                      ExchangeRecords& records) = 0;
    /// Only records with a position.
    [[nodiscard]] virtual Result<void> sendRecords(const ExchangeRecords& records) = 0;

    [[nodiscard]] const Clock& clock() const { return m_clock; }
    [[nodiscard]] const Timing& timing() const { return m_timing; }
    [[nodiscard]] bool isStopped() const { return m_hooks.stop.stop_requested(); }
    void progress(const TransferProgress& progress) const;
    void message(const std::string& key) const;
    void prepare(const std::string& key) const;
    void setIdent(std::string ident) { m_ident = std::move(ident); }
    void addRenamed(const DeviceNames::Renamed& renamed);
    void leaveOutTracks(std::size_t points) { m_tracksLeftOut = points; }
    /// Waits until the line is quiet, throwing away what comes; at most so many seconds.
    void makeQuiet(double longest) const;
    /// Waits, throwing away what comes; a stop ends it.
    void pause(double seconds) const;

    [[nodiscard]] static tl::unexpected<Error> cancelled();
    [[nodiscard]] static tl::unexpected<Error> gone();
    [[nodiscard]] static tl::unexpected<Error> noAnswer();

private:
    template <typename Work> [[nodiscard]] Result<void> inPrivate(const Work& work);

    const Clock& m_clock;
    Hooks m_hooks;
    Timing m_timing;
    std::unique_ptr<DeviceLine> m_line;
    std::string m_ident;
    DeviceNames::Renamed m_renamed;
    std::size_t m_leftOut = 0;
    std::size_t m_tracksLeftOut = 0;
    Sent m_sent;
};

/// Whether a line of the track begins at this point: lines are told apart by their colour.
[[nodiscard]] bool startsTrackLine(const std::vector<Track>& points, std::size_t index);

/// The colours of received track lines. Each differs from the one before.
class TrackLineColors {
public:
    void startLine() { startLine({}); }
    void startLine(TrackColor wanted);
    [[nodiscard]] TrackColor color() const { return m_color; }

private:
    TrackColor m_color;
    bool m_any = false;
};

/// Keeps a received record that has a place on the earth; counts others as passed over.
void keepWaypoint(Waypoint waypoint, ExchangeRecords& records);
void keepTrackPoint(Track point, ExchangeRecords& records);

} // namespace kelvox
