#include "app/SettingsCatalog.h"

#include <algorithm>

namespace kelvox {

namespace {
using Item = SettingsCatalog::Item;
using Kind = SettingsCatalog::Kind;
using Choices = std::vector<SettingsCatalog::Choice>;

/// The items of one heading.
class Group {
public:
    Group(std::vector<Item>& items, std::string name)
        : m_items(items)
        , m_name(std::move(name))
    {
    }
    Group& toggle(std::string key, bool standard)
    {
        return add({.key = std::move(key), .kind = Kind::Switch, .standard = standard});
    }
    /// Without decimals a whole number.
    Group& number(std::string key, double standard, double minimum, double maximum, int decimals,
                  std::string unit = {})
    {
        Settings::Value value = standard;
        if (decimals == 0)
            value = static_cast<long long>(standard);
        return add({.key = std::move(key),
                    .kind = Kind::Number,
                    .standard = value,
                    .minimum = minimum,
                    .maximum = maximum,
                    .decimals = decimals,
                    .unit = std::move(unit)});
    }
    Group& words(std::string key, std::string standard = {})
    {
        return add({.key = std::move(key), .kind = Kind::Text, .standard = std::move(standard)});
    }
    Group& file(std::string key)
    {
        return add({.key = std::move(key), .kind = Kind::File, .standard = std::string()});
    }
    Group& color(std::string key, long long standard)
    {
        return add({.key = std::move(key), .kind = Kind::Color, .standard = standard});
    }
    /// Numbered from 0 in the order of the labels.
    Group& choice(std::string key, const std::vector<std::string>& labels, long long standard = 0)
    {
        Choices choices;
        for (const auto& label : labels)
            choices.push_back({static_cast<long long>(choices.size()), label});
        return choice(std::move(key), std::move(choices), standard);
    }
    Group& choice(std::string key, Choices choices, Settings::Value standard)
    {
        return add({.key = std::move(key),
                    .kind = Kind::Choice,
                    .standard = std::move(standard),
                    .choices = std::move(choices)});
    }

private:
    Group& add(Item item)
    {
        item.group = m_name;
        m_items.push_back(std::move(item));
        return *this;
    }
    std::vector<Item>& m_items;
    std::string m_name;
};

Choices textChoices(std::initializer_list<const char*> values)
{
    Choices choices;
    for (const char* value : values)
        choices.push_back({std::string(value), value});
    return choices;
}

Choices wholeChoices(std::initializer_list<long long> values)
{
    Choices choices;
    for (const long long value : values)
        choices.push_back({value, std::to_string(value)});
    return choices;
}

Choices rates()
{
    return textChoices({"4800", "9600", "19200", "38400", "57600", "115200"});
}

void addChart(std::vector<Item>& items)
{
    Group(items, "NSSettings.Chart")
        .toggle("showSoundings", true)
        .toggle("showDepthContours", true)
        .toggle("showSurface", true)
        .toggle("showElevations", true)
        .toggle("showMarkNames", true)
        .toggle("showPlaceNames", true)
        .toggle("showLightSectors", true)
        .toggle("showRecommendedRoutes", true)
        .toggle("showCautionAreas", true)
        .toggle("showRestrictedAreas", true)
        .toggle("showAtAllScales", false)
        .toggle("largeText", false)
        .toggle("simplifiedSymbols", false)
        .choice("chartChoice", {"NSChartsBoth", "NSChartsVector", "NSChartsRaster"})
        .toggle("showGraticule", false)
        .toggle("showChartOutlines", false);
}

void addDisplay(std::vector<Item>& items)
{
    Group(items, "NSSettings.Display")
        .choice("colorScheme", {"NSDay", "NSDusk", "NSNight"})
        .toggle("lowLight", false)
        .number("dimming", 1, 0.2, 1, 2)
        .choice("interfaceScale", {{1.0, "1"}, {1.5, "1.5"}, {2.0, "2"}, {3.0, "3"}}, 1.0)
        .choice("language",
                {{std::string(), "NSLanguageOfSystem"},
                 {std::string("en"), "English"},
                 {std::string("de"), "Deutsch"},
                 {std::string("fr"), "Français"},
                 {std::string("es"), "Español"}},
                std::string())
        .toggle("window.instruments", true)
        .toggle("gpsWindowTransparent", false);
}

void addUnits(std::vector<Item>& items)
{
    Group(items, "NSSettings.Units")
        .choice("positionFormatUnits",
                {"NSUnitDegreesMinutes", "NSUnitLetterFirst", "NSUnitDecimalDegrees",
                 "NSUnitDegreesMinutesSeconds"})
        .choice("surfaceDistanceUnits",
                {"NSUnitMilesAndFeet", "NSUnitMilesAndMetres", "NSUnitNauticalMiles",
                 "NSUnitKilometres", "NSUnitStatuteMiles"})
        .choice("waterDepthUnits", {"NSUnitFeet", "NSUnitMetres", "NSUnitFathoms"})
        .choice("boatSpeedUnits", {"NSUnitKnots", "NSUnitMilesPerHour", "NSUnitKilometresPerHour"})
        .choice("windSpeedUnits",
                {"NSUnitKnots", "NSUnitMilesPerHour", "NSUnitKilometresPerHour",
                 "NSUnitMetresPerSecond"})
        .choice("temperatureUnits", {"NSUnitFahrenheit", "NSUnitCelsius", "NSUnitKelvin"})
        .choice("fuelUnits", {"NSUnitUsGallons", "NSUnitImperialGallons", "NSUnitLitres"})
        .choice("modeUnits", {"NSUnitPowerBoat", "NSUnitSailBoat"});
}

void addAlarms(std::vector<Item>& items)
{
    Group(items, "NSSettings.Alarms")
        .toggle("audio", true)
        .toggle("visual", true)
        .choice("alarmSound",
                {{std::string(), "NSNoSound"},
                 {std::string("Buzz"), "NSTone.Buzz"},
                 {std::string("Bell"), "NSTone.Bell"},
                 {std::string("Siren"), "NSTone.Siren"},
                 {std::string("Beep"), "NSTone.Beep"}},
                std::string("Siren"))
        .number("anchorDragDistance", 0.05, 0, 100, 3)
        .number("waypointApproachDistance", 0.1, 0, 100, 2, "NM")
        .number("crossTrackDistance", 0.2, 0, 100, 2, "NM")
        .number("aisProximityDistance", 0.5, 0, 100, 2, "NM");
}

void addTraffic(std::vector<Item>& items)
{
    Group(items, "NSSettings.AIS")
        .toggle("showUnderway", true)
        .toggle("showStationary", true)
        .toggle("showVesselNames", true)
        .toggle("showAISClassB", true)
        .number("aisVectorMinutes", 6, 0, 60, 0, "min");
    Group(items, "NSSettings.Vessel")
        .number("vesselLength", 0, 0, 1500, 1, "ft")
        .number("vesselBeam", 0, 0, 300, 1, "ft")
        .number("antennaFromBow", 0, 0, 1500, 1, "ft")
        .number("antennaFromStarboard", 0, 0, 300, 1, "ft")
        .number("vesselVectorMinutes", 6, 0, 120, 0, "min")
        .toggle("showHeadingLine", true);
    Group(items, "NSSettings.Tracks")
        .toggle("recordTrack", true)
        .number("trackInterval", 30, 1, 3600, 0, "s")
        .number("startTrackInterval", 900, 10, 86'400, 0, "s")
        .color("trackColor", 0)
        .toggle("showTracks", true);
    Group(items, "NSSettings.Routes")
        .toggle("showWaypoints", true)
        .toggle("showWaypointNames", true)
        .toggle("showRoutes", true)
        .toggle("lockWaypoints", false)
        .toggle("routeAutoNext", true)
        .number("planSpeed", 5, 0.1, 60, 1, "kn")
        .toggle("magnetic", false)
        .toggle("simulatorSteersToWaypoint", false);
}

/// The connection of one consumer; its keys bear a prefix but for the GPS.
Group& addPort(Group& group, const std::string& prefix)
{
    return group.words(prefix + "serialPort")
        .choice(prefix + "rate", rates(), std::string("4800"))
        .toggle(prefix + "repeat", false)
        .words(prefix + "repeatSerialPort")
        .choice(prefix + "repeatRate", rates(), std::string("4800"));
}

void addConnections(std::vector<Item>& items)
{
    Group gps(items, "NSSettings.GPS");
    gps.choice("type",
               {{1LL, "NSReceiverNMEA"},
                {0LL, "NSReceiverGarmin"},
                {2LL, "NSReceiverSirf"},
                {5LL, "NSReceiverNoPort"}},
               1LL);
    addPort(gps, "").toggle("connectGPSAtStartup", false).toggle("autopilot", false);
    Group instruments(items, "NSSettings.Instruments");
    instruments.toggle("instruments.useGPSPort", true);
    addPort(instruments, "instruments.")
        .toggle("connectInstrumentsAtStartup", false)
        .toggle("windApparent", false)
        .number("tack1Speed", 0, 0, 100, 1, "kn");
    Group ais(items, "NSSettings.AISConnection");
    ais.toggle("ais.useGPSPort", true).toggle("ais.useInstrumentsPort", false);
    addPort(ais, "ais.").toggle("connectAISAtStartup", false);
    Group(items, "NSSettings.Network")
        .toggle("tcpipClientModeTCP", false)
        .toggle("tcpipClientModeUDP", false)
        .words("tcpipClientHost", "127.0.0.1")
        .words("tcpipClientPort", "2114")
        .toggle("tcpipServerEnable", false)
        .words("tcpipServerPort", "2114")
        .toggle("tcpipServerGPS", false)
        .toggle("tcpipServerInstruments", false)
        .toggle("tcpipServerAIS", false)
        .toggle("tcpipServerLimitToProcessed", false);
}

void addWeather(std::vector<Item>& items)
{
    Group(items, "NSSettings.Weather")
        .toggle("gribShowWind", true)
        .toggle("gribShowCurrent", true)
        .toggle("gribShowWaves", true)
        .toggle("gribShowContours", true)
        .choice("gribContour",
                {"NSGribPressure", "NSGribAirTemperature", "NSGribSeaTemperature",
                 "NSGribWaveHeight", "NSGribWavePeriod", "NSGribGeopotentialHeight",
                 "NSGribPrecipitationRate"})
        .choice("gribMarkerStyle", {"NSMarkerBarbs", "NSMarkerBeaufort"})
        .number("gribMarkerSize", 1, 0.5, 3, 1)
        .color("gribMarkerColor", 0x14143C)
        .choice("gribInterval", wholeChoices({3, 6, 12, 24}), 6LL)
        .choice("gribDays", wholeChoices({3, 5, 7}), 3LL)
        .choice("gribResolution", {{0.5, "0.5"}, {1.0, "1"}, {2.0, "2"}}, 1.0)
        .words("gribRequestAddress")
        .words("gribRequestPrefix");
    Group(items, "NSSettings.Mail")
        .words("smtpServer")
        .number("smtpPort", 0, 0, 65'535, 0)
        .toggle("smtpTLS", true)
        .words("smtpUser")
        .words("smtpFrom");
    Group(items, "NSSettings.Exchange").words("kmlIconBaseAddress");
}

void addState(std::vector<Item>& items)
{
    for (const char* key : {"window.geometry", "window.state", "chart.scale", "chart.latitude",
                            "chart.longitude", "chart.rotation", "chart.follow", "chart.courseUp",
                            "charts.places", "device.*", "panel.*", "shortcut.*",
                            "instruments.shown", "weather.file", "firstStart.*", "settings.group"})
        items.push_back({.key = key});
}
} // namespace

SettingsCatalog::SettingsCatalog()
{
    addChart(m_items);
    addDisplay(m_items);
    addUnits(m_items);
    addAlarms(m_items);
    addTraffic(m_items);
    addConnections(m_items);
    addWeather(m_items);
    addState(m_items);
}

const SettingsCatalog& SettingsCatalog::catalog()
{
    static const SettingsCatalog catalog;
    return catalog;
}

const SettingsCatalog::Item* SettingsCatalog::find(std::string_view key) const
{
    const auto it = std::ranges::find_if(m_items, [&](const Item& item) {
        const std::string_view pattern = item.key;
        return pattern.ends_with('*') ? key.starts_with(pattern.substr(0, pattern.size() - 1))
                                      : key == pattern;
    });
    return it == m_items.end() ? nullptr : &*it;
}

std::vector<std::string> SettingsCatalog::groups() const
{
    std::vector<std::string> groups;
    for (const Item& item : m_items)
        if (item.kind != Kind::State && std::ranges::find(groups, item.group) == groups.end())
            groups.push_back(item.group);
    return groups;
}

std::vector<std::pair<std::string, Settings::Value>> SettingsCatalog::standards() const
{
    std::vector<std::pair<std::string, Settings::Value>> standards;
    for (const Item& item : m_items)
        if (item.kind != Kind::State)
            standards.emplace_back(item.key, item.standard);
    return standards;
}

} // namespace kelvox
