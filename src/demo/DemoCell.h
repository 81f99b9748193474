#pragma once

#include "demo/DemoGround.h"
#include "demo/DemoShapes.h"
#include "demo/PlanarMap.h"
#include "s57/S57CellWriter.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvox {

/// What one chart of the demo waters shows and how closely.
struct DemoChart {
    std::string name;
    int usageBand = 5;
    std::uint32_t scale = 12'000;
    Rect area; ///< metres; multiples of the spacing
    double spacing = 8; ///< metres between the points from which contours are drawn
    std::vector<double> levels; ///< elevations of the contours, ascending; the last one high water
    double soundingSpacing = 120; ///< metres
};

/// Something built that changes the ground of the larger scales.
struct DemoWork {
    enum class Kind { Fill, Dredged };
    Kind kind = Kind::Fill;
    DemoLine ring;
    int firstBand = 5; ///< smallest usage band that shows it
    /// Of the shoreline construction, or of the dredged area.
    S57CellWriter::Attributes attributes;
};

/// A chart under construction: the cell writer behind clipping to the chart's area.
class DemoCell {
public:
    using Attributes = S57CellWriter::Attributes;
    using FeatureID = S57CellWriter::FeatureID;
    /// How far out a feature is shown: its SCAMIN is the chart's scale times this, on the usual
    /// steps; 0 for always.
    enum Reach : int { Always = 0, Near = 2, Middle = 4, Far = 8 };

    explicit DemoCell(DemoChart chart);

    [[nodiscard]] const DemoChart& chart() const { return m_chart; }
    [[nodiscard]] const DemoGround& ground() const { return m_ground; }
    [[nodiscard]] S57CellWriter& writer() { return m_writer; }
    [[nodiscard]] const S57CellWriter& writer() const { return m_writer; }
    /// Whether the chart is at least as large in scale as this usage band.
    [[nodiscard]] bool isAtLeast(int usageBand) const { return m_chart.usageBand >= usageBand; }

    /// Depth areas, land, dredged areas, contours, coastline, coverage and quality of the data.
    /// False when the lines contradict each other.
    [[nodiscard]] bool addGround(const std::vector<DemoWork>& works);
    void addSoundings(const std::vector<DemoWork>& works);

    /// Nothing when the place is outside the chart.
    std::optional<FeatureID> point(std::string_view acronym, Point place, Attributes attributes,
                                   Reach reach = Always);
    std::optional<FeatureID> line(std::string_view acronym, const DemoLine& line,
                                  const Attributes& attributes, Reach reach = Always);
    void area(std::string_view acronym, const DemoLine& ring, const Attributes& attributes,
              Reach reach = Always);

    /// Relates a structure to what it carries.
    void equip(FeatureID structure, FeatureID equipment)
    {
        m_writer.relate(structure, equipment);
        m_equipment.emplace(structure, equipment);
    }
    // For an update to find: features by name, a structure with its equipment after it, and
    // contours.
    void remember(const std::string& name, FeatureID feature) { m_named.emplace(name, feature); }
    [[nodiscard]] std::vector<FeatureID> withEquipment(FeatureID structure) const;
    [[nodiscard]] std::optional<FeatureID> named(const std::string& name) const
    {
        const auto it = m_named.find(name);
        return it == m_named.end() ? std::nullopt : std::optional(it->second);
    }

    struct Contour {
        double level = 0;
        S57FeatureSpatial edge;
        std::vector<S57Place> places;
    };
    /// A contour of one edge with so many places or more; null when there is none.
    [[nodiscard]] const Contour* contourEdge(double level, std::size_t places) const;

private:
    [[nodiscard]] Attributes withReach(Attributes attributes, Reach reach) const;
    [[nodiscard]] std::vector<S57FeatureSpatial> spatialsOf(const PlanarMap& map,
                                                            const PlanarMap::Ring& ring) const;
    void addAreas(const PlanarMap& map, const std::vector<DemoWork>& works);
    void addLines(const PlanarMap& map, const std::vector<DemoWork>& works);
    void addCoverage(const PlanarMap& map);

    DemoChart m_chart;
    DemoGround m_ground;
    S57CellWriter m_writer;
    std::vector<std::vector<S57FeatureSpatial>> m_lineSpatials; ///< by line of the map
    std::vector<Contour> m_contours;
    std::multimap<FeatureID, FeatureID> m_equipment;
    std::map<std::string, FeatureID> m_named;
};

/// "5" or "7.5": a number as attribute text.
[[nodiscard]] std::string demoNumber(double value);

} // namespace kelvox
