#pragma once

#include "base/Result.h"

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
    void reserve(std::size_t bytes) { m_text.reserve(bytes); }
    void beginDocument();
    void endDocument();
    void beginDictionary() { m_text += "<dict>"; }
    void endDictionary() { m_text += "</dict>"; }
    void newLine() { m_text += '\n'; }

    void key(std::string_view key);
    void text(std::string_view key, std::string_view value);
    void real(std::string_view key, float value); ///< shortest text that reads back the same
    void integer(std::string_view key, long long value);
    void boolean(std::string_view key, bool value);
    void date(std::string_view key, Date value);

    [[nodiscard]] const std::string& text() const { return m_text; }
    [[nodiscard]] std::string take() { return std::move(m_text); }

private:
    void escaped(std::string_view value);
    std::string m_text;
};

/// The entries of one dictionary, as views into the text they were read from.
class PropertyFields {
public:
    enum class Kind { Text, Number, Boolean, Time, Dictionary, Other };
    struct Field {
        std::string_view key; ///< as written, escapes and all
        Kind kind;
        std::string_view raw;
    };

    [[nodiscard]] std::optional<std::string> text(std::string_view key) const;
    [[nodiscard]] std::optional<double> number(std::string_view key) const;
    [[nodiscard]] std::optional<float> real(std::string_view key) const;
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
    [[nodiscard]] std::optional<Date> date(std::string_view key) const;
    /// The keys of a dictionary inside this one.
    [[nodiscard]] std::vector<std::string> keysOf(std::string_view key) const;

    void clear();
    void add(const Field& field) { m_fields.push_back(field); }

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
