#pragma once

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvox {

/// A weather message to be written: what a test does not name is an ordinary wind field.
struct GribSpec {
    int edition = 1;
    int centre = 7;
    int table = 2;
    int parameter = 33;
    int levelType = 105;
    int level = 10; ///< 16 bits
    int year = 2024, month = 6, day = 15, hour = 12, minute = 0;
    int timeUnit = 1, p1 = 6, p2 = 0, range = 0;
    int gridType = 0;
    int columns = 3, rows = 2;
    int latitude = 50000, longitude = -5000; ///< of the file's first point, millidegrees
    int lastLatitude = 49500, lastLongitude = -4000;
    int columnStep = 500, rowStep = 500; ///< millidegrees, 0xFFFF: not given
    int scanning = 0;
    int packing = 0; ///< flags of the data section
    int decimalScale = 1;
    int bits = 12;
    std::vector<std::optional<double>> values = {5.0, -3.5, 0.0, 10.2, -7.1, 2.3};
};

/// Writes messages of editions 0 and 1 in simple packing, after the published section tables.
class GribWriter {
public:
    static std::string message(const GribSpec& spec)
    {
        std::string body = product(spec) + grid(spec);
        bool complete = true;
        for (const auto& value : spec.values)
            complete = complete && value;
        if (!complete)
            body += bitmap(spec);
        body += data(spec) + "7777";
        if (spec.edition == 0)
            return "GRIB" + body;
        return "GRIB" + number(static_cast<int>(body.size()) + 8, 3) + number(1, 1) + body;
    }

private:
    static std::string number(int value, int octets)
    {
        std::string bytes;
        for (int i = octets - 1; i >= 0; --i)
            bytes += static_cast<char>(value >> (8 * i) & 0xFF);
        return bytes;
    }
    static std::string signedNumber(int value, int octets)
    {
        return number(value < 0 ? -value | 1 << (8 * octets - 1) : value, octets);
    }
    static std::string ibmFloat(double value)
    {
        int exponent = 64;
        double fraction = std::fabs(value);
        for (; fraction >= 1; fraction /= 16)
            ++exponent;
        for (; fraction > 0 && fraction < 1.0 / 16; fraction *= 16)
            --exponent;
        return number(exponent | (value < 0 ? 0x80 : 0), 1)
            + number(static_cast<int>(fraction * 16777216), 3);
    }
    static std::string product(const GribSpec& spec)
    {
        bool complete = true;
        for (const auto& value : spec.values)
            complete = complete && value;
        const int century = (spec.year - 1) / 100;
        std::string bytes = number(spec.edition == 0 ? 24 : 28, 3)
            + number(spec.edition == 0 ? 0 : spec.table, 1) + number(spec.centre, 1) + number(96, 1)
            + number(255, 1) + number(complete ? 0x80 : 0xC0, 1) + number(spec.parameter, 1)
            + number(spec.levelType, 1) + number(spec.level, 2)
            + number(spec.year - century * 100, 1) + number(spec.month, 1) + number(spec.day, 1)
            + number(spec.hour, 1) + number(spec.minute, 1) + number(spec.timeUnit, 1)
            + number(spec.p1, 1) + number(spec.p2, 1) + number(spec.range, 1) + number(0, 3);
        if (spec.edition == 1)
            bytes += number(century + 1, 1) + number(0, 1) + signedNumber(spec.decimalScale, 2);
        return bytes;
    }
    static std::string grid(const GribSpec& spec)
    {
        return number(32, 3) + number(0, 1) + number(255, 1) + number(spec.gridType, 1)
            + number(spec.columns, 2) + number(spec.rows, 2) + signedNumber(spec.latitude, 3)
            + signedNumber(spec.longitude, 3) + number(0x80, 1) + signedNumber(spec.lastLatitude, 3)
            + signedNumber(spec.lastLongitude, 3) + number(spec.columnStep, 2)
            + number(spec.rowStep, 2) + number(spec.scanning, 1) + number(0, 4);
    }
    /// Most significant bit first, without gaps, padded to whole pairs of octets.
    class Bits {
    public:
        void add(std::uint64_t value, int width)
        {
            for (int bit = width - 1; bit >= 0; --bit, ++m_count) {
                if (m_count % 8 == 0)
                    m_bytes += '\0';
                if (value >> bit & 1)
                    m_bytes.back() = static_cast<char>(m_bytes.back() | 0x80 >> (m_count % 8));
            }
        }
        /// The octets, so that with `before` more of them the length is even; and the unused bits.
        std::string finish(std::size_t before, int& unused)
        {
            if ((m_bytes.size() + before) % 2 != 0)
                m_bytes += '\0';
            unused = static_cast<int>(m_bytes.size()) * 8 - m_count;
            return m_bytes;
        }

    private:
        std::string m_bytes;
        int m_count = 0;
    };
    static std::string bitmap(const GribSpec& spec)
    {
        Bits bits;
        for (const auto& value : spec.values)
            bits.add(value ? 1 : 0, 1);
        int unused = 0;
        const std::string bytes = bits.finish(6, unused);
        return number(static_cast<int>(bytes.size()) + 6, 3) + number(unused, 1) + number(0, 2)
            + bytes;
    }
    static std::string data(const GribSpec& spec)
    {
        const double scale = spec.edition == 0 ? 1 : std::pow(10.0, spec.decimalScale);
        double least = HUGE_VAL;
        for (const auto& value : spec.values)
            if (value)
                least = std::fmin(least, std::floor(*value * scale));
        Bits bits;
        for (const auto& value : spec.values)
            if (value)
                bits.add(static_cast<std::uint64_t>(std::llround(*value * scale - least)),
                         spec.bits);
        int unused = 0;
        const std::string bytes = bits.finish(11, unused);
        return number(static_cast<int>(bytes.size()) + 11, 3) + number(spec.packing | unused, 1)
            + number(0, 2) + ibmFloat(least) + number(spec.bits, 1) + bytes;
    }
};

} // namespace kelvox
