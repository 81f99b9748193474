#include "iso8211/ISOModule.h"

#include "iso8211/ISONumbers.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace kelvox {

namespace {
// Generous on purpose: some producers write far larger records than the published limit.
constexpr std::int64_t maximumRecordLength = 100'000'000;
constexpr std::int64_t maximumFieldAreaStart = 100'000;

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x))
            == std::tolower(static_cast<unsigned char>(y));
    });
}

/// A decimal of the few digits that directories and leaders have; most are nothing but digits.
std::int64_t shortDecimal(std::string_view text)
{
    std::int64_t value = 0;
    for (const char c : text) {
        const auto digit = static_cast<unsigned>(c - '0');
        if (digit > 9)
            return isoDecimal(text);
        value = value * 10 + digit;
    }
    return value;
}

/// A decimal that counts bytes: negative ones are taken as none.
std::size_t byteCount(std::string_view text)
{
    return static_cast<std::size_t>(std::max<std::int64_t>(shortDecimal(text), 0));
}

/// substr that gives an empty view instead of throwing.
std::string_view slice(std::string_view text, std::size_t from,
                       std::size_t count = std::string_view::npos)
{
    return from < text.size() ? text.substr(from, count) : std::string_view();
}
} // namespace

Result<ISOLeader> ISOLeader::parse(std::string_view bytes)
{
    if (bytes.size() < size)
        return failure(Error::Code::Truncated, "the leader ends early", bytes.size());
    bytes = bytes.substr(0, size);
    if (bytes[8] != ' ' && bytes[8] != '1')
        return failure(Error::Code::Unsupported,
                       fmt::format("not ISO 8211: version byte 0x{:02X}",
                                   static_cast<unsigned char>(bytes[8])),
                       8);
    if (bytes[6] != 'L')
        return failure(Error::Code::BadSyntax, "not ISO 8211: no descriptive record in front", 6);
    const auto odd =
        std::find_if(bytes.begin(), bytes.end(), [](char c) { return c < 0x20 || c > 0x7E; });
    if (odd != bytes.end())
        return failure(Error::Code::BadSyntax, "not ISO 8211: unprintable byte in the leader",
                       static_cast<std::size_t>(odd - bytes.begin()));
    if (bytes[5] < '1' || bytes[5] > '3')
        return failure(Error::Code::Unsupported,
                       fmt::format("interchange level '{}' is not 1, 2 or 3", bytes[5]), 5);

    ISOLeader leader;
    leader.recordLength = static_cast<int>(isoDecimal(bytes.substr(0, 5)));
    leader.interchangeLevel = bytes[5];
    leader.leaderIdentifier = bytes[6];
    leader.inlineCodeExtension = bytes[7];
    leader.version = bytes[8];
    leader.applicationIndicator = bytes[9];
    leader.fieldControlLength = static_cast<int>(isoDecimal(bytes.substr(10, 2)));
    leader.fieldAreaStart = static_cast<int>(isoDecimal(bytes.substr(12, 5)));
    leader.extendedCharacterSet = bytes.substr(17, 3);
    leader.sizeOfFieldLength = static_cast<int>(isoDecimal(bytes.substr(20, 1)));
    leader.sizeOfFieldPosition = static_cast<int>(isoDecimal(bytes.substr(21, 1)));
    leader.sizeOfFieldTag = static_cast<int>(isoDecimal(bytes.substr(23, 1)));
    if (leader.recordLength < 12 || leader.fieldControlLength <= 0 || leader.fieldAreaStart < 24
        || leader.sizeOfFieldLength == 0 || leader.sizeOfFieldPosition == 0
        || leader.sizeOfFieldTag == 0)
        return failure(Error::Code::OutOfRange, "impossible sizes in the leader");
    return leader;
}

Result<void> ISOModule::open(const std::filesystem::path& path)
{
    close();
    auto file = MappedFile::open(path);
    if (!file)
        return tl::unexpected(file.error());
    m_file = std::make_unique<MappedFile>(std::move(*file));
    m_bytes = {m_file->bytes().data(), m_file->bytes().size()};
    return readDefinitions();
}

Result<void> ISOModule::openBytes(std::span<const char> bytes)
{
    close();
    m_bytes = {bytes.data(), bytes.size()};
    return readDefinitions();
}

void ISOModule::close()
{
    m_open = false;
    m_record = {};
    m_definitions.clear();
    m_lastTags.clear();
    m_error.reset();
    m_bytes = {};
    m_offset = 0;
    m_firstRecord = 0;
    m_file.reset();
}

Result<void> ISOModule::readDefinitions()
{
    auto leader = ISOLeader::parse(m_bytes);
    if (!leader) {
        close();
        return tl::unexpected(leader.error());
    }
    m_leader = *std::move(leader);
    const auto length = static_cast<std::size_t>(m_leader.recordLength);
    if (length < ISOLeader::size || length > m_bytes.size())
        return failure(Error::Code::Truncated, "the descriptive record ends early", m_bytes.size());

    const std::string_view record = m_bytes.substr(0, length);
    const auto tagSize = static_cast<std::size_t>(m_leader.sizeOfFieldTag);
    const auto lengthSize = static_cast<std::size_t>(m_leader.sizeOfFieldLength);
    const auto positionSize = static_cast<std::size_t>(m_leader.sizeOfFieldPosition);
    const std::size_t entrySize = tagSize + lengthSize + positionSize;

    // Descriptions do not overlap in a sound file; a hostile one must not make us parse the same
    // bytes again for every entry.
    std::size_t budget = 2 * length;
    for (std::size_t at = ISOLeader::size; at + entrySize <= length
         && record[at] != isoFieldTerminator && m_definitions.size() < maximumDefinitions;
         at += entrySize) {
        const auto entry = record.substr(at, entrySize);
        const auto description = slice(record,
                                       static_cast<std::size_t>(m_leader.fieldAreaStart)
                                           + byteCount(entry.substr(tagSize + lengthSize)),
                                       byteCount(entry.substr(tagSize, lengthSize)));
        const bool affordable = description.size() <= budget;
        budget -= affordable ? description.size() : budget;
        m_definitions.emplace_back().parse(entry.substr(0, tagSize),
                                           affordable ? description : std::string_view(),
                                           static_cast<std::size_t>(m_leader.fieldControlLength));
    }
    m_offset = m_firstRecord = length;
    m_open = true;
    return {};
}

int ISOModule::definitionIndex(std::string_view tag, std::size_t place)
{
    // Records of a kind follow each other: most have the fields of the one before.
    const bool packs = tag.size() == sizeof(std::uint32_t);
    std::uint32_t packed = 0;
    if (packs)
        std::memcpy(&packed, tag.data(), sizeof packed);
    if (packs && place < m_lastTags.size() && m_lastTags[place].tag == packed)
        return m_lastTags[place].index;
    const int index = definitionIndex(tag);
    if (packs && index >= 0) {
        if (place >= m_lastTags.size())
            m_lastTags.resize(place + 1);
        m_lastTags[place] = {packed, index};
    }
    return index;
}

int ISOModule::definitionIndex(std::string_view tag) const
{
    for (std::size_t i = 0; i < m_definitions.size(); ++i)
        if (m_definitions[i].tag() == tag)
            return static_cast<int>(i);
    for (std::size_t i = 0; i < m_definitions.size(); ++i)
        if (equalIgnoringCase(m_definitions[i].tag(), tag))
            return static_cast<int>(i);
    return -1;
}

const ISOFieldDefinition* ISOModule::findDefinition(std::string_view tag) const
{
    const int index = definitionIndex(tag);
    return index < 0 ? nullptr : &m_definitions[static_cast<std::size_t>(index)];
}

const ISORawRecord* ISOModule::stop(Error::Code code, std::string message)
{
    m_error = Error{code, std::move(message), m_offset};
    m_record.m_fields.clear();
    m_record.m_reuseLeader = false;
    m_offset = m_bytes.size(); // what follows a broken record cannot be trusted
    return nullptr;
}

const ISORawRecord* ISOModule::readRecord()
{
    m_error.reset();
    if (!m_open)
        return nullptr;
    if (m_file)
        m_file->releaseBefore(m_offset);

    if (m_record.m_reuseLeader) {
        const auto area = slice(m_bytes, m_offset, m_record.m_fieldArea.size());
        if (area.empty() && m_offset >= m_bytes.size()) {
            m_record.m_reuseLeader = false;
            return nullptr;
        }
        if (area.size() != m_record.m_fieldArea.size())
            return stop(Error::Code::Truncated, "the record ends early");
        // Each field of a sound record has at least its terminator. Without this a few bytes could
        // be read as any number of records, or as none for ever.
        if (area.empty() || area.size() < m_record.m_fields.size())
            return stop(Error::Code::BadSyntax, "the repeated record has no room for its fields");
        m_offset += area.size();
        m_record.m_fieldArea = area;
        return splitFields() ? &m_record : nullptr;
    }

    const std::string_view leader = slice(m_bytes, m_offset, ISOLeader::size);
    if (leader.empty())
        return nullptr;
    if (leader.size() < ISOLeader::size)
        return stop(Error::Code::Truncated, "the record's leader ends early");
    const auto digit = [&](std::size_t at) { return static_cast<unsigned>(leader[at] - '0'); };
    if (digit(20) > 9 || digit(21) > 9 || digit(23) > 9)
        return stop(Error::Code::BadSyntax, "the record's entry map is not made of digits");
    m_record.m_sizeOfFieldLength = digit(20);
    m_record.m_sizeOfFieldPosition = digit(21);
    m_record.m_sizeOfFieldTag = digit(23);
    if (digit(20) + digit(21) + digit(23) == 0)
        return stop(Error::Code::BadSyntax, "the record's entry map is all zero");
    m_record.m_reuseLeader = leader[6] == 'R';

    const std::int64_t length = shortDecimal(leader.substr(0, 5));
    const std::int64_t fieldAreaStart = shortDecimal(leader.substr(12, 5));
    if (length == 0) {
        m_offset += ISOLeader::size;
        return readUnmeasuredBody() && splitFields() ? &m_record : nullptr;
    }
    if (length < 24 || length > maximumRecordLength || fieldAreaStart < 24
        || fieldAreaStart > maximumFieldAreaStart)
        return stop(Error::Code::OutOfRange, fmt::format("impossible record length {}", length));
    m_offset += ISOLeader::size;
    return readBody(static_cast<std::size_t>(length) - ISOLeader::size,
                    static_cast<std::size_t>(fieldAreaStart) - ISOLeader::size)
            && splitFields()
        ? &m_record
        : nullptr;
}

bool ISOModule::readBody(std::size_t length, std::size_t fieldAreaOffset)
{
    std::string_view body = slice(m_bytes, m_offset, length);
    if (body.size() != length) {
        stop(Error::Code::Truncated, "the record ends early");
        return false;
    }
    if (body.empty() || body.back() != isoFieldTerminator) {
        // A wrong record length: the record goes on to its terminator.
        const std::size_t end = m_bytes.find(isoFieldTerminator, m_offset + length);
        if (end == std::string_view::npos) {
            stop(Error::Code::Truncated, "the record has no end");
            return false;
        }
        body = m_bytes.substr(m_offset, end + 1 - m_offset);
    }
    m_offset += body.size();
    m_record.m_directory = body;
    m_record.m_fieldArea = slice(body, fieldAreaOffset);
    return true;
}

bool ISOModule::readUnmeasuredBody()
{
    const std::size_t tagSize = m_record.m_sizeOfFieldTag;
    const std::size_t lengthSize = m_record.m_sizeOfFieldLength;
    const std::size_t entrySize = tagSize + lengthSize + m_record.m_sizeOfFieldPosition;
    std::size_t dataSize = 0;
    std::size_t at = m_offset;
    while (at < m_bytes.size() && m_bytes[at] != isoFieldTerminator) {
        dataSize += byteCount(slice(m_bytes, at + tagSize, lengthSize));
        at += entrySize;
    }
    const std::size_t area = at + 1;
    if (at >= m_bytes.size() || dataSize > m_bytes.size() - area) {
        stop(Error::Code::Truncated, "the record ends early");
        return false;
    }
    m_record.m_directory = m_bytes.substr(m_offset, at - m_offset);
    m_record.m_fieldArea = m_bytes.substr(area, dataSize);
    m_offset = area + dataSize;
    return true;
}

bool ISOModule::splitFields()
{
    const std::size_t tagSize = m_record.m_sizeOfFieldTag;
    const std::size_t lengthSize = m_record.m_sizeOfFieldLength;
    const std::size_t positionSize = m_record.m_sizeOfFieldPosition;
    const std::size_t entrySize = tagSize + lengthSize + positionSize;
    const std::string_view area{m_record.m_fieldArea.data(), m_record.m_fieldArea.size()};

    m_record.m_fields.clear();
    // Fields do not overlap in a sound record; a hostile one must not have its bytes read again for
    // every entry of its directory.
    std::size_t budget = 2 * area.size();
    std::string_view directory{m_record.m_directory.data(), m_record.m_directory.size()};
    while (!directory.empty() && directory.front() != isoFieldTerminator) {
        const std::string_view tag(directory.data(), std::min(tagSize, directory.size()));
        const int index = definitionIndex(tag, m_record.m_fields.size());
        if (directory.size() < entrySize || index < 0
            || m_record.m_fields.size() >= ISORawRecord::maximumFields) {
            stop(Error::Code::BadSyntax,
                 fmt::format("the record's directory names the unknown field \"{}\"", tag));
            return false;
        }
        const std::size_t length = byteCount({directory.data() + tagSize, lengthSize});
        const std::size_t from = byteCount({directory.data() + tagSize + lengthSize, positionSize});
        directory.remove_prefix(entrySize);
        const auto data = slice(area, from, length);
        if (data.size() > budget) {
            stop(Error::Code::BadSyntax, "the record's fields lie over each other");
            return false;
        }
        budget -= data.size();
        const auto place = static_cast<std::size_t>(index);
        m_record.m_fields.emplace_back(m_definitions[place], place, data);
    }
    return true;
}

} // namespace kelvox
