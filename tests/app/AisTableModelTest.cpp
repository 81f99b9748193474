#include "app/panels/AisTableModel.h"
#include "app/LiveScene.h"
#include "support/AISWriter.h"

#include <gtest/gtest.h>

#include <QItemSelectionModel>
#include <QTableView>

namespace kelvox {

namespace {
struct Table {
    LiveScene scene;
    std::unique_ptr<AisTableModel> model;

    Table()
    {
        scene.start();
        model = std::make_unique<AisTableModel>(*scene.live);
    }
    void hear(unsigned mmsi, int speed = 100)
    {
        const RawReport report{.mmsi = mmsi,
                               .longitude = RawReport::raw(10.5),
                               .latitude = RawReport::raw(59.9),
                               .speed = speed};
        scene.live->gps().processRawSentence(report.classA().sentence());
    }
    void reload()
    {
        scene.live->ais().goneIdle();
        model->sync();
    }
    [[nodiscard]] std::string cell(int row, int column) const
    {
        return model->data(model->index(row, column), Qt::DisplayRole).toString().toStdString();
    }
};

TEST(AisTableModel, TheSelectionStaysWithItsTargetWhileOthersComeAndGo)
{
    Table table;
    QTableView view;
    view.setModel(table.model.get());
    for (unsigned i = 0; i < 100; ++i)
        table.hear(211'000'000U + 10 * i);
    table.reload();
    table.model->sort(0, Qt::AscendingOrder);
    table.scene.live->selectTarget(211'000'500);
    EXPECT_EQ(table.cell(table.model->selectedIndex().row(), 0), "~211000500");
    for (unsigned i = 0; i < 50; ++i)
        table.hear(211'000'001U + 10 * i); // in between
    table.reload();
    EXPECT_EQ(table.model->rowCount(), 150);
    EXPECT_EQ(table.cell(table.model->selectedIndex().row(), 0), "~211000500");
    table.scene.live->ais().model().removePosition(211'000'000);
    table.reload();
    EXPECT_EQ(table.model->rowCount(), 149);
    EXPECT_EQ(table.cell(table.model->selectedIndex().row(), 0), "~211000500");
    table.scene.live->ais().model().removePosition(211'000'500);
    table.reload();
    EXPECT_FALSE(table.model->selectedIndex().isValid());
}

TEST(AisTableModel, ARowWhoseTargetIsGoneIsEmptyUntilTheNextReload)
{
    Table table;
    table.hear(211'000'001);
    table.reload();
    ASSERT_EQ(table.model->rowCount(), 1);
    table.scene.live->ais().model().removePosition(211'000'001);
    EXPECT_EQ(table.cell(0, 0), "");
    EXPECT_EQ(table.model->target(table.model->index(0, 0)), nullptr);
}

TEST(AisTableModel, SearchAndSpeedColumnsShowWhatTheTargetsSay)
{
    Table table;
    table.hear(211'000'001, 64);
    table.hear(257'000'002, 120);
    table.reload();
    table.model->search(QStringLiteral("2570"));
    ASSERT_EQ(table.model->rowCount(), 1);
    int speedColumn = -1;
    for (int i = 0; i < table.model->columnCount(); ++i)
        if (table.cell(0, i).starts_with("12.0"))
            speedColumn = i;
    EXPECT_GE(speedColumn, 0);
    table.model->search({});
    table.model->sort(speedColumn, Qt::AscendingOrder);
    EXPECT_EQ(table.cell(0, 0), "~211000001");
    table.model->sort(speedColumn, Qt::DescendingOrder);
    EXPECT_EQ(table.cell(0, 0), "~257000002");
}
} // namespace
} // namespace kelvox
