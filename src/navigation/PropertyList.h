#pragma once

#include "base/Result.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
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
    void beginDocument();
    void endDocument();
    void beginDictionary();
    void endDictionary();
    void newLine();

    void key(std::string_view key); ///< any text; its value follows
    void boolean(std::string_view key, bool value); ///< any text for a key
    // Keys of our own, which need no escaping.
    void text(std::string_view key, std::string_view value);
    void real(std::string_view key, float value); ///< shortest text that reads back the same
    void integer(std::string_view key, long long value);
    void date(std::string_view key, Date value);

    [[nodiscard]] std::string take();

private:
    [[nodiscard]] char* room(std::size_t bytes);
    void finish(const char* end) { m_used = static_cast<std::size_t>(end - m_text.data()); }
    void append(std::string_view text);

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
    /// Forget what was visited: reading begins again by another way.
    std::function<void()> restart;
    /// The views live as long as the call.
    std::function<void(std::string_view rawKey, const PropertyFields& fields)> record;
};

/// Visits every dictionary in the top-level dictionary of a property list, XML or binary, in the
/// order of the file; other entries are passed over.
/// @return how many entries were passed over, or why the list could not be read
[[nodiscard]] Result<std::size_t> readRecords(std::string_view bytes, const RecordVisitor& visitor);

/// One dictionary as PropertyWriter wrote it, without the document around it.
[[nodiscard]] Result<PropertyFields> readDictionary(std::string_view text);

/// What a file can hold: control characters become blanks, bytes that are not UTF-8 are taken for
/// Latin-1.
[[nodiscard]] std::string cleanText(std::string_view text);
/// The text without white space at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

} // namespace kelvox
