#include "s57/S57CellLoader.h"
#include "support/RealData.h"

#include <gtest/gtest.h>

namespace kelvox {

TEST(RealCells, HoldWhatAnotherReaderCounts)
{
    GTEST_SKIP();
}

} // namespace kelvox
