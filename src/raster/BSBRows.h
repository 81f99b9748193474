#pragma once

#include "raster/ChartBytes.h"
#include "raster/Palette.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvox {

/// The run-length-coded rows of a chart image, each decoded when asked for.
///
/// Row 0 is the top row. The index at the file's end is used when every entry leads to a row that
/// bears the right number; else the rows are found one after the other. A row begins with its
/// number, counted from 1 or, in old files, from 0. Rows that the file does not hold are missing;
/// a row that ends early goes on in its last colour. Never reads a byte of the file for two rows,
/// so whatever the file says, all rows together cost no more than its length.
///
/// Immutable; the bytes must outlive the object.
class BSBRows {
public:
    BSBRows() = default;
    /// @param imageStart offset of the first row
    /// @param depth bits of a colour number, 1 to 7
    BSBRows(const ChartBytes& file, std::size_t imageStart, int depth, int width, int height);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] bool hasRow(int row) const { return begin(row) < end(row); }
    [[nodiscard]] int missingRows() const;
    [[nodiscard]] bool usesIndex() const { return m_usesIndex; }

    /// Fills the span with the colour numbers of the pixels from firstColumn on; noColorNumber for
    /// a missing row and beyond the width.
    void decode(int row, int firstColumn, std::span<std::uint8_t> colors) const;

    /// Calls onRun(first column, column after the last, colour number) along the row until it
    /// returns false. The runs touch each other and cover the whole width; none on a missing row.
    template <typename OnRun> void forEachRun(int row, OnRun&& onRun) const;

private:
    struct Run {
        std::uint8_t color;
        std::int64_t length;
    };
    [[nodiscard]] std::size_t begin(int row) const { return m_starts[std::size_t(row)]; }
    [[nodiscard]] std::size_t end(int row) const { return m_starts[std::size_t(row) + 1]; }
    /// Reads the run that starts at a byte other than 0 and moves on to the byte after it.
    [[nodiscard]] Run readRun(std::size_t& at, std::size_t end) const;
    [[nodiscard]] std::size_t afterZeros(std::size_t at, std::size_t end) const;
    /// The byte after a row number at this place; 0 when another number or none stands there.
    [[nodiscard]] std::size_t afterNumber(std::size_t at, std::size_t end, int number) const;
    /// The place of a row's number, zeros before it skipped; the end when it is not there.
    [[nodiscard]] std::size_t rowAt(std::size_t at, std::size_t end, int number) const;
    [[nodiscard]] std::size_t afterRow(std::size_t at, std::size_t end, int nextNumber) const;
    [[nodiscard]] bool readIndex(std::size_t imageStart);
    [[nodiscard]] std::vector<std::size_t> scan(std::size_t imageStart, int firstNumber) const;

    static constexpr std::uint8_t more = 0x80;
    static constexpr std::int64_t longestRun = std::int64_t{1} << 40;

    ChartBytes m_file;
    std::vector<std::size_t> m_starts{0}; ///< of each row's number, and the end of the last row
    int m_width = 0;
    int m_height = 0;
    int m_colorShift = 0;
    std::uint8_t m_colorMask = 0;
    std::uint8_t m_runMask = 0;
    bool m_usesIndex = false;
};

inline BSBRows::Run BSBRows::readRun(std::size_t& at, std::size_t end) const
{
    std::uint8_t byte = m_file[at++];
    const auto color = static_cast<std::uint8_t>((byte & m_colorMask) >> m_colorShift);
    std::int64_t count = byte & m_runMask;
    while ((byte & more) && at < end) {
        byte = m_file[at++];
        count = std::min(count * 128 + (byte & 0x7F), longestRun);
    }
    return {color, count + 1};
}

template <typename OnRun> void BSBRows::forEachRun(int row, OnRun&& onRun) const
{
    std::size_t at = begin(row);
    const std::size_t stop = end(row);
    while (at < stop && (m_file[at++] & more)) { } // the row's number, checked before
    int column = 0;
    std::uint8_t color = 0;
    while (column < m_width && at < stop) {
        if (m_file[at] == 0) { // the row's end, or a stray one within it
            ++at;
            continue;
        }
        const Run run = readRun(at, stop);
        const int next = static_cast<int>(std::min<std::int64_t>(column + run.length, m_width));
        color = run.color;
        if (!onRun(column, next, color))
            return;
        column = next;
    }
    if (column > 0 && column < m_width)
        onRun(column, m_width, color);
}

} // namespace kelvox
