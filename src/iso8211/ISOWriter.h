#pragma once

#include "iso8211/ISOModule.h"

#include <variant>

namespace kelvox {

/// A data record being put together for ISOWriter.
class ISOWriteRecord {
public:
    /// Begins a field; rows of subfield values follow. The definition outlives the record.
    void addField(const ISOFieldDefinition& definition);

    // Each sets one value of the field-th field with this tag (from 0), in the given repetition
    // (from 0). False when the field or the label is unknown, or the value does not fit the
    // subfield's fixed width.
    bool setString(std::string_view tag, std::size_t field, std::string_view label,
                   std::size_t repetition, std::string_view value);
    bool setInt(std::string_view tag, std::size_t field, std::string_view label,
                std::size_t repetition, std::int64_t value);
    bool setFloat(std::string_view tag, std::size_t field, std::string_view label,
                  std::size_t repetition, double value);
    /// Replaces all of a field's bytes, terminator included.
    bool setBytes(std::string_view tag, std::size_t field, std::string bytes);

    /// Appends values to the last field in format order; quicker than setting them one by one.
    bool append(std::string_view value);
    bool append(std::int64_t value);

private:
    friend class ISOWriter;
    struct Field {
        const ISOFieldDefinition* definition = nullptr;
        std::vector<std::string> values; ///< encoded, in format order, row after row
        std::string raw;
        bool isRaw = false;
    };
    Field* find(std::string_view tag, std::size_t index);
    bool set(std::string_view tag, std::size_t field, std::string_view label,
             std::size_t repetition, const std::variant<std::string, std::int64_t, double>& value);
    std::vector<Field> m_fields;
};

/// Writes ISO/IEC 8211 files: leader and definitions first, then records. The file is built in
/// memory and written at once by save().
class ISOWriter {
public:
    ISOWriter(ISOLeader leader, std::vector<ISOFieldDefinition> definitions);

    [[nodiscard]] const ISOFieldDefinition* definition(std::string_view tag) const;
    /// Fails when the record does not fit the 5 digits of its length.
    Result<void> write(const ISOWriteRecord& record);
    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] Result<void> save(const std::filesystem::path& path) const;

private:
    void writeDefinitions();

    ISOLeader m_leader;
    std::vector<ISOFieldDefinition> m_definitions;
    std::string m_bytes;
};

} // namespace kelvox
