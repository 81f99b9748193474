#include "ais/AISReport.h"

#include "positioning/NMEA.h"

namespace kelvox {
namespace {

constexpr float unknown = static_cast<float>(noValue);
constexpr std::uint32_t noLongitude = 108'600'000; // 181 degrees
constexpr std::uint32_t noLatitude = 54'600'000; // 91 degrees

/// Where the fields of a position report begin; class A and class B differ only in this.
struct PositionLayout {
    unsigned speed, longitude, latitude, course;
};
constexpr PositionLayout classALayout{50, 61, 89, 116};
constexpr PositionLayout classBLayout{46, 57, 85, 112};
constexpr unsigned classAHeading = 128;

std::uint32_t number(const BitBuffer& bits, unsigned start, unsigned count)
{
    return NMEA::getUnsignedBits(bits, start, count);
}

std::int32_t mmsi(const BitBuffer& bits)
{
    return static_cast<std::int32_t>(number(bits, 8, 30));
}

float tenths(std::uint32_t raw, float limit)
{
    const float value = static_cast<float>(raw) / 10;
    return value >= limit ? unknown : value;
}

double degrees(std::uint32_t raw, unsigned signBit, std::uint32_t notAvailable)
{
    if (raw == notAvailable)
        return noCoordinate;
    auto value = static_cast<std::int32_t>(raw);
    if (raw >> signBit & 1)
        value = value - (std::int32_t{2} << signBit) + 1;
    return static_cast<float>(value) / 10000.0F / 60.0F;
}

AISReport positionReport(const BitBuffer& bits, int type)
{
    const bool isClassA = type != 18;
    const auto& layout = isClassA ? classALayout : classBLayout;
    AISPositionReport report{.type = type, .mmsi = mmsi(bits)};
    report.position =
        aisPositionOnGPS(number(bits, layout.latitude, 27), number(bits, layout.longitude, 28));
    if (!report.position.isKnown())
        return {};
    report.speedKnots = tenths(number(bits, layout.speed, 10), 102);
    report.courseDegrees = tenths(number(bits, layout.course, 12), 360);
    report.equipmentClass = isClassA ? AISClass::A : AISClass::B;
    if (isClassA) {
        const auto heading = number(bits, classAHeading, 9);
        report.headingDegrees = heading > 359 ? unknown : static_cast<float>(heading);
    }
    return report;
}

AISDimensions dimensions(const BitBuffer& bits, unsigned start)
{
    return {.bow = number(bits, start, 9),
            .stern = number(bits, start + 9, 9),
            .port = number(bits, start + 18, 6),
            .starboard = number(bits, start + 24, 6)};
}

AISReport voyageReport(const BitBuffer& bits)
{
    return AISStaticReport{
        .type = 5,
        .mmsi = mmsi(bits),
        .name = NMEA::getAsciiBits(bits, 112, 120),
        .callSign = NMEA::getAsciiBits(bits, 70, 42),
        .destination = NMEA::getAsciiBits(bits, 302, 120),
        .shipType = static_cast<int>(number(bits, 232, 8)),
        .dimensions = dimensions(bits, 240),
    };
}

AISReport classBStaticReport(const BitBuffer& bits)
{
    AISStaticReport report{.type = 24, .mmsi = mmsi(bits)};
    switch (number(bits, 38, 2)) {
    case 0:
        report.name = NMEA::getAsciiBits(bits, 40, 120);
        return report;
    case 1:
        // Auxiliary craft send their mother ship's number in place of the dimensions; it is read
        // as dimensions all the same, on purpose.
        report.shipType = static_cast<int>(number(bits, 40, 8));
        report.callSign = NMEA::getAsciiBits(bits, 90, 42);
        report.dimensions = dimensions(bits, 132);
        return report;
    default:
        return {};
    }
}

} // namespace

AISReport decodeAISReport(const BitBuffer& bits)
{
    const auto type = static_cast<int>(number(bits, 0, 6));
    switch (type) {
    case 1:
    case 2:
    case 3:
    case 18:
        return positionReport(bits, type);
    case 5:
        return voyageReport(bits);
    case 24:
        return classBStaticReport(bits);
    default:
        return {};
    }
}

Position aisPositionOnGPS(std::uint32_t rawLatitude, std::uint32_t rawLongitude)
{
    return {.longitude = degrees(rawLongitude, 27, noLongitude),
            .latitude = degrees(rawLatitude, 26, noLatitude)};
}

} // namespace kelvox
