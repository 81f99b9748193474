// What belongs to the chart and needs no window: typed positions, the views before, the graticule,
// the names on the charts, the list and the worth of charts, crashes and stalls.

#include "app/Application.h"
#include "app/ChartNotesLayer.h"
#include "app/ChartsModel.h"
#include "app/CrashReport.h"
#include "app/GraticuleLayer.h"
#include "app/PlaceIndex.h"
#include "app/TypedPosition.h"
#include "app/ViewHistory.h"
#include "base/File.h"
#include "s57/S57CellLoader.h"
#include "support/SmallCells.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QTimer>

#include <csignal>

namespace kelvox {
namespace {

TEST(TypedPosition, IsReadInTheManyWaysThatPeopleWrite)
{
    const Position wanted{.longitude = -71.0155, .latitude = 42.33583333};
    for (const char* typed :
         {"42 20.15N 71 0.93W", "42°20.150'N 71°00.930'W", "42 20.15 n, 71 00.93 w",
          "N42.20.150 W071.00.930", "42.3358333, -71.0155", "42.3358333 -71.0155",
          "42°20'09\"N 71°00'55.8\"W", "N 42 20 09 W 71 0 55.8"}) {
        const auto read = parseTypedPosition(typed);
        ASSERT_TRUE(read) << typed;
        EXPECT_NEAR(read->latitude, wanted.latitude, 1e-6) << typed;
        EXPECT_NEAR(read->longitude, wanted.longitude, 1e-6) << typed;
    }
    const auto south = parseTypedPosition("-33.5 18.25");
    ASSERT_TRUE(south);
    EXPECT_DOUBLE_EQ(south->latitude, -33.5);
    for (const char* other : {"", "42", "Boston", "91N 10E", "10N 181E", "42 60.1N 71 0W",
                              "10E 20N", "1 2 3", "1 2 3 4 5 6 7 8", "12.5N", "4..2 5"})
        EXPECT_FALSE(parseTypedPosition(other)) << other;
}

TEST(ViewHistory, GoesBackAndForthAndForgetsWhatLayAhead)
{
    const auto view = [](double longitude, int scale) {
        return ViewHistory::View{{.longitude = longitude, .latitude = 50}, scale, 0, 1};
    };
    ViewHistory history;
    EXPECT_FALSE(history.back());
    history.visit(view(0, 50'000));
    history.visit(view(0.05, 50'000)); // a nudge is no other view
    history.visit(view(2, 50'000));
    history.visit(view(2, 25'000));
    EXPECT_EQ(history.back()->scale, 50'000);
    EXPECT_DOUBLE_EQ(history.back()->center.longitude, 0.05);
    EXPECT_FALSE(history.back());
    EXPECT_DOUBLE_EQ(history.forward()->center.longitude, 2);
    history.visit(view(2, 50'000)); // where it went: nothing new
    EXPECT_TRUE(history.canGoForward());
    history.visit(view(-179.99, 50'000));
    EXPECT_FALSE(history.canGoForward());
    history.visit(view(179.99, 50'000)); // across the date line is near
    EXPECT_DOUBLE_EQ(history.back()->center.longitude, 2);
}

TEST(Graticule, LinesStandAtRoundStepsWithTheFiguresTheyNeed)
{
    EXPECT_DOUBLE_EQ(GraticuleLayer::stepFor(0.9), 1);
    EXPECT_DOUBLE_EQ(GraticuleLayer::stepFor(1.5 / 60), 2.0 / 60);
    EXPECT_DOUBLE_EQ(GraticuleLayer::stepFor(90), 30);
    EXPECT_EQ(GraticuleLayer::figure(-71, 1, "EW"), QStringLiteral("71°W"));
    EXPECT_EQ(GraticuleLayer::figure(42 + 19.99999999 / 60, 5.0 / 60, "NS"),
              QStringLiteral("42°20'N"));
    EXPECT_EQ(GraticuleLayer::figure(42 + 20.5 / 60, 0.5 / 60, "NS"), QStringLiteral("42°20.5'N"));
    EXPECT_EQ(GraticuleLayer::figure(181, 1, "EW"), QStringLiteral("179°W"));
}

std::shared_ptr<const CellGeometry> smallCell()
{
    const SmallCell cell;
    return std::make_shared<const CellGeometry>(
        S57CellLoader::loadBytes(*cell.writer.bytes())->cell);
}

TEST(PlaceIndex, FindsNamesWithoutRegardToCaseOnceForCellsOfAllScales)
{
    PlaceIndex index;
    const PlaceIndex::Cells cells{smallCell(), smallCell()};
    ASSERT_EQ(index.missing(cells).size(), 2U);
    for (const auto& cell : cells)
        index.add(cell, PlaceIndex::placesOf(*cell));
    EXPECT_TRUE(index.missing(cells).empty());
    const Position near{.longitude = 10.5, .latitude = 59.5};
    const auto found = index.find("GRØ", near, 10);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].name, "Grønn");
    EXPECT_NEAR(found[0].position.longitude, 10.48, 1e-5);
    EXPECT_NEAR(found[0].position.latitude, 59.5, 1e-5);
    EXPECT_EQ(index.missing({cells[0]}).size(), 0U);
    EXPECT_EQ(index.find("grønn", near, 10).size(), 1U) << "the other cell is forgotten";
    EXPECT_TRUE(index.find("rødt", near, 10).empty());
}

ChartRecords threeCharts()
{
    const auto make = [](const char* name, const char* title, int scale, const Rect& bounds) {
        ChartRecord chart;
        chart.path = std::string("/charts/") + name + ".000";
        chart.name = name;
        chart.title = title;
        chart.scale = scale;
        chart.edition = scale == 12'000 ? "10" : "9";
        chart.bounds = bounds;
        return chart;
    };
    ChartRecord broken;
    broken.path = "/charts/X.000";
    broken.problem = "no cell";
    ChartRecord harbour = make("KV10", "Harbour", 12'000, {10, 50, 11, 51});
    harbour.coverage = {{{10, 50}, {10.5, 50}, {10.5, 51}, {10, 51}}};
    return {std::make_shared<const ChartRecord>(harbour),
            std::make_shared<const ChartRecord>(make("KV9", "Coast", 90'000, {9, 49, 12, 52})),
            std::make_shared<const ChartRecord>(make("KV2", "Fiji", 50'000, {179, -20, 181, -16})),
            std::make_shared<const ChartRecord>(broken)};
}

TEST(ChartsModel, SortsByValueAndSearchesNameAndTitle)
{
    ChartsModel model;
    model.setRecords(threeCharts());
    EXPECT_EQ(model.rowCount(), 4);
    model.sort(ChartsModel::Name, Qt::AscendingOrder);
    model.setFilter(QStringLiteral("kv"));
    ASSERT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.record(0)->name, "KV2");
    EXPECT_EQ(model.record(2)->name, "KV10") << "ten after nine";
    model.sort(ChartsModel::Edition, Qt::DescendingOrder);
    EXPECT_EQ(model.record(0)->name, "KV10");
    EXPECT_EQ(model.rowOf("/charts/KV10.000"), 0);
    EXPECT_EQ(model.rowOf("/charts/X.000"), -1) << "it is filtered out";
    model.setFilter(QStringLiteral("coast"));
    EXPECT_EQ(model.index(0, ChartsModel::Scale).data().toString(), QStringLiteral("1:90,000"));
}

TEST(ChartNotes, TheFinestChartCountsWhereItsCoverageLies)
{
    const auto charts = threeCharts();
    const auto at = [&](double longitude, double latitude) {
        return ChartNotesLayer::finestScaleAt(charts,
                                              {.longitude = longitude, .latitude = latitude});
    };
    EXPECT_EQ(at(10.25, 50.5), 12'000);
    EXPECT_EQ(at(10.75, 50.5), 90'000) << "inside the box of the harbour, not in what it covers";
    EXPECT_EQ(at(-179.5, -18), 50'000) << "beyond the date line";
    EXPECT_FALSE(at(20, 50));
}

TEST(CrashReport, IsLeftForTheNextStartAndTakenOnce)
{
    const TemporaryFolder folder;
    EXPECT_FALSE(CrashReport::takeLast(folder.path()));
    EXPECT_EXIT(
        {
            CrashReport::install(folder.path(), "Kelvox 9.9");
            std::raise(SIGSEGV);
        },
        testing::KilledBySignal(SIGSEGV), "");
    const auto report = CrashReport::takeLast(folder.path());
    ASSERT_TRUE(report);
    const auto words = readFile(*report, 1U << 20U);
    ASSERT_TRUE(words);
    EXPECT_TRUE(words->starts_with("Kelvox 9.9\nsignal 11\n"));
    EXPECT_GT(words->size(), 60U) << "and where it was";
    EXPECT_FALSE(CrashReport::takeLast(folder.path()));
}

class Busy final : public QObject {
public:
    explicit Busy(std::function<void()> work)
        : m_work(std::move(work))
    {
    }
    bool event(QEvent*) override
    {
        m_work();
        return true;
    }

private:
    std::function<void()> m_work;
};

TEST(Application, TellsEventsThatHoldUpTheWindowButNotDialogs)
{
    auto& application = static_cast<Application&>(*QApplication::instance());
    std::vector<QByteArray> stalls;
    using std::chrono::milliseconds;
    application.setStallHandler(
        [&](milliseconds duration, milliseconds working, const QByteArray& name) {
            EXPECT_GT(duration, Application::longestStall);
            EXPECT_LE(working, duration + milliseconds(1));
            stalls.push_back(name);
        });
    const auto work = [] {
        const auto end = std::chrono::steady_clock::now() + 2 * Application::longestStall;
        while (std::chrono::steady_clock::now() < end) { }
    };
    Busy busy(work);
    busy.setObjectName(QStringLiteral("slow"));
    QEvent event(QEvent::User);
    QApplication::sendEvent(&busy, &event);
    ASSERT_EQ(stalls.size(), 1U);
    EXPECT_TRUE(stalls[0].endsWith("slow"));

    stalls.clear();
    Busy dialog([&] {
        QEventLoop loop;
        QTimer::singleShot(2 * Application::longestStall, &loop, &QEventLoop::quit);
        loop.exec();
    });
    QApplication::sendEvent(&dialog, &event);
    application.setStallHandler({});
    EXPECT_TRUE(stalls.empty()) << "waiting in a loop of its own holds up nothing";
}

} // namespace
} // namespace kelvox
