#include "navigation/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <memory>
#include <utility>

namespace kelvox {

namespace {
constexpr std::string_view documentHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                          "<plist version=\"1.0\">\n<dict>\n";
constexpr std::string_view documentTail = "</dict>\n</plist>\n";
constexpr int deepest = 16; // levels of dictionaries and arrays
using Kind = PropertyFields::Kind;

constexpr std::size_t longestNumber = 32; ///< characters
constexpr std::size_t longestTags = 64; ///< characters of all tags around one value

// Writing into room that is there: each returns where the next character goes.

char* put(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char* putPadded(char* out, unsigned value, int width)
{
    for (int i = width - 1; i >= 0; --i, value /= 10)
        out[i] = static_cast<char>('0' + value % 10);
    return out + width;
}

char* putNumber(char* out, auto value)
{
    return std::to_chars(out, out + longestNumber, value).ptr;
}

/// Most values are tenths, for which there is a shorter way than the general one.
char* putReal(char* out, float value)
{
    constexpr double mostTenths = 999'999; // six digits always read back the same
    const double tenths = static_cast<double>(value) * 10;
    if (!(std::abs(tenths) <= mostTenths))
        return putNumber(out, std::isfinite(value) ? value : 0.0F);
    const int whole = static_cast<int>(tenths + (tenths < 0 ? -0.5 : 0.5));
    if (static_cast<float>(whole / 10.0) != value)
        return putNumber(out, value);
    if (whole < 0)
        *out++ = '-';
    out = putNumber(out, std::abs(whole) / 10);
    if (whole % 10 != 0) {
        *out++ = '.';
        *out++ = static_cast<char>('0' + std::abs(whole) % 10);
    }
    return out;
}

constexpr std::size_t longestEscape = 5; ///< characters that one character may become

char* putEscaped(char* out, std::string_view value)
{
    for (const char c : value) {
        if (c == '&')
            out = put(out, "&amp;");
        else if (c == '<')
            out = put(out, "&lt;");
        else if (c == '>')
            out = put(out, "&gt;");
        else if (c == '\r')
            out = put(out, "&#13;");
        else
            *out++ = c;
    }
    return out;
}

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
        PropertyFields fields;
        while (!scanner.accept("</dict>")) {
            std::string_view key;
            if (!scanner.key(key))
                return stopped();
            if (scanner.accept("<dict>")) {
                if (!scanner.fields(fields))
                    return stopped();
                visitor.record(key, fields);
                continue;
            }
            Kind kind{};
            std::string_view ignored;
            if (!scanner.value(kind, ignored))
                return stopped();
            ++passedOver;
        }
    }
    if (!scanner.accept("</plist>") || !scanner.atEnd())
        return stopped();
    return passedOver;
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

char* PropertyWriter::room(std::size_t bytes)
{
    constexpr std::size_t least = 1024;
    if (m_text.size() - m_used < bytes)
        m_text.resize(std::max({m_text.size() * 2, m_used + bytes, least}));
    return m_text.data() + m_used;
}

void PropertyWriter::append(std::string_view text)
{
    finish(put(room(text.size()), text));
}

std::string PropertyWriter::take()
{
    m_text.resize(std::exchange(m_used, 0));
    return std::exchange(m_text, {});
}

void PropertyWriter::beginDocument()
{
    append(documentHead);
}

void PropertyWriter::endDocument()
{
    append(documentTail);
}

void PropertyWriter::beginDictionary()
{
    append("<dict>");
}

void PropertyWriter::endDictionary()
{
    append("</dict>");
}

void PropertyWriter::newLine()
{
    append("\n");
}

void PropertyWriter::key(std::string_view key)
{
    char* out = room(key.size() * longestEscape + longestTags);
    out = put(out, "<key>");
    out = putEscaped(out, key);
    finish(put(out, "</key>"));
}

void PropertyWriter::boolean(std::string_view key, bool value)
{
    this->key(key);
    append(value ? "<true/>" : "<false/>");
}

void PropertyWriter::text(std::string_view key, std::string_view value)
{
    char* out = room(key.size() + value.size() * longestEscape + longestTags);
    out = put(out, "<key>");
    out = put(out, key);
    out = put(out, "</key><string>");
    out = putEscaped(out, value);
    finish(put(out, "</string>"));
}

void PropertyWriter::real(std::string_view key, float value)
{
    char* out = room(key.size() + longestNumber + longestTags);
    out = put(out, "<key>");
    out = put(out, key);
    out = put(out, "</key><real>");
    out = putReal(out, value);
    finish(put(out, "</real>"));
}

void PropertyWriter::integer(std::string_view key, long long value)
{
    char* out = room(key.size() + longestNumber + longestTags);
    out = put(out, "<key>");
    out = put(out, key);
    out = put(out, "</key><integer>");
    out = putNumber(out, value);
    finish(put(out, "</integer>"));
}

void PropertyWriter::date(std::string_view key, Date value)
{
    using namespace std::chrono;
    const auto second = floor<seconds>(value);
    const auto day = floor<days>(second);
    if (day != m_day || m_dayText[0] == '\0') {
        m_day = day;
        const year_month_day ymd(day);
        char* out = m_dayText.data();
        out = putPadded(
            out, static_cast<unsigned>(std::clamp(static_cast<int>(ymd.year()), 0, 9999)), 4);
        *out++ = '-';
        out = putPadded(out, static_cast<unsigned>(ymd.month()), 2);
        *out++ = '-';
        out = putPadded(out, static_cast<unsigned>(ymd.day()), 2);
        *out = 'T';
    }
    const auto ofDay = static_cast<unsigned>((second - day).count());
    char* out = room(key.size() + longestNumber + longestTags);
    out = put(out, "<key>");
    out = put(out, key);
    out = put(out, "</key><date>");
    out = put(out, {m_dayText.data(), m_dayText.size()});
    out = putPadded(out, ofDay / 3600, 2);
    *out++ = ':';
    out = putPadded(out, ofDay / 60 % 60, 2);
    *out++ = ':';
    out = putPadded(out, ofDay % 60, 2);
    finish(put(out, "Z</date>"));
}

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
