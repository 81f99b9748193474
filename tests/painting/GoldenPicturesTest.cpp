// The demo charts as they look, compared with pictures in the folder golden.
//
// A comparison that fails leaves golden-NAME.png beside the test program: what was expected, what
// came out, where they differ. When a change is meant, run the test with
// KELVOX_RENEW_GOLDEN=1, look at every picture that git then shows as changed, and commit those
// that are right.

#include "demo/DemoCharts.h"
#include "painting/ChartPainter.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "support/GraphicsTest.h"
#include "support/TemporaryFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QPainter>

namespace kelvox {

namespace {
constexpr int width = 320;
constexpr int height = 240;
constexpr int square =
    4; ///< pixels that are averaged: a letter may be smoothed otherwise elsewhere
constexpr int likeness = 40; ///< of 255, by which two averages may differ
constexpr int forgiven = 6; ///< squares

struct View {
    const char* name;
    Position center;
    int scale;
};

/// Marks the squares that differ and counts them.
int difference(const QImage& expected, const QImage& got, QImage& marks)
{
    const auto small = [](const QImage& image) {
        return image.scaled(image.width() / square, image.height() / square, Qt::IgnoreAspectRatio,
                            Qt::SmoothTransformation);
    };
    const QImage a = small(expected);
    const QImage b = small(got);
    marks = got.convertToFormat(QImage::Format_Grayscale8).convertToFormat(QImage::Format_RGB32);
    QPainter painter(&marks);
    int count = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QColor p = a.pixelColor(x, y);
            const QColor q = b.pixelColor(x, y);
            const int most = std::max({std::abs(p.red() - q.red()), std::abs(p.green() - q.green()),
                                       std::abs(p.blue() - q.blue())});
            if (most > likeness) {
                ++count;
                painter.fillRect(x * square, y * square, square, square, Qt::red);
            }
        }
    return count;
}

void leaveDifference(const QString& name, const QImage& expected, const QImage& got,
                     const QImage& marks)
{
    QImage sheet(3 * width, height, QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    painter.drawImage(0, 0, expected);
    painter.drawImage(width, 0, got);
    painter.drawImage(2 * width, 0, marks);
    painter.end();
    const QDir beside(QCoreApplication::applicationDirPath());
    sheet.save(beside.filePath(QStringLiteral("golden-") + name));
}
} // namespace

class GoldenPictures : public GraphicsTest { };

TEST_F(GoldenPictures, TheDemoChartsLookAsTheyDid)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(DemoCharts::write(folder.path()));
    std::vector<Error> problems;
    ChartScene scene;
    for (const auto& path : S57CellLoader::findCells({folder.path()}, problems)) {
        const auto cell = S57CellLoader::load(path)->cell;
        S52Lookup::setS52Lupts(*cell, library);
        scene.cells.push_back(std::make_shared<CellGeometry>(cell));
    }
    ASSERT_EQ(scene.cells.size(), 5U);
    std::ranges::stable_sort(scene.cells, {}, [](const auto& geometry) {
        return geometry->cell().parameters().compiledScale;
    });
    const bool renew = qEnvironmentVariableIsSet("KELVOX_RENEW_GOLDEN");
    const QDir golden(QStringLiteral(KELVOX_GOLDEN_DIR));
    if (renew)
        golden.mkpath(QStringLiteral("."));
    const ChartPainter painter(pool);
    const Position harbour{.longitude = -27.398, .latitude = 47.607};
    const View views[] = {{"harbour", harbour, 8'000},
                          {"approach", harbour, 30'000},
                          {"coast", harbour, 120'000},
                          {"overview", harbour, 700'000}};
    constexpr const char* schemes[] = {"day", "dusk", "night"};
    for (int scheme = 0; scheme < 3; ++scheme) {
        presentation.setColorTable(scheme + 1);
        scene.portrayal = presentation.portrayal();
        for (const auto& view : views)
            for (const float rotation : {0.0F, 40.0F}) {
                const auto frame =
                    ViewFrame::at(view.center, view.scale, rotation, width, height, 1, 66);
                const QImage got = painter.paint(scene, frame);
                const QString name =
                    QStringLiteral("%1-%2%3.png")
                        .arg(QLatin1String(view.name), QLatin1String(schemes[scheme]),
                             QLatin1String(rotation != 0 ? "-turned" : ""));
                if (renew) {
                    EXPECT_TRUE(got.save(golden.filePath(name), "PNG", 0));
                    continue;
                }
                const QImage expected(golden.filePath(name));
                ASSERT_EQ(expected.size(), got.size()) << name.toStdString();
                QImage marks;
                const int squares = difference(expected, got, marks);
                if (squares > forgiven)
                    leaveDifference(name, expected, got, marks);
                EXPECT_LE(squares, forgiven) << "see golden-" << name.toStdString();
            }
    }
}

} // namespace kelvox
