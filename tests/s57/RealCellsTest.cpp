#include "s57/CellGeometry.h"
#include "s57/S57CellLoader.h"
#include "s57/S57ObjectCatalogue.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelvox {

TEST(RealCells, HoldWhatAnotherReaderCounts)
{
    // Counted with GDAL 3.6.2's S57 driver, without updates and with.
    using namespace s57class;
    struct {
        const char* file;
        int updates;
        int code;
        long before, after;
    } const rows[] = {
        {"enc/US3DE01M/US3DE01M.000", 7, DEPARE, 182, 182},
        {"enc/US3DE01M/US3DE01M.000", 7, LIGHTS, 54, 56},
        {"enc/US3DE01M/US3DE01M.000", 7, SOUNDG, 31, 33},
        {"enc/US5BOSCD/ENC_ROOT/US5BOSCD/US5BOSCD.000", 5, OBSTRN, 52, 54},
        {"enc/US5BOSCD/ENC_ROOT/US5BOSCD/US5BOSCD.000", 5, WRECKS, 19, 20},
        {"enc/US5BOSCD/ENC_ROOT/US5BOSCD/US5BOSCD.000", 5, DEPCNT, 327, 327},
        {"enc/US2AK5FM/US2AK5FM.000", 0, DEPCNT, 385, 385},
    };
    for (const auto& row : rows) {
        const auto path = realData(row.file);
        if (!path)
            GTEST_SKIP();
        for (const auto updates : {S57CellLoader::Updates::Leave, S57CellLoader::Updates::Apply}) {
            const bool apply = updates == S57CellLoader::Updates::Apply;
            const auto loaded = S57CellLoader::load(*path, updates);
            ASSERT_TRUE(loaded) << row.file;
            EXPECT_TRUE(loaded->notes.empty());
            EXPECT_EQ(loaded->updatesApplied, apply ? row.updates : 0);
            EXPECT_EQ(std::ranges::count(loaded->cell->s57Features(), row.code,
                                         [](const auto& feature) { return feature->objectCode(); }),
                      apply ? row.after : row.before)
                << row.file << " " << row.code;
            // Every line and area has edges to be drawn along.
            const CellGeometry geometry(loaded->cell);
            for (std::size_t i = 0; i < loaded->cell->s57Features().size(); ++i) {
                const int kind = loaded->cell->s57Features()[i]->geometry();
                const bool drawn = kind == S57Feature::line || kind == S57Feature::area;
                EXPECT_EQ(geometry.uses(i).empty(), !drawn) << i;
            }
        }
    }
}

} // namespace kelvox
