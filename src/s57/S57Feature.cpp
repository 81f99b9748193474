#include "s57/S57Feature.h"

#include "chartview/S57Controller.h"
#include "s57/S57ChartItems.h"
#include "s57/S57Object.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kelvox {

namespace {
constexpr std::uint32_t modify = 3;
constexpr char deletedValue = '\x7F'; ///< an update's whole value that takes the attribute away

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    text.remove_prefix(first);
    if (text.starts_with('+'))
        text.remove_prefix(1);
    return text;
}

template <typename Number> std::optional<Number> leadingNumber(std::string_view text)
{
    text = trimmed(text);
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} ? std::optional(value) : std::nullopt;
}

/// The one co-ordinate of a node; nothing when the node is missing or has none or several.
std::optional<Point> nodePoint(const S57Vector* node, const S57Controller& view)
{
    if (!node || node->s57Coordinates().size() != 1)
        return std::nullopt;
    return node->s57Coordinates().front().coordinateToPoint(view);
}
} // namespace

int S57FeatureAttribute::intValue() const
{
    return leadingNumber<int>(m_value).value_or(0);
}

std::string S57FeatureSpatial::key() const
{
    return fmt::format("{} {}", recordName, recordID);
}

std::string S57FeatureRecord::identificationKey() const
{
    return fmt::format("{} {}", identification, identificationSubdivision);
}

S57ConnectedNodes S57FeatureSpatial::edgeConnectedNodes(const S57ChartItems& cell) const
{
    S57ConnectedNodes nodes;
    const S57Vector* edge = cell.s57VectorForKey(recordKey());
    if (!edge || edge->recordName() != s57RecordName::edge)
        return nodes;
    nodes.edge = edge;
    const auto pointers = edge->s57VectorPointers();
    if (pointers.size() != 2)
        return nodes;
    const auto nodeOf = [&](const S57VectorPointer& pointer) -> const S57Vector* {
        if (pointer.recordName != s57RecordName::connectedNode)
            return nullptr;
        const S57Vector* node = cell.s57VectorForKey(pointer.recordKey());
        return node && node->s57Coordinates().size() == 1 ? node : nullptr;
    };
    nodes.start = nodeOf(pointers[orient == reverse ? 1 : 0]);
    nodes.end = nodeOf(pointers[orient == reverse ? 0 : 1]);
    return nodes;
}

void S57FeatureSpatial::buildEdgePath(Path& path, const S57Controller& view,
                                      const S57ConnectedNodes& nodes, bool start) const
{
    if (!nodes.edge)
        return;
    if (const auto from = nodePoint(nodes.start, view)) {
        if (start)
            path.moveTo(*from);
        else
            path.lineTo(*from);
    }
    if (path.isEmpty())
        return; // an edge that begins nowhere is left out, on purpose
    const auto places = nodes.edge->s57Coordinates();
    const auto draw = [&](const S57Coordinate& c) { path.lineTo(c.coordinateToPoint(view)); };
    if (orient == reverse)
        std::for_each(places.rbegin(), places.rend(), draw);
    else
        std::for_each(places.begin(), places.end(), draw);
    if (const auto to = nodePoint(nodes.end, view))
        path.lineTo(*to);
}

S57Feature::S57Feature(std::pmr::memory_resource* memory)
    : m_attributes(memory)
    , m_spatials(memory)
    , m_records(memory)
{
}

S57Feature::~S57Feature() = default;

std::string_view S57Feature::canRender(int objectCode)
{
    return S57ObjectCatalogue::renderableName(objectCode);
}

std::string S57Feature::key() const
{
    return fmt::format("{} {}", m_recordName, m_recordID);
}

std::string S57Feature::identificationKey() const
{
    return fmt::format("{} {}", m_identification, m_identificationSubdivision);
}

void S57Feature::addS57FeatureAttribute(std::uint16_t code, std::string value)
{
    if (m_recordUpdate == modify) {
        const auto it =
            std::ranges::find(m_attributes, static_cast<int>(code), &S57FeatureAttribute::code);
        if (value.size() == 1 && value[0] == deletedValue) {
            if (it != m_attributes.end())
                m_attributes.erase(it);
            return;
        }
        if (it != m_attributes.end()) {
            *it = S57FeatureAttribute(code, std::move(value));
            return;
        }
    }
    if (m_attributes.size() < maximumAttributes)
        m_attributes.emplace_back(code, std::move(value));
}

const S57FeatureAttribute* S57Feature::featureAttributeCode(int code) const
{
    const auto it = std::ranges::find(m_attributes, code, &S57FeatureAttribute::code);
    return it == m_attributes.end() ? nullptr : &*it;
}

std::string_view S57Feature::featureAttributeStringValue(int code) const
{
    const auto* attribute = featureAttributeCode(code);
    return attribute ? std::string_view(attribute->stringValue()) : std::string_view();
}

std::optional<int> S57Feature::featureAttributeIntValue(int code) const
{
    return leadingNumber<int>(featureAttributeStringValue(code));
}

std::vector<int> S57Feature::featureAttributeIntValues(int code) const
{
    std::vector<int> values;
    std::string_view text = featureAttributeStringValue(code);
    while (!text.empty()) {
        const auto part = text.substr(0, text.find(','));
        text.remove_prefix(std::min(part.size() + 1, text.size()));
        if (const auto value = leadingNumber<int>(part))
            values.push_back(*value);
    }
    return values;
}

std::optional<double> S57Feature::featureAttributeFloatValue(int code) const
{
    const auto value = leadingNumber<double>(featureAttributeStringValue(code));
    return value && std::isfinite(*value) ? value : std::nullopt;
}

void S57Feature::addSpatials(std::span<const S57FeatureSpatial> spatials)
{
    applyUpdate(m_spatials, spatials, m_spatialControl.instruction, m_spatialControl.index);
}

void S57Feature::addRecords(std::span<const S57FeatureRecord> records)
{
    // The pointers to features share the running index of the spatial ones, on purpose.
    applyUpdate(m_records, records, m_recordControl.instruction, m_spatialControl.index);
}

bool S57Feature::hasName() const
{
    return !featureAttributeStringValue(s57attribute::OBJNAM).empty();
}

bool S57Feature::isNavAid() const
{
    using namespace s57class;
    const int code = m_objectCode;
    return (code >= BCNCAR && code <= BCNSPP) || (code >= BOYCAR && code <= BOYSPP)
        || code == DAYMAR || code == FOGSIG || code == LIGHTS || code == LITFLT || code == LITVES
        || code == RADSTA || code == RTPBCN || code == RETRFL || code == TOPMAR;
}

Path S57Feature::buildEdgePath(const S57ChartItems& cell, const S57Controller& view) const
{
    Path path;
    if (m_geometry == line) {
        for (const auto& spatial : m_spatials)
            spatial.buildEdgePath(path, view, spatial.edgeConnectedNodes(cell), true);
    } else if (m_geometry == area) {
        const S57Vector* ringStart = nullptr;
        bool start = true;
        for (const auto& spatial : m_spatials) {
            const auto nodes = spatial.edgeConnectedNodes(cell);
            spatial.buildEdgePath(path, view, nodes, start);
            const S57Vector* first = ringStart ? ringStart : nodes.start;
            start = first == nodes.end;
            ringStart = start ? nullptr : first;
        }
    }
    return path;
}

const Path& S57Feature::edgePath(const S57ChartItems& cell, const S57Controller& view)
{
    if (!m_edgePath)
        m_edgePath = std::make_unique<Path>(buildEdgePath(cell, view));
    return *m_edgePath;
}

const Path& S57Feature::scaledEdgePath(const S57ChartItems& cell, const S57Controller& view,
                                       float factor)
{
    if (!m_scaledEdgePath)
        m_scaledEdgePath = std::make_unique<Path>(edgePath(cell, view).scaled(factor));
    return *m_scaledEdgePath;
}

void S57Feature::resetEdgePath()
{
    m_edgePath.reset();
    m_scaledEdgePath.reset();
}

} // namespace kelvox
