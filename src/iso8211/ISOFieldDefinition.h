#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvox {

inline constexpr char isoFieldTerminator = 0x1E; ///< ends every field and the directory
inline constexpr char isoUnitTerminator = 0x1F; ///< ends a variable subfield

/// What a subfield's value is taken as.
enum class ISODataType { Int, Float, String, BinaryString };

/// Bytes of one subfield value inside its field, and the bytes to step to reach the next one.
struct ISOExtent {
    std::size_t length = 0;
    std::size_t consumed = 0; ///< may exceed the bytes left, where a fixed-width value is cut short
};

/// One subfield of a field: its label and how its bytes are read (ISO/IEC 8211 format control).
///
/// Every operation takes the bytes left in the field and never looks past them. Text comes back as
/// a view into those bytes.
class ISOSubfieldDefinition {
public:
    explicit ISOSubfieldDefinition(std::string_view label);

    /// Applies one format control, e.g. "A(2)", "b12", "R". False leaves the subfield unusable.
    bool setFormat(std::string_view format);

    [[nodiscard]] const std::string& label() const { return m_label; }
    [[nodiscard]] const std::string& format() const { return m_format; }
    [[nodiscard]] ISODataType dataType() const { return m_dataType; }
    /// 0 none, 1 unsigned, 2 signed, 3 fixed-point, 4 floating-point, 5 complex.
    [[nodiscard]] int binaryFormat() const { return m_binaryFormat; }
    /// Whether values are characters: every format but 'B' and 'b'.
    [[nodiscard]] bool isText() const { return m_text; }
    [[nodiscard]] bool isVariable() const { return m_variable; }
    [[nodiscard]] std::size_t width() const { return m_width; } ///< bytes; 0 when variable

    [[nodiscard]] ISOExtent dataLength(std::span<const char> data) const;
    /// Text as by atoi; binary integers of 1, 2 or 4 bytes and reals truncated; anything else 0.
    [[nodiscard]] std::int64_t extractInt(std::span<const char> data, std::size_t& consumed) const;
    [[nodiscard]] double extractFloat(std::span<const char> data, std::size_t& consumed) const;
    /// The value's raw bytes, whatever the type.
    [[nodiscard]] std::string_view extractString(std::span<const char> data,
                                                 std::size_t& consumed) const;

private:
    struct Number {
        bool isReal = false;
        std::int64_t whole = 0;
        double real = 0;
    };
    [[nodiscard]] Number binaryNumber(std::span<const char> data) const;

    std::string m_label;
    std::string m_format;
    ISODataType m_dataType = ISODataType::String;
    int m_binaryFormat = 0;
    bool m_text = true;
    bool m_variable = true;
    std::size_t m_width = 0;
};

/// One field of the data descriptive record: tag, names and the subfields in order.
///
/// A definition keeps at most 256 subfields: a hostile file could otherwise make every field of
/// every record cost tens of thousands of empty values.
class ISOFieldDefinition {
public:
    static constexpr std::size_t maximumSubfields = 256;

    /// For reading: parses one field description. False when its format controls are unusable; the
    /// definition then keeps the subfields it has.
    bool parse(std::string_view tag, std::string_view description, std::size_t fieldControlLength);

    /// For writing. Subfields are then added one by one.
    ISOFieldDefinition(std::string tag, std::string name, std::string arrayDescriptor,
                       int structureCode, int typeCode, std::string format);
    ISOFieldDefinition() = default;
    bool addSubfield(std::string_view label, std::string_view format);
    /// The description as it stands in a data descriptive record, terminators included.
    [[nodiscard]] std::string description() const;

    [[nodiscard]] const std::string& tag() const { return m_tag; }
    [[nodiscard]] const std::string& name() const { return m_name; }
    [[nodiscard]] const std::string& arrayDescriptor() const { return m_arrayDescriptor; }
    [[nodiscard]] const std::string& formatControls() const { return m_formatControls; }
    [[nodiscard]] int structureCode() const { return m_structureCode; }
    [[nodiscard]] int typeCode() const { return m_typeCode; }
    [[nodiscard]] bool isRepeating() const { return m_repeating; }
    /// Sum of the subfield widths; 0 when any of them is variable.
    [[nodiscard]] std::size_t fixedWidth() const { return m_fixedWidth; }
    [[nodiscard]] const std::vector<ISOSubfieldDefinition>& subfields() const
    {
        return m_subfields;
    }
    /// Index of the subfield with this label; -1 when there is none.
    [[nodiscard]] int subfieldIndex(std::string_view label) const;

    /// How many times the subfield group stands in a field of these bytes.
    [[nodiscard]] std::size_t repeatCount(std::span<const char> data) const;

private:
    void measure();

    std::string m_tag;
    std::string m_name;
    std::string m_arrayDescriptor;
    std::string m_formatControls;
    std::string m_escapeSequence = "   "; ///< truncated; "-A " says that text is Latin-1
    int m_structureCode = 0; ///< 0 elementary, 1 vector, 2 array, 3 concatenated
    int m_typeCode = 0;
    bool m_repeating = false;
    std::size_t m_fixedWidth = 0;
    bool m_hasEmptySubfield = false;
    std::vector<ISOSubfieldDefinition> m_subfields;
};

} // namespace kelvox
