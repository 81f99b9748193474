#include "chartview/ViewFrame.h"

#include <gtest/gtest.h>

namespace kelvox {

TEST(ViewFrame, PutsThePlaceInTheMiddleAndNorthUp)
{
    for (const float turn : {0.0F, 33.0F}) {
        const auto frame = ViewFrame::at(Position{10, 60}, 50'000, turn, 800, 600, 2, 66);
        const Point middle = frame.pixelOf(frame.view.positionToPoint({10, 60}));
        EXPECT_NEAR(middle.x, 400, 0.01);
        EXPECT_NEAR(middle.y, 300, 0.01);
        // Both ways to pixels agree, and so do pixels and places.
        const Point direct = frame.toPixels().map({10.01, S57Controller::mercatorOrdinate(60.01)});
        const Point stepwise = frame.pixelOf(frame.view.positionToPoint({10.01, 60.01}));
        EXPECT_NEAR(direct.x, stepwise.x, 1e-3);
        EXPECT_NEAR(direct.y, stepwise.y, 1e-3);
        const Point back = frame.pixelOf(frame.placeOf({123, 456}));
        EXPECT_NEAR(back.x, 123, 1e-3);
        EXPECT_NEAR(back.y, 456, 1e-3);
        EXPECT_TRUE(frame.coveredBox(0).contains({10, S57Controller::mercatorOrdinate(60)}));
    }
    const auto frame = ViewFrame::at(Position{10, 60}, 50'000, 0, 800, 600, 1, 66);
    EXPECT_LT(frame.pixelOf(frame.view.positionToPoint({10, 60.01})).y, 300);
    // A turn by 90 degrees counter-clockwise brings north to the left.
    const auto turned = ViewFrame::at(Position{10, 60}, 50'000, 90, 800, 600, 1, 66);
    EXPECT_LT(turned.pixelOf(turned.view.positionToPoint({10, 60.01})).x, 390);
}

TEST(ViewFrame, FitsABox)
{
    const Rect box{10, 59, 11, 60};
    const auto frame = ViewFrame::fitting(box, 800, 600, 1, 66);
    for (const Position corner : {Position{10, 59}, {11, 60}}) {
        const Point p = frame.pixelOf(frame.view.positionToPoint(corner));
        EXPECT_GT(p.x, 0);
        EXPECT_LT(p.x, 800);
        // The box fills the height but for a little air.
        EXPECT_NEAR(p.y, corner.latitude == 60 ? 17 : 583, 3);
    }
}

} // namespace kelvox
