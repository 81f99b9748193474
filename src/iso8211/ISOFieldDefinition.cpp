#include "iso8211/ISOFieldDefinition.h"

#include "iso8211/ISONumbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kelvox {

namespace {
constexpr int maximumFormatDepth = 16; ///< nested parentheses; published files use two

constexpr bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The text up to the first unit or field terminator, which is taken off the input as well.
std::string_view takeString(std::string_view& input)
{
    const std::size_t end = input.find_first_of("\x1e\x1f");
    const std::string_view text = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return text;
}

/// Splits at the first comma outside parentheses.
std::string_view takeItem(std::string_view& list)
{
    int depth = 0;
    std::size_t i = 0;
    for (; i < list.size(); ++i) {
        if (list[i] == '(')
            ++depth;
        else if (list[i] == ')')
            --depth;
        else if (list[i] == ',' && depth == 0)
            break;
    }
    const std::string_view item = list.substr(0, i);
    list.remove_prefix(std::min(i + 1, list.size()));
    return item;
}

/// Appends the flat items of a list such as "A(2),I(10),3A,2(b11,b24)", until there are `wanted`.
bool expand(std::string_view list, std::size_t wanted, int depth,
            std::vector<std::string_view>& items)
{
    if (depth > maximumFormatDepth)
        return false;
    while (!list.empty() && items.size() < wanted) {
        std::string_view item = takeItem(list);
        std::size_t digits = 0;
        while (digits < item.size() && isDigit(item[digits]))
            ++digits;
        std::int64_t repeat = digits > 0 ? isoDecimal(item.substr(0, digits)) : 1;
        item.remove_prefix(digits);
        const bool group = item.size() >= 2 && item.front() == '(' && item.back() == ')';
        for (; repeat > 0 && items.size() < wanted; --repeat) {
            const std::size_t before = items.size();
            if (!group)
                items.push_back(item);
            else if (!expand(item.substr(1, item.size() - 2), wanted, depth + 1, items))
                return false;
            if (items.size() == before)
                break; // an empty group, however often
        }
    }
    return true;
}

bool isPrintable(char c)
{
    return c >= 0x20 && c <= 0x7E;
}
} // namespace

ISOSubfieldDefinition::ISOSubfieldDefinition(std::string_view label)
    : m_label(label.substr(0, label.find_last_not_of(' ') + 1))
{
}

bool ISOSubfieldDefinition::setFormat(std::string_view format)
{
    m_format = format;
    if (format.empty())
        return false;
    m_width = 0;
    if (format.size() > 1 && format[1] == '(')
        m_width = static_cast<std::size_t>(
            std::clamp<std::int64_t>(isoDecimal(format.substr(2)), 0, 100'000'000));
    m_variable = m_width == 0;
    m_binaryFormat = 0;
    m_text = true;

    switch (format[0]) {
    case 'A':
    case 'C':
        m_dataType = ISODataType::String;
        return true;
    case 'I':
    case 'S':
        m_dataType = ISODataType::Int;
        return true;
    case 'R':
        m_dataType = ISODataType::Float;
        return true;
    case 'B':
    case 'b':
        break;
    default:
        return false;
    }

    m_text = false;
    m_variable = false;
    if (format.size() > 1 && format[1] == '(') {
        const std::size_t bits = m_width;
        m_dataType = bits <= 39 ? ISODataType::Int : ISODataType::BinaryString;
        m_width = bits / 8;
        m_binaryFormat = 2;
        return true;
    }
    if (format.size() < 2 || !isDigit(format[1]))
        return false;
    m_binaryFormat = format[1] - '0';
    m_dataType = m_binaryFormat == 1 || m_binaryFormat == 2 ? ISODataType::Int : ISODataType::Float;
    m_width = static_cast<std::size_t>(
        std::clamp<std::int64_t>(isoDecimal(format.substr(2)), 0, 100'000'000));
    return true;
}

ISOExtent ISOSubfieldDefinition::dataLength(std::span<const char> data) const
{
    if (!m_variable) {
        const std::size_t length = std::min(m_width, data.size());
        return {length, length};
    }
    if (data.empty())
        return {0, 0};
    if (data[0] == isoUnitTerminator)
        return {0, 1};
    // Values that begin with a non-printable byte (two-byte text) may hold the field terminator.
    const bool endsAtField = isPrintable(data[0]);
    std::size_t length = 1;
    while (length < data.size() && data[length] != isoUnitTerminator
           && !(endsAtField && data[length] == isoFieldTerminator))
        ++length;
    return {length, length + 1};
}

std::string_view ISOSubfieldDefinition::extractString(std::span<const char> data,
                                                      std::size_t& consumed) const
{
    const ISOExtent extent = dataLength(data);
    consumed = extent.consumed;
    return {data.data(), extent.length};
}

ISOSubfieldDefinition::Number ISOSubfieldDefinition::binaryNumber(std::span<const char> data) const
{
    Number number;
    if (m_width > data.size() || m_width > 8)
        return number;
    std::uint64_t raw = 0;
    const bool bigEndian = m_format[0] == 'B';
    for (std::size_t i = 0; i < m_width; ++i)
        raw = raw << 8U | static_cast<unsigned char>(data[bigEndian ? i : m_width - 1 - i]);

    const bool wholeWidth = m_width == 1 || m_width == 2 || m_width == 4;
    if (m_binaryFormat == 1 && wholeWidth) {
        number.whole = static_cast<std::int64_t>(raw);
    } else if (m_binaryFormat == 2 && wholeWidth) {
        const auto shift = 64 - 8 * m_width;
        number.whole = static_cast<std::int64_t>(raw << shift) >> shift;
    } else if (m_binaryFormat == 4 && m_width == 4) {
        float value = 0;
        const auto word = static_cast<std::uint32_t>(raw);
        std::memcpy(&value, &word, sizeof value);
        number.isReal = true;
        number.real = value;
    } else if (m_binaryFormat == 4 && m_width == 8) {
        number.isReal = true;
        std::memcpy(&number.real, &raw, sizeof number.real);
    }
    return number;
}

std::int64_t ISOSubfieldDefinition::extractInt(std::span<const char> data,
                                               std::size_t& consumed) const
{
    if (isText())
        return isoDecimal(extractString(data, consumed));
    consumed = m_width;
    const Number number = binaryNumber(data);
    if (!number.isReal)
        return number.whole;
    constexpr double limit = 9e18;
    return std::isfinite(number.real) && std::abs(number.real) < limit
        ? static_cast<std::int64_t>(number.real)
        : 0;
}

double ISOSubfieldDefinition::extractFloat(std::span<const char> data, std::size_t& consumed) const
{
    if (isText()) {
        // strtod wants an end; no number is longer than this.
        std::array<char, 64> buffer{};
        const std::string_view text = extractString(data, consumed);
        text.copy(buffer.data(), buffer.size() - 1);
        return std::strtod(buffer.data(), nullptr);
    }
    consumed = m_width;
    const Number number = binaryNumber(data);
    return number.isReal ? number.real : static_cast<double>(number.whole);
}

ISOFieldDefinition::ISOFieldDefinition(std::string tag, std::string name,
                                       std::string arrayDescriptor, int structureCode, int typeCode,
                                       std::string format)
    : m_tag(std::move(tag))
    , m_name(std::move(name))
    , m_arrayDescriptor(std::move(arrayDescriptor))
    , m_formatControls(std::move(format))
    , m_structureCode(structureCode)
    , m_typeCode(typeCode)
    , m_repeating(m_arrayDescriptor.starts_with('*'))
{
}

bool ISOFieldDefinition::addSubfield(std::string_view label, std::string_view format)
{
    ISOSubfieldDefinition subfield(label);
    if (!subfield.setFormat(format) || m_subfields.size() >= maximumSubfields)
        return false;
    if (!m_subfields.empty())
        m_arrayDescriptor += '!';
    m_arrayDescriptor += label;
    if (m_formatControls.empty())
        m_formatControls = "()";
    m_formatControls.insert(m_formatControls.size() - 1,
                            (m_subfields.empty() ? "" : ",") + std::string(format));
    m_subfields.push_back(std::move(subfield));
    measure();
    return true;
}

std::string ISOFieldDefinition::description() const
{
    std::string text;
    text += static_cast<char>('0' + m_structureCode);
    text += static_cast<char>('0' + m_typeCode);
    text += "00;&";
    text += m_escapeSequence;
    text += m_name;
    text += isoUnitTerminator;
    text += m_arrayDescriptor;
    if (!m_formatControls.empty()) { // the file control field has none
        text += isoUnitTerminator;
        text += m_formatControls;
    }
    text += isoFieldTerminator;
    return text;
}

bool ISOFieldDefinition::parse(std::string_view tag, std::string_view description,
                               std::size_t fieldControlLength)
{
    m_tag = tag;
    if (!description.empty() && description[0] >= '0' && description[0] <= '3')
        m_structureCode = description[0] - '0';
    if (description.size() > 1 && description[1] >= '1' && description[1] <= '6')
        m_typeCode = description[1] - '0';
    if (fieldControlLength == 9 && description.size() > 9)
        m_escapeSequence = description.substr(6, 3);
    description.remove_prefix(std::min(fieldControlLength, description.size()));
    m_name = takeString(description);
    m_arrayDescriptor = takeString(description);
    m_formatControls = takeString(description);
    if (m_structureCode == 0)
        return true;

    std::string_view labels = m_arrayDescriptor;
    if (labels.starts_with('*')) {
        m_repeating = true;
        labels.remove_prefix(1);
    }
    while (m_subfields.size() < maximumSubfields) {
        const std::size_t end = labels.find('!');
        m_subfields.emplace_back(labels.substr(0, end));
        if (end == std::string_view::npos)
            break;
        labels.remove_prefix(end + 1);
    }

    const std::string_view controls = m_formatControls;
    if (controls.size() < 2 || controls.front() != '(' || controls.back() != ')')
        return false;
    std::vector<std::string_view> items;
    if (!expand(controls.substr(1, controls.size() - 2), m_subfields.size(), 0, items)
        || items.size() < m_subfields.size()) {
        measure();
        return false;
    }
    bool good = true;
    for (std::size_t i = 0; i < m_subfields.size() && good; ++i)
        good = m_subfields[i].setFormat(items[i]);
    measure();
    return good;
}

void ISOFieldDefinition::measure()
{
    m_fixedWidth = 0;
    m_hasEmptySubfield = false;
    bool variable = false;
    for (const auto& subfield : m_subfields) {
        variable = variable || subfield.isVariable();
        m_fixedWidth += subfield.width();
        m_hasEmptySubfield =
            m_hasEmptySubfield || (!subfield.isVariable() && subfield.width() == 0);
    }
    if (variable)
        m_fixedWidth = 0;
}

int ISOFieldDefinition::subfieldIndex(std::string_view label) const
{
    const auto it = std::find_if(m_subfields.begin(), m_subfields.end(),
                                 [&](const auto& subfield) { return subfield.label() == label; });
    return it == m_subfields.end() ? -1 : static_cast<int>(it - m_subfields.begin());
}

std::size_t ISOFieldDefinition::repeatCount(std::span<const char> data) const
{
    if (!m_repeating)
        return 1;
    // Subfields of no width cost work but no bytes: keep rows times subfields within the bytes.
    const std::size_t limit = m_hasEmptySubfield
        ? data.size() / std::max<std::size_t>(m_subfields.size(), 1)
        : std::numeric_limits<std::size_t>::max();
    if (m_fixedWidth > 0)
        return std::min(limit, data.size() / m_fixedWidth);

    std::size_t count = 0;
    std::size_t offset = 0;
    while (count < limit) {
        const std::size_t groupStart = offset;
        for (const auto& subfield : m_subfields) {
            const auto left = data.subspan(offset);
            if (!subfield.isVariable() && subfield.width() > left.size())
                return count;
            offset += subfield.dataLength(left).consumed;
            if (offset > data.size())
                return count; // a value without its end belongs to no complete group
        }
        if (offset == groupStart)
            return count; // nothing left, or nothing to read
        ++count;
        if (offset + 2 > data.size())
            break; // only the field terminator is left
    }
    return count;
}

} // namespace kelvox
