#include "raster/BSBRows.h"

#include <utility>

namespace kelvox {

BSBRows::BSBRows(const ChartBytes& file, std::size_t imageStart, int depth, int width, int height)
    : m_file(file)
    , m_width(width)
    , m_height(height)
    , m_colorShift(7 - depth)
    , m_colorMask(static_cast<std::uint8_t>(((1 << depth) - 1) << (7 - depth)))
    , m_runMask(static_cast<std::uint8_t>((1 << (7 - depth)) - 1))
{
    m_usesIndex = readIndex(imageStart);
    if (m_usesIndex)
        return;
    m_starts = scan(imageStart, 1);
    if (m_file.size() > imageStart && m_file[imageStart] == 0) {
        // A leading 0 is a stray byte, or the number of the first row of an old file.
        auto fromZero = scan(imageStart, 0);
        if (fromZero.size() > m_starts.size())
            m_starts = std::move(fromZero);
    }
    m_starts.resize(static_cast<std::size_t>(height) + 1, m_starts.back());
}

std::size_t BSBRows::afterZeros(std::size_t at, std::size_t end) const
{
    while (at < end && m_file[at] == 0)
        ++at;
    return at;
}

std::size_t BSBRows::afterNumber(std::size_t at, std::size_t end, int number) const
{
    std::int64_t value = 0;
    for (int digits = 0; digits < 4 && at < end; ++digits) {
        const std::uint8_t byte = m_file[at++];
        value = value * 128 + (byte & 0x7F);
        if (!(byte & more))
            return value == number ? at : 0;
    }
    return 0;
}

std::size_t BSBRows::rowAt(std::size_t at, std::size_t end, int number) const
{
    if (number != 0)
        at = afterZeros(at, end);
    return afterNumber(at, end, number) != 0 ? at : end;
}

bool BSBRows::readIndex(std::size_t imageStart)
{
    const auto rows = static_cast<std::size_t>(m_height);
    if (m_file.size() < imageStart + 4 + 4 * rows)
        return false;
    const std::size_t index = m_file.bigEndian(m_file.size() - 4);
    if (index < imageStart || index > m_file.size() - 4 - 4 * rows)
        return false;

    std::vector<std::size_t> starts(rows + 1, index);
    int firstNumber = 1;
    std::size_t before = imageStart;
    for (std::size_t row = 0; row < rows; ++row) {
        const std::size_t offset = m_file.bigEndian(index + 4 * row);
        if (offset < before || offset >= index)
            return false;
        if (row == 0 && m_file[offset] == 0
            && (rows == 1 || rowAt(m_file.bigEndian(index + 4), index, 2) == index))
            firstNumber = 0;
        starts[row] = rowAt(offset, index, firstNumber + static_cast<int>(row));
        if (starts[row] == index)
            return false;
        before = starts[row] + 1;
    }
    m_starts = std::move(starts);
    return true;
}

/// The byte after the 0 that ends a row, its number already behind us. A 0 in an unfinished row
/// ends it only when the next row's number or the end of the file follows.
std::size_t BSBRows::afterRow(std::size_t at, std::size_t end, int nextNumber) const
{
    std::int64_t column = 0;
    while (at < end) {
        if (m_file[at] != 0) {
            column = std::min(column + readRun(at, end).length, longestRun);
            continue;
        }
        const std::size_t next = afterZeros(at, end);
        if (column >= m_width || next == end || afterNumber(next, end, nextNumber) != 0)
            return at + 1;
        at = next;
    }
    return end;
}

std::vector<std::size_t> BSBRows::scan(std::size_t imageStart, int firstNumber) const
{
    std::vector<std::size_t> starts;
    const std::size_t end = m_file.size();
    std::size_t at = std::min(imageStart, end);
    for (int row = 0; row < m_height; ++row) {
        const std::size_t start = rowAt(at, end, firstNumber + row);
        if (start == end)
            break;
        starts.push_back(start);
        at = afterRow(afterNumber(start, end, firstNumber + row), end, firstNumber + row + 1);
    }
    starts.push_back(at);
    return starts;
}

int BSBRows::missingRows() const
{
    int missing = 0;
    for (int row = 0; row < m_height; ++row)
        missing += hasRow(row) ? 0 : 1;
    return missing;
}

void BSBRows::decode(int row, int firstColumn, std::span<std::uint8_t> colors) const
{
    std::fill(colors.begin(), colors.end(), noColorNumber);
    const int endColumn = firstColumn + static_cast<int>(colors.size());
    forEachRun(row, [&](int from, int to, std::uint8_t color) {
        from = std::max(from, firstColumn);
        to = std::min(to, endColumn);
        if (from < to)
            std::fill(colors.begin() + (from - firstColumn), colors.begin() + (to - firstColumn),
                      color);
        return to < endColumn;
    });
}

} // namespace kelvox
