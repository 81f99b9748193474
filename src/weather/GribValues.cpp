#include "base/NoValue.h"
#include "weather/GribMessage.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

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

/// value = base + X * factor, X unsigned, most significant bit first, without gaps.
struct Scale {
    double base;
    double factor;

    [[nodiscard]] float operator()(std::int64_t x) const
    {
        return static_cast<float>(base + static_cast<double>(x) * factor);
    }
};

/// Eight octets from any bit on hold any value of up to 32 bits.
float valueAt(const std::uint8_t* bytes, std::size_t bit, unsigned width, const Scale& scale)
{
    return scale(static_cast<std::int64_t>(load64(bytes + bit / 8) << (bit % 8) >> (64 - width)));
}

/// Eight values fill whole octets, so that with a fixed width every shift is a constant. Returns
/// how many values it unpacked; the last ones are left, where eight octets would run past the end.
template <unsigned width> std::size_t unpackBlocks(Bytes data, std::span<float> values, Scale scale)
{
    std::size_t done = 0;
    const std::uint8_t* bytes = data.data();
    const std::uint8_t* const end = bytes + data.size();
    for (; done + 8 <= values.size() && end - bytes >= width + 8; done += 8, bytes += width)
        for (unsigned i = 0; i < 8; ++i)
            values[done + i] = valueAt(bytes, i * width, width, scale);
    return done;
}

using UnpackBlocks = std::size_t (*)(Bytes, std::span<float>, Scale);
template <std::size_t... index>
constexpr auto unpackersOf(std::index_sequence<index...> /*widths from 1*/)
{
    return std::array<UnpackBlocks, sizeof...(index)>{unpackBlocks<index + 1>...};
}

void unpackBits(const GribMessage& message, std::span<float> values)
{
    static constexpr auto unpackers = unpackersOf(std::make_index_sequence<32>());
    const Scale scale{.base = message.reference * message.decimalScale,
                      .factor = message.binaryScale * message.decimalScale};
    const auto width = static_cast<unsigned>(message.bitsPerValue);
    if (width == 0) {
        std::fill(values.begin(), values.end(), scale(0));
        return;
    }
    const Bytes data = message.data;
    for (std::size_t i = unpackers[width - 1](data, values, scale); i < values.size(); ++i) {
        std::uint8_t window[8] = {};
        const std::size_t at = i * width / 8;
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(at),
                    std::min<std::size_t>(8, data.size() - at), window);
        values[i] = valueAt(window, i * width % 8, width, scale);
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
