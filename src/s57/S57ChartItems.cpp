#include "s57/S57ChartItems.h"

#include "s57/S57Object.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cctype>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

namespace kelvox {

namespace {
constexpr std::uint32_t insertRecord = 1;
constexpr std::uint32_t deleteRecord = 2;
constexpr int noCoverage = 2; ///< CATCOV

/// What another structure carries: lights, topmarks, signals, reflectors.
bool isEquipment(int classCode)
{
    using namespace s57class;
    constexpr std::array codes{DAYMAR, FOGSIG, LIGHTS, RADSTA, RTPBCN, RETRFL, TOPMAR};
    return std::ranges::find(codes, classCode) != codes.end();
}

/// How well a class serves as the structure at a light's place; 0 not at all.
int structureRank(int classCode)
{
    using namespace s57class;
    if ((classCode >= BCNCAR && classCode <= BCNSPP) || (classCode >= BOYCAR && classCode <= BOYSPP)
        || classCode == LITFLT || classCode == LITVES)
        return 3;
    // Landmark, single building, offshore platform, pile, mooring facility, pylon, crane, fort.
    constexpr std::array carriers{LNDMRK, 12, 87, 90, 84, 98, 35, 59};
    if (std::ranges::find(carriers, classCode) != carriers.end())
        return 2;
    return classCode == DAYMAR ? 1 : 0;
}

std::uint64_t placeKey(S57Coordinate place)
{
    return static_cast<std::uint64_t>(std::bit_cast<std::uint32_t>(place.latitude)) << 32U
        | std::bit_cast<std::uint32_t>(place.longitude);
}
} // namespace

bool S57CatalogRecord::validCell() const
{
    const std::string extension = path.extension().string();
    const bool numbered = extension.size() == 4
        && std::all_of(extension.begin() + 1, extension.end(),
                       [](unsigned char c) { return std::isdigit(c) != 0; });
    return numbered && southLatitude >= -90 && northLatitude <= 90 && southLatitude <= northLatitude
        && std::abs(westLongitude) <= 360 && std::abs(eastLongitude) <= 360;
}

S57ChartItems::S57ChartItems() = default;
S57ChartItems::~S57ChartItems() = default;

void S57ChartItems::addS57Vector(S57Vector&& vector)
{
    // Deleted ones stay stored and modified ones were changed in place, on purpose.
    if (vector.recordUpdate() != insertRecord)
        return;
    const std::uint32_t stored = m_vectorByKey.find(vector.recordKey());
    if (stored != RecordMap::none) {
        m_vectors[stored] = std::move(vector);
        return;
    }
    m_vectorByKey.set(vector.recordKey(), static_cast<std::uint32_t>(m_vectors.size()));
    m_vectors.push_back(std::move(vector));
}

void S57ChartItems::addS57Feature(const std::shared_ptr<const S57CatalogRecord>& base,
                                  std::unique_ptr<S57Feature> feature)
{
    if (!m_catalogRecord)
        m_catalogRecord = base;
    if (feature->recordUpdate() == deleteRecord) {
        const std::uint32_t place = m_featureByKey.find(feature->recordKey());
        if (place == RecordMap::none)
            return;
        const auto identification = identificationKey(
            m_features[place]->identification(), m_features[place]->identificationSubdivision());
        if (m_featureByIdentification.find(identification) == place)
            m_featureByIdentification.erase(identification);
        m_featureByKey.erase(feature->recordKey());
        m_features[place].reset();
        return;
    }
    if (feature->recordUpdate() != insertRecord)
        return;
    const auto description = S57Feature::canRender(feature->objectCode());
    if (description.empty())
        return;
    feature->setDescription(description);
    const auto place = static_cast<std::uint32_t>(m_features.size());
    m_featureByKey.set(feature->recordKey(), place);
    m_featureByIdentification.set(
        identificationKey(feature->identification(), feature->identificationSubdivision()), place);
    S57ObjectCatalogue::s57ObjectCreateForFeature(*feature, *this);
    m_features.push_back(std::move(feature));
}

S57Object& S57ChartItems::newObject(const S57Feature& feature)
{
    return m_displayObjects.emplace_back(feature, *this);
}

S57Feature* S57ChartItems::s57FeatureForS57Feature(const S57Feature& feature)
{
    const std::uint32_t place = m_featureByKey.find(feature.recordKey());
    return place == RecordMap::none ? nullptr : m_features[place].get();
}

S57Vector* S57ChartItems::s57VectorForS57Vector(const S57Vector& vector)
{
    const std::uint32_t place = m_vectorByKey.find(vector.recordKey());
    return place == RecordMap::none ? nullptr : &m_vectors[place];
}

const S57Vector* S57ChartItems::s57VectorForKey(std::uint64_t recordKey) const
{
    const std::uint32_t place = m_vectorByKey.find(recordKey);
    return place == RecordMap::none ? nullptr : &m_vectors[place];
}

const S57Feature* S57ChartItems::s57FeatureForKey(std::uint64_t recordKey) const
{
    const std::uint32_t place = m_featureByKey.find(recordKey);
    return place == RecordMap::none ? nullptr : m_features[place].get();
}

const S57Feature* S57ChartItems::s57FeatureForIdentification(std::uint32_t identification,
                                                             int subdivision) const
{
    const std::uint32_t place =
        m_featureByIdentification.find(identificationKey(identification, subdivision));
    return place == RecordMap::none ? nullptr : m_features[place].get();
}

void S57ChartItems::assemble()
{
    if (std::erase(m_features, nullptr) > 0) {
        m_featureByKey.clear();
        m_featureByIdentification.clear();
        for (std::uint32_t place = 0; place < m_features.size(); ++place) {
            const S57Feature& feature = *m_features[place];
            m_featureByKey.set(feature.recordKey(), place);
            m_featureByIdentification.set(
                identificationKey(feature.identification(), feature.identificationSubdivision()),
                place);
        }
    }
    m_objects.clear();
    for (const auto& feature : m_features) {
        if (feature->hasName())
            m_objects.push_back(feature->s57Object());
        const auto spatials = feature->s57FeatureSpatials();
        std::optional<S57Coordinate> place;
        if (feature->geometry() == S57Feature::point && !spatials.empty()) {
            const S57Vector* node = s57VectorForKey(spatials.front().recordKey());
            if (node && !node->s57Coordinates().empty())
                place = node->s57Coordinates().front();
        }
        feature->setS57Coordinate(place);
    }
    findStructures();
    measure();
}

void S57ChartItems::findStructures()
{
    std::unordered_map<std::uint64_t, const S57Feature*> structureAt;
    for (const auto& feature : m_features) {
        feature->s57Object()->setParent(nullptr);
        const auto place = feature->s57Coordinate();
        const int rank = structureRank(feature->objectCode());
        if (!place || rank == 0)
            continue;
        const S57Feature*& best = structureAt[placeKey(*place)];
        if (!best || structureRank(best->objectCode()) < rank)
            best = feature.get();
    }
    // A stated relation counts for more than the same place.
    for (const auto& feature : m_features) {
        if (isEquipment(feature->objectCode()))
            continue;
        for (const auto& record : feature->s57FeatureRecords()) {
            const S57Feature* carried = s57FeatureForIdentification(
                record.identification, record.identificationSubdivision);
            if (carried && isEquipment(carried->objectCode()))
                carried->s57Object()->setParent(feature.get());
        }
    }
    for (const auto& feature : m_features) {
        const auto place = feature->s57Coordinate();
        if (!place || !isEquipment(feature->objectCode()) || feature->s57Object()->parent())
            continue;
        const auto structure = structureAt.find(placeKey(*place));
        if (structure != structureAt.end() && structure->second != feature.get())
            feature->s57Object()->setParent(structure->second);
    }
}

void S57ChartItems::measure()
{
    const auto include = [](Rect& box, const S57Vector& vector) {
        for (const auto& c : vector.s57Coordinates())
            if (std::isfinite(c.latitude) && std::isfinite(c.longitude))
                box.include(Point{c.longitude, c.latitude});
    };
    m_bounds = {};
    std::unordered_set<const S57Vector*> seen{nullptr};
    for (const auto& feature : m_features) {
        if (feature->objectCode() != s57class::M_COVR
            || feature->s57Object()->catcov() == noCoverage)
            continue;
        for (const auto& spatial : feature->s57FeatureSpatials()) {
            const auto nodes = spatial.edgeConnectedNodes(*this);
            for (const S57Vector* vector : {nodes.edge, nodes.start, nodes.end})
                if (seen.insert(vector).second)
                    include(m_bounds, *vector);
        }
    }
    if (m_bounds.isEmpty())
        for (const auto& vector : m_vectors)
            include(m_bounds, vector);
}

const Path& S57ChartItems::coveragePath(const S57Controller& view)
{
    if (!m_coveragePath) {
        m_coveragePath = std::make_unique<Path>();
        for (const auto& feature : m_features) {
            if (feature->objectCode() != s57class::M_COVR
                || feature->s57Object()->catcov() == noCoverage)
                continue;
            const Path& outline = feature->edgePath(*this, view);
            for (std::size_t i = 0; i < outline.subPathCount(); ++i) {
                bool first = true;
                for (const Point p : outline.subPath(i)) {
                    if (std::exchange(first, false))
                        m_coveragePath->moveTo(p);
                    else
                        m_coveragePath->lineTo(p);
                }
            }
        }
    }
    return *m_coveragePath;
}

void S57ChartItems::resetPaths()
{
    for (const auto& feature : m_features)
        feature->resetEdgePath();
    m_coveragePath.reset();
}

} // namespace kelvox
