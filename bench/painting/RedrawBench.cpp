// What a redraw, a frame while dragging and a click cost on a chart of more than a million vertices
// at 1920x1080, beside drawing the same scene plainly through the painter and beside writing the
// same spans. All in one run, taken in turns, medians; ratios hold on a busy machine too.

#include "base/Folders.h"
#include "demo/DemoCharts.h"
#include "painting/ChartPainter.h"
#include "painting/PainterCanvas.h"
#include "presentation/ChartPick.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "support/TemporaryFolder.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>

namespace {
using namespace kelvox;

constexpr int width = 1920;
constexpr int height = 1080;

QPainterPath toPainterPath(const Path& path, bool closed)
{
    QPainterPath result;
    for (std::size_t i = 0; i < path.subPathCount(); ++i) {
        const auto line = path.subPath(i);
        result.moveTo(line.front().x, line.front().y);
        for (const Point p : line.subspan(1))
            result.lineTo(p.x, p.y);
        if (closed)
            result.closeSubpath();
    }
    return result;
}

/// Writes down the drawing of one feature after the other, with all its vertices.
class PlainDrawing final : public Canvas {
public:
    explicit PlainDrawing(const ViewFrame& frame)
        : m_frame(frame)
    {
    }
    void setFeature(const CellGeometry& geometry, std::size_t index)
    {
        m_geometry = &geometry;
        m_index = index;
        m_path = {};
    }
    void fillArea(const Path& /*rings*/, DisplayColor color) override
    {
        m_steps.push_back([path = wholePath(), color](QPainter& painter) {
            painter.fillPath(path, toQColor(color));
        });
    }
    void strokeLine(const Path& lines, const Stroke& stroke) override
    {
        QPen pen(toQColor(stroke.color), stroke.width, Qt::SolidLine, Qt::FlatCap, Qt::RoundJoin);
        if (stroke.pattern == LinePattern::Dash)
            pen.setDashPattern({12 / pen.widthF(), 6 / pen.widthF()});
        else if (stroke.pattern == LinePattern::Dott)
            pen.setDashPattern({2 / pen.widthF(), 4 / pen.widthF()});
        const bool isPoint =
            m_geometry->cell().s57Features()[m_index]->geometry() == S57Feature::point;
        m_steps.push_back([path = isPoint ? toPainterPath(lines, false) : wholePath(),
                           pen](QPainter& painter) { painter.strokePath(path, pen); });
    }
    void placeSymbol(const SymbolDrawing& symbol, Point at, float degrees) override
    {
        m_steps.push_back([&symbol, at, degrees](QPainter& painter) {
            painter.save();
            painter.translate(at.x, at.y);
            painter.rotate(degrees);
            painter.scale(1, -1);
            for (const S52Path& piece : symbol.paths) {
                const QPainterPath path = toPainterPath(piece.path, piece.fill);
                if (piece.fill)
                    painter.fillPath(path, toQColor(piece.color));
                else
                    painter.strokePath(path, QPen(toQColor(piece.color), piece.lineWidth));
            }
            painter.restore();
        });
    }
    void placeText(const TextFigure& figure, Point at) override
    {
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPixelSize(static_cast<int>(figure.size));
        m_steps.push_back([text = QString::fromStdString(figure.text + figure.subscript), font, at,
                           color = toQColor(figure.color)](QPainter& painter) {
            painter.setFont(font);
            painter.setPen(color);
            painter.drawText(QPointF(at.x, at.y), text);
        });
    }
    void draw(QImage& picture) const
    {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const auto& step : m_steps)
            step(painter);
    }
    [[nodiscard]] std::size_t size() const { return m_steps.size(); }

private:
    QPainterPath wholePath()
    {
        if (!m_path.isEmpty())
            return m_path;
        const auto& cell = m_geometry->cell();
        const Path points = cell.s57Features()[m_index]->buildEdgePath(cell, m_frame.view);
        Path pixels;
        for (std::size_t i = 0; i < points.subPathCount(); ++i) {
            pixels.moveTo(m_frame.pixelOf(points.subPath(i).front()));
            for (const Point p : points.subPath(i).subspan(1))
                pixels.lineTo(m_frame.pixelOf(p));
        }
        return m_path = toPainterPath(pixels, false);
    }
    const ViewFrame& m_frame;
    const CellGeometry* m_geometry = nullptr;
    std::size_t m_index = 0;
    QPainterPath m_path;
    std::vector<std::function<void(QPainter&)>> m_steps;
};

/// The spans of all areas, to be written again as fast as memory takes them.
class Spans final : public Canvas {
public:
    void fillArea(const Path& rings, DisplayColor color) override
    {
        const Rect box = rings.bounds();
        const auto row = [](double y) {
            return static_cast<std::size_t>(std::clamp(y, 0.0, static_cast<double>(height)));
        };
        const std::size_t begin = row(box.bottom) * width;
        const std::size_t stop = row(box.top + 1) * width;
        std::vector<std::uint32_t> mask(static_cast<std::size_t>(width) * height);
        AreaFiller().fill({mask.data(), width, height, width}, rings, {255, 255, 255, 255}, 0);
        const auto value = toQColor(color).rgb();
        for (std::size_t i = begin; i < stop;) {
            const std::size_t rowEnd = (i / width + 1) * width;
            std::size_t end = i;
            while (end < rowEnd && mask[end] != 0)
                ++end;
            if (end > i)
                m_spans.push_back({i, end - i, value});
            i = std::max(end, i + 1);
        }
    }
    void strokeLine(const Path& /*lines*/, const Stroke& /*stroke*/) override { }
    void placeSymbol(const SymbolDrawing& /*symbol*/, Point /*at*/, float /*degrees*/) override { }
    void placeText(const TextFigure& /*figure*/, Point /*at*/) override { }
    void write(std::vector<std::uint32_t>& pixels) const
    {
        for (const Span& span : m_spans)
            std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(span.from), span.count,
                        span.value);
    }

private:
    struct Span {
        std::size_t from;
        std::size_t count;
        std::uint32_t value;
    };
    std::vector<Span> m_spans;
};

struct Cost {
    double wall = 0; ///< milliseconds
    double processor = 0; ///< of all threads
};

class Case {
public:
    Case(const char* name, std::function<void()> work)
        : m_name(name)
        , m_work(std::move(work))
    {
    }
    void run()
    {
        const auto wall = std::chrono::steady_clock::now();
        const std::clock_t processor = std::clock();
        m_work();
        m_costs.push_back(
            {std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wall)
                 .count(),
             1000.0 * static_cast<double>(std::clock() - processor) / CLOCKS_PER_SEC});
    }
    [[nodiscard]] Cost median() const
    {
        std::vector<double> wall;
        std::vector<double> processor;
        for (const Cost& cost : m_costs) {
            wall.push_back(cost.wall);
            processor.push_back(cost.processor);
        }
        std::ranges::sort(wall);
        std::ranges::sort(processor);
        return {wall[wall.size() / 2], processor[processor.size() / 2]};
    }
    void print(const Cost& plain) const
    {
        const Cost cost = median();
        std::printf("%-28s %9.2f ms wall %9.2f ms cpu   wall ratio %.3f  cpu ratio %.3f\n", m_name,
                    cost.wall, cost.processor, cost.wall / plain.wall,
                    cost.processor / plain.processor);
    }

private:
    const char* m_name;
    std::function<void()> m_work;
    std::vector<Cost> m_costs;
};
} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const int repetitions = argc > 1 ? std::max(1, std::atoi(argv[1])) : 9;
    const bool plainToo = argc <= 2; // any second word leaves the plain drawing out
    const TemporaryFolder folder;
    if (!DemoCharts::write(folder.path(), DemoCharts::largest))
        return 1;
    WorkerPool pool(std::max(std::thread::hardware_concurrency(), 2U) - 1);
    S52Model library({folders::applicationResources(), folders::userData()});
    S52Render presentation(library);
    ChartScene scene;
    scene.portrayal = presentation.portrayal();
    if (scene.portrayal->symbols.empty()) {
        std::fputs("no presentation library beside the program: nothing would be drawn\n", stderr);
        return 1;
    }
    scene.settings.showAtAllScales = true;
    std::vector<Error> problems;
    std::shared_ptr<const CellGeometry> geometry;
    for (const auto& path : S57CellLoader::findCells({folder.path()}, problems)) {
        auto each = std::make_shared<const CellGeometry>(S57CellLoader::load(path)->cell);
        if (!geometry || each->vertexCount() > geometry->vertexCount())
            geometry = std::move(each);
    }
    S52Lookup::setS52Lupts(geometry->cell(), library);
    scene.cells.push_back(geometry);
    const ViewFrame frame =
        ViewFrame::fitting(geometry->cell().bounds(), width, height, 1, S57Controller::maximumDpi);

    PlainDrawing plain(frame);
    Spans spans;
    S57TextModel texts;
    const S57ObjectRender render(frame, *scene.portrayal, scene.settings);
    const auto found = geometry->featuresIn(frame.coveredBox(0));
    std::size_t soundings = 0;
    for (const std::uint32_t index : found) {
        plain.setFeature(*geometry, index);
        render.drawFeatures({.geometry = *geometry, .features = std::span(&index, 1)},
                            {plain, plain, texts});
        soundings += geometry->soundings(index).size();
        for (const auto& sounding : geometry->soundings(index)) {
            const Point at = frame.toPixels().map(Point{sounding.longitude, sounding.ordinate});
            TextFigure figure;
            figure.text = std::to_string(static_cast<int>(sounding.depth));
            plain.placeText(figure, at);
        }
    }
    render.drawFeatures({.geometry = *geometry, .features = found}, {spans, spans, texts});
    std::printf("%zu vertices, %zu features, %zu soundings, scale 1:%d, %zu plain steps\n",
                geometry->vertexCount(), found.size(), soundings, frame.view.scale(), plain.size());

    const ChartPainter painter(pool);
    const ChartPainter sharpPainter(pool); // keeps images of its own
    QImage canvas(width, height, QImage::Format_RGB32);
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * height);
    ViewFrame larger = frame;
    larger.width += 320;
    larger.height += 320;
    ViewFrame sharp =
        ViewFrame::fitting(geometry->cell().bounds(), width, height, 2, S57Controller::maximumDpi);
    const QImage picture = painter.paint(scene, larger);
    QImage window(width, height, QImage::Format_RGB32);
    int step = 0;
    std::mt19937 random(5);
    std::uniform_real_distribution<double> along(0, 1);
    std::size_t hits = 0;
    constexpr int clicks = 20;

    Case plainCase("plain painter", [&] {
        if (plainToo)
            plain.draw(canvas);
    });
    Case cases[] = {
        Case("redraw", [&] { canvas = painter.paint(scene, frame); }),
        Case("redraw, sharp screen", [&] { canvas = sharpPainter.paint(scene, sharp); }),
        Case("floor: the same spans", [&] { spans.write(pixels); }),
        Case("drag frame",
             [&] {
                 step = (step + 7) % 300;
                 QPainter(&window).drawImage(QPoint(-step, -step), picture);
             }),
        Case("20 clicks",
             [&] {
                 for (int i = 0; i < clicks; ++i)
                     hits += ChartPick::at(scene.cells, *scene.portrayal, scene.settings, frame,
                                           {along(random) * width, along(random) * height})
                                 .size();
             }),
    };
    for (int i = 0; i < repetitions; ++i) {
        plainCase.run();
        for (Case& each : cases)
            each.run();
    }
    const Cost reference = plainCase.median();
    plainCase.print(reference);
    for (const Case& each : cases)
        each.print(reference);
    std::printf("%zu hits\n", hits);
    return 0;
}
