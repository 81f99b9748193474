#pragma once

#include "base/Path.h"
#include "s57/S57Vector.h"

#include <atomic>
#include <memory>
#include <optional>

namespace kelvox {

struct S52Lupt;
class S57ChartItems;
class S57Feature;
class S57Object;

/// An attribute of a feature: its code and its value as UTF-8 text (Latin-1 in the file).
class S57FeatureAttribute {
public:
    S57FeatureAttribute(std::uint16_t code, std::string value)
        : m_value(std::move(value))
        , m_code(code)
    {
    }
    [[nodiscard]] int code() const { return m_code; }
    [[nodiscard]] const std::string& stringValue() const { return m_value; }
    [[nodiscard]] int intValue() const; ///< leading number of the text, else 0

private:
    std::string m_value;
    std::uint16_t m_code;
};

/// An edge and the nodes it runs between, as one feature meets them; any may be missing.
struct S57ConnectedNodes {
    const S57Vector* edge = nullptr;
    const S57Vector* start = nullptr;
    const S57Vector* end = nullptr;
};

/// A pointer from a feature to a spatial record.
struct S57FeatureSpatial {
    static constexpr int reverse = 2; ///< value of orient

    std::uint32_t recordID = 0;
    std::uint8_t recordName = 0;
    std::uint8_t orient = 0;
    std::uint8_t usage = 0;
    std::uint8_t mask = 0;

    [[nodiscard]] std::uint64_t recordKey() const { return s57RecordKey(recordName, recordID); }
    [[nodiscard]] std::string key() const;
    [[nodiscard]] S57ConnectedNodes edgeConnectedNodes(const S57ChartItems& cell) const;
    /// Appends the edge to a path in view points; start begins a new sub-path at its first node.
    void buildEdgePath(Path& path, const S57Controller& view, const S57ConnectedNodes& nodes,
                       bool start) const;
};

/// A pointer from a feature to another one.
struct S57FeatureRecord {
    std::uint32_t identification = 0;
    std::uint16_t agency = 0;
    std::uint16_t identificationSubdivision = 0;

    [[nodiscard]] std::string identificationKey() const;
};

/// One feature record of a cell.
class S57Feature {
public:
    /// Geometry primitives.
    static constexpr int point = 1;
    static constexpr int line = 2;
    static constexpr int area = 3;
    /// A feature keeps no more; the catalogue has about two hundred.
    static constexpr std::size_t maximumAttributes = 4'096;

    /// The memory, of the cell that will hold the feature, outlives it.
    explicit S57Feature(std::pmr::memory_resource* memory = std::pmr::get_default_resource());
    ~S57Feature();
    S57Feature(const S57Feature&) = delete;
    S57Feature& operator=(const S57Feature&) = delete;

    /// The readable name of a class that the display knows; empty for others, which are not kept.
    [[nodiscard]] static std::string_view canRender(int objectCode);

    [[nodiscard]] int recordName() const { return m_recordName; }
    [[nodiscard]] std::uint32_t recordID() const { return m_recordID; }
    [[nodiscard]] std::uint32_t recordUpdate() const { return m_recordUpdate; }
    [[nodiscard]] int geometry() const { return m_geometry; }
    [[nodiscard]] int group() const { return m_group; }
    [[nodiscard]] int objectCode() const { return m_objectCode; }
    [[nodiscard]] int agency() const { return m_agency; }
    [[nodiscard]] std::uint32_t identification() const { return m_identification; }
    [[nodiscard]] int identificationSubdivision() const { return m_identificationSubdivision; }
    /// The readable name of the class, e.g. "Depth Area".
    [[nodiscard]] std::string_view description() const { return m_description; }

    void setRecordName(std::uint8_t name) { m_recordName = name; }
    void setRecordID(std::uint32_t id) { m_recordID = id; }
    void setRecordUpdate(std::uint32_t instruction) { m_recordUpdate = instruction; }
    void setGeometry(std::uint8_t primitive) { m_geometry = primitive; }
    void setGroup(std::uint8_t group) { m_group = group; }
    void setObjectCode(std::uint16_t code) { m_objectCode = code; }
    void setAgency(std::uint16_t agency) { m_agency = agency; }
    void setIdentification(std::uint32_t number) { m_identification = number; }
    void setIdentificationSubdivision(std::uint16_t number)
    {
        m_identificationSubdivision = number;
    }
    /// The text outlives the feature: it comes from the class catalogue.
    void setDescription(std::string_view text) { m_description = text; }

    [[nodiscard]] std::string key() const; ///< "name number"
    [[nodiscard]] std::uint64_t recordKey() const { return s57RecordKey(m_recordName, m_recordID); }
    /// "identification subdivision"; the agency is left out on purpose.
    [[nodiscard]] std::string identificationKey() const;

    [[nodiscard]] std::span<const S57FeatureAttribute> s57FeatureAttributes() const
    {
        return m_attributes;
    }
    [[nodiscard]] std::size_t s57FeatureAttributeCount() const { return m_attributes.size(); }
    /// An attribute with this code that is there already is given the new value: an update states
    /// what holds from now on.
    void addS57FeatureAttribute(std::uint16_t code, std::string value);
    /// The attribute with this code; null when the feature has none.
    [[nodiscard]] const S57FeatureAttribute* featureAttributeCode(int code) const;
    /// Empty when the attribute is missing.
    [[nodiscard]] std::string_view featureAttributeStringValue(int code) const;
    /// The first number of the value; nothing when it is missing, empty or no number.
    [[nodiscard]] std::optional<int> featureAttributeIntValue(int code) const;
    [[nodiscard]] std::vector<int> featureAttributeIntValues(int code) const;
    [[nodiscard]] std::optional<double> featureAttributeFloatValue(int code) const;

    [[nodiscard]] std::span<const S57FeatureSpatial> s57FeatureSpatials() const
    {
        return m_spatials;
    }
    [[nodiscard]] std::span<const S57FeatureRecord> s57FeatureRecords() const { return m_records; }
    void setS57FSPC(S57UpdateControl control) { m_spatialControl = control; }
    void setS57FFPC(S57UpdateControl control) { m_recordControl = control; }
    void addS57FeatureSpatial(const S57FeatureSpatial& spatial) { addSpatials({&spatial, 1}); }
    void addS57FeatureRecord(const S57FeatureRecord& record) { addRecords({&record, 1}); }
    // All elements of one field at once.
    void addSpatials(std::span<const S57FeatureSpatial> spatials);
    void addRecords(std::span<const S57FeatureRecord> records);
    void reserveAttributes(std::size_t count)
    {
        m_attributes.reserve(std::min(count, maximumAttributes));
    }

    [[nodiscard]] bool hasName() const;
    /// Whether the class is an aid to navigation: its name is a mark's name.
    [[nodiscard]] bool isNavAid() const;

    /// The look-up entry of the presentation library; null when there is none.
    /// It may be assigned anew while other threads read it.
    [[nodiscard]] const S52Lupt* s52Lupt() const { return m_lupt.load(std::memory_order_relaxed); }
    void setS52Lupt(const S52Lupt* entry) { m_lupt.store(entry, std::memory_order_relaxed); }
    /// Kept by the cell.
    [[nodiscard]] S57Object* s57Object() const { return m_object; }
    void setS57Object(S57Object* object) { m_object = object; }
    /// The place of a point feature.
    [[nodiscard]] std::optional<S57Coordinate> s57Coordinate() const { return m_coordinate; }
    void setS57Coordinate(std::optional<S57Coordinate> coordinate) { m_coordinate = coordinate; }

    // Line and area paths in view points, exterior and interior rings as sub-paths of one path, to
    // be filled even-odd. The cached ones do not notice a change of view: see resetEdgePath().
    // Main thread only.
    [[nodiscard]] Path buildEdgePath(const S57ChartItems& cell, const S57Controller& view) const;
    const Path& edgePath(const S57ChartItems& cell, const S57Controller& view);
    const Path& scaledEdgePath(const S57ChartItems& cell, const S57Controller& view, float factor);
    void resetEdgePath();

private:
    std::pmr::vector<S57FeatureAttribute> m_attributes;
    std::pmr::vector<S57FeatureSpatial> m_spatials;
    std::pmr::vector<S57FeatureRecord> m_records;
    S57UpdateControl m_spatialControl;
    S57UpdateControl m_recordControl;
    std::unique_ptr<Path> m_edgePath;
    std::unique_ptr<Path> m_scaledEdgePath;
    S57Object* m_object = nullptr;
    std::atomic<const S52Lupt*> m_lupt = nullptr;
    std::string_view m_description;
    std::optional<S57Coordinate> m_coordinate;
    std::uint32_t m_recordID = 0;
    std::uint32_t m_recordUpdate = 0;
    std::uint32_t m_identification = 0;
    std::uint16_t m_identificationSubdivision = 0;
    std::uint16_t m_agency = 0;
    std::uint16_t m_objectCode = 0;
    std::uint8_t m_recordName = 0;
    std::uint8_t m_geometry = 0;
    std::uint8_t m_group = 0;
};

} // namespace kelvox
