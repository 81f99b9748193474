#pragma once

#include "base/Result.h"
#include "s57/S57CellRecords.h"

#include <filesystem>
#include <unordered_map>

namespace kelvox {

/// An S-57 ENC cell, or an update of one, under construction.
///
/// Spatial records are in chain-node topology and shared: point features of one place stand on one
/// node, lines that meet end on one connected node, and a line that is drawn twice, in either
/// direction, is one edge. Long lines are split, since a record holds at most 99,999 bytes.
///
///     S57CellWriter cell({.name = "KV5TEST1"});
///     cell.addArea("DEPARE", box, {{"DRVAL1", "5"}, {"DRVAL2", "10"}});
///     const auto buoy = cell.addPoint("BOYCAR", {.longitude = 10.5, .latitude = 59.5},
///                                     {{"BOYSHP", "5"}, {"CATCAM", "1"}, {"COLOUR", "2,6"}});
///     cell.relate(buoy, cell.addPoint("TOPMAR", {10.5, 59.5}, {{"TOPSHP", "13"}}));
///     cell.save(folder);              // KV5TEST1.000
///     auto update = cell.update("20260301");
///     update.removeFeature(buoy);
///     update.save(folder);            // KV5TEST1.001
///
/// Classes and attributes are named by their acronyms. Attribute values are UTF-8 text; an empty
/// one means that the value is unknown. A mistake (an unknown acronym, a text that Latin-1 cannot
/// hold) is kept and comes out as the failure of bytes().
class S57CellWriter {
public:
    using Identification = S57CellIdentification;
    using Attributes = std::vector<std::pair<std::string, std::string>>;
    using FeatureID = std::uint32_t; ///< the record identification number
    using Line = std::vector<Position>;
    struct Sounding {
        Position place;
        double depth = 0; ///< metres, negative where it dries
    };
    enum class Relation : std::uint8_t { Master = 1, Slave = 2, Peer = 3 };

    static constexpr double coordinateMultiplier = 10'000'000;
    static constexpr double soundingMultiplier = 10;

    explicit S57CellWriter(Identification identification);
    /// The next update of this cell, which begins empty. Features and spatial records of the cell
    /// are known to it by their numbers, and what it adds shares nodes and edges with them.
    [[nodiscard]] S57CellWriter update(std::string issueDate) const;

    FeatureID addPoint(std::string_view acronym, Position place, const Attributes& attributes = {});
    FeatureID addLine(std::string_view acronym, const Line& line,
                      const Attributes& attributes = {});
    /// Rings are closed whether or not the first place is repeated; either direction.
    FeatureID addArea(std::string_view acronym, const Line& outline,
                      const Attributes& attributes = {}, const std::vector<Line>& holes = {});
    /// All soundings in one record where it holds them, else in several features; gives the first.
    FeatureID addSoundings(const std::vector<Sounding>& soundings,
                           const Attributes& attributes = {});
    /// A feature over spatial records made before; primitive 1 point, 2 line, 3 area, 255 none.
    FeatureID addFeature(std::string_view acronym, int primitive,
                         std::vector<S57FeatureSpatial> spatials,
                         const Attributes& attributes = {});
    /// Adds a pointer from one feature to another, e.g. from a buoy to its topmark.
    void relate(FeatureID from, FeatureID to, Relation relation = Relation::Slave);

    [[nodiscard]] S57FeatureSpatial isolatedNode(Position place);
    /// The edges of a line from its first to its last place, oriented along it.
    [[nodiscard]] std::vector<S57FeatureSpatial> edges(const Line& line);
    /// The edges of a ring; an outer one runs clockwise, an inner one counter-clockwise.
    [[nodiscard]] std::vector<S57FeatureSpatial> ring(const Line& places, bool inner = false);

    // Into an update only; positions of lists count from 1. A list's element is inserted before the
    // index, deleted from it on, or replaced.
    void removeFeature(FeatureID feature);
    void removeVector(const S57FeatureSpatial& vector);
    /// An empty value removes the attribute.
    void changeAttributes(FeatureID feature, const Attributes& attributes);
    /// The instruction's count is that of the pointers; a deletion repeats what it deletes.
    void changeSpatials(FeatureID feature, S57UpdateControl control,
                        std::vector<S57FeatureSpatial> spatials);
    void changeRelations(FeatureID feature, S57UpdateControl control,
                         const std::vector<FeatureID>& others, Relation relation = Relation::Slave);
    void changePlaces(const S57FeatureSpatial& vector, S57UpdateControl control,
                      const Line& places);

    [[nodiscard]] const Identification& identification() const { return m_identification; }
    [[nodiscard]] std::size_t featureCount() const { return m_features.size(); }
    [[nodiscard]] std::size_t vectorCount() const { return m_vectors.size(); }
    /// The whole file.
    [[nodiscard]] Result<std::string> bytes() const;
    /// Writes name and extension (000 or the update's number) into the folder.
    [[nodiscard]] Result<void> save(const std::filesystem::path& folder) const;

private:
    /// What an update has to know of a record that stands in the cell already.
    struct KnownFeature {
        std::uint16_t objectCode = 0;
        std::uint16_t version = 1;
        std::uint8_t primitive = 0;
    };
    S57VectorRecord& addVector(int recordName);
    std::uint32_t connectedNode(S57Place place);
    S57FeatureSpatial edge(std::span<const S57Place> places);
    std::vector<S57FeatureSpatial> edgesOf(std::span<const S57Place> places);
    S57FeatureRecordData& changed(FeatureID feature, std::uint8_t instruction);
    S57VectorRecord& changed(const S57FeatureSpatial& vector, std::uint8_t instruction);
    void setAttributes(S57FeatureRecordData& feature, const Attributes& attributes, bool change);
    [[nodiscard]] S57RelationRecord relationTo(FeatureID other, Relation relation) const;
    void mistake(std::string message);

    Identification m_identification;
    std::uint16_t m_subdivision = 0; ///< tells the features of one producer's cells apart
    std::vector<S57VectorRecord> m_vectors;
    std::vector<S57FeatureRecordData> m_features;
    std::unordered_map<FeatureID, KnownFeature> m_knownFeatures;
    std::unordered_map<std::uint64_t, std::uint16_t> m_vectorVersions;
    std::unordered_map<std::uint64_t, std::uint32_t> m_isolatedNodes; ///< by place
    std::unordered_map<std::uint64_t, std::uint32_t> m_connectedNodes;
    /// By a digest of its places taken in the smaller direction.
    std::unordered_map<std::uint64_t, std::pair<std::uint32_t, bool>> m_edges;
    std::uint32_t m_lastIsolated = 0;
    std::uint32_t m_lastConnected = 0;
    std::uint32_t m_lastEdge = 0;
    std::uint32_t m_lastFeature = 0;
    std::string m_mistake;
};

} // namespace kelvox
