#include "weather/GribController.h"

#include "base/Settings.h"
#include "navigation/ValueFormatters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace kelvox {

namespace {
constexpr GribColor currentColor{150, 0, 90};
constexpr GribColor waveColor{0, 90, 70};

GribColor contourColor(GribField field)
{
    switch (field) {
    case GribField::AirTemperature:
        return {180, 60, 20};
    case GribField::SeaTemperature:
        return {0, 110, 130};
    case GribField::WaveHeight:
    case GribField::WavePeriod:
        return {20, 90, 120};
    case GribField::GeopotentialHeight:
        return {60, 60, 60};
    case GribField::PrecipitationRate:
        return {0, 70, 200};
    default:
        return {90, 30, 110};
    }
}

std::string stringKey(GribField field)
{
    std::string name(gribFieldName(field));
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return "NSGrib" + name;
}

/// Behind a value at the cursor.
std::string unitText(GribField field, const UnitsModel& units)
{
    switch (field) {
    case GribField::Pressure:
        return "hPa";
    case GribField::AirTemperature:
    case GribField::SeaTemperature:
        return units.temperatureUnits == UnitsModel::Fahrenheit ? "°F"
            : units.temperatureUnits == UnitsModel::Celsius     ? "°C"
                                                                : "K";
    case GribField::WaveHeight:
    case GribField::GeopotentialHeight:
        return units.heightsInMetres() ? "m" : "ft";
    case GribField::PrecipitationRate:
        return units.temperatureUnits == UnitsModel::Fahrenheit ? "in/h" : "cm/h";
    default:
        return "s";
    }
}

int decimals(GribField field)
{
    switch (field) {
    case GribField::GeopotentialHeight:
        return 0;
    case GribField::PrecipitationRate:
        return 2;
    default:
        return 1;
    }
}
} // namespace

GribController::GribController(GribModel& model)
    : m_model(model)
{
}

GribController::GribController(GribModel& model, const GribController& choices)
    : secondsPerStep(choices.secondsPerStep)
    , showWind(choices.showWind)
    , showCurrent(choices.showCurrent)
    , showWaves(choices.showWaves)
    , showContours(choices.showContours)
    , contourField(choices.contourField)
    , markers(choices.markers)
    , m_model(model)
{
}

bool GribController::canBarb() const
{
    const auto points = m_model.pointsAt(m_model.viewedDate());
    return std::any_of(points.begin(), points.end(), [](const auto* p) { return p->hasWind(); });
}

bool GribController::canContour() const
{
    return !contourFields().empty();
}

bool GribController::canCurrent() const
{
    const auto points = m_model.pointsAt(m_model.viewedDate());
    return std::any_of(points.begin(), points.end(), [](const auto* p) { return p->hasCurrent(); });
}

bool GribController::canWaves() const
{
    const auto points = m_model.pointsAt(m_model.viewedDate());
    return std::any_of(points.begin(), points.end(),
                       [](const auto* p) { return p->hasWaveDirection(); });
}

std::vector<GribField> GribController::contourFields() const
{
    const auto points = m_model.pointsAt(m_model.viewedDate());
    std::vector<GribField> fields;
    for (const GribField field : gribContourFields())
        if (std::any_of(points.begin(), points.end(),
                        [field](const auto* p) { return p->has(field); }))
            fields.push_back(field);
    return fields;
}

bool GribController::step(int by)
{
    const auto dates = m_model.forecastDates();
    // A viewed time between two steps moves to the neighbour on that side.
    auto place = by > 0 ? std::upper_bound(dates.begin(), dates.end(), m_model.viewedDate())
                        : std::lower_bound(dates.begin(), dates.end(), m_model.viewedDate());
    if (by > 0 ? place == dates.end() : place == dates.begin())
        return false;
    m_model.setViewedDate(by > 0 ? *place : *std::prev(place));
    return true;
}

bool GribController::nextForecast()
{
    return step(1);
}

bool GribController::previousForecast()
{
    return step(-1);
}

void GribController::play(double monotonicSeconds)
{
    const auto dates = m_model.forecastDates();
    if (dates.size() < 2)
        return;
    if (m_model.viewedDate() >= dates.back())
        m_model.setViewedDate(dates.front());
    m_nextStep = monotonicSeconds + secondsPerStep;
}

bool GribController::tick(double monotonicSeconds)
{
    if (!m_nextStep || monotonicSeconds < *m_nextStep)
        return false;
    m_nextStep = monotonicSeconds + secondsPerStep;
    if (nextForecast())
        return true;
    const auto dates = m_model.forecastDates();
    if (dates.size() < 2) { // the file was closed meanwhile
        stop();
        return false;
    }
    m_model.setViewedDate(dates.front());
    return true;
}

GribDrawing GribController::draw(const GribView& view) const
{
    GribDrawing drawing;
    if (showContours)
        drawing.append(drawGribContours(
            m_model, view, {.field = contourField, .color = contourColor(contourField)}));
    GribMarkerOptions options = markers;
    options.color = waveColor;
    if (showWaves)
        drawing.append(drawGribWaves(m_model, view, options));
    options.color = currentColor;
    if (showCurrent)
        drawing.append(drawGribCurrent(m_model, view, options));
    if (showWind)
        drawing.append(drawGribWind(m_model, view, markers));
    return drawing;
}

std::vector<GribController::Row> GribController::table() const
{
    std::vector<Row> rows;
    for (const GribPoints* points : m_model.points())
        for (int i = 0; i < gribFieldCount; ++i) {
            const auto field = static_cast<GribField>(i);
            if (!points->has(field))
                continue;
            const auto same = std::find_if(rows.begin(), rows.end(), [&](const Row& row) {
                return row.field == field && row.grid == points->grid();
            });
            if (same != rows.end()) {
                same->last = points->forecastDate();
                ++same->times;
            } else {
                rows.push_back({.first = points->forecastDate(),
                                .last = points->forecastDate(),
                                .times = 1,
                                .field = field,
                                .level = describe(points->level(field)),
                                .grid = points->grid()});
            }
        }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& a, const Row& b) { return a.field < b.field; });
    return rows;
}

std::vector<std::string> GribController::valuesAt(Position position, const Strings& strings) const
{
    const UnitsModel& units = m_model.units();
    const GribValues values = m_model.valuesAt(position, m_model.viewedDate());
    const auto bearing = [](double degrees) {
        return fmt::format("{:03.0f}°", std::fmod(std::round(degrees), 360));
    };
    std::vector<std::string> lines;
    if (values.wind)
        lines.push_back(
            fmt::format("{} {} {}", strings.text("NSGribWind"), bearing(values.wind->fromDegrees()),
                        NSAwsFormatter(units).stringForObjectValue(values.wind->knots())));
    if (values.current)
        lines.push_back(fmt::format(
            "{} {} {}", strings.text("NSGribCurrent"), bearing(values.current->towardsDegrees()),
            NSSogFormatter(units).stringForObjectValue(values.current->knots())));
    if (const auto direction = values[GribField::WaveDirection])
        lines.push_back(fmt::format("{} {}", strings.text(stringKey(GribField::WaveDirection)),
                                    bearing(*direction)));
    for (const GribField field : gribContourFields())
        if (const auto value = values[field])
            lines.push_back(fmt::format("{} {:.{}f} {}", strings.text(stringKey(field)),
                                        gribUserValue(m_model, field, static_cast<float>(*value)),
                                        decimals(field), unitText(field, units)));
    return lines;
}

void GribController::loadSettings(const Settings& settings)
{
    m_model.loadSettings(settings);
    showWind = settings.boolean("gribShowWind", true);
    showCurrent = settings.boolean("gribShowCurrent", true);
    showWaves = settings.boolean("gribShowWaves", true);
    showContours = settings.boolean("gribShowContours", true);
    const auto fields = gribContourFields();
    const auto choice = static_cast<std::size_t>(settings.integer("gribContour", 0));
    contourField = fields[choice < fields.size() ? choice : 0];
    markers.style = settings.integer("gribMarkerStyle", 0) == 1 ? GribMarkerOptions::Style::Beaufort
                                                                : GribMarkerOptions::Style::Barbs;
    const double size = settings.number("gribMarkerSize", 1);
    markers.size = std::isfinite(size) ? std::clamp(size, 0.5, 3.0) : 1;
    const auto rgb = static_cast<std::uint32_t>(settings.integer("gribMarkerColor", 0x14143C));
    markers.color = {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                     static_cast<std::uint8_t>(rgb)};
}

void GribController::saveSettings(Settings& settings) const
{
    m_model.saveSettings(settings);
    settings.set("gribShowWind", showWind);
    settings.set("gribShowCurrent", showCurrent);
    settings.set("gribShowWaves", showWaves);
    settings.set("gribShowContours", showContours);
    const auto fields = gribContourFields();
    const auto choice = std::find(fields.begin(), fields.end(), contourField) - fields.begin();
    settings.set("gribContour", static_cast<long long>(choice));
    settings.set("gribMarkerStyle",
                 markers.style == GribMarkerOptions::Style::Beaufort ? 1LL : 0LL);
    settings.set("gribMarkerSize", markers.size);
    settings.set("gribMarkerColor",
                 static_cast<long long>(markers.color.red << 16 | markers.color.green << 8
                                        | markers.color.blue));
}

} // namespace kelvox
