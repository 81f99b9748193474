#include "devices/SentenceTransfer.h"

#include "connections/SentenceText.h"
#include "positioning/NMEA.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

namespace kelvox {
namespace {

/// "ddmm.mmm", in whole units of the last decimal, so that 59.9999 minutes come round to a degree.
std::string axis(double degrees, int degreeDigits, int decimals)
{
    const auto perMinute = std::llround(std::pow(10, decimals));
    const auto perDegree = 60 * perMinute;
    const auto units = std::llround(std::abs(degrees) * static_cast<double>(perDegree));
    const auto rest = units % perDegree;
    return fmt::format("{:0{}}{:02}.{:0{}}", units / perDegree, degreeDigits, rest / perMinute,
                       rest % perMinute, decimals);
}

} // namespace

Result<std::string> SentenceTransfer::readSentence(double deadline, Checksum checksum)
{
    for (;;) {
        if (isStopped())
            return cancelled();
        while (const auto line = m_lines.next()) {
            const auto raw = sentenceFromStart(*line);
            const auto end = raw.find_last_not_of("\r\n");
            const auto text = raw.substr(0, end == std::string_view::npos ? 0 : end + 1);
            if (text.empty())
                continue;
            if (!hasSentenceStart(text))
                return failure(Error::Code::BadSyntax, "The line to the receiver is disturbed.");
            const auto star = text.rfind('*');
            std::string sentence(text.substr(0, star));
            if (star == std::string_view::npos) {
                if (checksum == Checksum::WhereGiven)
                    return sentence;
            } else {
                unsigned given = 0x100;
                const auto digits = text.substr(star + 1);
                std::from_chars(digits.data(), digits.data() + digits.size(), given, 16);
                if (given == sentenceChecksum(sentence))
                    return sentence;
            }
            return failure(Error::Code::BadSyntax,
                           "A sentence of the receiver came damaged: " + std::string(text));
        }
        const double left = deadline - clock().monotonicSeconds();
        if (left <= 0)
            return noAnswer();
        std::string bytes;
        if (serialPort().read(bytes, left) == DeviceLine::ReadStatus::Closed)
            return gone();
        m_lines.append(bytes);
    }
}

bool SentenceTransfer::writeSentence(std::string_view sentence)
{
    return serialPort().write(sentence);
}

std::string positionFields(Position position, int minuteDecimals)
{
    return fmt::format("{},{},{},{}", axis(position.latitude, 2, minuteDecimals),
                       position.latitude < 0 ? 'S' : 'N',
                       axis(position.longitude, 3, minuteDecimals),
                       position.longitude < 0 ? 'W' : 'E');
}

bool setPosition(ChartMarker& marker, std::string_view latitude, std::string_view northSouth,
                 std::string_view longitude, std::string_view eastWest)
{
    marker.latitude = NMEA::position(latitude, northSouth);
    marker.longitude = NMEA::position(longitude, eastWest);
    return marker.isInsideTheChart();
}

tl::unexpected<Error> badSentence(std::string_view sentence)
{
    return failure(Error::Code::BadSyntax,
                   "The receiver sent what cannot be read: " + textFromDevice(sentence));
}

} // namespace kelvox
