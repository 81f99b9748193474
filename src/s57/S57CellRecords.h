#pragma once

#include "base/Position.h"
#include "base/Result.h"
#include "s57/S57Feature.h"

#include <optional>
#include <string>
#include <vector>

namespace kelvox {

/// What a cell's first records say of it.
struct S57CellIdentification {
    std::string name = "KV5TEST0"; ///< the file's name without extension, 8 characters
    int edition = 1;
    int update = 0; ///< 0 for a base cell
    std::string issueDate = "20260115"; ///< YYYYMMDD
    int usageBand = 5; ///< 1 overview, 2 general, 3 coastal, 4 approach, 5 harbour, 6 berthing
    std::uint32_t compiledScale = 12'000;
    std::uint16_t agency = 65'001; ///< no registered producer
    std::string comment = {};
};

/// A place in the cell's whole units of 1e-7 degrees.
struct S57Place {
    std::int32_t y = 0;
    std::int32_t x = 0;

    [[nodiscard]] static S57Place of(Position position);
    friend bool operator==(const S57Place&, const S57Place&) = default;
};

/// A spatial record to be written.
struct S57VectorRecord {
    std::uint32_t recordID = 0;
    std::uint16_t version = 1;
    std::uint8_t recordName = 0;
    std::uint8_t instruction = 1; ///< 1 insert, 2 delete, 3 modify
    std::optional<S57UpdateControl> placeControl;
    std::vector<S57Place> places;
    std::vector<std::int32_t> depths; ///< beside the places of soundings, in the cell's units
    std::vector<S57VectorPointer> pointers;
};

/// A pointer from a feature to another one, with the part that the other plays.
struct S57RelationRecord {
    std::uint32_t identification = 0;
    std::uint8_t relation = 0;
};

/// A feature record to be written.
struct S57FeatureRecordData {
    struct Attribute {
        std::uint16_t code = 0;
        std::string value; ///< Latin-1
    };
    std::uint32_t recordID = 0; ///< and the feature identification number
    std::uint16_t version = 1;
    std::uint16_t objectCode = 0;
    std::uint8_t primitive = 0;
    std::uint8_t instruction = 1;
    std::vector<Attribute> attributes;
    std::vector<Attribute> nationalAttributes;
    std::optional<S57UpdateControl> relationControl;
    std::vector<S57RelationRecord> relations;
    std::optional<S57UpdateControl> spatialControl;
    std::vector<S57FeatureSpatial> spatials;
};

/// The records of a base cell or of an update as a file. Nodes come before the edges on them, and
/// features before those that point to them.
[[nodiscard]] Result<std::string> encodeS57Cell(const S57CellIdentification& identification,
                                                std::uint16_t subdivision,
                                                std::span<const S57VectorRecord> vectors,
                                                std::span<const S57FeatureRecordData> features);

} // namespace kelvox
