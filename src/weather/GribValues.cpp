#include "base/NoValue.h"
#include "weather/GribMessage.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kelvox {

namespace {
using Bytes = std::span<const std::uint8_t>;

/// Constant fields need no data, so that a file of a hundred octets may claim billions of points.
constexpr std::size_t largestConstantGrid = std::size_t{1} << 24;

std::uint64_t load64(const std::uint8_t* bytes)
{
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::little)
        value = __builtin_bswap64(value);
    return value;
}

/// value = offset + X * factor, X unsigned, most significant bit first, without gaps.
void unpackBits(const GribMessage& message, std::span<float> values)
{
    const double factor = message.binaryScale * message.decimalScale;
    const double base = message.reference * message.decimalScale;
    const auto value = [factor, base](std::uint64_t x) {
        return static_cast<float>(base + static_cast<double>(x) * factor);
    };
    const Bytes data = message.data;
    const auto width = static_cast<std::size_t>(message.bitsPerValue);
    const std::size_t count = values.size();

    if (width == 0) {
        std::fill(values.begin(), values.end(), static_cast<float>(base));
        return;
    }
    if (width == 8) {
        for (std::size_t i = 0; i < count; ++i)
            values[i] = value(data[i]);
        return;
    }
    if (width == 16) {
        for (std::size_t i = 0; i < count; ++i)
            values[i] = value(static_cast<std::uint64_t>(data[2 * i] << 8 | data[2 * i + 1]));
        return;
    }
    // Eight octets hold any value of up to 32 bits whatever bit it begins at.
    const unsigned drop = 64 - static_cast<unsigned>(width);
    std::size_t whole = 0;
    if (data.size() >= 8)
        whole = std::min(count, ((data.size() - 8) * 8 + 7) / width + 1);
    std::size_t bit = 0;
    for (std::size_t i = 0; i < whole; ++i, bit += width)
        values[i] = value(load64(&data[bit / 8]) << (bit % 8) >> drop);
    for (std::size_t i = whole; i < count; ++i, bit += width) {
        std::uint8_t window[8] = {};
        const std::size_t at = bit / 8;
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(at),
                    std::min<std::size_t>(8, data.size() - at), window);
        values[i] = value(load64(window) << (bit % 8) >> drop);
    }
}

std::size_t countPresent(Bytes bitmap, std::size_t points)
{
    std::size_t present = 0;
    for (std::size_t i = 0; i < points / 8; ++i)
        present += static_cast<std::size_t>(std::popcount(bitmap[i]));
    if (const auto rest = points % 8; rest != 0)
        present += static_cast<std::size_t>(
            std::popcount(static_cast<std::uint8_t>(bitmap[points / 8] >> (8 - rest))));
    return present;
}

/// Moves the values that stand packed at the front to the points whose bit is set, from the end.
void spread(Bytes bitmap, std::size_t present, std::span<float> values)
{
    for (std::size_t point = values.size(); point-- > 0;) {
        const bool there = bitmap[point / 8] >> (7 - point % 8) & 1;
        values[point] = there ? values[--present] : missingGridValue;
    }
}

std::vector<float> inGridOrder(const GribMessage& message, const std::vector<float>& values)
{
    const auto columns = static_cast<std::size_t>(message.grid.longitudeCount);
    const auto rows = static_cast<std::size_t>(message.grid.latitudeCount);
    std::vector<float> ordered(values.size());
    for (std::size_t row = 0; row < rows; ++row)
        for (std::size_t column = 0; column < columns; ++column) {
            const std::size_t i = message.fromEast ? columns - 1 - column : column;
            ordered[row * columns + column] =
                values[message.columnsFirst ? i * rows + row : row * columns + i];
        }
    return ordered;
}
} // namespace

Result<std::vector<float>> unpackGribValues(const GribMessage& message)
{
    const std::size_t points = message.grid.pointCount();
    const bool complete = message.bitmap.empty();
    if (!complete && message.bitmap.size() * 8 < points)
        return failure(Error::Code::BadSyntax, "bitmap is smaller than its grid", message.offset);
    const std::size_t present = complete ? points : countPresent(message.bitmap, points);
    if (present > message.data.size() * 8 / std::max<std::size_t>(1, message.bitsPerValue)
        && message.bitsPerValue > 0)
        return failure(Error::Code::BadSyntax, "fewer values than grid points", message.offset);
    if (message.bitsPerValue == 0 && complete && points > largestConstantGrid)
        return failure(Error::Code::OutOfRange, "constant field of too many points",
                       message.offset);

    std::vector<float> values(points);
    unpackBits(message, std::span(values).first(present));
    if (!complete)
        spread(message.bitmap, present, values);
    if (message.fromEast || message.columnsFirst)
        return inGridOrder(message, values);
    return values;
}

} // namespace kelvox
