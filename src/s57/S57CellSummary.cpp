#include "s57/S57CellSummary.h"

#include "iso8211/ISOModule.h"
#include "iso8211/ISONumbers.h"
#include "iso8211/ISOTree.h"
#include "s57/S57CellLoader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <optional>

namespace kelvox {

namespace {
using Ring = std::vector<Position>;

constexpr int noCoverage = 2; ///< CATCOV
constexpr std::size_t nameWidth = 5; ///< bytes of a NAME

/// An edge of the coverage as a feature runs along it.
struct CoverageUse {
    std::uint64_t edge = 0;
    bool reversed = false;
};

/// Joins edges to rings: one ends where it comes back to its first place.
std::vector<Ring> joinRings(std::span<const CoverageUse> uses,
                            const std::function<Ring(std::uint64_t edge)>& placesOf,
                            std::size_t budget)
{
    std::vector<Ring> rings;
    Ring ring;
    const auto close = [&] {
        if (ring.size() > 1 && ring.front() == ring.back())
            ring.pop_back();
        if (ring.size() > 2)
            rings.push_back(std::move(ring));
        ring.clear();
    };
    for (const CoverageUse& use : uses) {
        Ring places = placesOf(use.edge);
        if (places.size() > budget)
            break; // a hostile file names one edge over and over
        budget -= places.size();
        if (use.reversed)
            std::reverse(places.begin(), places.end());
        for (const Position& place : places)
            if (ring.empty() || !(ring.back() == place))
                ring.push_back(place);
        if (ring.size() > 2 && ring.front() == ring.back())
            close();
    }
    close();
    return rings;
}

std::uint32_t littleEndian(std::span<const char> bytes)
{
    std::uint32_t value = 0;
    if (!bytes.empty()) // a field without bytes has no address either
        std::memcpy(&value, bytes.data(), std::min(bytes.size(), sizeof value));
    return value;
}

/// Where a subfield of fixed width stands in its field.
struct Slot {
    std::size_t offset = 0;
    std::size_t width = 0;
    bool isSet = false;

    [[nodiscard]] std::uint32_t valueIn(std::span<const char> data) const
    {
        return offset + width <= data.size() ? littleEndian(data.subspan(offset, width)) : 0;
    }
};

Slot slotOf(const ISOFieldDefinition* definition, std::string_view label)
{
    Slot slot;
    if (!definition)
        return slot;
    for (const auto& subfield : definition->subfields()) {
        if (subfield.isVariable() || subfield.width() == 0)
            return slot;
        if (subfield.label() == label) {
            slot.width = subfield.width();
            slot.isSet = subfield.binaryFormat() == 1 && slot.width <= sizeof(std::uint32_t);
            return slot;
        }
        slot.offset += subfield.width();
    }
    return slot;
}

/// Whether a field's rows are these subfields in the usual formats.
bool hasRows(const ISOFieldDefinition* definition,
             std::initializer_list<std::pair<std::string_view, std::string_view>> form)
{
    if (!definition || !definition->isRepeating() || definition->subfields().size() != form.size())
        return false;
    return std::equal(form.begin(), form.end(), definition->subfields().begin(),
                      [](const auto& wanted, const ISOSubfieldDefinition& subfield) {
                          return subfield.label() == wanted.first
                              && subfield.format() == wanted.second;
                      });
}

/// How a file is laid out. One in another layout than all producers use is loaded as a whole.
struct Layout {
    explicit Layout(const ISOModule& module)
        : features(module.findDefinition("FRID"))
        , vectors(module.findDefinition("VRID"))
        , objectCode(slotOf(features, "OBJL"))
        , recordName(slotOf(vectors, "RCNM"))
        , recordID(slotOf(vectors, "RCID"))
        , usual(objectCode.isSet && recordName.isSet && recordID.isSet
                && hasRows(module.findDefinition("SG2D"), {{"YCOO", "b24"}, {"XCOO", "b24"}})
                && hasRows(module.findDefinition("VRPT"),
                           {{"NAME", "B(40)"},
                            {"ORNT", "b11"},
                            {"USAG", "b11"},
                            {"TOPI", "b11"},
                            {"MASK", "b11"}})
                && hasRows(module.findDefinition("FSPT"),
                           {{"NAME", "B(40)"}, {"ORNT", "b11"}, {"USAG", "b11"}, {"MASK", "b11"}}))
    {
    }
    const ISOFieldDefinition* features;
    const ISOFieldDefinition* vectors;
    Slot objectCode;
    Slot recordName;
    Slot recordID;
    bool usual;
};

constexpr std::size_t coordinateWidth = 8;
constexpr std::size_t spatialWidth = nameWidth + 3;
constexpr std::size_t pointerWidth = nameWidth + 4;

std::uint64_t keyOf(std::span<const char> name)
{
    const auto record = isoRecordName({name.data(), nameWidth});
    return s57RecordKey(record.rcnm, record.rcid);
}

/// Each value of a field's first row with its label.
void forEachValue(
    const ISORawField& field,
    const std::function<void(const ISOSubfieldDefinition&, std::span<const char>)>& take)
{
    auto left = field.data();
    for (const auto& subfield : field.definition().subfields()) {
        take(subfield, left);
        left = left.subspan(std::min(subfield.dataLength(left).consumed, left.size()));
    }
}

std::string textOf(const ISOSubfieldDefinition& subfield, std::span<const char> data)
{
    std::size_t consumed = 0;
    const auto text = subfield.extractString(data, consumed);
    return std::string(text.substr(0, text.find('\0')));
}

/// Walks a file and keeps what the summary is made of.
class SummaryReader {
public:
    /// Places of the file, kept as bytes until it is known which of them matter.
    struct VectorPlace {
        std::uint64_t key = 0;
        std::span<const char> coordinates;
        std::span<const char> pointers;
    };

    Result<void> read(ISOModule& module)
    {
        const Layout layout(module);
        isUsual = layout.usual;
        while (const ISORawRecord* record = module.readRecord())
            readRecord(*record, layout);
        if (!hasIdentification)
            return failure(Error::Code::BadSyntax, "no data set identification");
        std::sort(m_vectors.begin(), m_vectors.end(),
                  [](const VectorPlace& a, const VectorPlace& b) { return a.key < b.key; });
        return {};
    }

    [[nodiscard]] std::vector<Ring> coverage(std::size_t budget) const
    {
        if (m_multiplier == 0)
            return {};
        return joinRings(
            uses, [this](std::uint64_t key) { return placesOf(key); }, budget);
    }

    S57CellSummary summary;
    bool isUsual = true;
    bool hasIdentification = false;
    bool touchesCoverage = false; ///< a feature of the coverage stands in the file
    std::vector<CoverageUse> uses;
    std::vector<std::uint64_t> changedVectors; ///< only filled where asked for
    bool collectsVectorKeys = false;

private:
    void readRecord(const ISORawRecord& record, const Layout& layout)
    {
        VectorPlace vector;
        bool isCoverage = false;
        bool covers = true;
        for (const ISORawField& field : record.fields()) {
            const auto* definition = &field.definition();
            const auto data = field.data();
            if (definition == layout.vectors) {
                vector.key =
                    s57RecordKey(layout.recordName.valueIn(data), layout.recordID.valueIn(data));
            } else if (definition == layout.features) {
                if (layout.objectCode.valueIn(data) != s57class::M_COVR)
                    return;
                isCoverage = touchesCoverage = true;
            } else if (definition->tag() == "SG2D") {
                vector.coordinates = data;
            } else if (definition->tag() == "VRPT") {
                vector.pointers = data;
            } else if (isCoverage && definition->tag() == "ATTF") {
                covers = categoryOf(field) != noCoverage;
            } else if (isCoverage && covers && definition->tag() == "FSPT") {
                for (std::size_t at = 0; at + spatialWidth <= data.size(); at += spatialWidth)
                    uses.push_back({keyOf(data.subspan(at)),
                                    data[at + nameWidth] == S57FeatureSpatial::reverse});
            } else if (!hasIdentification || !m_hasParameters) {
                readDataset(field);
            }
        }
        if (vector.key == 0)
            return;
        if (collectsVectorKeys)
            changedVectors.push_back(vector.key);
        else if (vector.key >= s57RecordKey(s57RecordName::connectedNode, 0))
            m_vectors.push_back(vector);
    }

    void readDataset(const ISORawField& field)
    {
        const std::string& tag = field.definition().tag();
        if (tag == "DSID") {
            hasIdentification = true;
            forEachValue(field, [this](const auto& subfield, std::span<const char> data) {
                if (subfield.label() == "EDTN")
                    summary.edition = textOf(subfield, data);
                else if (subfield.label() == "UPDN")
                    summary.update = static_cast<int>(isoDecimal(textOf(subfield, data)));
                else if (subfield.label() == "ISDT")
                    summary.issueDate = textOf(subfield, data);
            });
        } else if (tag == "DSPM") {
            m_hasParameters = true;
            forEachValue(field, [this](const auto& subfield, std::span<const char> data) {
                std::size_t consumed = 0;
                if (subfield.label() == "COMF")
                    m_multiplier = static_cast<double>(
                        static_cast<std::uint32_t>(subfield.extractInt(data, consumed)));
                else if (subfield.label() == "CSCL")
                    summary.compiledScale =
                        static_cast<std::uint32_t>(subfield.extractInt(data, consumed));
            });
        }
    }

    [[nodiscard]] static int categoryOf(const ISORawField& field)
    {
        auto left = field.data();
        int category = 0;
        std::int64_t code = 0;
        for (std::size_t rows = field.repeatCount(); rows > 0; --rows)
            for (const auto& subfield : field.definition().subfields()) {
                std::size_t consumed = 0;
                if (subfield.label() == "ATTL")
                    code = subfield.extractInt(left, consumed);
                else if (code == s57attribute::CATCOV)
                    category = static_cast<int>(isoDecimal(textOf(subfield, left)));
                consumed = subfield.dataLength(left).consumed;
                left = left.subspan(std::min(consumed, left.size()));
            }
        return category;
    }

    [[nodiscard]] const VectorPlace* find(std::uint64_t key) const
    {
        const auto it =
            std::lower_bound(m_vectors.begin(), m_vectors.end(), key,
                             [](const VectorPlace& v, std::uint64_t k) { return v.key < k; });
        return it != m_vectors.end() && it->key == key ? &*it : nullptr;
    }

    void append(Ring& ring, std::span<const char> coordinates) const
    {
        const auto degrees = [&](std::size_t at) {
            return static_cast<std::int32_t>(littleEndian(coordinates.subspan(at, 4)))
                / m_multiplier;
        };
        for (std::size_t at = 0; at + coordinateWidth <= coordinates.size(); at += coordinateWidth)
            ring.push_back({.longitude = degrees(at + 4), .latitude = degrees(at)});
    }

    /// From the edge's start node to its end node.
    [[nodiscard]] Ring placesOf(std::uint64_t edge) const
    {
        Ring ring;
        const VectorPlace* vector = find(edge);
        if (!vector)
            return ring;
        const auto appendNode = [&](std::size_t number) {
            const std::size_t at = number * pointerWidth;
            if (at + pointerWidth > vector->pointers.size())
                return;
            if (const VectorPlace* node = find(keyOf(vector->pointers.subspan(at))))
                append(
                    ring,
                    node->coordinates.first(std::min(coordinateWidth, node->coordinates.size())));
        };
        appendNode(0);
        append(ring, vector->coordinates);
        appendNode(1);
        return ring;
    }

    bool m_hasParameters = false;
    double m_multiplier = 0;
    std::vector<VectorPlace> m_vectors; ///< connected nodes and edges
};

/// By way of the whole cell.
Result<S57CellSummary> summaryOf(const Result<S57CellLoader::Loaded>& loaded)
{
    if (!loaded)
        return tl::unexpected(loaded.error());
    const S57ChartItems& cell = *loaded->cell;
    const auto& parameters = cell.parameters();
    S57CellSummary summary;
    summary.edition = parameters.edition;
    summary.update = static_cast<int>(isoDecimal(parameters.update));
    summary.updatesApplied = loaded->updatesApplied;
    summary.issueDate = parameters.issueDate;
    summary.compiledScale = parameters.compiledScale;
    summary.bounds = cell.bounds();
    std::vector<CoverageUse> uses;
    std::size_t budget = 0;
    for (const auto& vector : cell.s57Vectors())
        budget += vector.s57Coordinates().size() + 2;
    for (const auto& feature : cell.s57Features()) {
        if (feature->objectCode() != s57class::M_COVR
            || feature->featureAttributeIntValue(s57attribute::CATCOV) == noCoverage)
            continue;
        for (const auto& spatial : feature->s57FeatureSpatials())
            uses.push_back({spatial.recordKey(), spatial.orient == S57FeatureSpatial::reverse});
    }
    summary.coverage = joinRings(
        uses,
        [&](std::uint64_t key) {
            S57FeatureSpatial forward;
            forward.recordName = static_cast<std::uint8_t>(key >> 32U);
            forward.recordID = static_cast<std::uint32_t>(key);
            const auto nodes = forward.edgeConnectedNodes(cell);
            Ring places;
            for (const S57Vector* vector : {nodes.start, nodes.edge, nodes.end})
                if (vector)
                    for (const auto& place : vector->s57Coordinates())
                        places.push_back(place.positionOnGPS());
            return places;
        },
        budget);
    return summary;
}

bool isOnEarth(const Ring& ring)
{
    return std::all_of(ring.begin(), ring.end(), [](const Position& p) {
        return std::abs(p.latitude) <= 90 && std::abs(p.longitude) <= 360;
    });
}

/// The rings and the box around them, when the file has told them.
bool finish(const SummaryReader& reader, std::size_t fileSize, S57CellSummary& summary)
{
    if (!reader.isUsual)
        return false;
    summary = reader.summary;
    summary.coverage = reader.coverage(fileSize / coordinateWidth);
    std::erase_if(summary.coverage, [](const Ring& ring) { return !isOnEarth(ring); });
    for (const Ring& ring : summary.coverage)
        for (const Position& place : ring)
            summary.bounds.include(Point{place.longitude, place.latitude});
    return !summary.bounds.isEmpty();
}

/// Takes the chain of updates into account. False when one of them changes the coverage.
bool followUpdates(const std::filesystem::path& base, const SummaryReader& cell,
                   S57CellSummary& summary)
{
    std::vector<std::uint64_t> edges;
    for (const CoverageUse& use : cell.uses)
        edges.push_back(use.edge);
    std::sort(edges.begin(), edges.end());
    for (int n = 1; n <= S57CellLoader::maximumUpdate; ++n) {
        auto path = base;
        path.replace_extension(fmt::format(".{:03}", n));
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored))
            return true;
        ISOModule module;
        SummaryReader update;
        update.collectsVectorKeys = true;
        if (!module.open(path) || !update.read(module))
            return true; // the loader stops here too
        if (!update.isUsual)
            return false;
        if (update.summary.update <= summary.update)
            continue;
        if (update.summary.edition != summary.edition
            || update.summary.update != summary.update + 1)
            return true;
        summary.update = update.summary.update;
        ++summary.updatesApplied;
        if (!update.summary.issueDate.empty())
            summary.issueDate = update.summary.issueDate;
        // Nodes of the coverage are left out: one that moves takes a changed edge along.
        const bool changesEdge = std::any_of(
            update.changedVectors.begin(), update.changedVectors.end(),
            [&](std::uint64_t key) { return std::binary_search(edges.begin(), edges.end(), key); });
        if (update.touchesCoverage || changesEdge)
            return false;
    }
    return true;
}

/// Size of a file; 0 when it cannot be told.
std::size_t sizeOf(const std::filesystem::path& path)
{
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : static_cast<std::size_t>(size);
}
} // namespace

Result<S57CellSummary> S57CellSummary::read(const std::filesystem::path& path)
{
    ISOModule module;
    if (auto opened = module.open(path); !opened)
        return tl::unexpected(opened.error());
    SummaryReader reader;
    if (auto read = reader.read(module); !read)
        return tl::unexpected(read.error());
    S57CellSummary summary;
    if (finish(reader, sizeOf(path), summary) && followUpdates(path, reader, summary))
        return summary;
    return summaryOf(S57CellLoader::load(path));
}

Result<S57CellSummary> S57CellSummary::readBytes(std::span<const char> bytes)
{
    ISOModule module;
    if (auto opened = module.openBytes(bytes); !opened)
        return tl::unexpected(opened.error());
    SummaryReader reader;
    if (auto read = reader.read(module); !read)
        return tl::unexpected(read.error());
    S57CellSummary summary;
    if (finish(reader, bytes.size(), summary))
        return summary;
    return summaryOf(S57CellLoader::loadBytes(bytes));
}

} // namespace kelvox
