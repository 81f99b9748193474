#include "raster/BSBHeader.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <optional>

#include <fmt/format.h>

namespace kelvox {

namespace {
constexpr std::size_t searchedBytes = 2000;
constexpr std::size_t maximumHeaderText = 1 << 20;
constexpr std::size_t maximumName = 128;
constexpr std::uint8_t endOfText = 0x1A;
constexpr std::uint8_t scrambling = 9;

using Tokens = std::vector<std::string_view>;

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    return text;
}

/// The number that the text begins with; 0 when it begins with none or an infinite one.
double number(std::string_view text)
{
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && std::isfinite(value) ? value : 0;
}

/// A whole number, clamped to what an int holds.
int integer(std::string_view text)
{
    return static_cast<int>(std::clamp(number(text), -2e9, 2e9));
}

/// The token that stands the given steps after the key.
std::optional<std::string_view> valueAfter(const Tokens& tokens, std::string_view key,
                                           std::size_t steps = 1)
{
    const auto found = std::find(tokens.begin(), tokens.end(), key);
    if (static_cast<std::size_t>(tokens.end() - found) <= steps)
        return std::nullopt;
    return *(found + static_cast<std::ptrdiff_t>(steps));
}

bool isUtf8(std::string_view text)
{
    std::size_t following = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (following > 0) {
            if ((byte & 0xC0) != 0x80)
                return false;
            --following;
        } else if (byte >= 0xC2 && byte < 0xF5) {
            following = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
        } else if (byte >= 0x80) {
            return false;
        }
    }
    return following == 0;
}

/// Header text is ASCII by rule and Latin-1 in practice.
std::string toUtf8(std::string_view text)
{
    if (isUtf8(text))
        return std::string(text);
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result += c;
        } else {
            result += static_cast<char>(0xC0 | byte >> 6);
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

void keepText(std::string& target, const Tokens& tokens, std::string_view key)
{
    if (const auto value = valueAfter(tokens, key))
        target = toUtf8(*value);
}

/// Fills a header line by line. The order of the lines does not matter.
class HeaderReader {
public:
    explicit HeaderReader(BSBHeader& header)
        : m_header(header)
    {
    }
    void read(std::string_view line);
    /// Lines of a companion file: geo-referencing only.
    void readGeoReference(std::string_view line);

    [[nodiscard]] bool sawPhaseShift() const { return m_sawPhaseShift; }
    [[nodiscard]] const std::string& fault() const { return m_fault; }

private:
    bool split(std::string_view line);
    bool takeGeoReference();
    void takeImage();
    void takeOlderImage();
    void takeProjection();
    void takeColor(PaletteScheme scheme);
    void takePolynomial(Polynomial& polynomial);
    [[nodiscard]] std::string_view token(std::size_t index) const
    {
        return index < m_tokens.size() ? m_tokens[index] : std::string_view();
    }

    BSBHeader& m_header;
    std::string m_keyword;
    Tokens m_tokens;
    std::string m_fault;
    bool m_sawPhaseShift = false;
};

bool HeaderReader::split(std::string_view line)
{
    if (line.size() < 4 || line[3] != '/')
        return false;
    m_keyword.assign(line.substr(0, 3));
    std::transform(m_keyword.begin(), m_keyword.end(), m_keyword.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    m_tokens = headerTokens(line.substr(4));
    return true;
}

void HeaderReader::readGeoReference(std::string_view line)
{
    if (split(line))
        takeGeoReference();
}

void HeaderReader::read(std::string_view line)
{
    if (!split(line) || takeGeoReference())
        return;
    if (m_keyword == "BSB")
        takeImage();
    else if (m_keyword == "NOS")
        takeOlderImage();
    else if (m_keyword == "RGB")
        takeColor(PaletteScheme::Default);
    else if (m_keyword == "DAY")
        takeColor(PaletteScheme::Day);
    else if (m_keyword == "DSK")
        takeColor(PaletteScheme::Dusk);
    else if (m_keyword == "NGT")
        takeColor(PaletteScheme::Night);
    else if (m_keyword == "KNP")
        takeProjection();
    else if (m_keyword == "CED")
        keepText(m_header.edition, m_tokens, "ED");
    else if (m_keyword == "NTM")
        keepText(m_header.noticeDate, m_tokens, "ND");
    else if (m_keyword == "VER")
        m_header.version = number(token(0));
    else if (m_keyword == "CMP")
        m_header.compressed = std::find(m_tokens.begin(), m_tokens.end(), "LZ") != m_tokens.end();
}

bool HeaderReader::takeGeoReference()
{
    if (m_keyword == "REF") {
        if (m_tokens.size() >= 5)
            m_header.referencePoints.push_back(
                {number(token(1)), number(token(2)), number(token(3)), number(token(4))});
    } else if (m_keyword == "PLY") {
        if (m_tokens.size() >= 3)
            m_header.border.push_back(
                {.longitude = number(token(2)), .latitude = number(token(1))});
    } else if (m_keyword == "DTM") {
        m_header.latitudeShift = number(token(0)) / 3600.0;
        m_header.longitudeShift = number(token(1)) / 3600.0;
    } else if (m_keyword == "CPH") {
        m_header.phaseShift = static_cast<float>(std::clamp(number(token(0)), -360.0, 360.0));
        m_sawPhaseShift = true;
    } else if (m_keyword == "WPX") {
        takePolynomial(m_header.polynomials.wpx);
    } else if (m_keyword == "WPY") {
        takePolynomial(m_header.polynomials.wpy);
    } else if (m_keyword == "PWX") {
        takePolynomial(m_header.polynomials.pwx);
    } else if (m_keyword == "PWY") {
        takePolynomial(m_header.polynomials.pwy);
    } else {
        return false;
    }
    return true;
}

void HeaderReader::takeImage()
{
    const auto name = valueAfter(m_tokens, "NA");
    const auto chartNumber = valueAfter(m_tokens, "NU");
    const auto width = valueAfter(m_tokens, "RA", 1);
    const auto height = valueAfter(m_tokens, "RA", 2);
    if (!name || !chartNumber || !width || !height) {
        m_fault = "BSB/ line without name (NA), number (NU) or size (RA)";
        return;
    }
    m_header.name = toUtf8(name->substr(0, maximumName));
    m_header.number = toUtf8(*chartNumber);
    m_header.width = integer(*width);
    m_header.height = integer(*height);
    m_header.dotsPerInch = integer(valueAfter(m_tokens, "DU").value_or(""));
}

void HeaderReader::takeOlderImage()
{
    // Four numbers here: the first two are the corner of the picture on its sheet.
    m_header.width = integer(valueAfter(m_tokens, "RA", 3).value_or(""));
    m_header.height = integer(valueAfter(m_tokens, "RA", 4).value_or(""));
    keepText(m_header.name, m_tokens, "NA");
    keepText(m_header.number, m_tokens, "NU");
    m_header.dotsPerInch = integer(valueAfter(m_tokens, "DU").value_or(""));
}

void HeaderReader::takeProjection()
{
    m_header.scale = integer(valueAfter(m_tokens, "SC").value_or(""));
    if (const auto skew = valueAfter(m_tokens, "SK"); skew && !skew->empty()) {
        m_header.hasSkew = true;
        m_header.skew = static_cast<float>(std::clamp(number(*skew), -360.0, 360.0));
    }
    keepText(m_header.datum, m_tokens, "GD");
    keepText(m_header.projection, m_tokens, "PR");
    keepText(m_header.depthUnits, m_tokens, "UN");
    keepText(m_header.soundingDatum, m_tokens, "SD");
}

void HeaderReader::takeColor(PaletteScheme scheme)
{
    if (m_tokens.size() < 4)
        return;
    const auto part = [this](std::size_t index) {
        return static_cast<std::uint8_t>(std::clamp(integer(token(index)), 0, 255));
    };
    m_header.palettes.set(scheme, integer(token(0)), {part(1), part(2), part(3)});
}

void HeaderReader::takePolynomial(Polynomial& polynomial)
{
    polynomial = {};
    polynomial.level = integer(token(0));
    for (std::size_t i = 0; i < polynomial.coefficients.size(); ++i)
        polynomial.coefficients[i] = number(token(i + 1));
}

/// A chart across the date line without a phase shift would be fitted the long way round.
float derivedPhaseShift(const std::vector<ReferencePoint>& points)
{
    const auto [west, east] =
        std::minmax_element(points.begin(), points.end(),
                            [](const auto& a, const auto& b) { return a.longitude < b.longitude; });
    return east->longitude - west->longitude > 180 ? 180.0F : 0.0F;
}

/// From the byte after the header text to the bit depth.
Result<void> readDepth(const ChartBytes& file, std::size_t at, BSBHeader& header)
{
    const auto next = [&]() -> int { return at < file.size() ? file[at++] : -1; };
    if (next() != 0) {
        next(); // its value does not matter
        if (next() != endOfText || next() != 0)
            return failure(Error::Code::BadSyntax, "bad end of header", at);
    }
    int depth = next();
    if (depth >= '1' && depth <= '7')
        depth -= '0'; // some writers put the digit there
    if (depth < 1 || depth > 7)
        return failure(depth < 0 ? Error::Code::Truncated : Error::Code::OutOfRange,
                       depth < 0 ? "file ends before the bit depth"
                                 : fmt::format("bit depth {} is not 1 to 7", depth),
                       at);
    header.depth = depth;
    header.imageStart = at;
    return {};
}

Result<void> checkHeader(const BSBHeader& header)
{
    if (header.width <= 0 || header.height <= 0)
        return failure(Error::Code::BadSyntax, "no width or height");
    if (header.width > maximumRasterSide || header.height > maximumRasterSide)
        return failure(Error::Code::OutOfRange,
                       fmt::format("{} x {} pixels are too many", header.width, header.height));
    if (header.version == 0)
        return failure(Error::Code::BadSyntax, "version (VER/) is missing or 0");
    if (header.palettes.isEmpty())
        return failure(Error::Code::BadSyntax, "no palette");
    return {};
}
} // namespace

std::vector<std::string> logicalLines(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = std::min(text.find_first_of("\r\n"), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.empty())
            continue;
        if (line.front() != ' ' || lines.empty()) {
            lines.emplace_back(line);
            continue;
        }
        line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
        lines.back() += ',';
        lines.back() += line;
    }
    return lines;
}

std::vector<std::string_view> headerTokens(std::string_view text)
{
    Tokens tokens;
    while (true) {
        const auto end = text.find_first_of(",=");
        tokens.push_back(trimmed(text.substr(0, end)));
        if (end == std::string_view::npos)
            return tokens;
        text.remove_prefix(end + 1);
    }
}

Result<ChartBytes> findHeader(std::span<const char> file)
{
    if (file.size() < searchedBytes)
        return failure(Error::Code::Truncated, "shorter than 2000 bytes", file.size());
    for (const std::uint8_t added : {std::uint8_t{0}, scrambling}) {
        const ChartBytes bytes(file, added);
        for (std::size_t at = 0; at <= searchedBytes - 5; ++at) {
            const char first = static_cast<char>(bytes[at]);
            if (first != 'B' && first != 'N')
                continue;
            const std::string_view wanted = first == 'B' ? "BSB/" : "NOS/";
            std::size_t same = 1;
            while (same < 4 && static_cast<char>(bytes[at + same]) == wanted[same])
                ++same;
            if (same == 4)
                return bytes;
        }
    }
    return failure(Error::Code::BadSyntax, "no BSB/ or NOS/ in the first 2000 bytes");
}

Result<BSBHeader> readBSBHeader(const ChartBytes& file, std::string_view companion)
{
    std::string text;
    std::size_t end = 0;
    while (end < file.size() && file[end] != endOfText) {
        if (end == maximumHeaderText)
            return failure(Error::Code::OutOfRange, "header text without an end", end);
        text += static_cast<char>(file[end++]);
    }
    if (end == file.size())
        return failure(Error::Code::Truncated, "file ends within the header", end);

    BSBHeader header;
    HeaderReader reader(header);
    for (const std::string& line : logicalLines(text))
        reader.read(line);
    for (const std::string& line : logicalLines(companion.substr(0, maximumHeaderText)))
        reader.readGeoReference(line);
    if (!reader.fault().empty())
        return failure(Error::Code::BadSyntax, reader.fault());
    if (const auto sound = checkHeader(header); !sound)
        return tl::unexpected(sound.error());

    if (!header.polynomials.allHaveLevel() && !header.referencePoints.empty()) {
        if (!reader.sawPhaseShift())
            header.phaseShift = derivedPhaseShift(header.referencePoints);
        header.polynomials = fitPolynomials(header.referencePoints, header.phaseShift);
        if (!header.polynomials.allHaveLevel())
            return failure(Error::Code::BadSyntax,
                           fmt::format("{} reference points do not fix the chart's place",
                                       header.referencePoints.size()));
    }
    if (const auto read = readDepth(file, end + 1, header); !read)
        return tl::unexpected(read.error());
    return header;
}

} // namespace kelvox
