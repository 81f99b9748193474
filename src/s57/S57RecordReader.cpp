#include "s57/S57RecordReader.h"

#include "iso8211/ISOTree.h"

#include <algorithm>
#include <cstring>

namespace kelvox {

enum class S57RecordReader::FieldCode : std::uint8_t {
    Unknown,
    F0001,
    ARCC,
    ATTF,
    ATTV,
    CATD,
    DSID,
    DSPM,
    DSSI,
    FFPC,
    FFPT,
    FOID,
    FRID,
    FSPC,
    FSPT,
    SG2D,
    SG3D,
    SGCC,
    VRID,
    VRPC,
    VRPT
};

enum class S57RecordReader::SubfieldCode : std::uint8_t {
    Unknown,
    AGEN,
    ATTL,
    ATVL,
    CCIX,
    CCNC,
    CCUI,
    COMF,
    COUN,
    CSCL,
    DSTR,
    EDTN,
    FFIX,
    FFUI,
    FIDN,
    FIDS,
    FSIX,
    FSUI,
    GRUP,
    HDAT,
    ISDT,
    LNAM,
    MASK,
    NAME,
    NFPT,
    NSPT,
    NVPT,
    OBJL,
    ORNT,
    PRIM,
    PROF,
    PRSP,
    RCID,
    RUIN,
    RCNM,
    SDAT,
    SOMF,
    TOPI,
    UPDN,
    USAG,
    VDAT,
    VE3D,
    VPIX,
    VPUI,
    XCOO,
    YCOO
};

namespace {
constexpr std::array<std::string_view, 20> fieldTags{
    "0001", "ARCC", "ATTF", "ATTV", "CATD", "DSID", "DSPM", "DSSI", "FFPC", "FFPT",
    "FOID", "FRID", "FSPC", "FSPT", "SG2D", "SG3D", "SGCC", "VRID", "VRPC", "VRPT"};
constexpr std::array<std::string_view, 45> subfieldLabels{
    "AGEN", "ATTL", "ATVL", "CCIX", "CCNC", "CCUI", "COMF", "COUN", "CSCL", "DSTR", "EDTN", "FFIX",
    "FFUI", "FIDN", "FIDS", "FSIX", "FSUI", "GRUP", "HDAT", "ISDT", "LNAM", "MASK", "NAME", "NFPT",
    "NSPT", "NVPT", "OBJL", "ORNT", "PRIM", "PROF", "PRSP", "RCID", "RUIN", "RCNM", "SDAT", "SOMF",
    "TOPI", "UPDN", "USAG", "VDAT", "VE3D", "VPIX", "VPUI", "XCOO", "YCOO"};

/// 1-based place in a dictionary; 0 when it is not there.
template <std::size_t size>
std::uint8_t codeOf(const std::array<std::string_view, size>& dictionary, std::string_view word)
{
    const auto it = std::find(dictionary.begin(), dictionary.end(), word);
    return it == dictionary.end() ? std::uint8_t{0}
                                  : static_cast<std::uint8_t>(it - dictionary.begin() + 1);
}

constexpr std::size_t nameWidth = 5; ///< bytes of a NAME: record name and number

std::string utf8FromLatin1(std::string_view latin)
{
    unsigned allBits = 0;
    for (const char c : latin)
        allBits |= static_cast<unsigned char>(c);
    if (allBits < 0x80)
        return std::string(latin); // nearly every value
    std::string text;
    text.reserve(latin.size() + latin.size() / 2);
    for (const char c : latin) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0U | byte >> 6U);
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

std::int32_t littleEndian32(const char* bytes)
{
    std::int32_t value = 0;
    std::memcpy(&value, bytes, sizeof value); // the machines we build for are little-endian
    return value;
}
} // namespace

S57RecordReader::S57RecordReader(const ISOModule& module,
                                 std::shared_ptr<const S57CatalogRecord> base, S57ChartItems& cell)
    : m_base(std::move(base))
    , m_cell(cell)
{
    m_plans.reserve(module.definitions().size());
    for (const auto& definition : module.definitions())
        m_plans.push_back(planOf(definition));
}

S57RecordReader::FieldPlan S57RecordReader::planOf(const ISOFieldDefinition& definition) const
{
    FieldPlan plan;
    plan.field = static_cast<FieldCode>(codeOf(fieldTags, definition.tag()));
    bool plain = true;
    for (const auto& subfield : definition.subfields()) {
        plan.subfields.push_back(
            static_cast<SubfieldCode>(codeOf(subfieldLabels, subfield.label())));
        Step step{plan.subfields.back(), Form::Other, static_cast<std::uint8_t>(subfield.width())};
        if (subfield.format() == "b11")
            step.become(Form::Unsigned1, 0xFF);
        else if (subfield.format() == "b12")
            step.become(Form::Unsigned2, 0xFFFF);
        else if (subfield.format() == "b14")
            step.become(Form::Unsigned4, 0xFFFFFFFF);
        else if (subfield.dataType() == ISODataType::BinaryString && subfield.width() < 256)
            step.form = Form::Bytes;
        plan.steps.push_back(step);
        plain = plain && subfield.format() == "b24";
    }
    using enum SubfieldCode;
    const bool flat = plan.field == FieldCode::SG2D && plan.subfields == std::vector{YCOO, XCOO};
    const bool sounding =
        plan.field == FieldCode::SG3D && plan.subfields == std::vector{YCOO, XCOO, VE3D};
    plan.plainCoordinates = plain && definition.isRepeating() && (flat || sounding);
    const auto isPlain = [&](FieldCode field, const std::vector<SubfieldCode>& labels) {
        return plan.field == field && plan.subfields == labels && definition.isRepeating()
            && plan.steps.front().form == Form::Bytes && plan.steps.front().width == nameWidth
            && std::all_of(plan.steps.begin() + 1, plan.steps.end(),
                           [](const Step& step) { return step.form == Form::Unsigned1; });
    };
    plan.plainAttributes = plan.field == FieldCode::ATTF && definition.isRepeating()
        && plan.subfields == std::vector{ATTL, ATVL} && plan.steps[0].form == Form::Unsigned2
        && definition.subfields()[1].isVariable()
        && definition.subfields()[1].dataType() == ISODataType::String;
    plan.plainSpatials = isPlain(FieldCode::FSPT, {NAME, ORNT, USAG, MASK});
    plan.plainPointers = isPlain(FieldCode::VRPT, {NAME, ORNT, USAG, TOPI, MASK});
    return plan;
}

void S57RecordReader::read(const ISORawRecord& record)
{
    for (const ISORawField& field : record.fields())
        readField(field);
}

void S57RecordReader::finish()
{
    store();
}

void S57RecordReader::store()
{
    if (m_newVector)
        m_cell.addS57Vector(std::move(*m_newVector));
    if (m_newFeature)
        m_cell.addS57Feature(m_base, std::move(m_newFeature));
    m_newVector.reset();
    m_vector = nullptr;
    m_newFeature.reset();
    m_feature = nullptr;
}

void S57RecordReader::readField(const ISORawField& field)
{
    const FieldPlan& plan = m_plans[field.definitionIndex()];
    switch (plan.field) {
    case FieldCode::F0001:
        store();
        return;
    case FieldCode::Unknown:
    case FieldCode::ARCC:
    case FieldCode::ATTV:
    case FieldCode::CATD:
        return;
    default:
        break;
    }
    if (plan.plainCoordinates) {
        readPlainCoordinates(field, field.definition().fixedWidth());
    } else if (plan.plainSpatials) {
        readPlainSpatials(field.data());
    } else if (plan.plainPointers) {
        readPlainPointers(field.data());
    } else if (plan.plainAttributes) {
        readPlainAttributes(field);
    } else {
        const std::size_t rows = field.repeatCount();
        if (plan.field == FieldCode::ATTF && m_feature)
            m_feature->reserveAttributes(m_feature->s57FeatureAttributeCount() + rows);
        auto left = field.data();
        for (std::size_t row = 0; row < rows; ++row) {
            readRow(field.definition(), plan, left);
            applyRow(plan.field);
        }
    }
    deliver(plan.field);
}

void S57RecordReader::readRow(const ISOFieldDefinition& definition, const FieldPlan& plan,
                              std::span<const char>& left)
{
    ++m_rowNumber; // makes the values of earlier rows count no more
    for (std::size_t i = 0; i < plan.steps.size(); ++i) {
        const Step& step = plan.steps[i];
        Value& target = m_row[static_cast<std::size_t>(step.code)];
        target = {0, 0, {}, m_rowNumber};
        if (step.form == Form::Other || left.size() < step.width) {
            readOther(definition.subfields()[i], left, target);
            continue;
        }
        if (step.form == Form::Bytes) {
            target.text = {left.data(), step.width};
        } else if (left.size() >= sizeof(std::uint32_t)) {
            // One load and a mask serve all widths: which comes next is not to be foreseen.
            target.whole = static_cast<std::uint32_t>(littleEndian32(left.data())) & step.mask;
        } else {
            std::memcpy(&target.whole, left.data(), step.width);
        }
        left = left.subspan(step.width);
    }
}

void S57RecordReader::readOther(const ISOSubfieldDefinition& subfield, std::span<const char>& left,
                                Value& target)
{
    std::size_t consumed = 0;
    switch (subfield.dataType()) {
    case ISODataType::Int: {
        const std::int64_t number = subfield.extractInt(left, consumed);
        if (subfield.binaryFormat() == 1)
            target.whole = static_cast<std::uint32_t>(number);
        else
            target.number = static_cast<std::int32_t>(number);
        break;
    }
    case ISODataType::Float:
        consumed = subfield.dataLength(left).consumed; // stepped over, never used
        break;
    case ISODataType::String: {
        const auto text = subfield.extractString(left, consumed);
        target.text = text.substr(0, text.find('\0'));
        break;
    }
    case ISODataType::BinaryString:
        target.text = subfield.extractString(left, consumed);
        break;
    }
    left = left.subspan(std::min(consumed, left.size()));
}

void S57RecordReader::applyRow(FieldCode field)
{
    using enum SubfieldCode;
    const auto whole8 = [&](SubfieldCode code) {
        return static_cast<std::uint8_t>(value(code).whole);
    };
    const auto control = [&](SubfieldCode instruction, SubfieldCode index, SubfieldCode count) {
        return S57UpdateControl{value(instruction).whole, value(index).whole, value(count).whole};
    };
    switch (field) {
    case FieldCode::DSID:
    case FieldCode::DSPM:
    case FieldCode::DSSI:
        applyDataset(field);
        break;
    case FieldCode::FRID:
        beginFeature();
        break;
    case FieldCode::VRID:
        beginVector();
        break;
    case FieldCode::FOID:
        if (m_feature) {
            m_feature->setAgency(static_cast<std::uint16_t>(value(AGEN).whole));
            m_feature->setIdentification(value(FIDN).whole);
            m_feature->setIdentificationSubdivision(static_cast<std::uint16_t>(value(FIDS).whole));
        }
        break;
    case FieldCode::ATTF:
        if (m_feature)
            m_feature->addS57FeatureAttribute(static_cast<std::uint16_t>(value(ATTL).whole),
                                              utf8FromLatin1(value(ATVL).text));
        break;
    case FieldCode::FFPC:
        if (m_feature && has(NFPT))
            m_feature->setS57FFPC(control(FFUI, FFIX, NFPT));
        break;
    case FieldCode::FSPC:
        if (m_feature && has(NSPT))
            m_feature->setS57FSPC(control(FSUI, FSIX, NSPT));
        break;
    case FieldCode::FFPT: {
        const auto name = isoLongName(value(LNAM).text);
        m_records.push_back({name.fidn, name.agen, name.fids});
        break;
    }
    case FieldCode::FSPT: {
        const auto name = isoRecordName(value(NAME).text);
        m_spatials.push_back({name.rcid, name.rcnm, whole8(ORNT), whole8(USAG), whole8(MASK)});
        break;
    }
    case FieldCode::VRPC:
        if (m_vector && has(NVPT))
            m_vector->setS57VRPC(control(VPUI, VPIX, NVPT));
        break;
    case FieldCode::SGCC:
        if (m_vector && has(CCNC))
            m_vector->setS57SGCC(control(CCUI, CCIX, CCNC));
        break;
    case FieldCode::VRPT: {
        const auto name = isoRecordName(value(NAME).text);
        m_pointers.push_back(
            {name.rcid, name.rcnm, whole8(ORNT), whole8(USAG), whole8(TOPI), whole8(MASK)});
        break;
    }
    case FieldCode::SG2D:
        if (has(XCOO))
            addCoordinate(value(YCOO).number, value(XCOO).number);
        break;
    case FieldCode::SG3D:
        if (has(VE3D)) {
            addCoordinate(value(YCOO).number, value(XCOO).number);
            addDepth(value(VE3D).number);
        }
        break;
    default:
        break;
    }
}

void S57RecordReader::applyDataset(FieldCode field)
{
    using enum SubfieldCode;
    auto& parameters = m_cell.parameters();
    const auto setWhole = [&](SubfieldCode code, std::uint32_t& target) {
        if (has(code))
            target = value(code).whole;
    };
    const auto setText = [&](SubfieldCode code, std::string& target) {
        if (has(code))
            target = value(code).text;
    };
    if (field == FieldCode::DSID) {
        setText(EDTN, parameters.edition);
        setText(UPDN, parameters.update);
        setText(ISDT, parameters.issueDate);
        setWhole(PROF, parameters.profile);
        setWhole(PRSP, parameters.specification);
    } else if (field == FieldCode::DSPM) {
        setWhole(COMF, parameters.coordinateMultiplier);
        if (has(COUN))
            parameters.latLon = value(COUN).whole == 1;
        setWhole(CSCL, parameters.compiledScale);
        setWhole(HDAT, parameters.horizontalDatum);
        setWhole(VDAT, parameters.verticalDatum);
        setWhole(SDAT, parameters.soundingDatum);
        setWhole(SOMF, parameters.soundingMultiplier);
    } else {
        setWhole(DSTR, parameters.dataStructure);
    }
}

void S57RecordReader::beginFeature()
{
    using enum SubfieldCode;
    constexpr std::uint32_t modify = 3;
    m_newFeature = std::make_unique<S57Feature>(m_cell.memory());
    m_feature = m_newFeature.get();
    m_feature->setRecordName(static_cast<std::uint8_t>(value(RCNM).whole));
    m_feature->setRecordID(value(RCID).whole);
    m_feature->setGeometry(static_cast<std::uint8_t>(value(PRIM).whole));
    m_feature->setGroup(static_cast<std::uint8_t>(value(GRUP).whole));
    m_feature->setObjectCode(static_cast<std::uint16_t>(value(OBJL).whole));
    m_feature->setRecordUpdate(value(RUIN).whole);
    if (value(RUIN).whole == modify) {
        // What follows changes the stored feature; without one it fills nothing.
        m_feature = m_cell.s57FeatureForS57Feature(*m_newFeature);
        m_newFeature.reset();
        if (m_feature)
            m_feature->setRecordUpdate(modify);
    }
}

void S57RecordReader::beginVector()
{
    using enum SubfieldCode;
    constexpr std::uint32_t modify = 3;
    m_newVector.emplace(m_cell.memory());
    m_vector = &*m_newVector;
    m_vector->setRecordName(static_cast<std::uint8_t>(value(RCNM).whole));
    m_vector->setRecordID(value(RCID).whole);
    m_vector->setRecordUpdate(value(RUIN).whole);
    if (value(RUIN).whole == modify) {
        m_vector = m_cell.s57VectorForS57Vector(*m_newVector);
        m_newVector.reset();
        if (m_vector)
            m_vector->setRecordUpdate(modify);
    }
}

void S57RecordReader::addCoordinate(std::int32_t y, std::int32_t x)
{
    // Both operands in single precision before the division, on purpose.
    const auto multiplier = static_cast<float>(m_cell.parameters().coordinateMultiplier);
    m_coordinates.push_back(
        {static_cast<float>(y) / multiplier, static_cast<float>(x) / multiplier});
}

void S57RecordReader::addDepth(std::int32_t depth)
{
    const auto multiplier = static_cast<float>(m_cell.parameters().soundingMultiplier);
    m_depths.push_back(static_cast<float>(depth) / multiplier);
}

void S57RecordReader::readPlainCoordinates(const ISORawField& field, std::size_t rowSize)
{
    const auto data = field.data();
    const std::size_t rows = data.size() / rowSize;
    m_coordinates.reserve(rows);
    const bool withDepth = rowSize == 12;
    for (std::size_t row = 0; row < rows; ++row) {
        const char* bytes = data.data() + row * rowSize;
        addCoordinate(littleEndian32(bytes), littleEndian32(bytes + 4));
        if (withDepth)
            addDepth(littleEndian32(bytes + 8));
    }
}

void S57RecordReader::readPlainSpatials(std::span<const char> data)
{
    constexpr std::size_t rowSize = nameWidth + 3;
    for (; data.size() >= rowSize; data = data.subspan(rowSize)) {
        const auto bytes = reinterpret_cast<const std::uint8_t*>(data.data());
        m_spatials.push_back({static_cast<std::uint32_t>(littleEndian32(data.data() + 1)), bytes[0],
                              bytes[nameWidth], bytes[nameWidth + 1], bytes[nameWidth + 2]});
    }
}

void S57RecordReader::readPlainAttributes(const ISORawField& field)
{
    // The rows that ISOFieldDefinition::repeatCount() would count, in one walk.
    constexpr std::size_t codeWidth = 2;
    const ISOSubfieldDefinition& value = field.definition().subfields()[1];
    if (!m_feature)
        return;
    m_attributes.clear();
    for (auto left = field.data(); left.size() >= codeWidth;) {
        std::uint16_t code = 0;
        std::memcpy(&code, left.data(), codeWidth);
        const auto rest = left.subspan(codeWidth);
        const ISOExtent extent = value.dataLength(rest);
        if (extent.consumed > rest.size())
            break; // a value without its end belongs to no complete row
        const std::string_view text(rest.data(), extent.length);
        m_attributes.emplace_back(code, text.substr(0, text.find('\0')));
        left = rest.subspan(extent.consumed);
    }
    m_feature->reserveAttributes(m_feature->s57FeatureAttributeCount() + m_attributes.size());
    for (const auto& [code, text] : m_attributes)
        m_feature->addS57FeatureAttribute(code, utf8FromLatin1(text));
}

void S57RecordReader::readPlainPointers(std::span<const char> data)
{
    constexpr std::size_t rowSize = nameWidth + 4;
    for (; data.size() >= rowSize; data = data.subspan(rowSize)) {
        const auto bytes = reinterpret_cast<const std::uint8_t*>(data.data());
        m_pointers.push_back({static_cast<std::uint32_t>(littleEndian32(data.data() + 1)), bytes[0],
                              bytes[nameWidth], bytes[nameWidth + 1], bytes[nameWidth + 2],
                              bytes[nameWidth + 3]});
    }
}

void S57RecordReader::deliver(FieldCode field)
{
    if (m_vector && field == FieldCode::SG2D)
        m_vector->addCoordinates(m_coordinates);
    else if (m_vector && field == FieldCode::SG3D)
        m_vector->addSoundings(m_coordinates, m_depths);
    else if (m_vector && field == FieldCode::VRPT)
        m_vector->addPointers(m_pointers);
    else if (m_feature && field == FieldCode::FSPT)
        m_feature->addSpatials(m_spatials);
    else if (m_feature && field == FieldCode::FFPT)
        m_feature->addRecords(m_records);
    m_coordinates.clear();
    m_depths.clear();
    m_pointers.clear();
    m_spatials.clear();
    m_records.clear();
}

} // namespace kelvox
