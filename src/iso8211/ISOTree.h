#pragma once

#include "base/Result.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace kelvox {

class ISOModule;
class ISORawRecord;

/// The 5-byte name of a spatial record.
struct ISODataRecord {
    std::uint8_t rcnm = 0;
    std::uint32_t rcid = 0;

    friend bool operator==(const ISODataRecord&, const ISODataRecord&) = default;
};

/// The 8-byte long name of a feature.
struct ISODataAgency {
    std::uint16_t agen = 0;
    std::uint32_t fidn = 0;
    std::uint16_t fids = 0;

    friend bool operator==(const ISODataAgency&, const ISODataAgency&) = default;
};

/// One subfield value: its label and at most one value. Text is kept as its bytes, taken as UTF-8.
class ISOData {
public:
    using Value = std::variant<std::monostate, std::int32_t, std::uint32_t, double, std::string,
                               ISODataRecord, ISODataAgency>;

    explicit ISOData(std::string name)
        : m_name(std::move(name))
    {
    }
    void setInt(std::int32_t value) { m_value = value; }
    void setUInt(std::uint32_t value) { m_value = value; }
    void setFloat(double value) { m_value = value; }
    void setString(std::string value) { m_value = std::move(value); }
    void setRecord(ISODataRecord value) { m_value = value; }
    void setAgency(ISODataAgency value) { m_value = value; }

    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] const Value& value() const { return m_value; }

private:
    std::string m_name;
    Value m_value;
};

/// One repetition of a field's subfield group, in format order.
class ISORow {
public:
    explicit ISORow(std::vector<ISOData> datas)
        : m_datas(std::move(datas))
    {
    }
    [[nodiscard]] const std::vector<ISOData>& datas() const { return m_datas; }

private:
    std::vector<ISOData> m_datas;
};

/// One field, named by its tag.
class ISOField {
public:
    ISOField(std::string name, std::vector<ISORow> rows)
        : m_name(std::move(name))
        , m_rows(std::move(rows))
    {
    }
    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] const std::vector<ISORow>& rows() const { return m_rows; }

private:
    std::string m_name;
    std::vector<ISORow> m_rows;
};

/// The fields of one data record in directory order.
class ISORecord {
public:
    explicit ISORecord(std::vector<ISOField> fields)
        : m_fields(std::move(fields))
    {
    }
    /// Copies the values out of a record just read.
    [[nodiscard]] static ISORecord copyOf(const ISORawRecord& record);

    [[nodiscard]] const std::vector<ISOField>& fields() const { return m_fields; }

private:
    std::vector<ISOField> m_fields;
};

/// All data records of a file, in file order; the descriptive record is not among them.
class ISOFile {
public:
    explicit ISOFile(std::vector<ISORecord> records)
        : m_records(std::move(records))
    {
    }
    /// Reads a whole file: what stands before a broken record is kept. Fails only when the file
    /// cannot be opened as ISO 8211. Takes many times the file's size; walk an ISOModule instead
    /// where that matters.
    [[nodiscard]] static Result<ISOFile> read(const std::filesystem::path& path);

    [[nodiscard]] const std::vector<ISORecord>& records() const { return m_records; }

private:
    std::vector<ISORecord> m_records;
};

/// The 5 bytes of a NAME; short ones are filled up with zero.
[[nodiscard]] ISODataRecord isoRecordName(std::string_view bytes);
/// The 8 bytes of an LNAM.
[[nodiscard]] ISODataAgency isoLongName(std::string_view bytes);

} // namespace kelvox
