// The numbers in a shoreline file refer to each other: none may lead outside.

#include "basemap/BaseMap.h"

#include <cstdint>
#include <cstring>

namespace {
template <typename T>
std::vector<T> take(const std::uint8_t*& data, std::size_t& size, std::size_t count)
{
    std::vector<T> values(count);
    const std::size_t bytes = std::min(size, count * sizeof(T));
    if (bytes > 0)
        std::memcpy(values.data(), data, bytes);
    data += bytes;
    size -= bytes;
    return values;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelvox;
    if (size < 4)
        return 0;
    ShorelineTables tables;
    tables.columns = data[0];
    tables.rows = data[1];
    const std::size_t bins = std::size_t{data[0]} * data[1];
    const std::size_t segments = data[2];
    const std::size_t points = data[3] * std::size_t{4};
    data += 4;
    size -= 4;
    if (bins > 1'000)
        return 0;
    tables.firstSegment = take<std::int32_t>(data, size, bins);
    tables.segmentCount = take<std::int16_t>(data, size, bins);
    tables.cornerLevels = take<std::int16_t>(data, size, bins);
    tables.segment = take<std::int32_t>(data, size, segments);
    tables.firstPoint = take<std::int32_t>(data, size, segments);
    tables.x = take<std::uint16_t>(data, size, points);
    tables.y = take<std::uint16_t>(data, size, points);
    const auto map = BaseMap::from(tables);
    if (map)
        (void)map->isLand({.longitude = 10, .latitude = 50});
    return 0;
}
