#pragma once

#include "s57/S57Coordinate.h"
#include "s57/S57UpdateControl.h"

#include <memory_resource>
#include <span>
#include <string>
#include <vector>

namespace kelvox {

/// Byte 0 of a spatial record's name.
namespace s57RecordName {
inline constexpr int isolatedNode = 110;
inline constexpr int connectedNode = 120;
inline constexpr int edge = 130;
inline constexpr int face = 140;
} // namespace s57RecordName

/// The key of a record inside a cell: its name and identification number in one word.
[[nodiscard]] constexpr std::uint64_t s57RecordKey(std::uint32_t recordName, std::uint32_t recordID)
{
    return static_cast<std::uint64_t>(recordName) << 32U | recordID;
}

/// A pointer from one spatial record to another, e.g. from an edge to its node.
struct S57VectorPointer {
    std::uint32_t recordID = 0;
    std::uint8_t recordName = 0;
    std::uint8_t orient = 0;
    std::uint8_t usage = 0;
    std::uint8_t topology = 0;
    std::uint8_t mask = 0;

    [[nodiscard]] std::uint64_t recordKey() const { return s57RecordKey(recordName, recordID); }
    [[nodiscard]] std::string key() const;
};

/// One spatial record: a node with its co-ordinates or soundings, or an edge between two nodes.
class S57Vector {
public:
    /// The memory, of the cell that will hold the record, outlives it.
    explicit S57Vector(std::pmr::memory_resource* memory = std::pmr::get_default_resource())
        : m_coordinates(memory)
        , m_depths(memory)
        , m_pointers(memory)
    {
    }
    [[nodiscard]] int recordName() const { return m_recordName; }
    [[nodiscard]] std::uint32_t recordID() const { return m_recordID; }
    [[nodiscard]] std::uint32_t recordUpdate() const { return m_recordUpdate; }
    void setRecordName(std::uint8_t name) { m_recordName = name; }
    void setRecordID(std::uint32_t id) { m_recordID = id; }
    void setRecordUpdate(std::uint32_t instruction) { m_recordUpdate = instruction; }
    /// "name number", e.g. "130 7".
    [[nodiscard]] std::string key() const;
    [[nodiscard]] std::uint64_t recordKey() const { return s57RecordKey(m_recordName, m_recordID); }

    [[nodiscard]] bool hasDepth() const { return m_hasDepth; }
    void setHasDepth() { m_hasDepth = true; }
    [[nodiscard]] std::span<const S57Coordinate> s57Coordinates() const { return m_coordinates; }
    /// The co-ordinate with its depth; 0 m where the record gave none.
    [[nodiscard]] S57Depth s57Depth(std::size_t index) const;
    [[nodiscard]] std::span<const S57VectorPointer> s57VectorPointers() const { return m_pointers; }

    void setS57VRPC(S57UpdateControl control) { m_pointerControl = control; }
    void setS57SGCC(S57UpdateControl control) { m_coordinateControl = control; }
    void addS57VectorPointer(const S57VectorPointer& pointer) { addPointers({&pointer, 1}); }
    void addS57Coordinate(const S57Coordinate& coordinate) { addCoordinates({&coordinate, 1}); }
    void addS57Coordinate(const S57Depth& sounding)
    {
        addSoundings({&static_cast<const S57Coordinate&>(sounding), 1}, {&sounding.depth, 1});
    }
    // All elements of one field at once.
    void addPointers(std::span<const S57VectorPointer> pointers);
    void addCoordinates(std::span<const S57Coordinate> coordinates);
    /// Depths in metres beside their co-ordinates.
    void addSoundings(std::span<const S57Coordinate> coordinates, std::span<const float> depths);
    void shrinkToFit();

private:
    std::pmr::vector<S57Coordinate> m_coordinates;
    std::pmr::vector<float> m_depths; ///< beside m_coordinates, as long as it, or empty
    std::pmr::vector<S57VectorPointer> m_pointers;
    S57UpdateControl m_pointerControl;
    S57UpdateControl m_coordinateControl;
    std::uint32_t m_recordID = 0;
    std::uint32_t m_recordUpdate = 0;
    std::uint8_t m_recordName = 0;
    bool m_hasDepth = false;
};

} // namespace kelvox
