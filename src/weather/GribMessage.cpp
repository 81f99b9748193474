#include "weather/GribMessage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kelvox {

namespace {
using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t editionZeroDefinition = 24; ///< octets of its product definition
constexpr std::size_t endMarkSize = 4; ///< "7777"
constexpr int notGiven = 0xFFFF;

/// A section with its octets counted from 1, as the published tables count them.
class Section {
public:
    explicit Section(Bytes bytes)
        : m_bytes(bytes)
    {
    }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] int byte(std::size_t octet) const { return m_bytes[octet - 1]; }
    [[nodiscard]] int unsigned16(std::size_t octet) const
    {
        return byte(octet) << 8 | byte(octet + 1);
    }
    [[nodiscard]] int unsigned24(std::size_t octet) const
    {
        return byte(octet) << 16 | unsigned16(octet + 1);
    }
    /// Sign and magnitude, not two's complement.
    [[nodiscard]] int signed16(std::size_t octet) const
    {
        const int value = unsigned16(octet);
        return value & 0x8000 ? -(value & 0x7FFF) : value;
    }
    [[nodiscard]] int signed24(std::size_t octet) const
    {
        const int value = unsigned24(octet);
        return value & 0x800000 ? -(value & 0x7FFFFF) : value;
    }
    /// Sign, excess-64 exponent of 16, 24-bit fraction.
    [[nodiscard]] double ibmFloat(std::size_t octet) const
    {
        const int head = byte(octet);
        const double value = std::ldexp(unsigned24(octet + 1), 4 * ((head & 0x7F) - 64) - 24);
        return head & 0x80 ? -value : value;
    }
    [[nodiscard]] Bytes from(std::size_t octet) const { return m_bytes.subspan(octet - 1); }

private:
    Bytes m_bytes;
};

bool hasMark(Bytes bytes, std::size_t at, const char* mark)
{
    return at + 4 <= bytes.size() && std::memcmp(bytes.data() + at, mark, 4) == 0;
}

/// Where the next "GRIB" stands, or the end. Looking four bytes at a time with re-alignment on a
/// "G" finds exactly the same place.
std::size_t findMessage(Bytes bytes, std::size_t from)
{
    if (from >= bytes.size())
        return bytes.size();
    const void* found = ::memmem(bytes.data() + from, bytes.size() - from, "GRIB", 4);
    if (!found)
        return bytes.size();
    return static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
}

/// Takes sections off the front of a message.
class SectionWalk {
public:
    SectionWalk(Bytes message, std::size_t at)
        : m_message(message)
        , m_at(at)
    {
    }
    [[nodiscard]] std::size_t position() const { return m_at; }
    [[nodiscard]] Result<Section> next(const char* name, std::size_t smallest)
    {
        if (m_at + 3 > m_message.size())
            return failure(Error::Code::Truncated, fmt::format("{} section is missing", name));
        const Bytes rest = m_message.subspan(m_at);
        const auto length = static_cast<std::size_t>(Section(rest).unsigned24(1));
        if (length < smallest)
            return failure(Error::Code::BadSyntax,
                           fmt::format("{} section of {} octets", name, length));
        if (length > rest.size())
            return failure(Error::Code::Truncated,
                           fmt::format("{} section runs past its message", name));
        m_at += length;
        return Section(rest.first(length));
    }
    /// All that is left before the end mark: the data section of a message so large that its length
    /// field serves another purpose.
    [[nodiscard]] Result<Section> rest(std::size_t smallest)
    {
        if (m_message.size() < m_at + smallest + endMarkSize)
            return failure(Error::Code::Truncated, "data section is missing");
        const Bytes data = m_message.subspan(m_at, m_message.size() - endMarkSize - m_at);
        m_at += data.size();
        return Section(data);
    }

private:
    Bytes m_message;
    std::size_t m_at;
};

bool hasSingleLevel(int type)
{
    static constexpr int types[] = {100, 103, 105, 107, 109, 111, 113, 115, 125, 160, 200, 201};
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

/// The reference time, moved on by a number of the time units of code table 4.
std::optional<GribTime> addTime(GribTime time, int unit, int count)
{
    using namespace std::chrono;
    switch (unit) {
    case 0:
        return time + minutes(count);
    case 1:
        return time + hours(count);
    case 2:
        return time + days(count);
    case 10:
        return time + hours(3 * count);
    case 11:
        return time + hours(6 * count);
    case 12:
        return time + hours(12 * count);
    case 13:
        return time + minutes(15 * count);
    case 14:
        return time + minutes(30 * count);
    case 254:
        return time + seconds(count);
    default:
        break;
    }
    int monthsPerUnit = 0;
    switch (unit) {
    case 3:
        monthsPerUnit = 1;
        break;
    case 4:
        monthsPerUnit = 12;
        break;
    case 5:
        monthsPerUnit = 120;
        break;
    case 6:
        monthsPerUnit = 360;
        break;
    case 7:
        monthsPerUnit = 1200;
        break;
    default:
        return std::nullopt;
    }
    const auto day = floor<days>(time);
    year_month_day date = year_month_day(day) + months(monthsPerUnit * count);
    if (!date.ok())
        date = date.year() / date.month() / last;
    return sys_days(date) + (time - day);
}

/// The forecast offset in time units: the end of the interval where there is one.
int forecastOffset(const Section& product)
{
    const int p1 = product.byte(19);
    const int p2 = product.byte(20);
    switch (product.byte(21)) {
    case 1: // initialised analysis
    case 51: // climatological mean
        return 0;
    case 2:
    case 3:
    case 4:
    case 5:
        return p2;
    case 6: // from P1 to P2 before the reference time
        return -p2;
    case 7: // from P1 before to P2 after it
        return p2;
    case 10:
        return product.unsigned16(19);
    default:
        return p1;
    }
}

Result<void> readTimes(const Section& product, GribMessage& message)
{
    using namespace std::chrono;
    int yearNumber = product.byte(13);
    if (message.edition == 0)
        yearNumber += yearNumber < 50 ? 2000 : 1900; // no century there
    else
        yearNumber += (product.byte(25) - 1) * 100;
    const year_month_day date = year(yearNumber) / month(static_cast<unsigned>(product.byte(14)))
        / day(static_cast<unsigned>(product.byte(15)));
    const int hour = product.byte(16);
    const int minute = product.byte(17);
    if (!date.ok() || hour > 24 || minute > 59)
        return failure(Error::Code::OutOfRange,
                       fmt::format("reference time {}-{}-{} {}:{}", yearNumber, product.byte(14),
                                   product.byte(15), hour, minute));
    message.referenceTime = sys_days(date) + hours(hour) + minutes(minute);
    const auto forecast = addTime(message.referenceTime, product.byte(18), forecastOffset(product));
    if (!forecast)
        return failure(Error::Code::Unsupported, fmt::format("time unit {}", product.byte(18)));
    message.forecastTime = *forecast;
    return {};
}

std::string gridName(int type)
{
    switch (type) {
    case 1:
        return "Mercator grid";
    case 3:
        return "Lambert conformal grid";
    case 4:
        return "Gaussian grid";
    case 5:
        return "polar stereographic grid";
    case 10:
        return "rotated latitude/longitude grid";
    case 50:
        return "spherical harmonics";
    default:
        return fmt::format("grid type {}", type);
    }
}

/// Degrees between points. Increments are given in whole millidegrees, which adds up to a third of
/// a degree over a 1/12-degree grid; where the corners agree with the increment within that
/// rounding they say it better.
double increment(double span, int count, int given)
{
    const double stated = (given & 0x7FFF) / 1000.0; // some writers give the direction as a sign
    if (count < 2)
        return given == notGiven ? 0 : stated;
    const double fromCorners = span / (count - 1);
    if (given == notGiven || given == 0 || std::abs(fromCorners - stated) < 0.00051)
        return fromCorners;
    return stated;
}

Result<void> readGrid(const Section& description, GribMessage& message)
{
    const int type = description.byte(6);
    if (type != 0)
        return failure(Error::Code::Unsupported, gridName(type));
    const int columns = description.unsigned16(7);
    const int rows = description.unsigned16(9);
    if (columns == notGiven || rows == notGiven)
        return failure(Error::Code::Unsupported, "reduced latitude/longitude grid");
    if (columns == 0 || rows == 0)
        return failure(Error::Code::OutOfRange, fmt::format("grid of {} x {}", columns, rows));

    const bool incrementsGiven = description.byte(17) & 0x80;
    const int scanning = description.byte(28);
    message.fromEast = scanning & 0x80;
    message.columnsFirst = scanning & 0x20;
    const bool northwards = scanning & 0x40;

    const double latitude = description.signed24(11) / 1000.0;
    double west = description.signed24(14) / 1000.0;
    const double lastLatitude = description.signed24(18) / 1000.0;
    double east = description.signed24(21) / 1000.0;
    if (message.fromEast)
        std::swap(west, east);
    const double span = east > west ? east - west : east - west + 360;

    GribGrid& grid = message.grid;
    grid.longitudeCount = columns;
    grid.latitudeCount = rows;
    grid.longitudeIncrement =
        increment(span, columns, incrementsGiven ? description.unsigned16(24) : notGiven);
    const double rowStep = increment(std::abs(lastLatitude - latitude), rows,
                                     incrementsGiven ? description.unsigned16(26) : notGiven);
    grid.latitudeIncrement = northwards ? rowStep : -rowStep;
    if (message.fromEast) // the first point of the file is the eastern one
        west = east - grid.longitudeIncrement * (columns - 1);

    constexpr double slack = 0.01;
    const double endLatitude = latitude + grid.latitudeIncrement * (rows - 1);
    const bool usable = (columns == 1 || grid.longitudeIncrement > 0) && (rows == 1 || rowStep > 0)
        && std::abs(latitude) <= 90 + slack && std::abs(endLatitude) <= 90 + slack
        && std::abs(west) <= 720 && grid.longitudeIncrement * (columns - 1) <= 360 + slack;
    if (!usable)
        return failure(Error::Code::OutOfRange,
                       fmt::format("grid of {} x {} points from {}, {} by {}, {}", columns, rows,
                                   latitude, west, grid.latitudeIncrement,
                                   grid.longitudeIncrement));
    while (west > 180)
        west -= 360;
    while (west < -180)
        west += 360;
    grid.first = {.longitude = west, .latitude = latitude};
    return {};
}

Result<void> readBitmap(const Section& section, GribMessage& message)
{
    if (const int number = section.unsigned16(5); number != 0)
        return failure(Error::Code::Unsupported, fmt::format("predefined bitmap {}", number));
    message.bitmap = section.from(7);
    if (message.bitmap.size() * 8 < message.grid.pointCount())
        return failure(Error::Code::BadSyntax, "bitmap is smaller than its grid");
    return {};
}

Result<void> readPacking(const Section& section, GribMessage& message)
{
    const int flags = section.byte(4);
    if (flags & 0x80)
        return failure(Error::Code::Unsupported, "spherical harmonics");
    if (flags & 0x40)
        return failure(Error::Code::Unsupported, "second-order packing");
    if (flags & 0x10)
        return failure(Error::Code::Unsupported, "matrix of values at each point");
    message.bitsPerValue = section.byte(11);
    if (message.bitsPerValue > 32)
        return failure(Error::Code::Unsupported,
                       fmt::format("packing of {} bits", message.bitsPerValue));
    message.reference = section.ibmFloat(7);
    message.binaryScale = std::ldexp(1.0, section.signed16(5));
    message.data = section.from(12);

    const double largest =
        (std::abs(message.reference) + message.binaryScale * std::ldexp(1.0, message.bitsPerValue))
        * message.decimalScale;
    if (!(largest < 1e38)) // beyond single precision, or not a number
        return failure(Error::Code::OutOfRange, "values too large for single precision");
    return {};
}

Result<void> readProduct(const Section& product, GribMessage& message)
{
    message.tableVersion = message.edition == 0 ? 0 : product.byte(4);
    message.centre = product.byte(5);
    message.parameter = product.byte(9);
    message.level.type = product.byte(10);
    if (hasSingleLevel(message.level.type)) {
        message.level.top = product.unsigned16(11);
    } else {
        message.level.top = product.byte(11);
        message.level.bottom = product.byte(12);
    }
    if (message.edition == 1)
        message.decimalScale = std::pow(10.0, -product.signed16(27));
    return readTimes(product, message);
}

/// A message of more than 8 MB counts its length in units of 120 octets; the length field of the
/// data section, too small for the section, then holds what that is too long by.
std::size_t largeMessageSize(Bytes bytes, std::size_t counted)
{
    SectionWalk walk(bytes, 8);
    const auto product = walk.next("product definition", 28);
    if (!product)
        return counted;
    for (const int flag : {0x80, 0x40})
        if (product->byte(8) & flag && !walk.next("grid or bitmap", 6))
            return counted;
    if (bytes.size() - walk.position() < 3)
        return counted;
    const auto field =
        static_cast<std::size_t>(Section(bytes.subspan(walk.position())).unsigned24(1));
    return field < 120 ? (counted & 0x7FFFFF) * 120 - field + endMarkSize : counted;
}

/// Reads all sections; `size` becomes that of the message as soon as it is known.
Result<GribMessage> readSections(Bytes bytes, int edition, std::size_t& size)
{
    GribMessage message;
    message.edition = edition;
    // Edition 0 does not give its length: its sections are walked to the end of the file.
    const Bytes whole = edition == 0 ? bytes : bytes.first(size);
    SectionWalk walk(whole, edition == 0 ? 4 : 8);
    const auto product = walk.next("product definition", edition == 0 ? editionZeroDefinition : 28);
    if (!product)
        return tl::unexpected(product.error());
    Result<void> good = readProduct(*product, message);
    const auto andThen = [&good](Result<void> step) {
        if (good) // the first thing that is wrong is the one to report
            good = std::move(step);
    };

    const int flags = product->byte(8);
    if (flags & 0x80) {
        const auto description = walk.next("grid description", 6);
        if (!description)
            return tl::unexpected(description.error());
        if (description->size() >= 28 || description->byte(6) != 0)
            andThen(readGrid(*description, message));
        else
            andThen(failure(Error::Code::BadSyntax, "grid description is too short"));
    } else {
        andThen(failure(Error::Code::Unsupported,
                        fmt::format("catalogued grid {} without description", product->byte(7))));
    }
    if (flags & 0x40) {
        const auto bitmap = walk.next("bitmap", 6);
        if (!bitmap)
            return tl::unexpected(bitmap.error());
        if (good)
            andThen(readBitmap(*bitmap, message));
    }
    const bool large = size > 0x7FFFFF && edition == 1;
    auto data = large ? walk.rest(11) : walk.next("data", 11);
    if (!data)
        return tl::unexpected(data.error());
    andThen(readPacking(*data, message));
    if (edition == 0)
        size = walk.position() + endMarkSize;
    if (size > bytes.size())
        return failure(Error::Code::Truncated, "end mark is missing");
    if (!hasMark(bytes, size - endMarkSize, "7777"))
        return failure(Error::Code::BadSyntax, "message does not end where it says");
    if (!good)
        return tl::unexpected(good.error());
    return message;
}
} // namespace

bool GribGrid::wraps() const
{
    return longitudeCount > 1
        && std::abs(longitudeCount * longitudeIncrement - 360) < 0.1 * longitudeIncrement;
}

std::optional<Result<GribMessage>> readGribMessage(Bytes bytes, std::size_t& offset)
{
    for (;;) {
        const std::size_t start = findMessage(bytes, offset);
        if (start == bytes.size()) {
            offset = start;
            return std::nullopt;
        }
        const Bytes rest = bytes.subspan(start);
        const auto cutShort = [&] {
            offset = bytes.size();
            return failure(Error::Code::Truncated, "message is cut short", start);
        };
        if (rest.size() < 8)
            return cutShort();
        auto size = static_cast<std::size_t>(Section(rest.subspan(4)).unsigned24(1));
        int edition = rest[7];
        if (size == editionZeroDefinition)
            edition = 0;
        if (edition > 2 || (edition == 0 && size != editionZeroDefinition)) {
            offset = start + 4; // the word in some text, not the head of a message
            continue;
        }
        if (edition == 2) {
            if (rest.size() < 16)
                return cutShort();
            std::uint64_t length = 0;
            for (int octet = 8; octet < 16; ++octet)
                length = length << 8 | rest[static_cast<std::size_t>(octet)];
            offset = length >= 16 && length <= rest.size()
                ? start + static_cast<std::size_t>(length)
                : start + 4;
            return failure(Error::Code::Unsupported, "GRIB edition 2", start);
        }
        if (edition == 1 && size & 0x800000)
            size = largeMessageSize(rest, size);
        if (edition == 1 && size > rest.size())
            return cutShort();
        auto message = readSections(rest, edition, size);
        if (message) {
            message->offset = start;
            offset = start + size;
            return message;
        }
        // Behind a sound message of another kind reading goes on at its end. Inside a damaged one
        // a sound one may begin anywhere.
        Error error = message.error();
        error.offset = start;
        offset = error.code == Error::Code::Unsupported ? start + size : start + 4;
        if (edition == 0 && error.code == Error::Code::Truncated)
            return cutShort();
        if (error.code == Error::Code::Truncated)
            error.code = Error::Code::BadSyntax; // only the message ends early, not the file
        return tl::unexpected(error);
    }
}

std::string describe(const GribLevel& level)
{
    switch (level.type) {
    case 1:
        return "surface";
    case 100:
        return fmt::format("{} hPa", level.top);
    case 102:
        return "mean sea level";
    case 103:
        return fmt::format("{} m above mean sea level", level.top);
    case 105:
        return fmt::format("{} m above ground", level.top);
    case 160:
        return fmt::format("{} m below sea level", level.top);
    default:
        return fmt::format("level type {} value {}", level.type,
                           hasSingleLevel(level.type) ? level.top : level.top << 8 | level.bottom);
    }
}

} // namespace kelvox
