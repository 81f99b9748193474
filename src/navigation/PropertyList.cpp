#include "navigation/PropertyList.h"

#include "base/File.h"
#include "base/RegularFile.h"

#include <plist/plist.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <thread>
#include <utility>

namespace kelvox {

namespace {
constexpr std::string_view lineOfKey = "\n<key>";
constexpr int deepest = 16; // levels of dictionaries and arrays
using Kind = PropertyFields::Kind;

void appendUtf8(std::string& text, std::uint32_t code)
{
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
        text += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (code >> 18 & 0x07));
        text += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (code & 0x3F));
    }
}

std::string unescaped(std::string_view raw)
{
    if (raw.find('&') == std::string_view::npos)
        return std::string(raw);
    constexpr std::pair<std::string_view, char> names[] = {
        {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    std::string text;
    text.reserve(raw.size());
    while (!raw.empty()) {
        const auto ampersand = std::min(raw.find('&'), raw.size());
        text += raw.substr(0, ampersand);
        raw.remove_prefix(ampersand);
        const auto end = raw.find(';');
        if (raw.empty() || end == std::string_view::npos) {
            text += raw;
            break;
        }
        const auto name = raw.substr(1, end - 1);
        raw.remove_prefix(end + 1);
        for (const auto& [known, character] : names)
            if (name == known)
                text += character;
        if (name.starts_with('#')) {
            const bool hex = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
            std::uint32_t code = 0;
            std::from_chars(name.data() + (hex ? 2 : 1), name.data() + name.size(), code,
                            hex ? 16 : 10);
            appendUtf8(text, std::min(code, 0x10FFFFU));
        }
    }
    return text;
}

/// Walks over plain XML property lists: no comments, no attributes. Anything else makes it stop,
/// and the library reads the file instead.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : m_begin(text.data())
        , m_at(text.data())
        , m_end(text.data() + text.size())
    {
    }
    [[nodiscard]] std::size_t offset() const { return static_cast<std::size_t>(m_at - m_begin); }
    [[nodiscard]] bool atEnd()
    {
        skipBlanks();
        return m_at == m_end;
    }
    bool accept(std::string_view token)
    {
        skipBlanks();
        return acceptHere(token);
    }
    /// From here to behind the next `end`.
    bool skipPast(std::string_view start, std::string_view end)
    {
        if (!accept(start))
            return false;
        const auto found = std::string_view(m_at, size()).find(end);
        if (found == std::string_view::npos)
            return false;
        m_at += found + end.size();
        return true;
    }
    [[nodiscard]] bool atKey()
    {
        skipBlanks();
        return size() >= 2 && m_at[0] == '<' && m_at[1] == 'k';
    }
    bool key(std::string_view& key) { return accept("<key>") && content(key, "</key>"); }

    bool value(Kind& kind, std::string_view& raw, int depth = 0)
    {
        skipBlanks();
        raw = {};
        if (size() < 2 || *m_at != '<' || depth > deepest)
            return false;
        switch (m_at[1]) {
        case 'r':
            kind = Kind::Number;
            return acceptHere("<real>") && content(raw, "</real>");
        case 's':
            kind = Kind::Text;
            return acceptHere("<string/>") || (acceptHere("<string>") && content(raw, "</string>"));
        case 'i':
            kind = Kind::Number;
            return acceptHere("<integer>") && content(raw, "</integer>");
        case 't':
        case 'f':
            kind = Kind::Boolean;
            raw = {m_at + 1, 1};
            return acceptHere("<true/>") || acceptHere("<false/>");
        case 'd':
            if (acceptHere("<date>")) {
                kind = Kind::Time;
                return content(raw, "</date>");
            }
            if (acceptHere("<data>")) {
                kind = Kind::Other;
                return content(raw, "</data>");
            }
            kind = Kind::Dictionary;
            return acceptHere("<dict/>") || dictionary(raw, depth);
        case 'a':
            kind = Kind::Other;
            return acceptHere("<array/>") || array(depth);
        default:
            return false;
        }
    }
    /// After its opening tag; the closing one is taken too.
    bool fields(PropertyFields& fields)
    {
        std::size_t count = 0;
        while (!accept("</dict>")) {
            PropertyFields::Field field{};
            const auto* last = fields.at(count);
            if (!(last && sameAgain(*last, field))
                && !(key(field.key) && value(field.kind, field.raw)))
                return false;
            fields.set(count++, field);
        }
        fields.truncate(count);
        return true;
    }

private:
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(m_end - m_at); }
    void skipBlanks()
    {
        while (m_at != m_end && (*m_at == ' ' || (*m_at >= '\t' && *m_at <= '\r')))
            ++m_at;
    }
    bool acceptHere(std::string_view token)
    {
        if (size() < token.size() || std::memcmp(m_at, token.data(), token.size()) != 0)
            return false;
        m_at += token.size();
        return true;
    }
    bool content(std::string_view& raw, std::string_view closing)
    {
        const char* start = m_at;
        while (m_at != m_end && *m_at != '<')
            ++m_at;
        raw = {start, static_cast<std::size_t>(m_at - start)};
        return acceptHere(closing);
    }
    /// One record is mostly like the last: the same keys with the same kinds of values. Then one
    /// comparison stands for reading the tags.
    bool sameAgain(const PropertyFields::Field& last, PropertyFields::Field& field)
    {
        constexpr std::string_view keyTag = "<key>";
        std::string_view closing;
        if (last.kind == Kind::Number)
            closing = *(last.raw.data() - 2) == 'l' ? "</real>" : "</integer>";
        else if (last.kind == Kind::Text && last.raw.data())
            closing = "</string>";
        else if (last.kind == Kind::Time)
            closing = "</date>";
        else
            return false;
        const char* head = last.key.data() - keyTag.size();
        const char* start = m_at;
        if (!acceptHere({head, static_cast<std::size_t>(last.raw.data() - head)}))
            return false;
        field.key = {start + keyTag.size(), last.key.size()};
        field.kind = last.kind;
        if (content(field.raw, closing))
            return true;
        m_at = start;
        return false;
    }
    bool dictionary(std::string_view& raw, int depth)
    {
        if (!acceptHere("<dict>"))
            return false;
        const char* start = m_at;
        Kind kind{};
        std::string_view ignored;
        for (;;) {
            skipBlanks();
            raw = {start, static_cast<std::size_t>(m_at - start)};
            if (acceptHere("</dict>"))
                return true;
            if (!key(ignored) || !value(kind, ignored, depth + 1))
                return false;
        }
    }
    bool array(int depth)
    {
        if (!acceptHere("<array>"))
            return false;
        Kind kind{};
        std::string_view ignored;
        while (!accept("</array>"))
            if (!value(kind, ignored, depth + 1))
                return false;
        return true;
    }

    const char* m_begin;
    const char* m_at;
    const char* m_end;
};

/// Entries of the top-level dictionary, as long as there are any.
/// @return how many were no dictionaries; nothing where the scanner stopped within one
std::optional<std::size_t> scanEntries(Scanner& scanner, const RecordVisitor& visitor,
                                       std::size_t part)
{
    std::size_t passedOver = 0;
    PropertyFields fields;
    std::string_view key;
    while (scanner.atKey()) {
        if (!scanner.key(key))
            return std::nullopt;
        if (scanner.accept("<dict>")) {
            if (!scanner.fields(fields))
                return std::nullopt;
            visitor.record(part, key, fields);
            continue;
        }
        Kind kind{};
        std::string_view ignored;
        if (!scanner.value(kind, ignored))
            return std::nullopt;
        ++passedOver;
    }
    return passedOver;
}

Result<std::size_t> scanRecords(std::string_view text, const RecordVisitor& visitor)
{
    Scanner scanner(text);
    const auto stopped = [&] {
        return failure(Error::Code::BadSyntax, "not a plain property list", scanner.offset());
    };
    scanner.skipPast("<?xml", "?>");
    scanner.skipPast("<!DOCTYPE", ">");
    if (!scanner.skipPast("<plist", ">"))
        return stopped();
    std::size_t passedOver = 0;
    if (!scanner.accept("<dict/>")) {
        if (!scanner.accept("<dict>"))
            return stopped();
        const auto scanned = scanEntries(scanner, visitor, 0);
        if (!scanned || !scanner.accept("</dict>"))
            return stopped();
        passedOver = *scanned;
    }
    if (!scanner.accept("</plist>") || !scanner.atEnd())
        return stopped();
    return passedOver;
}

/// Reads the entries between two offsets of a file piece by piece. Every piece ends where a line
/// begins with a key. Whether that is between two entries the next scan shows: a piece that is
/// not made of whole entries makes the reading fail, and the file is read as a whole instead.
std::optional<std::size_t> readPart(const RegularFile& file, std::size_t from, std::size_t to,
                                    const RecordVisitor& visitor, std::size_t part)
{
    constexpr std::size_t pieceSize = std::size_t{1} << 18;
    std::vector<char> buffer(std::min(pieceSize, to - from));
    std::size_t passedOver = 0;
    while (from < to) {
        const std::size_t wanted = std::min(buffer.size(), to - from);
        if (file.readAt(from, {buffer.data(), wanted}).value_or(0) != wanted)
            return std::nullopt;
        std::string_view piece(buffer.data(), wanted);
        if (from + wanted < to) {
            const auto end = piece.rfind(lineOfKey);
            if (end == std::string_view::npos)
                return std::nullopt; // a record as long as a piece
            piece = piece.substr(0, end + 1);
        }
        Scanner scanner(piece);
        const auto scanned = scanEntries(scanner, visitor, part);
        if (!scanned || !scanner.atEnd())
            return std::nullopt;
        passedOver += *scanned;
        from += piece.size();
    }
    return passedOver;
}

/// The first line that begins with a key at or after an offset; the end of the range where none is
/// near.
std::size_t nextKeyLine(const RegularFile& file, std::size_t at, std::size_t end)
{
    std::array<char, 8192> buffer{};
    const auto size = file.readAt(at, {buffer.data(), std::min(buffer.size(), end - at)});
    const auto found = std::string_view(buffer.data(), size.value_or(0)).find(lineOfKey);
    return found == std::string_view::npos ? end : at + found + 1;
}

std::optional<std::size_t> readOwnForm(const std::filesystem::path& path,
                                       const RecordVisitor& visitor)
{
    constexpr std::size_t leastPart = std::size_t{1} << 20; // below it a thread costs more
    constexpr auto head = PropertyWriter::documentHead;
    constexpr auto tail = PropertyWriter::documentTail;
    const auto file = RegularFile::open(path);
    if (!file || file->size() < head.size() + tail.size())
        return std::nullopt;
    const auto holds = [&](std::string_view text, std::size_t at) {
        std::string found(text.size(), '\0');
        return file->readAt(at, found) && found == text;
    };
    const std::size_t end = file->size() - tail.size();
    if (!holds(head, 0) || !holds(tail, end))
        return std::nullopt;

    const std::size_t size = end - head.size();
    const std::size_t parts = std::clamp<std::size_t>(size / leastPart, 1, visitor.parts);
    std::vector<std::size_t> starts{head.size()};
    for (std::size_t part = 1; part < parts; ++part)
        starts.push_back(
            nextKeyLine(*file, std::max(starts.back(), head.size() + size / parts * part), end));
    starts.push_back(end);
    std::vector<std::optional<std::size_t>> passedOver(parts);
    const auto read = [&](std::size_t part) {
        passedOver[part] = readPart(*file, starts[part], starts[part + 1], visitor, part);
    };
    std::vector<std::thread> helpers;
    for (std::size_t part = 1; part < parts; ++part)
        helpers.emplace_back(read, part);
    read(0);
    for (auto& helper : helpers)
        helper.join();
    std::size_t sum = 0;
    for (const auto& one : passedOver) {
        if (!one)
            return std::nullopt;
        sum += *one;
    }
    return sum;
}

/// What the library makes of the bytes, as plain XML text; empty when it cannot read them.
std::string viaLibrary(std::string_view bytes)
{
    if (bytes.size() > UINT32_MAX)
        return {};
    plist_t list = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &list);
    const std::unique_ptr<void, void (*)(plist_t)> owner(list, plist_free);
    if (!list || plist_get_node_type(list) != PLIST_DICT)
        return {};
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(list, &xml, &length);
    const std::unique_ptr<char, void (*)(char*)> text(xml, plist_to_xml_free);
    return text ? std::string(text.get(), length) : std::string();
}

/// Digits with or without a point, no more than a double holds whole: their quotient by a power of
/// ten is then rounded once only, as it must be (Clinger, 1990). False leaves it to the library.
bool plainNumber(std::string_view text, double& value)
{
    constexpr std::array<double, 16> powers{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                            1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    if (text.empty() || text.size() >= powers.size())
        return false;
    std::int64_t digits = 0;
    std::size_t point = text.size() - 1; // as if it stood behind the last digit
    bool hasPoint = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '.' && !hasPoint && i > 0) {
            point = i;
            hasPoint = true;
        } else if (text[i] >= '0' && text[i] <= '9') {
            digits = digits * 10 + (text[i] - '0');
        } else {
            return false;
        }
    }
    value = static_cast<double>(digits) / powers[text.size() - 1 - point];
    if (negative)
        value = -value;
    return true;
}

std::optional<int> digits(std::string_view text, std::size_t from, std::size_t count)
{
    int value = 0;
    for (const char c : text.substr(from, count)) {
        if (c < '0' || c > '9')
            return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}
} // namespace

const PropertyFields::Field* PropertyFields::find(std::string_view key) const
{
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const std::size_t at = (m_next + i) % m_fields.size();
        if (m_fields[at].key == key) {
            m_next = at + 1;
            return &m_fields[at];
        }
    }
    return nullptr;
}

std::optional<std::string> PropertyFields::text(std::string_view key) const
{
    const Field* field = find(key);
    if (!field || field->kind != Kind::Text)
        return std::nullopt;
    return unescaped(field->raw);
}

std::optional<double> PropertyFields::number(std::string_view key) const
{
    const Field* field = find(key);
    double value = 0;
    if (!field || field->kind != Kind::Number)
        return std::nullopt;
    if (plainNumber(field->raw, value))
        return value;
    const auto raw = trimmed(field->raw);
    const auto [end, error] = std::from_chars(raw.data(), raw.data() + raw.size(), value);
    if (error != std::errc{} || end != raw.data() + raw.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<float> PropertyFields::real(std::string_view key) const
{
    const auto value = number(key);
    return value ? std::optional(static_cast<float>(*value)) : std::nullopt;
}

std::optional<bool> PropertyFields::boolean(std::string_view key) const
{
    const Field* field = find(key);
    if (!field || (field->kind != Kind::Boolean && field->kind != Kind::Number))
        return std::nullopt;
    return field->kind == Kind::Boolean ? field->raw == "t" : number(key).value_or(0) != 0;
}

std::optional<Date> PropertyFields::date(std::string_view key) const
{
    using namespace std::chrono;
    const Field* field = find(key);
    if (!field || field->kind != Kind::Time || field->raw.size() < 20)
        return std::nullopt;
    const auto raw = field->raw;
    const auto y = digits(raw, 0, 4);
    const auto mo = digits(raw, 5, 2);
    const auto d = digits(raw, 8, 2);
    const auto h = digits(raw, 11, 2);
    const auto mi = digits(raw, 14, 2);
    const auto s = digits(raw, 17, 2);
    if (!y || !mo || !d || !h || !mi || !s)
        return std::nullopt;
    const year_month_day day{year(*y), month(static_cast<unsigned>(*mo)),
                             std::chrono::day(static_cast<unsigned>(*d))};
    // The clock counts nanoseconds in 64 bits, which end in the years 1677 and 2262.
    if (!day.ok() || *y < 1678 || *y > 2261)
        return std::nullopt;
    return sys_days(day) + hours(*h) + minutes(*mi) + seconds(*s);
}

std::vector<std::string> PropertyFields::keysOf(std::string_view key) const
{
    std::vector<std::string> keys;
    const Field* field = find(key);
    if (!field || field->kind != Kind::Dictionary)
        return keys;
    Scanner scanner(field->raw);
    std::string_view name;
    std::string_view ignored;
    Kind kind{};
    while (scanner.key(name) && scanner.value(kind, ignored))
        keys.push_back(unescaped(name));
    return keys;
}

Result<std::size_t> readRecords(std::string_view bytes, const RecordVisitor& visitor)
{
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    auto plain = scanRecords(bytes, visitor);
    if (plain)
        return plain;
    visitor.restart();
    const std::string text = viaLibrary(bytes);
    if (text.empty())
        return failure(Error::Code::BadSyntax, "not a property list", plain.error().offset);
    return scanRecords(text, visitor);
}

Result<std::size_t> readRecordFile(const std::filesystem::path& file, const RecordVisitor& visitor)
{
    if (const auto own = readOwnForm(file, visitor))
        return *own;
    visitor.restart();
    const auto bytes = readFile(file);
    if (!bytes)
        return tl::unexpected(bytes.error());
    return readRecords(*bytes, visitor);
}

Result<PropertyFields> readDictionary(std::string_view text)
{
    Scanner scanner(text);
    PropertyFields fields;
    if (!scanner.accept("<dict>") || !scanner.fields(fields))
        return failure(Error::Code::BadSyntax, "not a dictionary", scanner.offset());
    return fields;
}

std::string cleanText(std::string_view text)
{
    std::string clean;
    clean.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80) {
            const bool control = (first < 0x20 && first != '\n' && first != '\t') || first == 0x7F;
            clean += control ? ' ' : text[i];
            ++i;
            continue;
        }
        const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
        bool valid = first >= 0xC2 && first <= 0xF4 && i + length <= text.size();
        for (std::size_t k = 1; valid && k < length; ++k)
            valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
        if (valid) {
            clean += text.substr(i, length);
            i += length;
        } else {
            appendUtf8(clean, first);
            ++i;
        }
    }
    return clean;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace kelvox
