#include "positioning/NmeaConsumer.h"

#include "positioning/NMEA.h"

#include <utility>

namespace kelvox {
namespace {

std::string_view reasonFor(NMEA::Checksum checksum)
{
    switch (checksum) {
    case NMEA::Checksum::Valid:
        return {};
    case NMEA::Checksum::NoStart:
        return "no start character";
    case NMEA::Checksum::Missing:
        return "checksum missing";
    case NMEA::Checksum::Incomplete:
        return "checksum incomplete";
    case NMEA::Checksum::Wrong:
        return "checksum wrong";
    }
    return {};
}

} // namespace

void HandlerQueue::add(NmeaConsumer& consumer, std::string_view checkedSentence)
{
    m_entries.push_back({&consumer, static_cast<std::uint32_t>(m_bytes.size()),
                         static_cast<std::uint32_t>(checkedSentence.size())});
    m_bytes.append(checkedSentence);
}

void HandlerQueue::performAndWait(Executor& executor)
{
    if (m_entries.empty())
        return;
    // Taken out first: a handler may feed a sentence of its own through this very queue.
    auto bytes = std::exchange(m_bytes, {});
    auto entries = std::exchange(m_entries, {});
    executor.performAndWait([&bytes, &entries] {
        for (const auto& entry : entries)
            entry.consumer->handle(std::string_view(bytes).substr(entry.offset, entry.length));
    });
    bytes.clear();
    entries.clear();
    m_bytes = std::move(bytes); // for their capacity
    m_entries = std::move(entries);
}

Verdict NmeaConsumer::processRawSentence(std::string_view raw)
{
    // One thread may feed a consumer from its port while another feeds it from the network.
    thread_local HandlerQueue queue;
    const auto verdict = prepare(NMEA::start(raw), Origin::OwnConnection, queue);
    queue.performAndWait(m_main);
    return verdict;
}

void NmeaConsumer::processLines(std::span<const std::string_view> lines)
{
    thread_local HandlerQueue queue;
    for (const auto line : lines)
        prepare(NMEA::start(line), Origin::OwnConnection, queue);
    queue.performAndWait(m_main);
}

Verdict NmeaConsumer::prepare(std::string_view sentence, Origin origin, HandlerQueue& queue)
{
    using Outcome = Verdict::Outcome;
    if (sentence.empty())
        return {Outcome::Dropped, "empty line"};
    forward(sentence, origin, queue);

    thread_local std::string line;
    line.assign(sentence);
    const auto checksum = NMEA::checkSum(line, m_missing == MissingChecksum::Allowed);
    if (checksum != NMEA::Checksum::Valid)
        return {Outcome::Dropped, reasonFor(checksum)};
    if (NMEA::prefix(line) == "P")
        return {Outcome::Dropped, "proprietary"};
    const auto command = NMEA::command(line);
    if (!command || !knowsCommand(*command))
        return {Outcome::Unknown, "command not known"};
    queue.add(*this, std::string_view(line).substr(0, line.find('\0')));
    return {Outcome::Accepted};
}

} // namespace kelvox
