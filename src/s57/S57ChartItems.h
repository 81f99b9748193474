#pragma once

#include "base/Rect.h"
#include "s57/RecordMap.h"
#include "s57/S57CatalogRecord.h"
#include "s57/S57Object.h"

#include <deque>

namespace kelvox {

/// One loaded cell: its dataset parameters, spatial records and features.
///
/// Filled by ISO8211Wrap::load(), base cell first, then its updates in place; assembled once after
/// that. From then on nothing changes but the cached paths, and other threads may read all else.
class S57ChartItems {
public:
    S57ChartItems();
    ~S57ChartItems();
    S57ChartItems(const S57ChartItems&) = delete;
    S57ChartItems& operator=(const S57ChartItems&) = delete;

    /// Dataset parameters, as the cell's identification and parameter records give them.
    struct Parameters {
        std::string edition;
        std::string update;
        std::string issueDate; ///< YYYYMMDD
        std::uint32_t profile = 0;
        std::uint32_t specification = 0;
        std::uint32_t coordinateMultiplier = 0;
        bool latLon = false;
        std::uint32_t compiledScale = 0;
        std::uint32_t horizontalDatum = 0;
        std::uint32_t verticalDatum = 0;
        std::uint32_t soundingDatum = 0;
        std::uint32_t soundingMultiplier = 0;
        std::uint32_t dataStructure = 0;
    };
    [[nodiscard]] const Parameters& parameters() const { return m_parameters; }
    [[nodiscard]] Parameters& parameters() { return m_parameters; }

    /// Where the cell's records keep their lists: taken in large blocks, given back as a whole.
    [[nodiscard]] std::pmr::memory_resource* memory() { return &m_memory; }

    // Storing what a record held, by its update instruction.
    void addS57Vector(S57Vector&& vector);
    /// Stores an inserted feature of a class that the display knows; removes the stored one where
    /// the instruction is to delete.
    void addS57Feature(const std::shared_ptr<const S57CatalogRecord>& base,
                       std::unique_ptr<S57Feature> feature);
    /// The stored record with the same key; null when there is none.
    [[nodiscard]] S57Feature* s57FeatureForS57Feature(const S57Feature& feature);
    [[nodiscard]] S57Vector* s57VectorForS57Vector(const S57Vector& vector);

    /// Called once after the last record: places of point features, structures and what they
    /// carry, memory trimmed.
    void assemble();

    [[nodiscard]] const std::vector<std::unique_ptr<S57Feature>>& s57Features() const
    {
        return m_features;
    }
    [[nodiscard]] const S57Vector* s57VectorForKey(std::uint64_t recordKey) const;
    [[nodiscard]] const S57Feature* s57FeatureForKey(std::uint64_t recordKey) const;
    [[nodiscard]] const S57Feature* s57FeatureForIdentification(std::uint32_t identification,
                                                                int subdivision) const;
    [[nodiscard]] std::size_t s57VectorCount() const { return m_vectorByKey.size(); }
    [[nodiscard]] const std::deque<S57Vector>& s57Vectors() const { return m_vectors; }

    /// A display object for a feature; lives as long as the cell.
    [[nodiscard]] S57Object& newObject(const S57Feature& feature);
    /// The display objects that have a name: what a search finds.
    [[nodiscard]] const std::vector<S57Object*>& s57Objects() const { return m_objects; }

    [[nodiscard]] const std::shared_ptr<const S57CatalogRecord>& s57CatalogRecord() const
    {
        return m_catalogRecord;
    }
    void setS57CatalogRecord(std::shared_ptr<const S57CatalogRecord> record)
    {
        m_catalogRecord = std::move(record);
    }

    /// Degrees: left west, bottom south. Of the coverage where the cell states one, else of all
    /// co-ordinates; empty for an empty cell.
    [[nodiscard]] Rect bounds() const { return m_bounds; }

    /// The outline of what the cell covers, in view points; cached like the features' paths.
    const Path& coveragePath(const S57Controller& view);
    void resetPaths();

private:
    static std::uint64_t identificationKey(std::uint32_t identification, int subdivision)
    {
        return static_cast<std::uint64_t>(identification) << 16U
            | static_cast<std::uint16_t>(subdivision);
    }
    void findStructures();
    void measure();

    std::pmr::monotonic_buffer_resource m_memory{std::size_t{64} * 1024};
    Parameters m_parameters;
    std::shared_ptr<const S57CatalogRecord> m_catalogRecord;
    std::deque<S57Vector> m_vectors; ///< stable places
    RecordMap m_vectorByKey;
    std::vector<std::unique_ptr<S57Feature>> m_features; ///< a deleted one is null until assemble()
    RecordMap m_featureByKey;
    RecordMap m_featureByIdentification;
    std::deque<S57Object> m_displayObjects;
    std::vector<S57Object*> m_objects;
    std::unique_ptr<Path> m_coveragePath;
    Rect m_bounds;
};

} // namespace kelvox
