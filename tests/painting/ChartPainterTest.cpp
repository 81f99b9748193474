// Pictures of several cells, with the library as it is shipped.

#include "painting/ChartPainter.h"
#include "painting/PainterCanvas.h"
#include "presentation/S52Lookup.h"
#include "s57/S57CellLoader.h"
#include "s57/S57CellWriter.h"
#include "support/GraphicsTest.h"

namespace kelvox {

namespace {
S57CellWriter::Line box(double west, double east)
{
    return {{west, 59.49}, {east, 59.49}, {east, 59.51}, {west, 59.51}};
}

class TwoCells : public GraphicsTest {
protected:
    TwoCells()
    {
        for (S57CellWriter* writer : {&west, &east}) {
            const bool isWest = writer == &west;
            const auto area = isWest ? box(10.48, 10.5) : box(10.5, 10.52);
            writer->addArea("M_COVR", area, {{"CATCOV", "1"}});
            writer->addArea("DEPARE", area, {{"DRVAL1", "10"}, {"DRVAL2", "20"}});
        }
    }
    std::shared_ptr<const CellGeometry> geometryOf(const S57CellWriter& writer) const
    {
        auto cell = S57CellLoader::loadBytes(*writer.bytes())->cell;
        S52Lookup::setS52Lupts(*cell, library);
        return std::make_shared<CellGeometry>(std::move(cell));
    }
    /// One behind the other, the border in the middle of the picture.
    QImage paint(std::initializer_list<const S57CellWriter*> cells, float rotation = 0)
    {
        ChartScene scene;
        for (const auto* writer : cells)
            scene.cells.push_back(geometryOf(*writer));
        scene.portrayal = presentation.portrayal();
        frame = ViewFrame::at(Position{10.5, 59.5}, 10'000, rotation, 200, 160, 1, 66);
        return ChartPainter(pool).paint(scene, frame);
    }
    [[nodiscard]] QRgb color(const char* token) const
    {
        return toQColor(*presentation.portrayal()->color(token)).rgb();
    }
    int count(const QImage& picture, QRect where, QRgb other)
    {
        int pixels = 0;
        for (int y = where.top(); y <= where.bottom(); ++y)
            for (int x = where.left(); x <= where.right(); ++x)
                pixels += picture.pixel(x, y) != other;
        return pixels;
    }

    S57CellWriter west{{.name = "KV5TEST1"}};
    S57CellWriter east{{.name = "KV5TEST2"}};
    ViewFrame frame;
};
} // namespace

TEST_F(TwoCells, MeetWithoutSeamOrHole)
{
    for (const float rotation : {0.0F, 27.0F})
        EXPECT_EQ(count(paint({&west, &east}, rotation), {20, 20, 160, 120}, color("DEPDW")), 0);
}

TEST_F(TwoCells, NeitherCutsAMarkOfTheOther)
{
    const S57CellWriter::Attributes buoy{{"BOYSHP", "2"}, {"COLOUR", "3"}, {"CATLAM", "2"}};
    west.addPoint("BOYLAT", {10.49998, 59.5}, buoy);
    const QRect beyond{101, 60, 20, 30};
    const int above = count(paint({&west, &east}), beyond, color("DEPDW"));
    EXPECT_GT(above, 10);
    EXPECT_EQ(count(paint({&east, &west}), beyond, color("DEPDW")), above)
        << "the buoy stands a hair inside its cell; its picture reaches over the border";
}

TEST_F(TwoCells, TheLowerOneShowsNoMarksBeneathTheUpper)
{
    S57CellWriter coarse({.name = "KV3TEST1", .compiledScale = 90'000});
    coarse.addArea("M_COVR", box(10.4, 10.6), {{"CATCOV", "1"}});
    coarse.addPoint("BOYLAT", {10.4999, 59.5}, {{"OBJNAM", "Kelp"}, {"BOYSHP", "2"}});
    coarse.addSoundings({{{10.4995, 59.5005}, 12}, {{10.502, 59.5}, 9}});
    const QRect westHalf{0, 0, 99, 160};
    const QRect eastHalf{101, 0, 99, 160};
    const QImage picture = paint({&west, &coarse});
    EXPECT_EQ(count(picture, westHalf, color("DEPDW")), 0);
    EXPECT_GT(count(picture, eastHalf, color("DEPDW")), 5) << "its sounding outside stays";
}

TEST_F(TwoCells, NothingJumpsWhileTheChartIsPanned)
{
    for (int i = 0; i < 120; ++i) {
        const Position place{10.48 + (i * 37 % 200) * 2e-4, 59.49 + (i * 53 % 100) * 2e-4};
        const S57CellWriter::Attributes name{{"OBJNAM", "Rock " + std::to_string(i)}};
        (place.longitude < 10.5 ? west : east).addPoint("UWTROC", place, name);
        (place.longitude < 10.5 ? west : east)
            .addSoundings({{{place.longitude + 7e-5, place.latitude + 9e-5}, 3.0 + i % 20}});
    }
    ChartScene scene;
    scene.cells = {geometryOf(west), geometryOf(east)};
    scene.portrayal = presentation.portrayal();
    const auto first = ViewFrame::at(Position{10.5, 59.5}, 10'000, 12, 500, 400, 1, 66);
    ViewFrame moved = first;
    moved.center = first.viewPointOf({250 + 61, 200 - 43});
    const ChartPainter painter(pool);
    const QImage before = painter.paint(scene, first);
    const QImage after = painter.paint(scene, moved);
    EXPECT_EQ(before.copy(61, 0, 439, 357), after.copy(0, 43, 439, 357));
}

TEST_F(TwoCells, ANameGivesWayToOneFarOutsideThePicture)
{
    // Each name would stand to the right of its mark, where that of the mark before it may be: the
    // last goes by what the first left to the second.
    const auto first = ViewFrame::at(Position{10.51, 59.5}, 10'000, 0, 500, 400, 1, 66);
    for (const int x : {-200, -50, 100})
        (x < 0 ? west : east)
            .addPoint("UWTROC", first.view.pointToPosition(first.viewPointOf({x * 1.0, 200})),
                      {{"OBJNAM", "Northern Approach Channel Rock " + std::to_string(x)}});
    ChartScene scene;
    scene.cells = {geometryOf(west), geometryOf(east)};
    scene.portrayal = presentation.portrayal();
    ViewFrame moved = first;
    moved.center = first.viewPointOf({250 - 60, 200});
    const ChartPainter painter(pool);
    EXPECT_EQ(painter.paint(scene, first).copy(0, 0, 440, 400),
              painter.paint(scene, moved).copy(60, 0, 440, 400));
}

} // namespace kelvox
