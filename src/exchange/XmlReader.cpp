#include "exchange/XmlReader.h"

#include "navigation/PropertyList.h"

// Debian builds the library with it but its header hides the limits without.
#define XML_DTD
#include <expat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <iconv.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace kelvox {

namespace {
constexpr int pieceSize = 1 << 16;
constexpr unsigned long long entityBytes = 1 << 20; // of expansion, before it is held to a ratio

class XmlReader {
public:
    explicit XmlReader(XmlContent& content)
        : m_content(content)
        , m_parser(XML_ParserCreate(nullptr), &XML_ParserFree)
    {
        XML_Parser parser = m_parser.get();
        if (!parser)
            return;
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, &onStart, &onEnd);
        XML_SetCharacterDataHandler(parser, &onCharacters);
        XML_SetEntityDeclHandler(parser, &onEntity);
        XML_SetUnknownEncodingHandler(parser, &onEncoding, nullptr);
        XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, entityBytes);
    }

    /// Room for the next piece.
    char* room()
    {
        return m_parser ? static_cast<char*>(XML_GetBuffer(m_parser.get(), pieceSize)) : nullptr;
    }

    Result<void> take(int size, bool last)
    {
        const auto status = XML_ParseBuffer(m_parser.get(), size, last ? 1 : 0);
        m_fed += size;
        if (status != XML_STATUS_OK)
            return fault();
        if (m_fed - XML_GetCurrentByteIndex(m_parser.get()) > XmlLimits::longestTag)
            return fault("a tag that is too long");
        return {};
    }

    Result<void> fault(const char* reason = nullptr)
    {
        const auto at = XML_GetCurrentByteIndex(m_parser.get());
        if (!reason)
            reason = m_refusal ? m_refusal : XML_ErrorString(XML_GetErrorCode(m_parser.get()));
        return failure(Error::Code::BadSyntax,
                       "line " + std::to_string(XML_GetCurrentLineNumber(m_parser.get())) + ": "
                           + reason,
                       at > 0 ? static_cast<std::size_t>(at) : 0);
    }

private:
    static XmlReader& self(void* data) { return *static_cast<XmlReader*>(data); }

    static void onStart(void* data, const char* name, const char** attributes)
    {
        auto& reader = self(data);
        if (reader.m_depth == 0) {
            const char* colon = std::strchr(name, ':');
            reader.m_prefix.assign(name, colon ? colon + 1 : name);
        }
        if (++reader.m_depth > XmlLimits::deepest)
            return reader.refuse("elements nested too deeply");
        reader.m_content.startElement(reader.plainName(name), XmlAttributes(attributes));
    }
    static void onEnd(void* data, const char* name)
    {
        auto& reader = self(data);
        --reader.m_depth;
        if (!reader.m_refusal)
            reader.m_content.endElement(reader.plainName(name));
    }
    static void onCharacters(void* data, const char* text, int length)
    {
        auto& reader = self(data);
        if (!reader.m_refusal)
            reader.m_content.characters({text, static_cast<std::size_t>(length)});
    }
    static void onEntity(void* data, const char* /*name*/, int /*isParameter*/,
                         const char* /*value*/, int /*length*/, const char* /*base*/,
                         const char* /*systemId*/, const char* /*publicId*/,
                         const char* /*notation*/)
    {
        // A chain of entities, each naming the next, is expanded by recursion.
        auto& reader = self(data);
        if (++reader.m_entities > XmlLimits::mostEntities)
            reader.refuse("too many entities");
    }
    /// A table of what each byte means, made by the system's converter.
    static int onEncoding(void* /*data*/, const char* name, XML_Encoding* info)
    {
        const iconv_t converter = ::iconv_open("UTF-32LE", name);
        if (converter == reinterpret_cast<iconv_t>(-1)) // NOLINT(performance-no-int-to-ptr)
            return XML_STATUS_ERROR;
        for (int byte = 0; byte < 256; ++byte) {
            char in = static_cast<char>(byte);
            char* from = &in;
            std::uint32_t code = 0;
            char* to = reinterpret_cast<char*>(&code);
            std::size_t inLeft = 1;
            std::size_t outLeft = sizeof code;
            ::iconv(converter, nullptr, nullptr, nullptr, nullptr);
            const bool known =
                ::iconv(converter, &from, &inLeft, &to, &outLeft) == 0 && outLeft == 0;
            info->map[byte] = known ? static_cast<int>(code) : -1;
        }
        ::iconv_close(converter);
        info->data = nullptr;
        info->convert = nullptr;
        info->release = nullptr;
        return XML_STATUS_OK;
    }

    [[nodiscard]] std::string_view plainName(std::string_view name) const
    {
        if (!m_prefix.empty() && name.starts_with(m_prefix))
            name.remove_prefix(m_prefix.size());
        return name;
    }
    void refuse(const char* reason)
    {
        m_refusal = reason;
        XML_StopParser(m_parser.get(), XML_FALSE);
    }

    XmlContent& m_content;
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> m_parser;
    std::string m_prefix;
    const char* m_refusal = nullptr;
    int m_depth = 0;
    int m_entities = 0;
    long long m_fed = 0;
};

/// @param read fills the room and says how much; 0 at the end, negative when the file fails
Result<void> readPieces(XmlContent& content, auto&& read)
{
    XmlReader reader(content);
    for (;;) {
        char* room = reader.room();
        if (!room)
            return failure(Error::Code::OutOfRange, "out of memory");
        const auto size = read(room);
        if (size < 0)
            return failure(errno == ECANCELED ? Error::Code::Cancelled : Error::Code::CannotOpen,
                           std::strerror(errno));
        if (auto taken = reader.take(static_cast<int>(size), size == 0); !taken || size == 0)
            return taken;
    }
}
} // namespace

Result<void> readXml(const std::filesystem::path& path, XmlContent& content,
                     const std::stop_token& stop)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return failure(Error::Code::CannotOpen, std::strerror(errno));
    struct stat info { };
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return failure(Error::Code::CannotOpen, "not a regular file");
    }
    auto result = readPieces(content, [fd, &stop](char* room) {
        ssize_t size = 0;
        if (stop.stop_requested()) {
            errno = ECANCELED;
            return ssize_t{-1};
        }
        do
            size = ::read(fd, room, pieceSize);
        while (size < 0 && errno == EINTR);
        return size;
    });
    ::close(fd);
    return result;
}

Result<void> parseXml(std::string_view bytes, XmlContent& content)
{
    return readPieces(content, [&bytes](char* room) {
        const auto size = std::min<std::size_t>(bytes.size(), pieceSize);
        std::copy_n(bytes.data(), size, room);
        bytes.remove_prefix(size);
        return static_cast<ssize_t>(size);
    });
}

void appendBounded(std::string& gathered, std::string_view text)
{
    if (gathered.size() < XmlLimits::longestText)
        gathered += text.substr(0, XmlLimits::longestText - gathered.size());
}

std::string escapedForXml(std::string_view text)
{
    std::string escaped;
    for (const char c : cleanText(text)) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&apos;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

} // namespace kelvox
