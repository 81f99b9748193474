#include "raster/BSBChart.h"

#include <cmath>
#include <numbers>

#include <fmt/format.h>

namespace kelvox {

namespace {
constexpr double degree = std::numbers::pi / 180;
constexpr float largestSkewError = 3;
constexpr Point noPoint{noCoordinate, noCoordinate};

double roundedToSingle(double value)
{
    return static_cast<float>(value);
}

float turnBelow360(double degrees)
{
    const auto turn = static_cast<float>(std::fmod(std::fmod(degrees, 360.0) + 360.0, 360.0));
    return turn < 360 ? turn : 0;
}

/// The file beside an older chart that holds its geo-referencing; empty when there is none.
std::string companionOf(const std::filesystem::path& path)
{
    const std::string name = path.string();
    if (name.find(".NOS") == std::string::npos && name.find(".nos") == std::string::npos)
        return {};
    for (const char* extension : {".GEO", ".geo", ".Geo"}) {
        auto companion = path;
        if (auto text = readFile(companion.replace_extension(extension), 1 << 20))
            return std::move(*text);
    }
    return {};
}
} // namespace

bool BSBChart::isNamedAsChart(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    for (char& c : extension)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    return extension == ".KAP" || extension == ".NOS" || extension == ".NO1";
}

Result<void> BSBChart::loadHeader(const std::filesystem::path& path)
{
    closeChart();
    m_path = path;
    const auto failed = [&path](Error error) {
        if (error.code != Error::Code::CannotOpen) // that one names the file already
            error.message = path.string() + ": " + error.message;
        return tl::unexpected(std::move(error));
    };
    auto file = MappedFile::open(path);
    if (!file)
        return failed(file.error());
    const auto bytes = findHeader(file->bytes());
    if (!bytes)
        return failed(bytes.error());
    auto header = readBSBHeader(*bytes, companionOf(path));
    if (!header)
        return failed(header.error());
    m_file = std::make_shared<const MappedFile>(std::move(*file));
    m_bytes = *bytes;
    m_header = std::move(*header);
    copyExtents();
    return {};
}

Result<void> BSBChart::loadChart(std::size_t tileBudget)
{
    if (!hasHeader())
        if (auto read = loadHeader(m_path); !read)
            return read;
    if (m_header.compressed)
        return failure(Error::Code::Unsupported,
                       m_path.string()
                           + ": the image is in a compressed form (CMP/LZ) that was "
                             "never published");
    BSBRows rows(m_bytes, m_header.imageStart, m_header.depth, m_header.width, m_header.height);
    if (rows.missingRows() == m_header.height)
        return failure(Error::Code::Truncated, m_path.string() + ": holds no image row",
                       m_header.imageStart);
    m_pyramid = std::make_unique<TilePyramid>(std::move(rows), m_header.palettes, tileBudget);
    return {};
}

void BSBChart::closeChart()
{
    m_pyramid.reset();
    m_header = {};
    m_bytes = ChartBytes();
    m_file.reset();
    m_extents = {};
    m_borderPixels.clear();
    m_hitRect = {};
    m_angle = 0;
    resetAngleTransform();
}

std::string BSBChart::shortName() const
{
    const std::string stem = m_path.stem().string();
    return stem.substr(stem.rfind('\\') + 1); // without a backslash this is the whole
}

std::string BSBChart::description() const
{
    std::string text = m_header.number;
    if (!m_header.name.empty())
        text += (text.empty() ? "" : " ") + m_header.name;
    if (scaled())
        text += fmt::format("{}1:{}", text.empty() ? "" : " ", m_header.scale);
    return text;
}

std::vector<Position> BSBChart::border() const
{
    std::vector<Position> shifted = m_header.border;
    for (Position& corner : shifted) {
        corner.longitude += m_header.longitudeShift;
        corner.latitude += m_header.latitudeShift;
    }
    return shifted;
}

bool BSBChart::contains(Position position) const
{
    if (!hasCalibration())
        return false;
    const Point point = positionToPoint(position);
    const auto [width, height] = size();
    return m_borderPixels.isEmpty() ? Rect{-0.5, -0.5, width - 0.5, height - 0.5}.contains(point)
                                    : m_borderPixels.contains(point);
}

Size BSBChart::size() const
{
    return {static_cast<double>(m_header.width), static_cast<double>(m_header.height)};
}

Position BSBChart::originOnGPSPosition() const
{
    return pointToPosition({0, 0});
}

Position BSBChart::extentOnGPSPosition() const
{
    return pointToPosition({m_header.width - 1.0, m_header.height - 1.0});
}

Point BSBChart::positionToPoint(Position position) const
{
    if (!hasCalibration())
        return noPoint;
    const double longitude =
        shiftedLongitude(position.longitude, m_header.phaseShift) - m_header.longitudeShift;
    const double latitude = position.latitude - m_header.latitudeShift;
    const auto& polynomials = m_header.polynomials;
    return {roundedToSingle(polynomials.wpx.at(longitude, latitude)),
            roundedToSingle(m_header.height - 1.0 - polynomials.wpy.at(longitude, latitude))};
}

Position BSBChart::pointToPosition(Point point) const
{
    if (!hasCalibration())
        return {};
    const double row = m_header.height - 1.0 - point.y;
    const auto& polynomials = m_header.polynomials;
    double longitude = roundedToSingle(polynomials.pwx.at(point.x, row)) - m_header.phaseShift;
    if (longitude < -180)
        longitude += 360;
    return {.longitude = longitude + m_header.longitudeShift,
            .latitude = roundedToSingle(polynomials.pwy.at(point.x, row)) + m_header.latitudeShift};
}

void BSBChart::copyExtents()
{
    m_extents = {};
    m_angle = turnBelow360(m_header.skew);
    if (hasCalibration()) {
        const float measured = measuredAngle();
        const double difference = std::remainder(double{measured} - m_angle, 360.0);
        if (!m_header.hasSkew || std::abs(difference) > largestSkewError)
            m_angle = measured;

        std::vector<Position> outline = border();
        if (outline.empty())
            for (const ReferencePoint& point : m_header.referencePoints)
                outline.push_back({point.longitude + m_header.longitudeShift,
                                   point.latitude + m_header.latitudeShift});
        if (outline.empty()) {
            const auto [width, height] = size();
            for (const Point corner : {Point{0, 0}, {width, 0}, {0, height}, {width, height}})
                outline.push_back(pointToPosition(corner));
        }
        const double start = outline.front().longitude;
        for (const Position& corner : outline)
            m_extents.include(
                Point{start + std::remainder(corner.longitude - start, 360.0), corner.latitude});
        if (m_extents.left < -180) {
            m_extents.left += 360;
            m_extents.right += 360;
        }
        for (const Position& corner : border())
            m_borderPixels.lineTo(positionToPoint(corner));
    }
    resetAngleTransform();
}

float BSBChart::measuredAngle() const
{
    // Through the forward polynomials, since the step between two rounded positions is too coarse.
    const Point middle{m_header.width / 2.0, m_header.height / 2.0};
    Position there = pointToPosition(middle);
    const Point from = positionToPoint(there);
    there.latitude += 0.01;
    const Point north = positionToPoint(there) - from;
    if (!std::isfinite(north.x) || !std::isfinite(north.y) || north == Point{})
        return turnBelow360(m_header.skew);
    return turnBelow360(std::atan2(north.x, north.y) / degree);
}

void BSBChart::setRotate(float degrees)
{
    m_rotate = degrees;
    resetAngleTransform();
}

void BSBChart::resetAngleTransform()
{
    const double turn = (double{m_angle} + m_rotate) * degree;
    m_turn = {std::cos(turn), std::sin(turn)};
}

Point BSBChart::rotatedPoint(Point diagonal) const
{
    // The absolute components have lost in which quadrant of the view the diagonal points; the
    // picture's own diagonal, turned the same way, knows.
    const auto [cosine, sine] = m_turn;
    const auto [width, height] = size();
    const double x = std::copysign(diagonal.x, width * cosine - height * sine);
    const double y = std::copysign(diagonal.y, width * sine + height * cosine);
    return {x * cosine + y * sine, y * cosine - x * sine};
}

} // namespace kelvox
