#include "s57/S57CellWriter.h"

#include "base/File.h"
#include "s57/S57ObjectCatalogue.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace kelvox {

namespace {
constexpr std::uint8_t null = 255; ///< S-57's "no value" of a one-byte subfield
constexpr std::uint8_t deletion = 2, modification = 3;
constexpr std::size_t longestEdge = 4'000; ///< places; 8 bytes each
constexpr std::size_t mostSoundings = 4'000;
constexpr char removedValue = 0x7F; ///< an attribute value that an update takes away

using CodeMap = std::map<std::string_view, std::uint16_t>;

CodeMap codesOf(std::string_view (*acronymOf)(int), int last)
{
    CodeMap codes;
    for (int code = 1; code <= last; ++code)
        if (const auto acronym = acronymOf(code); !acronym.empty())
            codes.emplace(acronym, static_cast<std::uint16_t>(code));
    return codes;
}

std::uint16_t codeOf(const CodeMap& codes, std::string_view acronym)
{
    const auto it = codes.find(acronym);
    return it == codes.end() ? 0 : it->second;
}

std::uint16_t classCode(std::string_view acronym)
{
    static const CodeMap codes = codesOf(S57ObjectCatalogue::classAcronym, 504);
    return codeOf(codes, acronym);
}

std::uint16_t attributeCode(std::string_view acronym)
{
    static const CodeMap codes = codesOf(S57ObjectCatalogue::attributeAcronym, 402);
    return codeOf(codes, acronym);
}

bool isNational(int attribute)
{
    return attribute >= 300 && attribute <= 304;
}

/// Nothing when the text holds what Latin-1 does not, or a control character.
std::optional<std::string> latin1FromUtf8(std::string_view text)
{
    std::string latin;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto code = static_cast<unsigned char>(text[i]);
        if (code == 0xC2 || code == 0xC3) {
            if (++i == text.size())
                return std::nullopt;
            code = static_cast<unsigned char>(((code & 0x03U) << 6U)
                                              | (static_cast<unsigned char>(text[i]) & 0x3FU));
        } else if (code >= 0x7F || code < 0x20) {
            return std::nullopt;
        }
        latin += static_cast<char>(code);
    }
    return latin;
}

std::uint64_t keyOf(S57Place place)
{
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(place.y)) << 32U
        | static_cast<std::uint32_t>(place.x);
}

/// FNV-1a over whole words.
template <typename Iterator> std::uint64_t digest(Iterator first, Iterator last)
{
    std::uint64_t value = 0xCBF29CE484222325U;
    for (; first != last; ++first) {
        value = (value ^ keyOf(*first)) * 0x100000001B3U;
        value ^= value >> 29U;
    }
    return value;
}

std::vector<S57Place> placesOf(const S57CellWriter::Line& line)
{
    std::vector<S57Place> places;
    places.reserve(line.size());
    for (const Position position : line)
        if (const auto place = S57Place::of(position); places.empty() || places.back() != place)
            places.push_back(place);
    return places;
}

/// Positive for a counter-clockwise ring.
double signedArea(std::span<const S57Place> ring)
{
    double sum = 0;
    const S57Place origin = ring.front();
    for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
        const double ax = double{1} * ring[i].x - origin.x;
        const double ay = double{1} * ring[i].y - origin.y;
        const double bx = double{1} * ring[i + 1].x - origin.x;
        const double by = double{1} * ring[i + 1].y - origin.y;
        sum += ax * by - bx * ay;
    }
    return sum / 2;
}
} // namespace

S57CellWriter::S57CellWriter(Identification identification)
    : m_identification(std::move(identification))
{
    std::uint32_t hash = 5381;
    for (const char c : m_identification.name)
        hash = hash * 33 + static_cast<unsigned char>(c);
    m_subdivision = static_cast<std::uint16_t>(hash % 65'000 + 1);
}

S57CellWriter S57CellWriter::update(std::string issueDate) const
{
    S57CellWriter next = *this;
    ++next.m_identification.update;
    next.m_identification.issueDate = std::move(issueDate);
    next.m_vectors.clear();
    next.m_features.clear();
    return next;
}

void S57CellWriter::mistake(std::string message)
{
    if (m_mistake.empty())
        m_mistake = m_identification.name + ": " + std::move(message);
}

S57VectorRecord& S57CellWriter::addVector(int recordName)
{
    S57VectorRecord& record = m_vectors.emplace_back();
    record.recordName = static_cast<std::uint8_t>(recordName);
    record.recordID = recordName == s57RecordName::isolatedNode ? ++m_lastIsolated
        : recordName == s57RecordName::connectedNode            ? ++m_lastConnected
                                                                : ++m_lastEdge;
    m_vectorVersions[s57RecordKey(record.recordName, record.recordID)] = record.version;
    return record;
}

S57FeatureSpatial S57CellWriter::isolatedNode(Position position)
{
    const S57Place place = S57Place::of(position);
    auto& id = m_isolatedNodes[keyOf(place)];
    if (id == 0) {
        auto& node = addVector(s57RecordName::isolatedNode);
        node.places.push_back(place);
        id = node.recordID;
    }
    return {id, s57RecordName::isolatedNode, null, null, null};
}

std::uint32_t S57CellWriter::connectedNode(S57Place place)
{
    auto& id = m_connectedNodes[keyOf(place)];
    if (id == 0) {
        auto& node = addVector(s57RecordName::connectedNode);
        node.places.push_back(place);
        id = node.recordID;
    }
    return id;
}

S57FeatureSpatial S57CellWriter::edge(std::span<const S57Place> places)
{
    // The same line is the same edge, whichever way it is walked.
    const std::uint64_t forward = digest(places.begin(), places.end());
    const std::uint64_t backward = digest(places.rbegin(), places.rend());
    const bool reversed = backward < forward;
    auto& known = m_edges[std::min(forward, backward)];
    if (known.first == 0) {
        const std::uint32_t start = connectedNode(places.front());
        const std::uint32_t end = connectedNode(places.back());
        auto& record = addVector(s57RecordName::edge);
        record.pointers = {{start, s57RecordName::connectedNode, null, null, 1, null},
                           {end, s57RecordName::connectedNode, null, null, 2, null}};
        record.places.assign(places.begin() + 1, places.end() - 1);
        known = {record.recordID, reversed};
    }
    const auto orient = static_cast<std::uint8_t>(known.second == reversed ? 1 : 2);
    return {known.first, s57RecordName::edge, orient, null, null};
}

std::vector<S57FeatureSpatial> S57CellWriter::edgesOf(std::span<const S57Place> places)
{
    std::vector<S57FeatureSpatial> all;
    for (std::size_t first = 0; first + 1 < places.size(); first += longestEdge)
        all.push_back(
            edge(places.subspan(first, std::min(longestEdge + 1, places.size() - first))));
    return all;
}

std::vector<S57FeatureSpatial> S57CellWriter::edges(const Line& line)
{
    const auto places = placesOf(line);
    if (places.size() < 2)
        mistake("a line of less than two places");
    return edgesOf(places);
}

std::vector<S57FeatureSpatial> S57CellWriter::ring(const Line& line, bool inner)
{
    auto places = placesOf(line);
    if (!places.empty() && places.front() != places.back())
        places.push_back(places.front());
    if (places.size() < 4) {
        mistake("a ring of less than three places");
        return {};
    }
    if ((signedArea(places) > 0) != inner)
        std::reverse(places.begin(), places.end());
    auto all = edgesOf(places);
    for (auto& spatial : all) {
        spatial.usage = inner ? 2 : 1;
        spatial.mask = 2;
    }
    return all;
}

void S57CellWriter::setAttributes(S57FeatureRecordData& feature, const Attributes& attributes,
                                  bool change)
{
    for (const auto& [acronym, value] : attributes) {
        const std::uint16_t code = attributeCode(acronym);
        if (code == 0)
            mistake(fmt::format("no attribute {}", acronym));
        auto latin = latin1FromUtf8(value);
        if (!latin)
            mistake(fmt::format("{} holds what Latin-1 cannot: {}", acronym, value));
        if (change && value.empty())
            latin = std::string(1, removedValue);
        auto& list = isNational(code) ? feature.nationalAttributes : feature.attributes;
        list.push_back({code, std::move(latin).value_or("")});
    }
}

S57CellWriter::FeatureID S57CellWriter::addFeature(std::string_view acronym, int primitive,
                                                   std::vector<S57FeatureSpatial> spatials,
                                                   const Attributes& attributes)
{
    S57FeatureRecordData& feature = m_features.emplace_back();
    feature.recordID = ++m_lastFeature;
    feature.objectCode = classCode(acronym);
    if (feature.objectCode == 0)
        mistake(fmt::format("no class {}", acronym));
    feature.primitive = static_cast<std::uint8_t>(primitive);
    feature.spatials = std::move(spatials);
    setAttributes(feature, attributes, false);
    m_knownFeatures[feature.recordID] = {feature.objectCode, feature.version, feature.primitive};
    return feature.recordID;
}

S57CellWriter::FeatureID S57CellWriter::addPoint(std::string_view acronym, Position place,
                                                 const Attributes& attributes)
{
    return addFeature(acronym, S57Feature::point, {isolatedNode(place)}, attributes);
}

S57CellWriter::FeatureID S57CellWriter::addLine(std::string_view acronym, const Line& line,
                                                const Attributes& attributes)
{
    return addFeature(acronym, S57Feature::line, edges(line), attributes);
}

S57CellWriter::FeatureID S57CellWriter::addArea(std::string_view acronym, const Line& outline,
                                                const Attributes& attributes,
                                                const std::vector<Line>& holes)
{
    auto spatials = ring(outline);
    for (const Line& hole : holes) {
        const auto inner = ring(hole, true);
        spatials.insert(spatials.end(), inner.begin(), inner.end());
    }
    return addFeature(acronym, S57Feature::area, std::move(spatials), attributes);
}

S57CellWriter::FeatureID S57CellWriter::addSoundings(const std::vector<Sounding>& soundings,
                                                     const Attributes& attributes)
{
    FeatureID firstFeature = 0;
    for (std::size_t first = 0; first < soundings.size(); first += mostSoundings) {
        auto& node = addVector(s57RecordName::isolatedNode);
        const std::size_t end = std::min(first + mostSoundings, soundings.size());
        for (std::size_t i = first; i < end; ++i) {
            node.places.push_back(S57Place::of(soundings[i].place));
            node.depths.push_back(
                static_cast<std::int32_t>(std::lround(soundings[i].depth * soundingMultiplier)));
        }
        const auto feature = addFeature(
            "SOUNDG", S57Feature::point,
            {{node.recordID, s57RecordName::isolatedNode, null, null, null}}, attributes);
        if (firstFeature == 0)
            firstFeature = feature;
    }
    return firstFeature;
}

S57RelationRecord S57CellWriter::relationTo(FeatureID other, Relation relation) const
{
    return {other, static_cast<std::uint8_t>(relation)};
}

void S57CellWriter::relate(FeatureID from, FeatureID to, Relation relation)
{
    const auto it = std::find_if(m_features.rbegin(), m_features.rend(),
                                 [&](const auto& feature) { return feature.recordID == from; });
    if (it == m_features.rend())
        mistake(fmt::format("no feature {} to relate here", from));
    else
        it->relations.push_back(relationTo(to, relation));
}

S57FeatureRecordData& S57CellWriter::changed(FeatureID id, std::uint8_t instruction)
{
    for (auto& feature : m_features)
        if (feature.recordID == id && feature.instruction == instruction)
            return feature;
    S57FeatureRecordData& feature = m_features.emplace_back();
    feature.recordID = id;
    feature.instruction = instruction;
    const auto known = m_knownFeatures.find(id);
    if (known == m_knownFeatures.end() || m_identification.update == 0) {
        mistake(fmt::format("no feature {} to change", id));
        return feature;
    }
    feature.objectCode = known->second.objectCode;
    feature.primitive = known->second.primitive;
    feature.version = ++known->second.version;
    return feature;
}

S57VectorRecord& S57CellWriter::changed(const S57FeatureSpatial& vector, std::uint8_t instruction)
{
    S57VectorRecord& record = m_vectors.emplace_back();
    record.recordName = vector.recordName;
    record.recordID = vector.recordID;
    record.instruction = instruction;
    const auto known = m_vectorVersions.find(vector.recordKey());
    if (known == m_vectorVersions.end() || m_identification.update == 0)
        mistake(fmt::format("no vector {} {} to change", vector.recordName, vector.recordID));
    else
        record.version = ++known->second;
    return record;
}

void S57CellWriter::removeFeature(FeatureID feature)
{
    changed(feature, deletion);
}

void S57CellWriter::removeVector(const S57FeatureSpatial& vector)
{
    changed(vector, deletion);
    const auto forget = [&](auto& known, const auto& idOf) {
        std::erase_if(known, [&](const auto& one) { return idOf(one.second) == vector.recordID; });
    };
    if (vector.recordName == s57RecordName::edge)
        forget(m_edges, [](const auto& value) { return value.first; });
    else
        forget(vector.recordName == s57RecordName::isolatedNode ? m_isolatedNodes
                                                                : m_connectedNodes,
               [](std::uint32_t value) { return value; });
}

void S57CellWriter::changeAttributes(FeatureID feature, const Attributes& attributes)
{
    setAttributes(changed(feature, modification), attributes, true);
}

void S57CellWriter::changeSpatials(FeatureID feature, S57UpdateControl control,
                                   std::vector<S57FeatureSpatial> spatials)
{
    auto& record = changed(feature, modification);
    control.count = static_cast<std::uint32_t>(spatials.size());
    record.spatialControl = control;
    record.spatials = std::move(spatials);
}

void S57CellWriter::changeRelations(FeatureID feature, S57UpdateControl control,
                                    const std::vector<FeatureID>& others, Relation relation)
{
    auto& record = changed(feature, modification);
    control.count = static_cast<std::uint32_t>(others.size());
    record.relationControl = control;
    for (const FeatureID other : others)
        record.relations.push_back(relationTo(other, relation));
}

void S57CellWriter::changePlaces(const S57FeatureSpatial& vector, S57UpdateControl control,
                                 const Line& places)
{
    auto& record = changed(vector, modification);
    control.count = static_cast<std::uint32_t>(places.size());
    record.placeControl = control;
    for (const Position place : places)
        record.places.push_back(S57Place::of(place));
}

Result<std::string> S57CellWriter::bytes() const
{
    if (!m_mistake.empty())
        return failure(Error::Code::BadSyntax, m_mistake);
    return encodeS57Cell(m_identification, m_subdivision, m_vectors, m_features);
}

Result<void> S57CellWriter::save(const std::filesystem::path& folder) const
{
    const auto encoded = bytes();
    if (!encoded)
        return tl::unexpected(encoded.error());
    return writeFileAtomically(
        folder / fmt::format("{}.{:03}", m_identification.name, m_identification.update), *encoded);
}

} // namespace kelvox
