#include "ais/AISPicture.h"
#include "ais/AISFixture.h"

#include <gtest/gtest.h>

namespace kelvox {
namespace {

using Shape = AISSymbol::Shape;

/// A chart of 1000 points a degree, one point a metre, in a view of 10 by 10 degrees.
struct Scene {
    ManualClock clock{std::chrono::sys_days{std::chrono::year{2024} / 5 / 1}};
    AISModel model{clock};
    AISView view{.pointAt =
                     [](Position p) {
                         return Point{p.longitude * 1000, p.latitude * 1000};
                     },
                 .pointsPerMetre = [](double) { return 1.0; },
                 .visible = {-5000, -5000, 5000, 5000}};
    AISDisplay display{.vectorMinutes = 6, .symbolLength = 20};
    AISPicture picture;

    /// A vessel with a course and a heading, at 0, 0.
    AISPosition& vessel(float sog, float cog, float hdg, AISClass equipment = AISClass::A)
    {
        auto& target = *model.aisPositionWithMMSI(static_cast<std::int32_t>(model.count()) + 1);
        target.setPositionOnGPS({.longitude = 0, .latitude = 0});
        target.setSog(sog);
        target.setCog(cog);
        target.setHdg(hdg);
        target.setEquipmentClass(equipment);
        return target;
    }
    /// Bow 225 m, stern 70 m, port 1 m, starboard 31 m.
    static void giveDimensions(AISPosition& target)
    {
        const AISDimensions ship{.bow = 225, .stern = 70, .port = 1, .starboard = 31};
        target.setLength(ship.lengthFeet());
        target.setBeam(ship.beamFeet());
        target.setReferencePoint(ship.referencePoint());
    }
    const AISSymbol& symbol()
    {
        picture.update(model, view, display, clock.now());
        return picture.symbols().front();
    }
    /// The targets that are drawn, in order.
    std::string drawn()
    {
        picture.update(model, view, display, clock.now());
        std::string text;
        for (const auto& symbol : picture.symbols())
            text += std::to_string(symbol.mmsi) + " ";
        return text;
    }
};

constexpr float unknown = static_cast<float>(noValue);

TEST(AISPicture, TrianglesPointAlongHeadingElseCourseElseUp)
{
    struct Case {
        float sog, cog, hdg;
        double rotation;
        Point bow; ///< of length 12: 0.6 of the symbol
        const char* why;
    };
    const Case cases[] = {
        {5, 180, 90, 0, {12, 0}, "heading east"},
        {5, 180, unknown, 0, {0, -12}, "course south"},
        {5, unknown, unknown, 90, {0, 12}, "neither, on a turned chart"},
        {5, 0, 90, 90, {0, 12}, "course up eastwards: east is up"},
        {5, 0, 0, 90, {-12, 0}, "course up eastwards: north is left"},
        {0, 0, 0, 0, {0, 9}, "at rest, smaller"},
    };
    for (const auto& test : cases) {
        Scene scene;
        scene.view.rotation = test.rotation;
        scene.vessel(test.sog, test.cog, test.hdg);
        const auto& symbol = scene.symbol();
        EXPECT_EQ(symbol.shape, Shape::ClassA);
        EXPECT_NEAR(symbol.outline.points()[0].x, test.bow.x, 1e-6) << test.why;
        EXPECT_NEAR(symbol.outline.points()[0].y, test.bow.y, 1e-6) << test.why;
        EXPECT_EQ(symbol.outline.points()[0], symbol.outline.points().back());
        EXPECT_EQ(symbol.headingLine.isEmpty(), test.hdg == unknown || test.sog == 0) << test.why;
        EXPECT_EQ(symbol.courseVector.isEmpty(), test.cog == unknown || test.sog == 0) << test.why;
    }
}

TEST(AISPicture, TrueOutlineLiesAboutTheAntenna)
{
    Scene scene;
    auto& target = scene.vessel(10, 270, 90);
    Scene::giveDimensions(target);
    const auto& symbol = scene.symbol();
    ASSERT_EQ(symbol.shape, Shape::TrueOutline);
    // Heading east the bow is to the right and starboard is down.
    const Rect bounds = symbol.outline.bounds();
    EXPECT_NEAR(bounds.right, 225, 1e-3);
    EXPECT_NEAR(bounds.left, -70, 1e-3);
    EXPECT_NEAR(bounds.bottom, -31, 1e-3);
    EXPECT_NEAR(bounds.top, 1, 1e-3);
    // Over ground it goes west: 10 knots for 6 minutes are a mile.
    EXPECT_NEAR(symbol.courseVector.points()[1].x, -1852, 0.1);
    EXPECT_NEAR(symbol.headingLine.points()[0].x, 225, 1e-3);

    scene.view.pointsPerMetre = [](double) { return 0.05; };
    EXPECT_EQ(scene.symbol().shape, Shape::ClassA) << "too small on the screen";
    scene.view.pointsPerMetre = [](double) { return 1.0; };
    target.setHdg(unknown);
    EXPECT_EQ(scene.symbol().shape, Shape::TrueOutline) << "along the course";
    target.setSog(0);
    EXPECT_EQ(scene.symbol().shape, Shape::ClassA) << "at rest without a heading";

    // A and C zero: the antenna's place is not given, B and D are length and beam.
    const AISDimensions unplaced{.stern = 100, .starboard = 20};
    target.setHdg(90);
    target.setLength(unplaced.lengthFeet());
    target.setBeam(unplaced.beamFeet());
    target.setReferencePoint(unplaced.referencePoint());
    EXPECT_NEAR(scene.symbol().outline.bounds().right, 50, 1e-3);
    EXPECT_NEAR(scene.symbol().outline.bounds().top, 10, 1e-3);
}

TEST(AISPicture, ATimedOutTargetIsCrossedOutAndGoesNowhere)
{
    Scene scene;
    scene.vessel(5, 0, 0).markDate(scene.clock.now());
    EXPECT_TRUE(scene.symbol().strike.isEmpty());
    scene.clock.advance(std::chrono::seconds(301));
    const auto& symbol = scene.symbol();
    EXPECT_TRUE(symbol.timedOut);
    EXPECT_EQ(symbol.strike.subPathCount(), 2U);
    EXPECT_TRUE(symbol.courseVector.isEmpty());
}

TEST(AISPicture, FiltersAndTheEdgeOfTheView)
{
    Scene scene;
    scene.vessel(5, 0, 0);
    scene.vessel(0, 0, 0);
    scene.vessel(5, 0, 0, AISClass::B);
    scene.vessel(0, 0, 0).setRadarTarget(true);
    scene.vessel(5, 0, 0).setShow(false);
    scene.vessel(5, 0, 0).setPositionOnGPS({.longitude = noCoordinate, .latitude = 0});
    scene.vessel(5, 0, 0).setPositionOnGPS({.longitude = 0, .latitude = 111});
    scene.vessel(5, 0, 0).setPositionOnGPS({.longitude = 0, .latitude = 5.01});
    scene.vessel(5, 0, 0).setPositionOnGPS({.longitude = 0, .latitude = 7});
    // Outside, but with its course vector of half a mile in the view.
    scene.vessel(5, 180, 180).setPositionOnGPS({.longitude = 0, .latitude = 5.9});
    EXPECT_EQ(scene.drawn(), "1 2 3 4 8 10 ");
    scene.display.selected = 1;
    EXPECT_EQ(scene.drawn(), "10 2 3 4 8 1 ") << "the selected one on top";
    EXPECT_TRUE(scene.picture.symbols().back().selected);

    MemorySettings settings;
    const auto with = [&](std::string_view key) {
        MemorySettings changed = settings;
        changed.set(key, false);
        scene.display = AISDisplay::fromSettings(changed);
        return scene.drawn();
    };
    EXPECT_EQ(with("showStationary"), "1 3 4 8 10 ");
    EXPECT_EQ(with("showUnderway"), "2 4 ");
    EXPECT_EQ(with("showAISClassB"), "1 2 4 8 10 ");
    EXPECT_EQ(scene.picture.symbols()[0].label, "~1");
    with("showVesselNames");
    EXPECT_EQ(scene.picture.symbols()[0].label, "");
}

TEST(AISPicture, TheTargetUnderThePointer)
{
    Scene scene;
    Scene::giveDimensions(scene.vessel(5, 90, 90));
    scene.vessel(0, 0, 0, AISClass::B).setPositionOnGPS({.longitude = 0.1, .latitude = 0});
    scene.drawn();
    EXPECT_EQ(scene.picture.targetAt({-60, -20}, 3), 1) << "far from the antenna, but on the hull";
    EXPECT_EQ(scene.picture.targetAt({-60, 20}, 3), std::nullopt);
    EXPECT_EQ(scene.picture.targetAt({-72, -20}, 3), 1) << "just beside it";
    EXPECT_EQ(scene.picture.targetAt({98, 0}, 3), 2) << "a small one over a large one";
    EXPECT_EQ(scene.picture.targetAt({1000, 0}, 3), std::nullopt) << "vectors are not to be hit";
}

} // namespace
} // namespace kelvox
