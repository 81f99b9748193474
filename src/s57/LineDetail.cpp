#include "s57/LineDetail.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace kelvox {

namespace {
constexpr std::size_t blockLength = 1024;
constexpr std::uint8_t always = 255;
constexpr float radiansPerDegree = 0.017453292F;

// The top bits of a float, sign off, are its exponent and the first three bits of its fraction:
// eight steps to each doubling, which is all the accuracy that is wanted here.
constexpr unsigned stepBits = 20;
constexpr std::uint32_t smallest = std::bit_cast<std::uint32_t>(0x1p-31F) >> stepBits;

float squaredDistance(CellGeometry::Vertex a, CellGeometry::Vertex b, CellGeometry::Vertex p)
{
    const float bx = (b.longitude - a.longitude) * radiansPerDegree;
    const float by = b.ordinate - a.ordinate;
    const float px = (p.longitude - a.longitude) * radiansPerDegree;
    const float py = p.ordinate - a.ordinate;
    const float length = bx * bx + by * by;
    const float t = length > 0 ? std::clamp((px * bx + py * by) / length, 0.0F, 1.0F) : 0.0F;
    const float dx = px - t * bx;
    const float dy = py - t * by;
    return dx * dx + dy * dy;
}

struct Range {
    std::uint32_t from;
    std::uint32_t to;
    std::uint8_t limit; ///< no vertex inside matters more than the one that made the range
};

/// One block: both ends stay, each split takes the vertex farthest from the chord.
void measureBlock(std::span<const CellGeometry::Vertex> line, std::span<std::uint8_t> details,
                  std::size_t first, std::size_t last)
{
    details[first] = details[last] = always;
    std::array<Range, blockLength + 1> stack; // NOLINT: filled as used
    std::size_t depth = 0;
    stack[depth++] = {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last),
                      always - 1};
    while (depth > 0) {
        const Range range = stack[--depth];
        if (range.to - range.from < 2)
            continue;
        float worst = -1;
        std::uint32_t split = range.from + 1;
        for (std::uint32_t i = range.from + 1; i < range.to; ++i) {
            const float distance = squaredDistance(line[range.from], line[range.to], line[i]);
            if (distance > worst) {
                worst = distance;
                split = i;
            }
        }
        const std::uint8_t code = std::min(CellGeometry::detailCode(std::sqrt(worst)), range.limit);
        details[split] = code;
        stack[depth++] = {range.from, split, code};
        stack[depth++] = {split, range.to, code};
    }
}
} // namespace

std::uint8_t CellGeometry::detailCode(float tolerance)
{
    if (!(tolerance > 0))
        return 0;
    const std::uint32_t step = std::bit_cast<std::uint32_t>(tolerance) >> stepBits;
    return static_cast<std::uint8_t>(
        step <= smallest ? 0U : std::min<std::uint32_t>(step - smallest, always - 1U));
}

void measureDetail(std::span<const CellGeometry::Vertex> line, std::span<std::uint8_t> details)
{
    if (line.size() == 1)
        details[0] = always;
    for (std::size_t first = 0; first + 1 < line.size(); first += blockLength)
        measureBlock(line, details, first, std::min(first + blockLength, line.size() - 1));
}

} // namespace kelvox
