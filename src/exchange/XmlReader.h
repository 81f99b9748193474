#pragma once

#include "base/Result.h"

#include <filesystem>
#include <stop_token>
#include <string>
#include <string_view>

namespace kelvox {

/// The attributes of one element, as long as the call lasts.
class XmlAttributes {
public:
    explicit XmlAttributes(const char** pairs)
        : m_pairs(pairs)
    {
    }
    /// Empty where the attribute is missing.
    [[nodiscard]] std::string_view value(std::string_view name) const
    {
        for (const char** pair = m_pairs; *pair; pair += 2)
            if (name == *pair)
                return pair[1];
        return {};
    }

private:
    const char** m_pairs;
};

/// Told of a document piece by piece, in UTF-8. The views live as long as the call.
class XmlContent {
public:
    virtual ~XmlContent() = default;
    /// The name without the prefix that the document's first element bears.
    virtual void startElement(std::string_view name, const XmlAttributes& attributes) = 0;
    virtual void characters(std::string_view text) = 0; ///< of an element in several pieces
    virtual void endElement(std::string_view name) = 0;
};

/// Reads a document in pieces; memory does not grow with the file. Single-byte encodings that the
/// system knows are read beside UTF-8 and UTF-16. A document is given up, after what was complete
/// has been told, where it is malformed or hostile: elements nested deeper than `deepest`, one tag
/// longer than `longestTag`, more than `mostEntities` entities declared, entities that blow up. So
/// it is once a stop is requested.
[[nodiscard]] Result<void> readXml(const std::filesystem::path& path, XmlContent& content,
                                   const std::stop_token& stop = {});
[[nodiscard]] Result<void> parseXml(std::string_view bytes, XmlContent& content);

struct XmlLimits {
    static constexpr int deepest = 200;
    static constexpr long long longestTag = 4 << 20;
    static constexpr int mostEntities = 64;
    static constexpr std::size_t longestText = 1 << 16; ///< of a name or a description
};

/// Appends up to the longest text that is kept of one element.
void appendBounded(std::string& gathered, std::string_view text);
/// The text with what has a meaning in XML escaped, and without characters XML cannot hold.
[[nodiscard]] std::string escapedForXml(std::string_view text);

} // namespace kelvox
