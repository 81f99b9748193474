#include "iso8211/ISOTree.h"

#include "iso8211/ISOModule.h"

namespace kelvox {

namespace {
std::uint32_t littleEndian(std::string_view bytes, std::size_t from, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t i = from + count; i > from; --i)
        value = value << 8U | (i <= bytes.size() ? static_cast<unsigned char>(bytes[i - 1]) : 0U);
    return value;
}

ISOData dataOf(const ISOSubfieldDefinition& subfield, std::span<const char> bytes,
               std::size_t& consumed)
{
    ISOData data(subfield.label());
    switch (subfield.dataType()) {
    case ISODataType::Int: {
        const std::int64_t value = subfield.extractInt(bytes, consumed);
        if (subfield.binaryFormat() == 1)
            data.setUInt(static_cast<std::uint32_t>(value));
        else
            data.setInt(static_cast<std::int32_t>(value));
        break;
    }
    case ISODataType::Float:
        data.setFloat(subfield.extractFloat(bytes, consumed));
        break;
    case ISODataType::String: {
        const auto text = subfield.extractString(bytes, consumed);
        data.setString(std::string(text.substr(0, text.find('\0'))));
        break;
    }
    case ISODataType::BinaryString: {
        const auto text = subfield.extractString(bytes, consumed);
        if (subfield.label() == "NAME")
            data.setRecord(isoRecordName(text));
        else if (subfield.label() == "LNAM")
            data.setAgency(isoLongName(text));
        break;
    }
    }
    return data;
}

ISOField fieldOf(const ISORawField& raw)
{
    const auto& subfields = raw.definition().subfields();
    std::vector<ISORow> rows;
    std::span<const char> left = raw.data();
    const std::size_t count = subfields.empty() ? 0 : raw.repeatCount();
    for (std::size_t i = 0; i < count; ++i) {
        std::vector<ISOData> datas;
        datas.reserve(subfields.size());
        for (const auto& subfield : subfields) {
            std::size_t consumed = 0;
            datas.push_back(dataOf(subfield, left, consumed));
            left = left.subspan(std::min(consumed, left.size()));
        }
        rows.emplace_back(std::move(datas));
    }
    return {raw.definition().tag(), std::move(rows)};
}
} // namespace

ISODataRecord isoRecordName(std::string_view bytes)
{
    return {static_cast<std::uint8_t>(littleEndian(bytes, 0, 1)), littleEndian(bytes, 1, 4)};
}

ISODataAgency isoLongName(std::string_view bytes)
{
    return {static_cast<std::uint16_t>(littleEndian(bytes, 0, 2)), littleEndian(bytes, 2, 4),
            static_cast<std::uint16_t>(littleEndian(bytes, 6, 2))};
}

ISORecord ISORecord::copyOf(const ISORawRecord& record)
{
    std::vector<ISOField> fields;
    fields.reserve(record.fields().size());
    for (const auto& raw : record.fields())
        fields.push_back(fieldOf(raw));
    return ISORecord(std::move(fields));
}

Result<ISOFile> ISOFile::read(const std::filesystem::path& path)
{
    ISOModule module;
    if (auto opened = module.open(path); !opened)
        return tl::unexpected(opened.error());
    // Every value of a sound file has a byte at least: a file of more values than bytes would take
    // any amount of memory.
    constexpr std::size_t slack = 65'536;
    std::size_t values = 0;
    std::vector<ISORecord> records;
    while (const ISORawRecord* record = module.readRecord()) {
        for (const auto& field : record->fields())
            values += field.repeatCount() * field.definition().subfields().size();
        if (values > module.offset() + slack)
            break;
        records.push_back(ISORecord::copyOf(*record));
    }
    return ISOFile(std::move(records));
}

} // namespace kelvox
