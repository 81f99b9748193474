#include "positioning/SimulatedTraffic.h"

#include "connections/SentenceText.h"
#include "navigation/NavMath.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvox {
namespace {

constexpr double positionInterval = 10; // seconds
constexpr double staticInterval = 60;
constexpr double legSeconds = 1800; // then back

// The layouts are those of the message tables of ITU-R M.1371.

struct Movement {
    Position position;
    float course;
};

Movement movementOf(const TrafficVessel& vessel, double sailedSeconds)
{
    const double phase = std::fmod(sailedSeconds, 2 * legSeconds);
    const bool back = phase > legSeconds;
    const double outward = back ? 2 * legSeconds - phase : phase;
    const auto miles = static_cast<float>(vessel.speedKnots * outward / 3600);
    auto position = NavMath::positionAtDistance(vessel.start, vessel.courseDegrees, miles);
    position.longitude = NavMath::fixPosition(position.longitude);
    return {position, NavMath::fixBearing(vessel.courseDegrees + (back ? 180.0F : 0.0F))};
}

void appendSigned(BitBuffer& bits, double value, unsigned count)
{
    bits.append(static_cast<std::uint64_t>(std::llround(value)) & ((1ULL << count) - 1), count);
}

void appendText(BitBuffer& bits, std::string_view text, std::size_t characters)
{
    for (std::size_t i = 0; i < characters; ++i)
        bits.append(i < text.size() ? NMEA::asciiToBinary(text[i]) : 0U, 6);
}

void appendPosition(BitBuffer& bits, const Movement& movement, float speed)
{
    bits.append(static_cast<std::uint64_t>(std::lround(std::min(speed, 102.0F) * 10)), 10);
    bits.append(1, 1); // accuracy better than 10 m
    appendSigned(bits, movement.position.longitude * 600'000, 28);
    appendSigned(bits, movement.position.latitude * 600'000, 27);
    bits.append(static_cast<std::uint64_t>(std::lround(movement.course * 10)) % 3600, 12);
    bits.append(static_cast<std::uint64_t>(std::lround(movement.course)) % 360, 9);
}

void appendHeader(BitBuffer& bits, unsigned type, const TrafficVessel& vessel)
{
    bits.append(type, 6);
    bits.append(0, 2); // not repeated
    bits.append(vessel.mmsi, 30);
}

void appendDimensions(BitBuffer& bits, const TrafficVessel& vessel)
{
    // The antenna amidships.
    bits.append(static_cast<unsigned>(vessel.lengthMetres / 2), 9);
    bits.append(static_cast<unsigned>(vessel.lengthMetres - vessel.lengthMetres / 2), 9);
    bits.append(static_cast<unsigned>(vessel.beamMetres / 2), 6);
    bits.append(static_cast<unsigned>(vessel.beamMetres - vessel.beamMetres / 2), 6);
}

BitBuffer positionReport(const TrafficVessel& vessel, const Movement& movement, unsigned second)
{
    BitBuffer bits;
    appendHeader(bits, vessel.classB ? 18 : 1, vessel);
    if (vessel.classB) {
        bits.append(0, 8);
    } else {
        bits.append(0, 4); // under way using engine
        bits.append(0, 8); // not turning
    }
    appendPosition(bits, movement, vessel.speedKnots);
    bits.append(second, 6);
    bits.append(0, static_cast<unsigned>(168 - bits.size()));
    return bits;
}

BitBuffer voyageReport(const TrafficVessel& vessel) // type 5
{
    BitBuffer bits;
    appendHeader(bits, 5, vessel);
    bits.append(0, 2 + 30); // version, no IMO number
    appendText(bits, vessel.callSign, 7);
    appendText(bits, vessel.name, 20);
    bits.append(static_cast<unsigned>(vessel.shipType), 8);
    appendDimensions(bits, vessel);
    bits.append(1, 4); // GPS
    bits.append(0, 9); // month and day of arrival not given
    bits.append(24, 5);
    bits.append(60, 6);
    bits.append(0, 8); // draught
    appendText(bits, vessel.destination, 20);
    bits.append(0, 2);
    return bits;
}

BitBuffer nameReport(const TrafficVessel& vessel) // type 24 A
{
    BitBuffer bits;
    appendHeader(bits, 24, vessel);
    bits.append(0, 2);
    appendText(bits, vessel.name, 20);
    bits.append(0, 8);
    return bits;
}

BitBuffer sizeReport(const TrafficVessel& vessel) // type 24 B
{
    BitBuffer bits;
    appendHeader(bits, 24, vessel);
    bits.append(1, 2);
    bits.append(static_cast<unsigned>(vessel.shipType), 8);
    bits.append(0, 42); // maker
    appendText(bits, vessel.callSign, 7);
    appendDimensions(bits, vessel);
    bits.append(0, 6);
    return bits;
}

void appendSentences(const BitBuffer& bits, bool classB, int sequence,
                     std::vector<std::string>& sentences)
{
    constexpr std::size_t mostCharacters = 60; // of payload in a sentence
    std::string payload;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        const auto count = std::min<std::size_t>(6, bits.size() - at);
        payload +=
            NMEA::binaryToSixBit(static_cast<std::uint8_t>(bits.bits(at, count) << (6 - count)));
    }
    const auto fill = (6 - bits.size() % 6) % 6;
    const auto parts = (payload.size() + mostCharacters - 1) / mostCharacters;
    for (std::size_t part = 1; part <= parts; ++part)
        sentences.push_back(completeSentence(
            fmt::format("!AIVDM,{},{},{},{},{},{}", parts, part,
                        parts > 1 ? std::to_string(sequence) : "", classB ? 'B' : 'A',
                        payload.substr((part - 1) * mostCharacters, mostCharacters),
                        part == parts ? fill : 0),
            AddChecksum::Yes));
}

} // namespace

void SimulatedTraffic::setVessels(std::vector<TrafficVessel> vessels, double nowSeconds)
{
    m_vessels.clear();
    m_start = nowSeconds;
    // Spread over the intervals, as independent senders are.
    const auto count = static_cast<double>(std::max<std::size_t>(vessels.size(), 1));
    for (std::size_t i = 0; i < vessels.size(); ++i) {
        const double share = static_cast<double>(i) / count;
        m_vessels.push_back({std::move(vessels[i]), nowSeconds + share * positionInterval,
                             nowSeconds + share * positionInterval});
    }
}

void SimulatedTraffic::appendDue(double nowSeconds, std::vector<std::string>& sentences)
{
    for (auto& sailing : m_vessels) {
        const auto& vessel = sailing.vessel;
        if (nowSeconds >= sailing.nextPosition) {
            sailing.nextPosition = nowSeconds + positionInterval;
            const auto second = static_cast<unsigned>(std::fmod(nowSeconds, 60));
            appendSentences(
                positionReport(vessel, movementOf(vessel, nowSeconds - m_start), second),
                vessel.classB, 0, sentences);
        }
        if (nowSeconds < sailing.nextStatic)
            continue;
        sailing.nextStatic = nowSeconds + staticInterval;
        m_sequence = (m_sequence + 1) % 10;
        if (vessel.classB) {
            appendSentences(nameReport(vessel), true, m_sequence, sentences);
            appendSentences(sizeReport(vessel), true, m_sequence, sentences);
        } else {
            appendSentences(voyageReport(vessel), false, m_sequence, sentences);
        }
    }
}

} // namespace kelvox
