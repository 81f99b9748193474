#include "painting/RasterExport.h"

#include "base/File.h"
#include "demo/DemoCharts.h"
#include "demo/DemoGround.h"
#include "painting/ChartPainter.h"
#include "painting/PainterCanvas.h"
#include "presentation/S52Lookup.h"
#include "presentation/S52Render.h"
#include "s57/S57CellLoader.h"
#include "support/GraphicsTest.h"
#include "support/TemporaryFolder.h"

namespace kelvox {
namespace {

constexpr int window = 120; ///< pixels

/// Which pixels are land.
struct Land {
    Land(const QImage& picture, QRgb land)
        : width(picture.width())
    {
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                pixels.push_back((picture.pixel(x, y) | 0xFF000000U) == land);
    }
    [[nodiscard]] bool at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y * width + x)];
    }
    int width;
    std::vector<bool> pixels;
};

/// How well one picture's coast falls on the other's in a window: the fewest pixels that differ
/// when it is moved by up to two pixels, and by up to six. A straight coast slides along itself, so
/// the best place alone says nothing.
struct Fit {
    int near = window * window;
    int anywhere = window * window;
};

Fit fit(const Land& a, const Land& b, int left, int top)
{
    constexpr int reach = 6;
    Fit result;
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            int different = 0;
            for (int y = top; y < top + window; ++y)
                for (int x = left; x < left + window; ++x)
                    different += a.at(x, y) != b.at(x + dx, y + dy);
            result.anywhere = std::min(result.anywhere, different);
            if (std::abs(dx) <= 2 && std::abs(dy) <= 2)
                result.near = std::min(result.near, different);
        }
    return result;
}

class RasterExport : public GraphicsTest { };

TEST_F(RasterExport, ShowsEachFeatureWhereTheCellsShowIt)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(DemoCharts::write(folder.path()));
    const ChartPainter painter(pool);
    ChartScene cells;
    // Names and figures are placed for each view anew; the land beneath them is what is compared.
    cells.settings.showMarkNames = cells.settings.showPlaceNames = false;
    cells.settings.showElevations = cells.settings.showSoundings = false;
    for (const char* cell : {"KV4K0101.000", "KV3K0010.000"}) {
        const auto loaded = S57CellLoader::load(folder.path() / cell);
        ASSERT_TRUE(loaded);
        S52Lookup::setS52Lupts(*loaded->cell, library);
        cells.cells.push_back(std::make_shared<const CellGeometry>(loaded->cell));
    }
    const Position harbour = DemoGround::position({0, 0});
    const ViewFrame drawn = ViewFrame::at(harbour, 40'000, 0, 1600, 1200, 1.5, 66);
    SchemePictures pictures;
    for (const auto& [scheme, picture] :
         {std::pair{1, &pictures.day}, {2, &pictures.dusk}, {3, &pictures.night}}) {
        presentation.setColorTable(scheme);
        cells.portrayal = presentation.portrayal();
        ASSERT_FALSE(cells.portrayal->colors.empty());
        *picture = painter.paint(cells, drawn);
    }
    const auto bytes = kapFromPictures(pictures, drawn, "KELMOUTH", "1");
    ASSERT_TRUE(bytes) << bytes.error().message;
    const auto path = folder.path() / "kelmouth.kap";
    ASSERT_TRUE(writeFileAtomically(path, *bytes));
    auto chart = std::make_shared<BSBChart>();
    ASSERT_TRUE(chart->loadHeader(path));
    ASSERT_TRUE(chart->loadChart());
    EXPECT_EQ(chart->scale(), 40'000);

    // Another scale, another place, turned: nothing of the first picture's grid is left. The
    // raster reaches past every corner of it.
    const ViewFrame seen =
        ViewFrame::at(DemoGround::position({300, 300}), 28'000, 25, 800, 600, 1, 66);
    presentation.setColorTable(1);
    cells.portrayal = presentation.portrayal();
    ChartScene raster;
    raster.rasters = {chart};
    raster.palette = PaletteScheme::Day;
    raster.portrayal = cells.portrayal;
    const QRgb land = toQColor(cells.portrayal->colors.at("LANDA").color).rgb();
    const Land byCells(painter.paint(cells, seen), land);
    const Land byRaster(painter.paint(raster, seen), land);

    int windows = 0;
    for (int top = 10; top + window + 10 <= seen.height; top += window / 2)
        for (int left = 10; left + window + 10 <= seen.width; left += window / 2) {
            int count = 0;
            for (int y = top; y < top + window; ++y)
                for (int x = left; x < left + window; ++x)
                    count += byCells.at(x, y);
            if (count < window * window / 4 || count > window * window * 3 / 4)
                continue; // too little coast to tell
            // Three pixels off along a coast of the window's length would cost three times that.
            const Fit found = fit(byCells, byRaster, left, top);
            EXPECT_LE(found.near, found.anywhere + window) << left << " " << top;
            ++windows;
        }
    EXPECT_GE(windows, 3);
}

} // namespace
} // namespace kelvox
