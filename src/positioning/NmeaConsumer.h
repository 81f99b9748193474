#pragma once

#include "base/Executor.h"
#include "connections/LineConsumer.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

class NmeaConsumer;

/// Checked sentences on their way from a reader thread to the handlers on the main thread.
///
/// One hand-over carries all sentences that a read brought, in order, so that a busy line does not
/// cost a thread switch a sentence. Belongs to one reader thread.
class HandlerQueue {
public:
    void add(NmeaConsumer& consumer, std::string_view checkedSentence);
    /// Runs the handlers in order on the executor's thread, waits for them, empties the queue.
    void performAndWait(Executor& executor);

private:
    struct Entry {
        NmeaConsumer* consumer;
        std::uint32_t offset;
        std::uint32_t length;
    };
    std::string m_bytes;
    std::vector<Entry> m_entries;
};

/// What became of one line.
struct Verdict {
    enum class Outcome { Accepted, Dropped, Unknown };

    Outcome outcome = Outcome::Dropped;
    std::string_view reason = {}; ///< of a dropped or unknown line; a constant text
};

/// Takes the lines of a connection: frames and checks them on the reader thread, then has the
/// handler of each known command run on the main thread.
///
/// Subclasses say which commands they know and handle them. Nothing a line holds is ever an error:
/// what cannot be used is dropped and the state stays as it was.
class NmeaConsumer : public LineConsumer {
public:
    enum class MissingChecksum { Refused, Allowed };

    NmeaConsumer(Executor& main, MissingChecksum missing)
        : m_main(main)
        , m_missing(missing)
    {
    }

    /// One line in; returns when its handlers are done. The verdict is that of this consumer.
    Verdict processRawSentence(std::string_view raw);
    /// The lines of one read in order, with one hand-over to the main thread.
    void processLines(std::span<const std::string_view> lines) override;

    /// Whether lines that come by way of another consumer are taken. Reader threads.
    [[nodiscard]] virtual bool takesFromGPS(std::string_view /*sentence*/) const { return false; }
    [[nodiscard]] virtual bool takesFromInstruments(std::string_view /*sentence*/) const
    {
        return false;
    }
    void setRawSentenceFromGPS(std::string_view sentence, HandlerQueue& queue)
    {
        if (takesFromGPS(sentence))
            prepare(sentence, Origin::GPS, queue);
    }
    void setRawSentenceFromInstruments(std::string_view sentence, HandlerQueue& queue)
    {
        if (takesFromInstruments(sentence))
            prepare(sentence, Origin::Instruments, queue);
    }

    /// Runs the handler of a checked, cut sentence. Main thread.
    virtual void handle(std::string_view sentence) = 0;

protected:
    enum class Origin { OwnConnection, GPS, Instruments };
    /// What happens to a framed line before any check, such as forwarding. Reader thread.
    virtual void forward(std::string_view /*sentence*/, Origin, HandlerQueue&) { }

private:
    Verdict prepare(std::string_view sentence, Origin origin, HandlerQueue& queue);

    Executor& m_main;
    MissingChecksum m_missing;
};

} // namespace kelvox
