// kelvox-render: what kelvox-tool runs for its command render, apart from it so that nothing else
// there waits for a graphics library to load.

#include "base/Folders.h"
#include "base/Settings.h"
#include "painting/ChartPainter.h"
#include "painting/GribPainter.h"
#include "painting/RasterExport.h"
#include "presentation/S52Lookup.h"
#include "raster/RasterRenderer.h"
#include "s57/S57CellLoader.h"

#include <CLI/CLI.hpp>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <cstdio>
#include <mutex>
#include <optional>

namespace {
using namespace kelvox;

struct Options {
    std::string output;
    std::string size = "1024x768";
    std::string center;
    int scale = 0;
    float rotate = 0;
    std::string palette = "day";
    double dpi = S57Controller::maximumDpi;
    bool noUpdates = false;
    bool noBaseMap = false;
    std::string grib;
    std::vector<std::string> set; ///< key=value
    std::vector<std::string> paths;
};

struct PictureSize {
    int width;
    int height;
};

std::optional<PictureSize> parseSize(const std::string& text)
{
    constexpr int largest = 16'384;
    PictureSize size{};
    char end = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &size.width, &size.height, &end) != 2)
        return std::nullopt;
    const bool fits =
        size.width > 0 && size.height > 0 && size.width <= largest && size.height <= largest;
    return fits ? std::optional(size) : std::nullopt;
}

std::optional<Position> parsePosition(const std::string& text)
{
    Position position;
    char end = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf%c", &position.latitude, &position.longitude, &end) != 2)
        return std::nullopt;
    const bool onEarth = std::abs(position.latitude) < 90 && std::abs(position.longitude) <= 360;
    return onEarth ? std::optional(position) : std::nullopt;
}

int fail(const std::string& message)
{
    std::fprintf(stderr, "kelvox-tool: %s\n", message.c_str());
    return 1;
}

PaletteScheme schemeOf(const std::string& palette)
{
    return palette == "day" ? PaletteScheme::Day
        : palette == "dusk" ? PaletteScheme::Dusk
                            : PaletteScheme::Night;
}

/// The image of a chart that does not say where it lies, as large as fits.
QImage pictureOf(const BSBChart& chart, PaletteScheme scheme, PictureSize size)
{
    QImage picture(size.width, size.height, QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return picture;
    picture.fill(Qt::transparent);
    const Size image = chart.size();
    const double scale = std::min(size.width / image.width, size.height / image.height);
    const auto toImage = [&](Point at) {
        return Point{(at.x - size.width / 2.0) / scale + (image.width - 1) / 2,
                     (size.height / 2.0 - at.y) / scale + (image.height - 1) / 2};
    };
    auto* pixels = reinterpret_cast<std::uint32_t*>(picture.bits());
    const auto stride = static_cast<std::size_t>(picture.bytesPerLine()) / 4;
    RasterRenderer::draw(chart, toImage, scheme, RasterRenderer::Borders::Ignore,
                         {{pixels, stride * static_cast<std::size_t>(size.height)},
                          size.width,
                          size.height,
                          stride});
    return picture;
}

/// Raster charts among what was named and in its folders, finest first.
std::vector<std::shared_ptr<const BSBChart>> loadRasters(const Options& options,
                                                         std::vector<Error>& problems)
{
    std::vector<std::filesystem::path> paths;
    for (const std::filesystem::path named : options.paths) {
        std::error_code error;
        if (BSBChart::isNamedAsChart(named))
            paths.push_back(named);
        else if (std::filesystem::is_directory(named, error))
            for (const auto& entry : std::filesystem::recursive_directory_iterator(named, error))
                if (BSBChart::isNamedAsChart(entry.path()))
                    paths.push_back(entry.path());
    }
    std::ranges::sort(paths);
    std::vector<std::shared_ptr<const BSBChart>> charts;
    for (const auto& path : paths) {
        auto chart = std::make_shared<BSBChart>();
        auto loaded = chart->loadHeader(path);
        if (loaded)
            loaded = chart->loadChart();
        if (!loaded)
            problems.push_back(loaded.error());
        else if (!chart->hasCalibration() && options.paths.size() == 1
                 && BSBChart::isNamedAsChart(options.paths.front()))
            charts.push_back(std::move(chart)); // the picture alone was asked for
        else if (!chart->hasCalibration())
            problems.push_back({Error::Code::Unsupported, path.string() + ": has no place", 0});
        else
            charts.push_back(std::move(chart));
    }
    std::ranges::stable_sort(charts, {}, [](const auto& chart) { return chart->scale(); });
    return charts;
}

/// Loads all cells on the pool; those that fail are reported and left out.
std::vector<std::shared_ptr<const CellGeometry>> loadCells(const Options& options, WorkerPool& pool,
                                                           std::vector<Error>& problems)
{
    std::vector<std::filesystem::path> named(options.paths.begin(), options.paths.end());
    std::erase_if(named, BSBChart::isNamedAsChart);
    const auto paths = S57CellLoader::findCells(named, problems);
    std::vector<std::shared_ptr<const CellGeometry>> cells(paths.size());
    std::mutex mutex;
    pool.forEach(paths.size(), [&](std::size_t i) {
        using Updates = S57CellLoader::Updates;
        const auto loaded =
            S57CellLoader::load(paths[i], options.noUpdates ? Updates::Leave : Updates::Apply);
        if (loaded) {
            cells[i] = std::make_shared<CellGeometry>(loaded->cell);
        } else {
            const std::lock_guard lock(mutex);
            problems.push_back(loaded.error());
        }
    });
    std::erase(cells, nullptr);
    std::ranges::stable_sort(cells, {}, [](const auto& geometry) {
        return geometry->cell().parameters().compiledScale;
    });
    return cells;
}

/// What was set on the command line; nothing when a key is not known.
std::optional<PortrayalSettings> parseSettings(const std::vector<std::string>& assignments)
{
    MemorySettings settings;
    for (const std::string& text : assignments) {
        const auto equals = text.find('=');
        const std::string key = text.substr(0, equals);
        if (equals == std::string::npos
            || !std::ranges::count(PortrayalSettings::keys, key, &PortrayalSettings::Key::name)) {
            fail(text + " sets nothing; it can be one of");
            for (const auto& known : PortrayalSettings::keys)
                std::fprintf(stderr, "  %s: %s\n", std::string(known.name).c_str(),
                             std::string(known.meaning).c_str());
            return std::nullopt;
        }
        settings.set(key, text.substr(equals + 1));
    }
    return PortrayalSettings::fromSettings(settings);
}

int render(const Options& options, const PortrayalSettings& settings, PictureSize size,
           const std::optional<Position>& center)
{
    WorkerPool pool(std::max(std::thread::hardware_concurrency(), 2U) - 1);
    std::vector<Error> problems;
    ChartScene scene;
    scene.cells = loadCells(options, pool, problems);
    scene.rasters = loadRasters(options, problems);
    for (const auto& problem : problems)
        fail(problem.message);
    if (scene.rasters.size() == 1 && !scene.rasters.front()->hasCalibration()) {
        const QImage image = pictureOf(*scene.rasters.front(), schemeOf(options.palette), size);
        return image.save(QString::fromStdString(options.output))
            ? 0
            : fail(options.output + ": cannot be written");
    }
    if (!options.noBaseMap) {
        // Charts are drawn without it; but nothing else was asked for when none is named.
        if (auto map = BaseMap::load())
            scene.baseMap = std::make_shared<const BaseMap>(*std::move(map));
        else if (options.paths.empty())
            return fail(map.error().message);
    }
    if (scene.cells.empty() && scene.rasters.empty() && !(options.paths.empty() && scene.baseMap))
        return problems.empty() ? fail("no charts in what was named") : 1;
    const UnitsModel units;
    GribModel forecast(units);
    if (!options.grib.empty())
        if (const auto loaded = forecast.loadGrib(options.grib); !loaded)
            return fail(loaded.error().message);

    S52Model library({folders::applicationResources(), folders::userData()});
    S52Render presentation(library);
    for (const auto& sentence : library.report().sentences())
        std::fprintf(stderr, "kelvox-tool: %s\n", sentence.c_str());
    library.setSymbols(false, !settings.simplifiedSymbols);
    scene.settings = settings.render;
    const auto setPalette = [&](const std::string& palette) {
        const int table = palette == "dusk" ? 2 : palette == "night" ? 3 : 1;
        presentation.setColorTable(settings.lowLight ? settings.colorTable() : table);
        scene.portrayal = presentation.portrayal();
        scene.palette = schemeOf(palette);
        return !scene.portrayal->colors.empty();
    };
    if (!setPalette(options.palette))
        return fail("the presentation library has no colours for " + options.palette);
    pool.forEach(scene.cells.size(),
                 [&](std::size_t i) { S52Lookup::setS52Lupts(scene.cells[i]->cell(), library); });

    Rect bounds;
    for (const auto& geometry : scene.cells)
        bounds.include(geometry->cell().bounds());
    for (const auto& chart : scene.rasters)
        bounds.include(chart->extents());
    if (bounds.isEmpty() && !options.paths.empty())
        return fail("nothing to show in " + options.paths.front());
    if (bounds.isEmpty())
        bounds = {-180, -75, 180, 80}; // the world
    // View points count at most 66 to the inch; a finer output has several pixels for each.
    const auto dpi =
        static_cast<unsigned>(std::min<double>(options.dpi, S57Controller::maximumDpi));
    const double pixelsPerPoint = std::max(options.dpi / dpi, 1.0);
    ViewFrame frame = ViewFrame::fitting(bounds, size.width, size.height, pixelsPerPoint, dpi);
    const Position middle = center.value_or(frame.view.pointToPosition(frame.center));
    frame = ViewFrame::at(middle, options.scale > 0 ? options.scale : frame.view.scale(),
                          options.rotate, size.width, size.height, pixelsPerPoint, dpi);

    const ChartPainter chartPainter(pool);
    if (BSBChart::isNamedAsChart(options.output)) {
        SchemePictures pictures;
        for (const auto& [palette, picture] : {std::pair{"day", &pictures.day},
                                               {"dusk", &pictures.dusk},
                                               {"night", &pictures.night}})
            if (setPalette(palette))
                *picture = chartPainter.paint(scene, frame);
        const std::string name = std::filesystem::path(options.output).stem().string();
        const auto bytes = kapFromPictures(pictures, frame, name, name);
        if (!bytes)
            return fail(options.output + ": " + bytes.error().message);
        if (const auto written = writeFileAtomically(options.output, *bytes); !written)
            return fail(written.error().message);
        return problems.empty() ? 0 : 1;
    }
    QImage picture = chartPainter.paint(scene, frame);
    if (!options.grib.empty() && !picture.isNull()) {
        QPainter painter(&picture);
        paintGrib(painter, GribController(forecast), frame, GribLook::of(*scene.portrayal));
    }
    if (picture.isNull() || !picture.save(QString::fromStdString(options.output)))
        return fail(options.output + ": cannot be written");
    return problems.empty() ? 0 : 1;
}
} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Draw charts into a PNG", "kelvox-tool render");
    Options options;
    app.add_option("-o,--output", options.output,
                   "The picture: a PNG, or a raster chart (KAP) in all palettes")
        ->required();
    app.add_option("--size", options.size, "Width and height in pixels, e.g. 1024x768");
    app.add_option("--center", options.center, "LAT,LON in degrees; fits the charts without");
    app.add_option("--scale", options.scale, "Scale denominator; fits the charts without")
        ->check(CLI::Range(500, 200'000'000));
    app.add_option("--rotate", options.rotate, "Degrees to turn the chart counter-clockwise")
        ->check(CLI::Range(-360.0, 360.0));
    app.add_option("--palette", options.palette, "day, dusk or night")
        ->check(CLI::IsMember({"day", "dusk", "night"}));
    app.add_option("--dpi", options.dpi, "Pixels per inch of the picture")
        ->check(CLI::Range(10.0, 1200.0));
    app.add_flag("--no-updates", options.noUpdates, "Leave the update files beside a cell");
    app.add_flag("--no-basemap", options.noBaseMap, "Leave the coasts of the world away");
    app.add_option("--set", options.set, "A display setting, e.g. showSoundings=false")
        ->allow_extra_args(false);
    app.add_option("--grib", options.grib, "A weather file to draw over the charts");
    app.add_option("paths", options.paths, "Cells, catalogues, KAP files or folders");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    const auto size = parseSize(options.size);
    const auto center = options.center.empty() ? std::nullopt : parsePosition(options.center);
    if (!size || (!options.center.empty() && !center)) {
        std::fprintf(stderr, "kelvox-tool: %s is not understood\n",
                     size ? options.center.c_str() : options.size.c_str());
        return 2;
    }
    const auto settings = parseSettings(options.set);
    if (!settings)
        return 2;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR"))
        QLoggingCategory::setFilterRules(QStringLiteral("default.warning=false")); // of no use here
    const QGuiApplication gui(argc, argv);
    return render(options, *settings, *size, center);
}
