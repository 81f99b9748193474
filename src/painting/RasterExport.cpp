#include "painting/RasterExport.h"

#include "raster/KapWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace kelvox {

namespace {
constexpr std::size_t mostColors = 127;
constexpr int gridSteps = 4; ///< reference points each way: five by five bear curved fits

int squaredDistance(QRgb a, QRgb b)
{
    const int red = qRed(a) - qRed(b);
    const int green = qGreen(a) - qGreen(b);
    const int blue = qBlue(a) - qBlue(b);
    return red * red + green * green + blue * blue;
}

/// The day's colours by number, and the number of every colour that occurs.
struct Colors {
    explicit Colors(const QImage& picture)
    {
        std::unordered_map<QRgb, std::size_t> counts;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                ++counts[picture.pixel(x, y) | 0xFF000000U];
        std::vector<std::pair<std::size_t, QRgb>> frequent;
        for (const auto& [color, count] : counts)
            frequent.emplace_back(count, color);
        std::sort(frequent.rbegin(), frequent.rend());
        // What would suffer most is kept next: a rare red light must not turn brown among the many
        // shades of a smooth edge.
        std::vector<int> distances(frequent.size(), std::numeric_limits<int>::max());
        while (!frequent.empty() && kept.size() < mostColors) {
            const auto loss = [&](std::size_t i) {
                return std::sqrt(static_cast<double>(frequent[i].first)) * distances[i];
            };
            std::size_t worst = 0;
            for (std::size_t i = 1; i < frequent.size(); ++i)
                if (loss(i) > loss(worst))
                    worst = i;
            if (distances[worst] == 0)
                break;
            kept.push_back(frequent[worst].second);
            for (std::size_t i = 0; i < frequent.size(); ++i)
                if (const int distance = squaredDistance(frequent[i].second, kept.back());
                    distance < distances[i]) {
                    distances[i] = distance;
                    numbers[frequent[i].second] = static_cast<std::uint8_t>(kept.size());
                }
        }
    }
    [[nodiscard]] std::uint8_t numberOf(QRgb color) const
    {
        return numbers.at(color | 0xFF000000U);
    }
    std::vector<QRgb> kept;
    std::unordered_map<QRgb, std::uint8_t> numbers; ///< from 1 on
};

/// What another scheme shows where each of the day's colours stands.
Palette meanColors(const Colors& colors, const QImage& day, const QImage& other)
{
    struct Sum {
        std::uint64_t red = 0, green = 0, blue = 0, count = 0;
    };
    std::vector<Sum> sums(colors.kept.size() + 1);
    for (int y = 0; y < day.height(); ++y)
        for (int x = 0; x < day.width(); ++x) {
            const std::uint8_t number = colors.numberOf(day.pixel(x, y));
            if ((day.pixel(x, y) | 0xFF000000U) != colors.kept[number - 1U])
                continue; // a blend that had to give way would only dull the colour
            const QRgb color = other.pixel(x, y);
            Sum& sum = sums[number];
            sum.red += static_cast<unsigned>(qRed(color));
            sum.green += static_cast<unsigned>(qGreen(color));
            sum.blue += static_cast<unsigned>(qBlue(color));
            ++sum.count;
        }
    Palette palette;
    for (const Sum& sum : sums) {
        const auto mean = [&](std::uint64_t total) {
            return static_cast<std::uint8_t>(sum.count > 0 ? total / sum.count : 0);
        };
        palette.push_back({mean(sum.red), mean(sum.green), mean(sum.blue)});
    }
    return palette;
}
} // namespace

Result<std::string> kapFromPictures(const SchemePictures& pictures, const ViewFrame& frame,
                                    const std::string& name, const std::string& number)
{
    const QSize size(frame.width, frame.height);
    if (size.isEmpty() || pictures.day.size() != size || pictures.dusk.size() != size
        || pictures.night.size() != size)
        return failure(Error::Code::OutOfRange, "there is no picture of the view's size");
    if (frame.view.rotate() != 0)
        return failure(Error::Code::Unsupported, "a raster chart is drawn north up");

    const Colors colors(pictures.day);
    KapDescription chart;
    chart.name = name;
    chart.number = number;
    chart.width = frame.width;
    chart.height = frame.height;
    chart.depth = 7;
    chart.dotsPerInch = static_cast<int>(frame.view.dpi() * frame.pixelsPerPoint);
    chart.scale = frame.view.scale();
    chart.projectionParameter = frame.positionOf({frame.width / 2.0, frame.height / 2.0}).latitude;
    chart.colors = meanColors(colors, pictures.day, pictures.day);
    chart.day = chart.colors;
    chart.dusk = meanColors(colors, pictures.day, pictures.dusk);
    chart.night = meanColors(colors, pictures.day, pictures.night);
    // A chart's pixel numbers stand for the middles of its pixels, a frame's for their corners.
    const auto positionOf = [&](double x, double y) {
        return frame.positionOf({x + 0.5, y + 0.5});
    };
    for (int row = 0; row <= gridSteps; ++row)
        for (int column = 0; column <= gridSteps; ++column) {
            const int x = column * (frame.width - 1) / gridSteps;
            const int y = row * (frame.height - 1) / gridSteps;
            const Position place = positionOf(x, y);
            chart.referencePoints.push_back(
                {static_cast<double>(x), static_cast<double>(y), place.latitude, place.longitude});
        }
    for (const auto& [x, y] : std::array<std::pair<double, double>, 4>{
             {{0, 0}, {frame.width, 0}, {frame.width, frame.height}, {0, frame.height}}})
        chart.border.push_back(frame.positionOf({x, y}));
    return writeKap(chart, [&](int row, std::span<std::uint8_t> numbers) {
        for (std::size_t x = 0; x < numbers.size(); ++x)
            numbers[x] = colors.numberOf(pictures.day.pixel(static_cast<int>(x), row));
    });
}

} // namespace kelvox
