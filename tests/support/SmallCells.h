#pragma once

#include "s57/S57CellWriter.h"

namespace kelvox {

/// A cell with one of everything: two areas that share an edge, one of them with a hole, a contour,
/// a buoy with its topmark, a light on a beacon, soundings, coverage. 0.1 degrees around 59.5 N,
/// 10.5 E.
struct SmallCell {
    S57CellWriter writer{{.name = "KV5TEST1"}};
    S57CellWriter::FeatureID deep = 0, shallow = 0, contour = 0, buoy = 0, topmark = 0, beacon = 0,
                             light = 0, soundings = 0, coverage = 0;

    SmallCell()
    {
        const Position sw{10.45, 59.45}, se{10.55, 59.45}, ne{10.55, 59.55}, nw{10.45, 59.55};
        const Position south{10.50, 59.45}, north{10.50, 59.55};
        const S57CellWriter::Line middle{south, {10.501, 59.48}, {10.499, 59.52}, north};
        const S57CellWriter::Line back(middle.rbegin(), middle.rend());
        // The edge in the middle is drawn three times: by both areas and by the contour.
        const auto joined = [&](const S57CellWriter::Line& around,
                                const S57CellWriter::Line& shared) {
            auto spatials = writer.edges(around);
            const auto inner = writer.edges(shared);
            spatials.insert(spatials.end(), inner.begin(), inner.end());
            return spatials;
        };
        deep = writer.addFeature("DEPARE", 3, joined({south, sw, nw, north}, back),
                                 {{"DRVAL1", "10"}, {"DRVAL2", "20"}});
        auto rings = joined({north, ne, se, south}, middle);
        const auto hole =
            writer.ring({{10.52, 59.50}, {10.53, 59.50}, {10.53, 59.51}, {10.52, 59.51}}, true);
        rings.insert(rings.end(), hole.begin(), hole.end());
        shallow = writer.addFeature("DEPARE", 3, rings, {{"DRVAL1", "2"}, {"DRVAL2", "10"}});
        contour = writer.addLine("DEPCNT", middle, {{"VALDCO", "10"}});
        buoy = writer.addPoint("BOYCAR", {10.48, 59.5},
                               {{"OBJNAM", "Grønn"}, {"BOYSHP", "5"}, {"COLOUR", "2,6"}});
        topmark = writer.addPoint("TOPMAR", {10.48, 59.5}, {{"TOPSHP", "13"}});
        beacon = writer.addPoint("BCNLAT", {10.525, 59.505}, {{"BCNSHP", "3"}});
        light = writer.addPoint("LIGHTS", {10.5251, 59.505},
                                {{"SECTR1", "10"}, {"SECTR2", "90.5"}, {"SCAMIN", "49999"}});
        writer.relate(beacon, light);
        soundings = writer.addSoundings(
            {{{10.47, 59.47}, 12.5}, {{10.46, 59.48}, 14}, {{10.54, 59.46}, -0.3}});
        coverage = writer.addArea("M_COVR", {sw, se, ne, nw}, {{"CATCOV", "1"}});
    }
};

} // namespace kelvox
