#include "s57/S57CellRecords.h"

#include "iso8211/ISOWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvox {

namespace {
// Names and formats of the fields as S-57 edition 3.1, part 3, clause 7 lists them, in their binary
// form: control characters, name, labels, formats.
struct FieldRow {
    const char* tag;
    const char* controls;
    const char* name;
    const char* labels;
    const char* formats;
};
constexpr std::array<FieldRow, 19> fieldRows{{
    {"0001", "0500;&   ", "ISO 8211 Record Identifier", "", "(b12)"},
    {"DSID", "1600;&   ", "Data set identification field",
     "RCNM!RCID!EXPP!INTU!DSNM!EDTN!UPDN!UADT!ISDT!STED!PRSP!PSDN!PRED!PROF!AGEN!COMT",
     "(b11,b14,2b11,3A,2A(8),R(4),b11,2A,b11,b12,A)"},
    {"DSSI", "1600;&   ", "Data set structure information field",
     "DSTR!AALL!NALL!NOMR!NOCR!NOGR!NOLR!NOIN!NOCN!NOED!NOFA", "(3b11,8b14)"},
    {"DSPM", "1600;&   ", "Data set parameter field",
     "RCNM!RCID!HDAT!VDAT!SDAT!CSCL!DUNI!HUNI!PUNI!COUN!COMF!SOMF!COMT",
     "(b11,b14,3b11,b14,4b11,2b14,A)"},
    {"FRID", "1600;&   ", "Feature record identifier field", "RCNM!RCID!PRIM!GRUP!OBJL!RVER!RUIN",
     "(b11,b14,2b11,2b12,b11)"},
    {"FOID", "1600;&   ", "Feature object identifier field", "AGEN!FIDN!FIDS", "(b12,b14,b12)"},
    {"ATTF", "2600;&-A ", "Feature record attribute field", "*ATTL!ATVL", "(b12,A)"},
    {"NATF", "2600;&-A ", "Feature record national attribute field", "*ATTL!ATVL", "(b12,A)"},
    {"FFPC", "1600;&   ", "Feature record to feature object pointer control field",
     "FFUI!FFIX!NFPT", "(b11,2b12)"},
    {"FFPT", "2600;&   ", "Feature record to feature object pointer field", "*LNAM!RIND!COMT",
     "(B(64),b11,A)"},
    {"FSPC", "1600;&   ", "Feature record to spatial record pointer control field",
     "FSUI!FSIX!NSPT", "(b11,2b12)"},
    {"FSPT", "2600;&   ", "Feature record to spatial record pointer field", "*NAME!ORNT!USAG!MASK",
     "(B(40),3b11)"},
    {"VRID", "1600;&   ", "Vector record identifier field", "RCNM!RCID!RVER!RUIN",
     "(b11,b14,b12,b11)"},
    {"ATTV", "2600;&   ", "Vector record attribute field", "*ATTL!ATVL", "(b12,A)"},
    {"VRPC", "1600;&   ", "Vector record pointer control field", "VPUI!VPIX!NVPT", "(b11,2b12)"},
    {"VRPT", "2600;&   ", "Vector record pointer field", "*NAME!ORNT!USAG!TOPI!MASK",
     "(B(40),4b11)"},
    {"SGCC", "1600;&   ", "Coordinate control field", "CCUI!CCIX!CCNC", "(b11,2b12)"},
    {"SG2D", "2500;&   ", "2-D coordinate field", "*YCOO!XCOO", "(2b24)"},
    {"SG3D", "2500;&   ", "3-D coordinate (sounding array) field", "*YCOO!XCOO!VE3D", "(3b24)"},
}};
constexpr std::string_view fieldTree =
    "0001DSIDDSIDDSSI0001DSPM"
    "0001FRIDFRIDFOIDFRIDATTFFRIDNATFFRIDFFPCFRIDFFPTFRIDFSPCFRIDFSPT"
    "0001VRIDVRIDATTVVRIDVRPCVRIDVRPTVRIDSGCCVRIDSG2DVRIDSG3D";

std::vector<ISOFieldDefinition> definitions()
{
    std::vector<ISOFieldDefinition> all;
    all.emplace_back("0000", "", std::string(fieldTree), 0, 0, "");
    for (const FieldRow& row : fieldRows) {
        ISOFieldDefinition definition;
        definition.parse(row.tag,
                         fmt::format("{}{}{}{}{}{}{}", row.controls, row.name, isoUnitTerminator,
                                     row.labels, isoUnitTerminator, row.formats,
                                     isoFieldTerminator),
                         9);
        all.push_back(std::move(definition));
    }
    return all;
}

/// The bytes of one field.
class FieldBytes {
public:
    template <typename Number> FieldBytes& number(Number value)
    {
        for (std::size_t i = 0; i < sizeof value; ++i)
            m_bytes += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i));
        return *this;
    }
    FieldBytes& text(std::string_view value)
    {
        m_bytes += value;
        m_bytes += isoUnitTerminator;
        return *this;
    }
    FieldBytes& fixedText(std::string_view value, std::size_t width)
    {
        m_bytes += fmt::format("{:<{}}", value, width);
        return *this;
    }
    std::string finish()
    {
        m_bytes += isoFieldTerminator;
        return std::move(m_bytes);
    }

private:
    std::string m_bytes;
};

constexpr auto byte(int value)
{
    return static_cast<std::uint8_t>(value);
}

enum class Kind { Geo, Meta, Collection, Cartographic };
Kind kindOf(int objectCode)
{
    if (objectCode >= 500)
        return Kind::Cartographic;
    if (objectCode >= 400)
        return Kind::Collection;
    return objectCode >= 300 ? Kind::Meta : Kind::Geo;
}

/// 1 for the classes that together cover the whole cell (the skin of the earth), 2 for all others.
std::uint8_t groupOf(const S57FeatureRecordData& feature)
{
    // DEPARE, DRGARE, FLODOC, HULKES, LNDARE, PONTON, UNSARE
    constexpr std::array<int, 7> skin{42, 46, 57, 65, 71, 95, 154};
    const bool inSkin = feature.primitive == S57Feature::area
        && std::find(skin.begin(), skin.end(), feature.objectCode) != skin.end();
    return inSkin ? 1 : 2;
}

/// Writes records one after the other.
class CellEncoder {
public:
    CellEncoder(const S57CellIdentification& identification, std::uint16_t subdivision)
        : m_identification(identification)
        , m_subdivision(subdivision)
        , m_writer(ISOLeader{}, definitions())
    {
    }
    void dataset(std::span<const S57VectorRecord> vectors,
                 std::span<const S57FeatureRecordData> features);
    void vector(const S57VectorRecord& record);
    void feature(const S57FeatureRecordData& record);
    [[nodiscard]] Result<std::string> finish() const
    {
        if (m_error)
            return tl::unexpected(*m_error);
        return m_writer.bytes();
    }

private:
    void begin()
    {
        m_record = {};
        // The number has two bytes: it starts again after 65,535 records.
        add("0001", FieldBytes().number(++m_number).finish());
    }
    void add(std::string_view tag, std::string bytes)
    {
        m_record.addField(*m_writer.definition(tag));
        m_record.setBytes(tag, 0, std::move(bytes));
    }
    void control(std::string_view tag, const std::optional<S57UpdateControl>& control)
    {
        if (control)
            add(tag,
                FieldBytes()
                    .number(byte(static_cast<int>(control->instruction)))
                    .number(static_cast<std::uint16_t>(control->index))
                    .number(static_cast<std::uint16_t>(control->count))
                    .finish());
    }
    void attributes(std::string_view tag,
                    const std::vector<S57FeatureRecordData::Attribute>& attributes)
    {
        if (attributes.empty())
            return;
        FieldBytes field;
        for (const auto& attribute : attributes)
            field.number(attribute.code).text(attribute.value);
        add(tag, field.finish());
    }
    void end()
    {
        if (auto written = m_writer.write(m_record); !written && !m_error)
            m_error = written.error();
    }

    const S57CellIdentification& m_identification;
    std::uint16_t m_subdivision;
    ISOWriter m_writer;
    ISOWriteRecord m_record;
    std::uint16_t m_number = 0;
    std::optional<Error> m_error;
};

void CellEncoder::dataset(std::span<const S57VectorRecord> vectors,
                          std::span<const S57FeatureRecordData> features)
{
    const auto& cell = m_identification;
    const bool isUpdate = cell.update > 0;
    const auto countVectors = [&](int name) {
        return static_cast<std::uint32_t>(
            std::count_if(vectors.begin(), vectors.end(),
                          [&](const auto& vector) { return vector.recordName == name; }));
    };
    const auto countFeatures = [&](Kind kind) {
        return static_cast<std::uint32_t>(
            std::count_if(features.begin(), features.end(),
                          [&](const auto& feature) { return kindOf(feature.objectCode) == kind; }));
    };
    begin();
    add("DSID",
        FieldBytes()
            .number(byte(10)) // RCNM: data set
            .number(std::uint32_t{1})
            .number(byte(isUpdate ? 2 : 1)) // EXPP: a revision or a new data set
            .number(byte(cell.usageBand))
            .text(fmt::format("{}.{:03}", cell.name, cell.update))
            .text(std::to_string(cell.edition))
            .text(std::to_string(cell.update))
            .fixedText(isUpdate ? "" : cell.issueDate, 8)
            .fixedText(cell.issueDate, 8)
            .fixedText("03.1", 4)
            .number(byte(1)) // PRSP: electronic navigational chart
            .text("")
            .text("2.0")
            .number(byte(isUpdate ? 2 : 1)) // PROF: ER or EN
            .number(cell.agency)
            .text(cell.comment)
            .finish());
    add("DSSI",
        FieldBytes()
            .number(byte(2)) // DSTR: chain-node
            .number(byte(1)) // lexical level 1, Latin-1, for all text
            .number(byte(1))
            .number(countFeatures(Kind::Meta))
            .number(countFeatures(Kind::Cartographic))
            .number(countFeatures(Kind::Geo))
            .number(countFeatures(Kind::Collection))
            .number(countVectors(s57RecordName::isolatedNode))
            .number(countVectors(s57RecordName::connectedNode))
            .number(countVectors(s57RecordName::edge))
            .number(std::uint32_t{0})
            .finish());
    end();
    if (isUpdate)
        return;
    begin();
    add("DSPM",
        FieldBytes()
            .number(byte(20)) // RCNM: data set parameters
            .number(std::uint32_t{1})
            .number(byte(2)) // WGS 84
            .number(byte(3)) // heights above mean sea level
            .number(byte(23)) // depths below the lowest astronomical tide
            .number(cell.compiledScale)
            .number(byte(1)) // metres for depths, heights and accuracies
            .number(byte(1))
            .number(byte(1))
            .number(byte(1)) // latitude and longitude
            .number(std::uint32_t{10'000'000})
            .number(std::uint32_t{10})
            .text("")
            .finish());
    end();
}

void CellEncoder::vector(const S57VectorRecord& record)
{
    begin();
    add("VRID",
        FieldBytes()
            .number(record.recordName)
            .number(record.recordID)
            .number(record.version)
            .number(record.instruction)
            .finish());
    if (!record.pointers.empty()) {
        FieldBytes field;
        for (const auto& pointer : record.pointers)
            field.number(pointer.recordName)
                .number(pointer.recordID)
                .number(pointer.orient)
                .number(pointer.usage)
                .number(pointer.topology)
                .number(pointer.mask);
        add("VRPT", field.finish());
    }
    control("SGCC", record.placeControl);
    if (!record.places.empty()) {
        FieldBytes field;
        const bool withDepth = record.depths.size() == record.places.size();
        for (std::size_t i = 0; i < record.places.size(); ++i) {
            field.number(record.places[i].y).number(record.places[i].x);
            if (withDepth)
                field.number(record.depths[i]);
        }
        add(withDepth ? "SG3D" : "SG2D", field.finish());
    }
    end();
}

void CellEncoder::feature(const S57FeatureRecordData& record)
{
    begin();
    add("FRID",
        FieldBytes()
            .number(byte(100)) // RCNM: feature
            .number(record.recordID)
            .number(record.primitive)
            .number(groupOf(record))
            .number(record.objectCode)
            .number(record.version)
            .number(record.instruction)
            .finish());
    add("FOID",
        FieldBytes()
            .number(m_identification.agency)
            .number(record.recordID)
            .number(m_subdivision)
            .finish());
    attributes("ATTF", record.attributes);
    attributes("NATF", record.nationalAttributes);
    control("FFPC", record.relationControl);
    if (!record.relations.empty()) {
        FieldBytes field;
        for (const auto& relation : record.relations)
            field.number(m_identification.agency)
                .number(relation.identification)
                .number(m_subdivision)
                .number(relation.relation)
                .text("");
        add("FFPT", field.finish());
    }
    control("FSPC", record.spatialControl);
    if (!record.spatials.empty()) {
        FieldBytes field;
        for (const auto& spatial : record.spatials)
            field.number(spatial.recordName)
                .number(spatial.recordID)
                .number(spatial.orient)
                .number(spatial.usage)
                .number(spatial.mask);
        add("FSPT", field.finish());
    }
    end();
}
} // namespace

S57Place S57Place::of(Position position)
{
    constexpr double units = 10'000'000;
    return {static_cast<std::int32_t>(std::lround(position.latitude * units)),
            static_cast<std::int32_t>(std::lround(position.longitude * units))};
}

Result<std::string> encodeS57Cell(const S57CellIdentification& identification,
                                  std::uint16_t subdivision,
                                  std::span<const S57VectorRecord> vectors,
                                  std::span<const S57FeatureRecordData> features)
{
    CellEncoder encoder(identification, subdivision);
    encoder.dataset(vectors, features);
    for (const int name :
         {s57RecordName::isolatedNode, s57RecordName::connectedNode, s57RecordName::edge})
        for (const auto& vector : vectors)
            if (vector.recordName == name)
                encoder.vector(vector);
    for (const Kind kind : {Kind::Meta, Kind::Geo, Kind::Cartographic, Kind::Collection})
        for (const bool pointing : {false, true})
            for (const auto& feature : features)
                if (kindOf(feature.objectCode) == kind && feature.relations.empty() != pointing)
                    encoder.feature(feature);
    return encoder.finish();
}

} // namespace kelvox
