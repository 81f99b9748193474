#pragma once

#include "iso8211/ISOModule.h"
#include "s57/S57ChartItems.h"

#include <array>

namespace kelvox {

/// Carries the records of one opened file into a cell: one feature or spatial record after another.
class S57RecordReader {
public:
    S57RecordReader(const ISOModule& module, std::shared_ptr<const S57CatalogRecord> base,
                    S57ChartItems& cell);
    void read(const ISORawRecord& record);
    /// Stores what the last record held.
    void finish();

private:
    // Numbered by place in the dictionaries of tags and labels; 0 is "not known".
    enum class FieldCode : std::uint8_t;
    enum class SubfieldCode : std::uint8_t;
    static constexpr std::size_t subfieldCodes = 46;

    /// One subfield's value: by its format only one of them is set, the others are zero.
    struct Value {
        std::uint32_t whole = 0; ///< of an unsigned binary format
        std::int32_t number = 0; ///< of any other integer format
        std::string_view text;
        std::uint32_t row = 0; ///< the row that brought it
    };
    /// How a subfield is read; the forms that S-57 uses most have a short way.
    enum class Form : std::uint8_t { Unsigned1, Unsigned2, Unsigned4, Bytes, Other };
    struct Step {
        SubfieldCode code{};
        Form form = Form::Other;
        std::uint8_t width = 0; ///< bytes; of Other none
        std::uint32_t mask = 0; ///< of the bytes that an unsigned number has

        void become(Form newForm, std::uint32_t newMask)
        {
            form = newForm;
            mask = newMask;
        }
    };
    struct FieldPlan {
        FieldCode field{};
        std::vector<SubfieldCode> subfields;
        std::vector<Step> steps; ///< beside the subfields
        bool plainCoordinates = false; ///< rows of 4-byte YCOO, XCOO and, for soundings, VE3D
        bool plainSpatials = false; ///< rows of NAME and the bytes ORNT, USAG, MASK
        bool plainAttributes = false; ///< rows of a 2-byte ATTL and the text ATVL
        bool plainPointers = false; ///< rows of NAME and the bytes ORNT, USAG, TOPI, MASK
    };
    [[nodiscard]] FieldPlan planOf(const ISOFieldDefinition& definition) const;
    [[nodiscard]] const Value& value(SubfieldCode code) const
    {
        static constexpr Value none;
        const Value& found = m_row[static_cast<std::size_t>(code)];
        return found.row == m_rowNumber ? found : none;
    }
    [[nodiscard]] bool has(SubfieldCode code) const
    {
        return m_row[static_cast<std::size_t>(code)].row == m_rowNumber;
    }
    void readField(const ISORawField& field);
    static void readOther(const ISOSubfieldDefinition& subfield, std::span<const char>& left,
                          Value& target);
    void readRow(const ISOFieldDefinition& definition, const FieldPlan& plan,
                 std::span<const char>& left);
    void applyRow(FieldCode field);
    void applyDataset(FieldCode field);
    void beginFeature();
    void beginVector();
    void readPlainCoordinates(const ISORawField& field, std::size_t rowSize);
    void readPlainSpatials(std::span<const char> data);
    void readPlainAttributes(const ISORawField& field);
    void readPlainPointers(std::span<const char> data);
    void addCoordinate(std::int32_t y, std::int32_t x);
    void addDepth(std::int32_t value);
    void deliver(FieldCode field);
    void store();

    std::shared_ptr<const S57CatalogRecord> m_base;
    S57ChartItems& m_cell;
    std::vector<FieldPlan> m_plans; ///< beside the module's definitions
    std::array<Value, subfieldCodes> m_row;
    std::uint32_t m_rowNumber = 0; ///< of the row that stands in m_row; older values do not count

    // What the current record fills: a new object of ours or, for a modification, a stored one.
    std::unique_ptr<S57Feature> m_newFeature;
    S57Feature* m_feature = nullptr;
    std::optional<S57Vector> m_newVector;
    S57Vector* m_vector = nullptr;

    // The elements of the current field, handed over together.
    std::vector<S57Coordinate> m_coordinates;
    std::vector<float> m_depths;
    std::vector<S57VectorPointer> m_pointers;
    std::vector<std::pair<std::uint16_t, std::string_view>> m_attributes;
    std::vector<S57FeatureSpatial> m_spatials;
    std::vector<S57FeatureRecord> m_records;
};

} // namespace kelvox
