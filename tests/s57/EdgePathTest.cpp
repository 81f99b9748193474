#include "chartview/S57Controller.h"
#include "s57/S57Chart.h"
#include "s57/S57Object.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvox {

namespace {
using Places = std::vector<S57Coordinate>;

/// A cell put together by hand, and its paths as text: "10,1 11,1 | 12,2 13,2", longitude first.
struct Cell {
    std::shared_ptr<S57ChartItems> items = std::make_shared<S57ChartItems>();
    S57Controller view{66};

    void vector(int name, std::uint32_t id, const Places& places,
                std::initializer_list<S57VectorPointer> pointers = {})
    {
        S57Vector one;
        one.setRecordName(static_cast<std::uint8_t>(name));
        one.setRecordID(id);
        one.setRecordUpdate(1);
        one.addCoordinates(places);
        one.addPointers({pointers.begin(), pointers.size()});
        items->addS57Vector(std::move(one));
    }
    void node(std::uint32_t id, S57Coordinate place) { vector(120, id, {place}); }
    void edge(std::uint32_t id, std::uint32_t from, std::uint32_t to, const Places& between = {})
    {
        vector(130, id, between,
               {{.recordID = from, .recordName = 120}, {.recordID = to, .recordName = 120}});
    }
    /// Edges by number, negative ones backwards.
    S57Feature& feature(int primitive, const std::vector<int>& edges)
    {
        auto one = std::make_unique<S57Feature>();
        one->setRecordName(100);
        one->setRecordID(static_cast<std::uint32_t>(items->s57Features().size() + 1));
        one->setRecordUpdate(1);
        one->setObjectCode(42);
        one->setGeometry(static_cast<std::uint8_t>(primitive));
        for (const int e : edges)
            one->addS57FeatureSpatial({.recordID = static_cast<std::uint32_t>(std::abs(e)),
                                       .recordName = 130,
                                       .orient = static_cast<std::uint8_t>(e < 0 ? 2 : 1)});
        S57Feature& stored = *one;
        items->addS57Feature(nullptr, std::move(one));
        return stored;
    }
    [[nodiscard]] std::string text(const Path& path) const
    {
        std::string all;
        for (std::size_t i = 0; i < path.subPathCount(); ++i) {
            all += i > 0 ? " |" : "";
            for (const Point p : path.subPath(i)) {
                const Position place = view.pointToPosition(p);
                all += ' ' + std::to_string(std::lround(place.longitude)) + ','
                    + std::to_string(std::lround(place.latitude));
            }
        }
        return all;
    }
    std::string path(int primitive, const std::vector<int>& edges)
    {
        return text(feature(primitive, edges).buildEdgePath(*items, view));
    }
};

/// Two squares, each of two edges between two nodes, and odd edges beside them.
Cell squares()
{
    Cell cell;
    cell.node(1, {0, 10});
    cell.node(2, {2, 12});
    cell.edge(1, 1, 2, {{0, 12}});
    cell.edge(2, 2, 1, {{2, 10}});
    cell.node(3, {5, 15});
    cell.node(4, {7, 17});
    cell.edge(3, 3, 4, {{5, 17}});
    cell.edge(4, 3, 4, {{7, 15}});
    cell.edge(5, 99, 4, {{20, 20}, {21, 21}}); // its first node is missing
    cell.vector(130, 6, {{30, 30}}, {{.recordID = 1, .recordName = 120}}); // one pointer only
    cell.vector(120, 7, {{1, 1}, {2, 2}}); // a node of two places is none
    cell.edge(7, 7, 2, {{40, 40}});
    cell.vector(110, 8, {{1, 1}}); // nor is an isolated one
    cell.vector(130, 8, {},
                {{.recordID = 8, .recordName = 110}, {.recordID = 2, .recordName = 120}});
    return cell;
}
} // namespace

TEST(EdgePath, JoinsEdgesIntoRings)
{
    Cell cell = squares();
    EXPECT_EQ(cell.path(3, {1, 2}), " 10,0 12,0 12,2 12,2 10,2 10,0");
    // The second ring starts with a move; an edge backwards swaps its nodes as well.
    EXPECT_EQ(cell.path(3, {1, 2, 3, -4}),
              " 10,0 12,0 12,2 12,2 10,2 10,0 | 15,5 17,5 17,7 17,7 15,7 15,5");
    EXPECT_EQ(cell.path(3, {-2, -1}), " 10,0 10,2 12,2 12,2 12,0 10,0");
    // A ring that never closes draws on to the next edge.
    EXPECT_EQ(cell.path(3, {1, 3}), " 10,0 12,0 12,2 15,5 17,5 17,7");
}

TEST(EdgePath, DrawsEachEdgeOfALineOnItsOwn)
{
    Cell cell = squares();
    EXPECT_EQ(cell.path(2, {1, 2, -4}), " 10,0 12,0 12,2 | 12,2 10,2 10,0 | 17,7 15,7 15,5");
    EXPECT_EQ(cell.path(1, {1, 2}), "");
    EXPECT_EQ(cell.path(255, {1, 2}), "");
}

TEST(EdgePath, LeavesOutAnEdgeThatBeginsNowhere)
{
    Cell cell = squares();
    EXPECT_EQ(cell.path(2, {5}), "");
    EXPECT_EQ(cell.path(2, {6}), "");
    EXPECT_EQ(cell.path(2, {7}), "");
    EXPECT_EQ(cell.path(2, {8}), "");
    EXPECT_EQ(cell.path(2, {99, 1}), " 10,0 12,0 12,2");
    // Later on such an edge continues the sub-path from its first place, and to its end node.
    EXPECT_EQ(cell.path(2, {1, 5}), " 10,0 12,0 12,2 20,20 21,21 17,7");
    EXPECT_EQ(cell.path(3, {1, 6, 2}), " 10,0 12,0 12,2 30,30 12,2 10,2 10,0");
}

TEST(EdgePath, KeepsPathsUntilTheyAreReset)
{
    Cell cell = squares();
    S57Feature& area = cell.feature(3, {1, 2});
    const Path first = area.edgePath(*cell.items, cell.view);
    const Path scaled = area.scaledEdgePath(*cell.items, cell.view, 2);
    EXPECT_EQ(scaled, first.scaled(2));
    cell.view.setScale(400'000);
    cell.view.chartSize();
    EXPECT_EQ(area.edgePath(*cell.items, cell.view), first);
    EXPECT_EQ(area.scaledEdgePath(*cell.items, cell.view, 3), scaled); // whatever the factor
    S57Chart chart;
    chart.addS57ChartItems(cell.items);
    chart.resetPaths();
    EXPECT_NEAR(area.edgePath(*cell.items, cell.view).bounds().width(), first.bounds().width() / 2,
                1e-3);
    EXPECT_EQ(area.scaledEdgePath(*cell.items, cell.view, 3).bounds().width(),
              area.edgePath(*cell.items, cell.view).scaled(3).bounds().width());
}

} // namespace kelvox
