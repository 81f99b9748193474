#pragma once

#include "base/Result.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

/// Date and time of a record, whole seconds in its file.
using Date = std::chrono::system_clock::time_point;

/// Writes property lists as XML text, one record after the other.
///
/// By hand, because a track of 50,000 points is 31 MB of it: the library takes seconds where this
/// takes tens of milliseconds. Text must be valid UTF-8 without control characters: see
/// cleanText().
class PropertyWriter {
public:
    void reserve(std::size_t bytes) { (void)room(bytes); }
    void beginDocument() { append(documentHead); }
    void endDocument() { append(documentTail); }
    void beginDictionary() { append("<dict>"); }
    void endDictionary() { append("</dict>"); }
    void newLine() { append("\n"); }

    void key(std::string_view key); ///< any text; its value follows
    void boolean(std::string_view key, bool value); ///< any text for a key
    // Keys of our own, which need no escaping.
    void text(std::string_view key, std::string_view value);
    void real(std::string_view key, float value); ///< shortest text that reads back the same
    void integer(std::string_view key, long long value);
    void date(std::string_view key, Date value);
    // The same for keys that stand in the source: copying a known length is several times faster.
    template <std::size_t N> void text(const char (&key)[N], std::string_view value)
    {
        char* out = room(N + value.size() * longestEscape + longestTags);
        out = put(putKey(out, key), "<string>");
        finish(put(putEscaped(out, value), "</string>"));
    }
    template <std::size_t N> void real(const char (&key)[N], float value)
    {
        char* out = room(N + longestTags);
        out = put(putKey(out, key), "<real>");
        finish(put(putReal(out, value), "</real>"));
    }

    [[nodiscard]] std::string_view written() const { return {m_text.data(), m_used}; }
    void clear() { m_used = 0; } ///< what was written has gone elsewhere; its room stays
    [[nodiscard]] std::string take();

    static constexpr std::string_view documentHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                     "<plist version=\"1.0\">\n<dict>\n";
    static constexpr std::string_view documentTail = "</dict>\n</plist>\n";

private:
    static constexpr std::size_t longestEscape = 5; ///< characters that one may become
    static constexpr std::size_t longestTags = 96; ///< all tags around one value, and a number

    // Writing into room that is there: each returns where the next character goes.
    template <std::size_t N> static char* put(char* out, const char (&text)[N])
    {
        std::memcpy(out, text, N - 1);
        return out + N - 1;
    }
    template <std::size_t N> static char* putKey(char* out, const char (&key)[N])
    {
        return put(put(put(out, "<key>"), key), "</key>");
    }
    static char* putEscaped(char* out, std::string_view value);
    static char* putReal(char* out, float value);
    char* putKey(std::string_view key, std::size_t valueSize);

    [[nodiscard]] char* room(std::size_t bytes)
    {
        if (m_text.size() - m_used < bytes)
            grow(bytes);
        return m_text.data() + m_used;
    }
    void grow(std::size_t bytes);
    void finish(const char* end) { m_used = static_cast<std::size_t>(end - m_text.data()); }
    void append(std::string_view text)
    {
        char* out = room(text.size());
        std::memcpy(out, text.data(), text.size());
        finish(out + text.size());
    }

    std::string m_text; ///< grown ahead of what is written
    std::size_t m_used = 0;
    std::chrono::sys_days m_day; ///< of the last date; a track has few of them
    std::array<char, 11> m_dayText{};
};

/// The entries of one dictionary, as views into the text they were read from.
class PropertyFields {
public:
    enum class Kind { Text, Number, Boolean, Time, Dictionary, Other };
    struct Field {
        std::string_view key; ///< as written, escapes and all
        Kind kind{};
        std::string_view raw;
    };

    [[nodiscard]] std::optional<std::string> text(std::string_view key) const;
    [[nodiscard]] std::optional<double> number(std::string_view key) const;
    [[nodiscard]] std::optional<float> real(std::string_view key) const;
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
    [[nodiscard]] std::optional<Date> date(std::string_view key) const;
    /// The keys of a dictionary inside this one.
    [[nodiscard]] std::vector<std::string> keysOf(std::string_view key) const;

    // For the reader, which overwrites the fields of one record by those of the next.
    [[nodiscard]] const Field* at(std::size_t place) const
    {
        return place < m_fields.size() ? &m_fields[place] : nullptr;
    }
    void set(std::size_t place, const Field& field)
    {
        m_fields.resize(std::max(m_fields.size(), place + 1));
        m_fields[place] = field;
    }
    void truncate(std::size_t count)
    {
        m_fields.resize(count);
        m_next = 0;
    }

private:
    [[nodiscard]] const Field* find(std::string_view key) const;
    std::vector<Field> m_fields;
    mutable std::size_t m_next = 0; // records are written in the order they are asked for
};

struct RecordVisitor {
    /// A large file may be visited in so many parts at once, each on a thread of its own.
    std::size_t parts = 1;
    /// Forget what was visited: reading begins again by another way.
    std::function<void()> restart;
    /// The views live as long as the call. Parts are numbered in the order of the file.
    std::function<void(std::size_t part, std::string_view rawKey, const PropertyFields& fields)>
        record;
};

/// Visits every dictionary in the top-level dictionary of a property list, XML or binary, in the
/// order of the file; other entries are passed over.
/// @return how many entries were passed over, or why the list could not be read
[[nodiscard]] Result<std::size_t> readRecords(std::string_view bytes, const RecordVisitor& visitor);
/// The same from a file. What PropertyWriter wrote is read piece by piece, so that a long track is
/// never in memory as text; anything else as a whole.
[[nodiscard]] Result<std::size_t> readRecordFile(const std::filesystem::path& file,
                                                 const RecordVisitor& visitor);

/// One dictionary as PropertyWriter wrote it, without the document around it.
[[nodiscard]] Result<PropertyFields> readDictionary(std::string_view text);

/// What a file can hold: control characters become blanks, bytes that are not UTF-8 are taken for
/// Latin-1.
[[nodiscard]] std::string cleanText(std::string_view text);
/// The text without white space at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

} // namespace kelvox
