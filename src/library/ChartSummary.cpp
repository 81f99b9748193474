#include "library/ChartSummary.h"

#include "raster/BSBChart.h"
#include "s57/S57CellLoader.h"
#include "s57/S57CellSummary.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr std::size_t stretch = 512; ///< bounds the work on a long outline
constexpr double metresPerDegree = 111'120;
/// A tenth of a millimetre on the chart: less than a pixel until it is magnified three times.
constexpr double outlineTolerance = 0.0001;
constexpr int assumedScale = 20'000; ///< where none is given

double squaredDistance(Point a, Point b, Point p)
{
    const Point along = b - a;
    const Point to = p - a;
    const double length = along.x * along.x + along.y * along.y;
    const double t =
        length > 0 ? std::clamp((to.x * along.x + to.y * along.y) / length, 0.0, 1.0) : 0.0;
    const Point away = to - along * t;
    return away.x * away.x + away.y * away.y;
}

/// Longitudes that run on, so that a ring across the date line keeps its shape.
void unwrap(std::vector<Point>& ring)
{
    for (std::size_t i = 1; i < ring.size(); ++i)
        ring[i].x = ring[i - 1].x + std::remainder(ring[i].x - ring[i - 1].x, 360.0);
}

std::vector<Point> outline(const std::vector<Position>& places, int scale)
{
    std::vector<Point> ring;
    ring.reserve(places.size());
    for (const Position& place : places)
        ring.push_back({place.longitude, place.latitude});
    unwrap(ring);
    const int compiled = scale > 0 ? scale : assumedScale;
    return simplified(ring, compiled * outlineTolerance / metresPerDegree);
}

/// A cell on both sides of the date line states a ring on each: brings them together.
void gather(ChartRecord& record)
{
    if (record.coverage.size() < 2 || record.bounds.width() <= 180)
        return;
    const double start = record.coverage.front().front().x;
    record.bounds = {};
    for (auto& ring : record.coverage) {
        const double there = start + std::remainder(ring.front().x - start, 360.0);
        const double shift = there - ring.front().x;
        for (Point& p : ring) {
            p.x += shift;
            record.bounds.include(p);
        }
    }
    const double turns = std::floor((record.bounds.left + 180) / 360) * 360;
    record.bounds.left -= turns;
    record.bounds.right -= turns;
    for (auto& ring : record.coverage)
        for (Point& p : ring)
            p.x -= turns;
}

void summariseCell(ChartRecord& record)
{
    record.name = record.path.stem().string();
    const auto summary = S57CellSummary::read(record.path);
    if (!summary) {
        record.problem = summary.error().message;
        return;
    }
    record.edition = summary->edition;
    record.update = summary->update;
    record.date = summary->issueDate;
    record.scale = static_cast<int>(std::min<std::uint32_t>(summary->compiledScale, 1U << 30U));
    record.bounds = summary->bounds;
    for (const auto& ring : summary->coverage)
        record.coverage.push_back(outline(ring, record.scale));
    gather(record);
    if (record.bounds.isEmpty())
        record.problem = "holds no places";
}

void summariseRaster(ChartRecord& record)
{
    BSBChart chart;
    if (const auto read = chart.loadHeader(record.path); !read) {
        record.problem = read.error().message;
        return;
    }
    record.name = chart.number();
    record.title = chart.title();
    record.edition = chart.edition();
    record.scale = chart.scale();
    record.bounds = chart.extents();
    if (chart.header().compressed)
        record.problem = "its picture is in a compressed form that is not published";
    else if (!chart.hasCalibration() || record.bounds.isEmpty())
        record.problem = "its header does not tell its place";
    auto border = chart.border();
    if (border.empty()) {
        const auto [width, height] = chart.size();
        for (const Point corner :
             {Point{0, 0}, {width - 1, 0}, {width - 1, height - 1}, {0, height - 1}})
            border.push_back(chart.pointToPosition(corner));
    }
    record.coverage.push_back(outline(border, record.scale));
}

/// Damaged or hostile files tell places that are none.
void dropNonsense(ChartRecord& record)
{
    const auto isPlace = [](Point p) {
        return std::abs(p.x) <= 540 && std::abs(p.y) <= 90; // false for what is no number
    };
    std::erase_if(record.coverage, [&](const std::vector<Point>& ring) {
        return ring.size() < 3 || !std::all_of(ring.begin(), ring.end(), isPlace);
    });
    const Rect& box = record.bounds;
    if (record.problem.empty()
        && !(isPlace({box.left, box.bottom}) && isPlace({box.right, box.top})))
        record.problem = "tells places that are not on the earth";
}

std::int64_t modifiedOf(const std::filesystem::path& path, std::error_code& error)
{
    return std::filesystem::last_write_time(path, error).time_since_epoch().count();
}
} // namespace

std::vector<Point> simplified(const std::vector<Point>& ring, double tolerance)
{
    if (ring.size() < 5)
        return ring;
    std::vector<bool> keep(ring.size(), false);
    std::vector<std::pair<std::size_t, std::size_t>> ranges;
    for (std::size_t from = 0; from + 1 < ring.size(); from += stretch)
        ranges.emplace_back(from, std::min(from + stretch, ring.size() - 1));
    while (!ranges.empty()) {
        const auto [from, to] = ranges.back();
        ranges.pop_back();
        keep[from] = keep[to] = true;
        double worst = tolerance * tolerance;
        std::size_t split = 0;
        for (std::size_t i = from + 1; i < to; ++i)
            if (const double distance = squaredDistance(ring[from], ring[to], ring[i]);
                distance > worst) {
                worst = distance;
                split = i;
            }
        if (split == 0)
            continue;
        ranges.emplace_back(from, split);
        ranges.emplace_back(split, to);
    }
    std::vector<Point> left;
    for (std::size_t i = 0; i < ring.size(); ++i)
        if (keep[i])
            left.push_back(ring[i]);
    return left.size() < 3 ? ring : left;
}

std::optional<ChartKind> chartKindOf(const std::filesystem::path& path)
{
    const std::string extension = path.extension().string();
    if (extension == ".000")
        return ChartKind::Cell;
    if (BSBChart::isNamedAsChart(path))
        return ChartKind::Raster;
    return std::nullopt;
}

Result<FileStamp> stampOf(const std::filesystem::path& path, ChartKind kind)
{
    std::error_code error;
    FileStamp stamp;
    stamp.size = std::filesystem::file_size(path, error);
    if (!error)
        stamp.modified = modifiedOf(path, error);
    if (error)
        return failure(Error::Code::CannotOpen, path.string() + ": " + error.message());
    for (int n = 1; kind == ChartKind::Cell && n <= S57CellLoader::maximumUpdate; ++n) {
        auto update = path;
        update.replace_extension(fmt::format(".{:03}", n));
        const auto size = std::filesystem::file_size(update, error);
        if (error)
            break;
        // FNV-1a over the numbers.
        for (const std::uint64_t part :
             {static_cast<std::uint64_t>(n), static_cast<std::uint64_t>(size),
              static_cast<std::uint64_t>(modifiedOf(update, error))})
            stamp.updates = (stamp.updates ^ part) * 0x100000001B3U + 1;
    }
    return stamp;
}

ChartRecord summarise(const std::filesystem::path& path, ChartKind kind, const FileStamp& stamp)
{
    ChartRecord record;
    record.path = path;
    record.kind = kind;
    record.stamp = stamp;
    if (kind == ChartKind::Cell)
        summariseCell(record);
    else
        summariseRaster(record);
    dropNonsense(record);
    return record;
}

} // namespace kelvox
