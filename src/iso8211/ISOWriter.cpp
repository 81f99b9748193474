#include "iso8211/ISOWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace kelvox {

namespace {
using WriteValue = std::variant<std::string, std::int64_t, double>;

/// The bytes of one value, or nothing when a fixed width is too narrow for it.
std::optional<std::string> encode(const ISOSubfieldDefinition& subfield, const WriteValue& value)
{
    if (subfield.isText() || subfield.dataType() == ISODataType::BinaryString) {
        std::string text;
        if (const auto* words = std::get_if<std::string>(&value))
            text = *words;
        else if (const auto* whole = std::get_if<std::int64_t>(&value))
            text = fmt::format("{}", *whole);
        else
            text = fmt::format("{:.16g}", std::get<double>(value));
        if (subfield.isVariable())
            return text + isoUnitTerminator;
        if (text.size() > subfield.width())
            return std::nullopt;
        text.resize(subfield.width(), subfield.isText() ? ' ' : '\0');
        return text;
    }
    std::int64_t whole = 0;
    if (const auto* number = std::get_if<std::int64_t>(&value))
        whole = *number;
    else if (const auto* real = std::get_if<double>(&value))
        whole = static_cast<std::int64_t>(*real);
    std::string bytes(subfield.width(), '\0');
    for (std::size_t i = 0; i < std::min<std::size_t>(bytes.size(), 8); ++i)
        bytes[i] = static_cast<char>(whole >> (8 * i));
    if (subfield.format().front() == 'B')
        std::reverse(bytes.begin(), bytes.end());
    return bytes;
}
} // namespace

void ISOWriteRecord::addField(const ISOFieldDefinition& definition)
{
    m_fields.push_back({&definition, {}, {}, false});
}

ISOWriteRecord::Field* ISOWriteRecord::find(std::string_view tag, std::size_t index)
{
    for (Field& field : m_fields)
        if (field.definition->tag() == tag && index-- == 0)
            return &field;
    return nullptr;
}

bool ISOWriteRecord::set(std::string_view tag, std::size_t field, std::string_view label,
                         std::size_t repetition, const WriteValue& value)
{
    Field* target = find(tag, field);
    const int index = target ? target->definition->subfieldIndex(label) : -1;
    if (index < 0)
        return false;
    const auto& subfields = target->definition->subfields();
    auto bytes = encode(subfields[static_cast<std::size_t>(index)], value);
    if (!bytes)
        return false;
    // Values skipped so far stand as empty ones.
    const std::size_t wanted = (repetition + 1) * subfields.size();
    while (target->values.size() < wanted) {
        const auto& subfield = subfields[target->values.size() % subfields.size()];
        target->values.push_back(encode(subfield, std::string()).value_or(""));
    }
    target->values[repetition * subfields.size() + static_cast<std::size_t>(index)] =
        *std::move(bytes);
    return true;
}

bool ISOWriteRecord::setString(std::string_view tag, std::size_t field, std::string_view label,
                               std::size_t repetition, std::string_view value)
{
    return set(tag, field, label, repetition, std::string(value));
}

bool ISOWriteRecord::setInt(std::string_view tag, std::size_t field, std::string_view label,
                            std::size_t repetition, std::int64_t value)
{
    return set(tag, field, label, repetition, value);
}

bool ISOWriteRecord::setFloat(std::string_view tag, std::size_t field, std::string_view label,
                              std::size_t repetition, double value)
{
    return set(tag, field, label, repetition, value);
}

bool ISOWriteRecord::setBytes(std::string_view tag, std::size_t field, std::string bytes)
{
    Field* target = find(tag, field);
    if (!target)
        return false;
    target->raw = std::move(bytes);
    target->isRaw = true;
    return true;
}

bool ISOWriteRecord::append(std::string_view value)
{
    Field& field = m_fields.back();
    const auto& subfields = field.definition->subfields();
    auto bytes = encode(subfields[field.values.size() % subfields.size()], std::string(value));
    if (!bytes)
        return false;
    field.values.push_back(*std::move(bytes));
    return true;
}

bool ISOWriteRecord::append(std::int64_t value)
{
    Field& field = m_fields.back();
    const auto& subfields = field.definition->subfields();
    auto bytes = encode(subfields[field.values.size() % subfields.size()], value);
    if (!bytes)
        return false;
    field.values.push_back(*std::move(bytes));
    return true;
}

ISOWriter::ISOWriter(ISOLeader leader, std::vector<ISOFieldDefinition> definitions)
    : m_leader(std::move(leader))
    , m_definitions(std::move(definitions))
{
    writeDefinitions();
}

const ISOFieldDefinition* ISOWriter::definition(std::string_view tag) const
{
    const auto it = std::find_if(m_definitions.begin(), m_definitions.end(),
                                 [&](const auto& one) { return one.tag() == tag; });
    return it == m_definitions.end() ? nullptr : &*it;
}

void ISOWriter::writeDefinitions()
{
    std::string directory;
    std::string area;
    for (const auto& definition : m_definitions) {
        const std::string description = definition.description();
        // The widths 3 and 4 are fixed on purpose, whatever the leader says.
        directory += fmt::format("{}{:03}{:04}", definition.tag(), description.size(), area.size());
        area += description;
    }
    directory += isoFieldTerminator;

    const std::size_t fieldAreaStart =
        static_cast<std::size_t>(m_leader.sizeOfFieldLength + m_leader.sizeOfFieldPosition
                                 + m_leader.sizeOfFieldTag)
            * m_definitions.size()
        + 25;
    m_bytes =
        fmt::format("{:05}{}{}{}{}{}{:02}{:05}{}{}{}0{}", fieldAreaStart + area.size(),
                    m_leader.interchangeLevel, m_leader.leaderIdentifier,
                    m_leader.inlineCodeExtension, m_leader.version, m_leader.applicationIndicator,
                    9, fieldAreaStart, m_leader.extendedCharacterSet, m_leader.sizeOfFieldLength,
                    m_leader.sizeOfFieldPosition, m_leader.sizeOfFieldTag);
    m_bytes += directory + area;
}

Result<void> ISOWriter::write(const ISOWriteRecord& record)
{
    std::string directory;
    std::string area;
    for (const auto& field : record.m_fields) {
        const std::size_t start = area.size();
        if (field.isRaw) {
            area += field.raw;
        } else {
            for (const auto& value : field.values)
                area += value;
            area += isoFieldTerminator;
        }
        directory += fmt::format("{:>{}}{:05}{:05}", field.definition->tag(),
                                 m_leader.sizeOfFieldTag, area.size() - start, start);
    }
    directory += isoFieldTerminator;
    const std::size_t fieldAreaStart = ISOLeader::size + directory.size();
    const std::size_t length = fieldAreaStart + area.size();
    if (length > 99'999)
        return failure(Error::Code::OutOfRange,
                       fmt::format("a record of {} bytes does not fit its length field", length),
                       m_bytes.size());
    // Records carry lengths and positions of five digits, unlike the descriptive record.
    m_bytes +=
        fmt::format("{:05} D     {:05}   550{}", length, fieldAreaStart, m_leader.sizeOfFieldTag);
    m_bytes += directory + area;
    return {};
}

Result<void> ISOWriter::save(const std::filesystem::path& path) const
{
    return writeFileAtomically(path, m_bytes);
}

} // namespace kelvox
