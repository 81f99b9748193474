#include "presentation/ChartPick.h"

#include "base/File.h"
#include "presentation/AttributeWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

namespace kelvox {

namespace {
constexpr double nearEnough = 6; ///< display points from a line
/// Display points around the click in which symbols may stand that it still meets.
constexpr double symbolReach = 120;
constexpr int textDescription = 158, nationalTextDescription = 304; // TXTDSC, NTXTDS

class NoCanvas final : public Canvas {
    void fillArea(const Path& /*rings*/, DisplayColor /*color*/) override { }
    void strokeLine(const Path& /*lines*/, const Stroke& /*stroke*/) override { }
    void placeSymbol(const SymbolDrawing& /*symbol*/, Point /*at*/, float /*degrees*/) override { }
    void placeText(const TextFigure& /*figure*/, Point /*at*/) override { }
};

/// Which features are hit, and how near.
class Probe final : public HitSink {
public:
    struct Found {
        std::uint32_t feature = 0;
        double distance = std::numeric_limits<double>::infinity();
        std::optional<CellGeometry::Sounding> sounding;
    };

    Probe(Point click, double reach)
        : m_click(click)
        , m_reach(reach)
    {
    }
    void beginFeature(std::uint32_t index) override
    {
        if (m_found.empty() || std::isfinite(m_found.back().distance))
            m_found.emplace_back();
        m_found.back().feature = index;
    }
    void hitPath(const Path& outline, bool isArea) override
    {
        if (isArea && outline.contains(m_click))
            return note(0);
        if (const double distance = outline.distanceTo(m_click); distance <= m_reach)
            note(distance);
    }
    void hitBox(const Rect& box) override
    {
        if (box.contains(m_click))
            note(distanceTo(box.center()));
    }
    void hitSounding(const CellGeometry::Sounding& sounding, const Rect& box) override
    {
        const double distance = distanceTo(box.center());
        if (!box.contains(m_click) || distance >= m_found.back().distance)
            return;
        m_found.back().sounding = sounding;
        m_found.back().distance = distance;
    }
    [[nodiscard]] std::vector<Found> take()
    {
        if (!m_found.empty() && !std::isfinite(m_found.back().distance))
            m_found.pop_back();
        return std::move(m_found);
    }

private:
    [[nodiscard]] double distanceTo(Point p) const
    {
        return std::hypot(p.x - m_click.x, p.y - m_click.y);
    }
    void note(double distance)
    {
        m_found.back().distance = std::min(m_found.back().distance, distance);
    }

    Point m_click;
    double m_reach;
    std::vector<Found> m_found;
};

ChartPick::Kind kindOf(const S57Feature& feature)
{
    if (feature.objectCode() >= 300 && feature.objectCode() <= 312)
        return ChartPick::Kind::Information;
    switch (feature.geometry()) {
    case S57Feature::area:
        return ChartPick::Kind::Area;
    case S57Feature::line:
        return ChartPick::Kind::Line;
    default:
        return ChartPick::Kind::Mark;
    }
}

/// The file beside the cell, whatever the case of its letters: discs and disks differ.
std::filesystem::path besideCell(const S57ChartItems& cell, std::string_view name)
{
    if (!cell.s57CatalogRecord() || name.empty() || name.find('/') != std::string_view::npos
        || name.find('\\') != std::string_view::npos)
        return {};
    const auto same = [](std::string_view a, std::string_view b) {
        const auto lower = [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        };
        return std::ranges::equal(a, b, {}, lower, lower);
    };
    std::error_code error;
    const auto folder = cell.s57CatalogRecord()->path.parent_path();
    for (std::filesystem::directory_iterator it(folder.empty() ? "." : folder, error), end;
         !error && it != end; it.increment(error))
        if (same(it->path().filename().string(), name))
            return it->path();
    return {};
}

std::string utf8(std::string_view text)
{
    // Charts write their texts in Latin-1; one that is sound UTF-8 already is left alone.
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        const std::size_t more = c < 0x80 ? 0
            : c >= 0xC2 && c < 0xE0       ? 1
            : c >= 0xE0 && c < 0xF0       ? 2
                                          : 9;
        std::size_t k = 1;
        while (k <= more && i + k < text.size()
               && (static_cast<unsigned char>(text[i + k]) & 0xC0U) == 0x80)
            ++k;
        if (k != more + 1)
            break;
        i += k;
    }
    if (i >= text.size())
        return std::string(text);
    std::string result;
    for (const char letter : text) {
        const auto c = static_cast<unsigned char>(letter);
        if (c < 0x80) {
            result += letter;
        } else {
            result += static_cast<char>(0xC0U | c >> 6U);
            result += static_cast<char>(0x80U | (c & 0x3FU));
        }
    }
    return result;
}
} // namespace

std::vector<ChartPick::Hit>
ChartPick::at(std::span<const std::shared_ptr<const CellGeometry>> cells,
              const Portrayal& portrayal, const RenderSettings& settings, const ViewFrame& frame,
              Point pixel)
{
    // A picture of a few pixels around the click: all that lies farther off is never laid out.
    const double scale = frame.pixelsPerPoint;
    ViewFrame small = frame;
    small.width = small.height = 2 * static_cast<int>(std::ceil(nearEnough * scale));
    small.center = frame.viewPointOf(pixel);
    const Point click{small.width / 2.0, small.height / 2.0};
    const Rect box = small.coveredBox(symbolReach * scale);
    const double reach = symbolReach * scale;
    const Rect around{-reach, -reach, small.width + reach, small.height + reach};

    const S57ObjectRender render(small, portrayal, settings);
    NoCanvas nothing;
    S57TextModel texts;
    std::vector<Hit> hits;
    std::vector<CoveredWaters> covered;
    for (std::size_t rank = 0; rank < cells.size(); ++rank) {
        const auto& geometry = cells[rank];
        const std::size_t above = covered.size();
        for (const double shift : std::array{-360.0, 0.0, 360.0}) {
            const Rect shifted{box.left - shift, box.bottom, box.right - shift, box.top};
            if (!geometry->bounds().intersects(shifted))
                continue;
            auto found = geometry->featuresIn(shifted);
            for (auto& waters : coveredWaters(*geometry, found, small, shift, reach))
                covered.push_back(std::move(waters));
            const auto finer = std::span(covered).first(above);
            const bool hidden = std::ranges::any_of(
                finer, [&](const CoveredWaters& waters) { return waters.contains(click); });
            // Only what reaches the click, and what has a symbol near enough to reach it.
            Rect near = small.coveredBox(nearEnough * scale);
            near.left -= shift;
            near.right -= shift;
            std::erase_if(found, [&](std::uint32_t index) {
                const bool isMark = kindOf(*geometry->cell().s57Features()[index]) == Kind::Mark;
                if (hidden && !isMark)
                    return true; // the ground of the cell above lies over it
                const auto anchor = geometry->anchor(index);
                return !geometry->bounds(index).intersects(near)
                    && !(anchor && shifted.contains(*anchor));
            });
            Probe probe(click, nearEnough * scale);
            render.drawFeatures({.geometry = *geometry,
                                 .features = found,
                                 .cellRank = static_cast<std::uint32_t>(rank),
                                 .longitudeShift = shift,
                                 .covered = finer,
                                 .textBox = around},
                                {nothing, nothing, texts, &probe});
            for (const Probe::Found& hit : probe.take()) {
                const Rect bounds = geometry->bounds(hit.feature);
                hits.push_back({.cell = geometry,
                                .feature = hit.feature,
                                .cellRank = rank,
                                .kind = kindOf(*geometry->cell().s57Features()[hit.feature]),
                                .distance = hit.distance,
                                .size = bounds.width() * bounds.height(),
                                .sounding = hit.sounding});
            }
        }
    }
    std::ranges::stable_sort(hits, {}, [](const Hit& hit) {
        const bool isArea = hit.kind == Kind::Area || hit.kind == Kind::Information;
        return std::tuple(hit.kind, isArea ? hit.size : hit.distance, hit.cellRank);
    });
    return hits;
}

ChartPick::Description ChartPick::describe(const Hit& hit, const RenderSettings& settings)
{
    const S57ChartItems& cell = hit.cell->cell();
    const S57Feature& feature = *cell.s57Features()[hit.feature];
    const int code = feature.objectCode();
    Description result;
    result.acronym = S57ObjectCatalogue::classAcronym(code);
    result.className = S57ObjectCatalogue::className(code);
    if (result.className.empty())
        result.className = feature.description();
    if (const S57Object* object = feature.s57Object()) {
        result.title = object->name().empty() ? object->nationalName() : object->name();
        if (const S57Feature* carrier = object->parent()) {
            result.carrier = S57ObjectCatalogue::className(carrier->objectCode());
            const auto name = carrier->featureAttributeStringValue(s57attribute::OBJNAM);
            if (!name.empty())
                result.carrier += " " + std::string(name);
        }
    }
    if (result.title.empty())
        result.title = result.className;
    if (const auto place = feature.s57Coordinate())
        result.position = Position{place->longitude, place->latitude};
    if (hit.sounding) {
        const double latitude = std::atan(std::sinh(static_cast<double>(hit.sounding->ordinate)));
        result.position = Position{hit.sounding->longitude, latitude * 180 / std::numbers::pi};
        const std::string metres = fmt::format("{:.2f}", hit.sounding->depth);
        result.attributes.push_back(
            {s57attribute::VALSOU, "VALSOU",
             std::string(S57ObjectCatalogue::attributeName(s57attribute::VALSOU)), metres,
             attributeWords(s57attribute::VALSOU, metres, settings.depthUnit,
                            settings.heightsInMetres),
             false});
    }
    for (const auto& attribute : feature.s57FeatureAttributes()) {
        const std::string& value = attribute.stringValue();
        if (value.empty())
            continue;
        if (attribute.code() == s57attribute::INFORM)
            result.information.insert(result.information.begin(), value);
        if (attribute.code() == s57attribute::NINFOM)
            result.information.push_back(value);
        if (attribute.code() == textDescription || attribute.code() == nationalTextDescription)
            result.textFiles.push_back({value, besideCell(cell, value)});
        result.attributes.push_back(
            {attribute.code(), std::string(S57ObjectCatalogue::attributeAcronym(attribute.code())),
             std::string(S57ObjectCatalogue::attributeName(attribute.code())), value,
             attributeWords(attribute.code(), value, settings.depthUnit, settings.heightsInMetres),
             isRecordAttribute(attribute.code())});
    }
    std::ranges::stable_sort(result.attributes, {}, &Attribute::ofRecord);
    if (cell.s57CatalogRecord())
        result.cell = cell.s57CatalogRecord()->path.stem().string();
    const auto& parameters = cell.parameters();
    result.edition = parameters.edition;
    result.update = parameters.update;
    result.issueDate = parameters.issueDate;
    result.compiledScale = parameters.compiledScale;
    return result;
}

Result<std::string> ChartPick::read(const TextFile& file)
{
    constexpr std::size_t largest = std::size_t{1} << 20;
    if (file.path.empty())
        return failure(Error::Code::CannotOpen, file.name + " is not beside the chart");
    const auto bytes = readFile(file.path, largest);
    if (!bytes)
        return tl::unexpected(bytes.error());
    return utf8(*bytes);
}

} // namespace kelvox
