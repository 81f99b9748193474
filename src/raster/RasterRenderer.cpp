#include "raster/RasterRenderer.h"

#include "raster/RasterSampler.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace kelvox {

namespace {
constexpr int blockSide = 64;
constexpr int smallestCell = 8;
/// A chart smaller than this on the picture may be missed.
constexpr int smallestChart = 16;
constexpr double tolerance = 0.125; ///< picture pixels
/// The pyramid level is changed at this reduction: up to it interpolation alone looks sharper.
constexpr double reductionOfALevel = 1.5;

struct Cell {
    int left;
    int top;
    int right; ///< one behind the last pixel
    int bottom;
};

/// Places on the chart, y downward from the top row, at a cell's pixel corners.
struct Corners {
    Point topLeft;
    Point topRight;
    Point bottomLeft;
    Point bottomRight;

    [[nodiscard]] Point middle() const
    {
        return (topLeft + topRight + bottomLeft + bottomRight) * 0.25;
    }
    [[nodiscard]] Rect box() const
    {
        Rect box;
        for (const Point& corner : {topLeft, topRight, bottomLeft, bottomRight})
            box.include(corner);
        return box;
    }
    [[nodiscard]] bool areNowhere() const
    {
        return std::isnan(topLeft.x) && std::isnan(topRight.x) && std::isnan(bottomLeft.x)
            && std::isnan(bottomRight.x);
    }
    [[nodiscard]] bool areFinite() const
    {
        const Point sum = middle();
        return std::isfinite(sum.x) && std::isfinite(sum.y);
    }
};

double length(Point vector)
{
    return std::hypot(vector.x, vector.y);
}

/// Chart pixels across one picture pixel; 0 when the cell has no extent.
double reductionIn(const Cell& cell, const Corners& corners)
{
    const Point across = corners.topRight - corners.topLeft;
    const Point down = corners.bottomLeft - corners.topLeft;
    const double area = std::abs(across.x * down.y - across.y * down.x);
    return std::sqrt(area / (cell.right - cell.left) / (cell.bottom - cell.top));
}

/// The chart's border in pixels, y downward.
class BorderMask {
public:
    explicit BorderMask(const BSBChart& chart)
    {
        const double bottomRow = chart.size().height - 1;
        for (const Position& corner : chart.border()) {
            const Point point = chart.positionToPoint(corner);
            if (std::isfinite(point.x) && std::isfinite(point.y))
                m_corners.push_back({point.x, bottomRow - point.y});
        }
        if (m_corners.size() < 3)
            m_corners.clear();
        for (const Point& corner : m_corners)
            m_path.lineTo(corner);
    }
    [[nodiscard]] bool isEmpty() const { return m_corners.empty(); }
    [[nodiscard]] bool contains(Point point) const { return m_path.contains(point); }
    /// Whether an edge may pass through the box.
    [[nodiscard]] bool crosses(const Rect& box) const
    {
        Point from = m_corners.empty() ? Point{} : m_corners.back();
        for (const Point& to : m_corners) {
            Rect edge;
            edge.include(from);
            edge.include(to);
            if (edge.intersects(box) && !isBeside(box, from, to))
                return true;
            from = to;
        }
        return false;
    }

private:
    /// Whether all corners of the box lie on one side of the line.
    static bool isBeside(const Rect& box, Point from, Point to)
    {
        int left = 0;
        int right = 0;
        for (const Point corner : {Point{box.left, box.bottom},
                                   {box.left, box.top},
                                   {box.right, box.bottom},
                                   {box.right, box.top}}) {
            const double side =
                (to.x - from.x) * (corner.y - from.y) - (to.y - from.y) * (corner.x - from.x);
            left += side >= 0 ? 1 : 0;
            right += side <= 0 ? 1 : 0;
        }
        return left == 4 || right == 4;
    }
    std::vector<Point> m_corners;
    Path m_path;
};

class ChartPainter {
public:
    ChartPainter(const BSBChart& chart, const RasterRenderer::PointToImagePoint& toImagePoint,
                 PaletteScheme scheme, RasterRenderer::Borders borders, const ArgbImage& image)
        : m_chart(chart)
        , m_toImagePoint(toImagePoint)
        , m_scheme(scheme)
        , m_image(image)
        , m_bottomRow(chart.size().height - 1)
        , m_border(chart)
        , m_masked(borders == RasterRenderer::Borders::Respect && !m_border.isEmpty())
    {
    }

    void draw()
    {
        for (int top = 0; top < m_image.height; top += blockSide)
            for (int left = 0; left < m_image.width; left += blockSide)
                split({left, top, std::min(left + blockSide, m_image.width),
                       std::min(top + blockSide, m_image.height)});
        const double reduction = usualReduction();
        if (!(reduction > 0))
            return;
        const int level =
            std::clamp(static_cast<int>(std::ceil(std::log2(reduction / reductionOfALevel))), 0,
                       m_chart.pyramid().levelCount() - 1);
        RasterSampler sampler(m_chart.pyramid(), level, std::exp2(level) / reduction, m_scheme);
        m_levelScale = std::exp2(-level);
        for (const Piece& piece : m_pieces)
            withLevelBox(piece.corners.box(), [&](int left, int top, int right, int bottom) {
                sampler.announce(left, top, right, bottom);
            });
        for (const Piece& piece : m_pieces)
            paint(piece, sampler);
    }

private:
    struct Piece {
        Cell cell;
        Corners corners;
        bool exact; ///< too bent to interpolate: ask for every pixel
    };

    [[nodiscard]] Point chartPixel(double x, double y) const
    {
        const Point point = m_toImagePoint({x, y});
        return {point.x, m_bottomRow - point.y};
    }
    [[nodiscard]] Corners cornersOf(const Cell& cell) const
    {
        return {chartPixel(cell.left, cell.top), chartPixel(cell.right, cell.top),
                chartPixel(cell.left, cell.bottom), chartPixel(cell.right, cell.bottom)};
    }
    [[nodiscard]] bool isFilled(const Cell& cell) const
    {
        for (int y = cell.top; y < cell.bottom; ++y) {
            const auto row =
                m_image.pixels.subspan(y * m_image.stride + cell.left, cell.right - cell.left);
            if (std::find(row.begin(), row.end(), 0U) != row.end())
                return false;
        }
        return true;
    }

    /// Cuts a cell until its inside follows from its corners, and keeps the pieces on the chart.
    void split(const Cell& cell)
    {
        if (isFilled(cell))
            return;
        const Corners corners = cornersOf(cell);
        const Point middle =
            chartPixel((cell.left + cell.right) / 2.0, (cell.top + cell.bottom) / 2.0);
        if (cell.right - cell.left <= smallestChart && corners.areNowhere() && std::isnan(middle.x))
            return;
        const double reduction = reductionIn(cell, corners);
        // Written so that a place that is not a number counts as bent.
        const double bend = length(middle - corners.middle());
        const bool straight = bend <= tolerance * std::max(reduction, 1e-9);
        if (straight || cell.right - cell.left <= smallestCell) {
            const bool exact = !straight && !(bend <= 8 * tolerance * reduction);
            if (exact || isOnChart(corners.box()))
                m_pieces.push_back({cell, corners, exact});
            return;
        }
        const int x = (cell.left + cell.right) / 2;
        const int y = std::min(cell.top + (x - cell.left), cell.bottom);
        split({cell.left, cell.top, x, y});
        split({x, cell.top, cell.right, y});
        if (y < cell.bottom) {
            split({cell.left, y, x, cell.bottom});
            split({x, y, cell.right, cell.bottom});
        }
    }

    [[nodiscard]] bool isOnChart(const Rect& box) const
    {
        const auto [width, height] = m_chart.size();
        if (!box.intersects({-0.5, -0.5, width - 0.5, height - 0.5}))
            return false;
        return !m_masked || m_border.crosses(box) || m_border.contains(box.center());
    }

    /// The reduction over the pieces on the chart, the middle one of all.
    [[nodiscard]] double usualReduction() const
    {
        std::vector<double> reductions;
        for (const Piece& piece : m_pieces)
            if (piece.corners.areFinite())
                reductions.push_back(reductionIn(piece.cell, piece.corners));
        if (reductions.empty())
            return 0;
        const auto middle = reductions.begin() + static_cast<std::ptrdiff_t>(reductions.size() / 2);
        std::nth_element(reductions.begin(), middle, reductions.end());
        return *middle;
    }

    template <typename Use> void withLevelBox(const Rect& box, Use&& use) const
    {
        const auto low = [&](double value, double margin) {
            return static_cast<int>(
                std::clamp(std::floor(toLevel(value)) + margin, -2.0, maximumRasterSide + 2.0));
        };
        if (!box.isEmpty())
            use(low(box.left, 0), low(box.bottom, 0), low(box.right, 1), low(box.top, 1));
    }
    [[nodiscard]] double toLevel(double chartPixel) const
    {
        return (chartPixel + 0.5) * m_levelScale - 0.5;
    }

    void paint(const Piece& piece, RasterSampler& sampler)
    {
        if (piece.exact) {
            paintExactly(piece.cell, sampler);
            return;
        }
        const Rect box = piece.corners.box();
        bool ready = false;
        withLevelBox(box, [&](int left, int top, int right, int bottom) {
            ready = sampler.prepare(left, top, right, bottom);
        });
        if (!ready)
            return;
        const bool mask = m_masked && m_border.crosses(box);
        const auto& [cell, corners, exact] = piece;
        const double rows = cell.bottom - cell.top;
        const double columns = cell.right - cell.left;
        for (int y = cell.top; y < cell.bottom; ++y) {
            const double down = (y - cell.top + 0.5) / rows;
            const Point left = corners.topLeft + (corners.bottomLeft - corners.topLeft) * down;
            const Point right = corners.topRight + (corners.bottomRight - corners.topRight) * down;
            const Point step = (right - left) * (1 / columns);
            Point place = left + step * 0.5;
            std::uint32_t* pixel = &m_image.pixels[y * m_image.stride + cell.left];
            for (int x = cell.left; x < cell.right; ++x, ++pixel, place = place + step)
                if (*pixel == 0 && (!mask || m_border.contains(place)))
                    *pixel = sampler.at(toLevel(place.x), toLevel(place.y));
        }
    }

    void paintExactly(const Cell& cell, RasterSampler& sampler)
    {
        const auto [width, height] = m_chart.size();
        for (int y = cell.top; y < cell.bottom; ++y)
            for (int x = cell.left; x < cell.right; ++x) {
                const Point place = chartPixel(x + 0.5, y + 0.5);
                std::uint32_t& pixel = m_image.pixels[y * m_image.stride + x];
                if (pixel != 0 || !(place.x > -0.5 && place.x < width && place.y > -0.5)
                    || !(place.y < height) || (m_masked && !m_border.contains(place)))
                    continue;
                Rect box;
                box.include(place);
                bool ready = false;
                withLevelBox(box, [&](int left, int top, int right, int bottom) {
                    ready = sampler.prepare(left, top, right, bottom);
                });
                if (ready)
                    pixel = sampler.at(toLevel(place.x), toLevel(place.y));
            }
    }

    const BSBChart& m_chart;
    const RasterRenderer::PointToImagePoint& m_toImagePoint;
    PaletteScheme m_scheme;
    ArgbImage m_image;
    double m_bottomRow;
    BorderMask m_border;
    bool m_masked;
    double m_levelScale = 1;
    std::vector<Piece> m_pieces;
};

/// The piece of the earth for which a chart's polynomials are made. Far from it they fold back and
/// would put the chart where it does not belong.
class Coverage {
public:
    Coverage(const BSBChart& chart, RasterRenderer::Borders borders)
    {
        Rect box;
        if (borders == RasterRenderer::Borders::Respect && !chart.border().empty())
            box = chart.extents();
        else
            box = pictureBox(chart);
        m_middle = box.center();
        m_halfWidth = box.width() / 2 * (1 + margin);
        m_halfHeight = box.height() / 2 * (1 + margin);
    }
    [[nodiscard]] bool contains(Position position) const
    {
        return std::abs(std::remainder(position.longitude - m_middle.x, 360.0)) <= m_halfWidth
            && std::abs(position.latitude - m_middle.y) <= m_halfHeight;
    }

private:
    static constexpr double margin = 1;

    static Rect pictureBox(const BSBChart& chart)
    {
        const auto [width, height] = chart.size();
        const double start = chart.pointToPosition({width / 2, height / 2}).longitude;
        Rect box;
        for (int i = 0; i <= 8; ++i)
            for (const Point side : {Point{i / 8.0, 0}, {i / 8.0, 1}, {0, i / 8.0}, {1, i / 8.0}}) {
                const Position position = chart.pointToPosition({side.x * width, side.y * height});
                box.include(Point{start + std::remainder(position.longitude - start, 360.0),
                                  position.latitude});
            }
        return box;
    }
    Point m_middle;
    double m_halfWidth = 0;
    double m_halfHeight = 0;
};

constexpr Point nowhere{std::numeric_limits<double>::quiet_NaN(),
                        std::numeric_limits<double>::quiet_NaN()};
} // namespace

void RasterRenderer::draw(const BSBChart& chart, const PointToImagePoint& toImagePoint,
                          PaletteScheme scheme, Borders borders, const ArgbImage& image)
{
    if (chart.loaded())
        ChartPainter(chart, toImagePoint, scheme, borders, image).draw();
}

void RasterRenderer::drawByPosition(const BSBChart& chart, const PointToPosition& toPosition,
                                    PaletteScheme scheme, Borders borders, const ArgbImage& image)
{
    if (!chart.hasCalibration())
        return;
    const Coverage coverage(chart, borders);
    draw(
        chart,
        [&](Point point) {
            Position position = toPosition(point);
            if (!position.isKnown() || !coverage.contains(position))
                return nowhere;
            position.longitude = std::remainder(position.longitude, 360.0);
            return chart.positionToPoint(position);
        },
        scheme, borders, image);
}

void RasterRenderer::drawQuilt(std::span<const BSBChart* const> charts,
                               const PointToPosition& toPosition, PaletteScheme scheme,
                               const ArgbImage& image)
{
    for (const BSBChart* chart : charts)
        drawByPosition(*chart, toPosition, scheme, Borders::Respect, image);
}

double quiltCost(int chartScale, double viewScale)
{
    constexpr double mostDoublingsReduced = 5;
    constexpr double mostDoublingsMagnified = 6;
    if (chartScale <= 0)
        return mostDoublingsMagnified * 2;
    const double doublings = std::log2(chartScale / viewScale); // above 0: magnified
    if (doublings < -mostDoublingsReduced || doublings > mostDoublingsMagnified)
        return std::numeric_limits<double>::infinity();
    return doublings > 0 ? doublings * 1.5 : -doublings;
}

std::vector<std::size_t> quiltOrder(std::span<const int> chartScales, double viewScale)
{
    std::vector<std::size_t> order(chartScales.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto cost = [&](std::size_t index) { return quiltCost(chartScales[index], viewScale); };
    std::erase_if(order, [&](std::size_t index) { return std::isinf(cost(index)); });
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return cost(a) < cost(b); });
    return order;
}

} // namespace kelvox
