#pragma once

#include "base/File.h"
#include "iso8211/ISOFieldDefinition.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace kelvox {

/// The 24 bytes in front of a data descriptive record.
struct ISOLeader {
    static constexpr std::size_t size = 24;

    int recordLength = 0;
    char interchangeLevel = '3';
    char leaderIdentifier = 'L';
    char inlineCodeExtension = 'E';
    char version = '1';
    char applicationIndicator = ' ';
    int fieldControlLength = 9;
    int fieldAreaStart = 0;
    std::string extendedCharacterSet = " ! ";
    int sizeOfFieldLength = 3;
    int sizeOfFieldPosition = 4;
    int sizeOfFieldTag = 4;

    /// Refuses what is not ISO 8211 or has impossible sizes.
    [[nodiscard]] static Result<ISOLeader> parse(std::string_view bytes);
};

/// One field of the current data record: its definition and its bytes, terminator included.
class ISORawField {
public:
    ISORawField(const ISOFieldDefinition& definition, std::size_t definitionIndex,
                std::span<const char> data)
        : m_definition(&definition)
        , m_definitionIndex(definitionIndex)
        , m_data(data)
    {
    }
    [[nodiscard]] const ISOFieldDefinition& definition() const { return *m_definition; }
    /// Place of the definition in the module: lets a consumer keep tables beside the definitions.
    [[nodiscard]] std::size_t definitionIndex() const { return m_definitionIndex; }
    [[nodiscard]] std::span<const char> data() const { return m_data; }
    [[nodiscard]] std::size_t repeatCount() const { return m_definition->repeatCount(m_data); }

private:
    const ISOFieldDefinition* m_definition;
    std::size_t m_definitionIndex;
    std::span<const char> m_data;
};

/// The current data record. Its fields point into the module's file and stay valid until the next
/// read.
class ISORawRecord {
public:
    /// More fields in one record than any published file has; a hostile one is refused.
    static constexpr std::size_t maximumFields = 8'192;

    [[nodiscard]] std::span<const ISORawField> fields() const { return m_fields; }
    [[nodiscard]] bool reusesLeader() const { return m_reuseLeader; }

private:
    friend class ISOModule;
    bool m_reuseLeader = false;
    std::size_t m_sizeOfFieldLength = 0;
    std::size_t m_sizeOfFieldPosition = 0;
    std::size_t m_sizeOfFieldTag = 4;
    std::span<const char> m_directory; ///< without its terminator
    std::span<const char> m_fieldArea;
    std::vector<ISORawField> m_fields;
};

/// An ISO/IEC 8211 file open for reading: the field definitions and one record after another.
///
/// The file is mapped and read once from front to back; no field is copied. Opening an open module
/// closes it first. Every failure is an Error with the byte at which reading stopped.
class ISOModule {
public:
    /// A descriptive record with more definitions keeps these; S-57 uses about thirty.
    static constexpr std::size_t maximumDefinitions = 1024;

    Result<void> open(const std::filesystem::path& path);
    /// Reads from memory that the caller keeps alive.
    Result<void> openBytes(std::span<const char> bytes);
    void close();
    [[nodiscard]] bool isOpen() const { return m_open; }

    [[nodiscard]] const ISOLeader& leader() const { return m_leader; }
    [[nodiscard]] const std::vector<ISOFieldDefinition>& definitions() const
    {
        return m_definitions;
    }
    [[nodiscard]] const ISOFieldDefinition* findDefinition(std::string_view tag) const;
    [[nodiscard]] std::size_t firstRecordOffset() const { return m_firstRecord; }
    [[nodiscard]] std::size_t offset() const { return m_offset; } ///< where the next record begins

    /// The next record; null at the end of the file and on any error, which lastError() tells.
    const ISORawRecord* readRecord();
    /// Why the last read gave nothing; null at a clean end of the file.
    [[nodiscard]] const Error* lastError() const { return m_error ? &*m_error : nullptr; }

private:
    [[nodiscard]] Result<void> readDefinitions();
    [[nodiscard]] int definitionIndex(std::string_view tag) const;
    [[nodiscard]] int definitionIndex(std::string_view tag, std::size_t place);
    const ISORawRecord* stop(Error::Code code, std::string message);
    bool readBody(std::size_t length, std::size_t fieldAreaOffset);
    bool readUnmeasuredBody();
    bool splitFields();

    bool m_open = false;
    std::unique_ptr<MappedFile> m_file;
    std::string_view m_bytes;
    std::size_t m_offset = 0;
    std::size_t m_firstRecord = 0;
    ISOLeader m_leader;
    std::vector<ISOFieldDefinition> m_definitions;
    struct LastTag {
        std::uint32_t tag = 0; ///< its four characters; others than such are not kept
        int index = -1;
    };
    std::vector<LastTag> m_lastTags; ///< of the definitions at each place of the last directory
    ISORawRecord m_record;
    std::optional<Error> m_error;
};

} // namespace kelvox
