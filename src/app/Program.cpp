#include "app/Program.h"

#include "app/DialogAlarms.h"
#include "app/SettingsCatalog.h"
#include "app/Text.h"
#include "app/nav/NavLinks.h"
#include "base/Folders.h"

#include <QCoreApplication>
#include <QLocale>
#include <QPointer>

#include <thread>

namespace kelvox {

namespace {
FileSettings::Values standardSettings()
{
    FileSettings::Values values;
    for (auto& [key, value] : SettingsCatalog::catalog().standards())
        values.emplace(key, std::move(value));
    return values;
}

ColorScheme schemeOf(const Settings& settings)
{
    return static_cast<ColorScheme>(std::clamp(settings.integer("colorScheme"), 0LL, 2LL));
}

constexpr auto saveDelay = std::chrono::milliseconds(500);
} // namespace

Program::Places Program::Places::ofUser()
{
    return {.configuration = folders::userConfiguration(),
            .data = folders::userData(),
            .cache = folders::userCache(),
            .state = folders::userState(),
            .resources = folders::applicationResources()};
}

Program::Program(Places places)
    : m_places(std::move(places))
    , m_pool(std::max(std::thread::hardware_concurrency(), 2U))
    , m_alarms(m_clock, m_places.state / "alarms.json")
    , m_companions(CompanionBus::userBus())
    , m_sleepWatch(SleepWatch::machineBus())
    , m_live({(m_settings.setStandards(standardSettings()), m_settings), textCatalog().strings(),
              m_alarms, m_clock, m_executor, m_companions})
    , m_devices(m_live, m_executor)
    , m_history(sharedEditHistory())
    , m_waypoints(WaypointsModel::waypoints())
    , m_routes(RoutesModel::routes())
    , m_tracks(TracksModel::tracks())
    , m_waypointController(m_waypoints, m_alarms, m_settings, textCatalog().strings())
    , m_routeController(m_routes, m_waypoints, m_tracks, m_waypointController)
    , m_trackController(m_tracks)
    , m_grib(UnitsModel::units())
    , m_weather(m_grib)
    , m_library(S52Model::s52())
    , m_presentation(m_library)
{
    if (const auto read = m_settings.load(m_places.configuration / "settings.json"); !read)
        m_startMessages << QString::fromStdString(read.error().message);
    m_settings.setChangeHandler(
        [this](std::string_view key) { settingWasChanged(std::string(key)); });
    m_saveTimer.setSingleShot(true);
    connect(&m_saveTimer, &QTimer::timeout, this, [this] {
        if (const auto saved = m_settings.save(); !saved)
            m_alarms.show({.key = "NSCannotSaveSettings",
                           .message = text("NSCannotSaveSettings").toStdString(),
                           .informativeText = saved.error().message,
                           .button = text("NSOK").toStdString()});
    });
    UnitsModel::units().loadSettings(m_settings);
    m_weather.loadSettings(m_settings);
    m_grib.loadSettings(m_settings);
    loadModels();
    loadBaseMap();
    connectModels();
    new NavLinks(*this);
    new DialogAlarms(m_alarms, this);
    connectLive();
    m_live.start();
    setScheme(schemeOf(m_settings));
    // A light that is not drawn is worse than a banner: it stays until it is acknowledged.
    if (const auto problems = m_library.report().sentences(); !problems.empty()) {
        std::string words;
        for (const std::string& sentence : problems)
            words += (words.empty() ? "" : "\n") + sentence;
        m_alarms.show({.key = "NSLibraryProblems",
                       .message = text("NSLibraryProblems").toStdString(),
                       .informativeText = std::move(words),
                       .button = text("NSOK").toStdString()});
    }
}

Program::~Program()
{
    save();
    // The records outlive the program that shows them.
    m_waypoints.setChangeHandler({});
    m_routes.setChangeHandler({});
    m_tracks.setChangeHandler({});
    m_history.setErrorHandler({});
}

void Program::loadModels()
{
    const auto journal = m_history.openJournal(m_places.data / journalFileName);
    if (!journal)
        m_startMessages << QString::fromStdString(journal.error().message);
    else if (*journal)
        m_startMessages << text("NSKeptAside", {QString::fromStdString((*journal)->string())});
    const auto report = [this](const LoadReport& loaded) {
        if (loaded.error)
            m_startMessages << QString::fromStdString(loaded.error->message);
        if (!loaded.keptAs.empty())
            m_startMessages << text("NSKeptAside",
                                    {QString::fromStdString(loaded.keptAs.string())});
    };
    report(m_waypoints.load(m_places.data / WaypointsModel::fileName));
    report(m_routes.load(m_places.data / RoutesModel::fileName));
    report(m_tracks.load(m_places.data / TracksModel::fileName));
    m_history.setErrorHandler([this](const Error& error) {
        m_alarms.show({.key = "NSCannotSaveEdits",
                       .message = text("NSCannotSaveEdits").toStdString(),
                       .informativeText = error.message,
                       .button = text("NSOK").toStdString()});
    });
}

void Program::loadBaseMap()
{
    // Some hundred milliseconds of reading that nobody has to wait for.
    m_pool.post([self = QPointer<Program>(this)] {
        auto read = BaseMap::load();
        if (!read)
            return; // the package is not installed: charts are drawn without it
        auto map = std::make_shared<const BaseMap>(*std::move(read));
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, map = std::move(map)] {
                if (!self)
                    return;
                self->m_baseMap = map;
                emit self->baseMapChanged();
            },
            Qt::QueuedConnection);
    });
}

void Program::connectModels()
{
    for (QTimer* timer : {&m_waypointsTimer, &m_routesTimer, &m_tracksTimer}) {
        timer->setSingleShot(true);
        timer->setInterval(0);
    }
    connect(&m_waypointsTimer, &QTimer::timeout, this, &Program::waypointsChanged);
    connect(&m_routesTimer, &QTimer::timeout, this, &Program::routesChanged);
    connect(&m_tracksTimer, &QTimer::timeout, this, &Program::tracksChanged);
    m_waypoints.setChangeHandler([this] { m_waypointsTimer.start(); });
    m_routes.setChangeHandler([this] { m_routesTimer.start(); });
    m_tracks.setChangeHandler([this] { m_tracksTimer.start(); });
    m_waypointController.setChangeHandler([this] { emit steeringChanged(); });
    m_routeController.setChangeHandler([this] {
        m_routesTimer.start();
        emit steeringChanged();
    });
    connect(&m_live, &LiveData::vesselMoved, this, [this] {
        const GPSController& gps = m_live.gps();
        m_waypointController.setCourseAndSpeed(gps.courseOverGround(), gps.speedOverGround());
        m_waypointController.plotPosition(gps.position());
        m_routeController.plotPosition(gps.position());
        emit steeringChanged();
    });
}

void Program::connectLive()
{
    connect(&m_live, &LiveData::trackSample, this, &Program::recordTrack);
    connect(&m_alarms, &AlarmCenter::acknowledged, this, [this](const QString& key) {
        if (key == QLatin1String("NSAnchorAlarm"))
            m_live.gps().anchorAlertClosed();
    });
    connect(this, &Program::steeringChanged, &m_live,
            [this] { m_live.setSteering(steeringTarget()); });
    connect(&m_sleepWatch, &SleepWatch::willSleep, this, [this] {
        m_waypointController.applicationWillSleep();
        m_routeController.applicationWillSleep();
        m_live.applicationWillSleep();
        save();
    });
    connect(&m_sleepWatch, &SleepWatch::hasWoken, this, [this] {
        m_waypointController.applicationWillWake();
        m_routeController.applicationWillWake();
        m_live.applicationWillWake();
    });
}

std::optional<SteeringTarget> Program::steeringTarget() const
{
    const WaypointPointer& waypoint = m_waypointController.gotoWaypoint();
    if (!waypoint)
        return std::nullopt;
    SteeringTarget target{.name = waypoint->name,
                          .position = waypoint->positionOnGPS(),
                          .fromGPS = m_waypointController.isGotoWaypointFromGPS(),
                          .legStart = m_waypointController.startPositionOnGPS()};
    const RoutePointer& route = m_routeController.gotoRoute();
    if (!route)
        return target;
    target.routeName = route->name;
    const WaypointReferencePointer& current = m_routeController.gotoWaypointReference();
    bool reached = false;
    for (const WaypointReferencePointer& reference : route->waypointReferences()) {
        target.routeWaypoints.push_back(reference->waypoint->name);
        reached = reached || reference == current;
        if (!reached)
            target.originName = reference->waypoint->name;
    }
    return target;
}

void Program::recordTrack(const TrackSample& sample)
{
    if (!m_settings.boolean("recordTrack") || !sample.position.isKnown())
        return;
    const auto color = m_settings.integer("trackColor"); // 0xRRGGBB
    const auto part = [color](int shift) { return static_cast<float>(color >> shift & 255) / 255; };
    Track point;
    point.set(sample.position, sample.date, sample.courseDegrees, sample.speedKnots,
              sample.headingDegrees, sample.throughWaterKnots, sample.depthFeet,
              sample.temperatureF, sample.windAngleDegrees, sample.windSpeedKnots, {},
              {.red = part(16), .green = part(8), .blue = part(0)});
    m_tracks.add(std::move(point), std::chrono::seconds(m_settings.integer("trackInterval", 30)));
}

void Program::settingWasChanged(const std::string& key)
{
    m_saveTimer.start(saveDelay);
    m_live.settingChanged(key);
    if (key.ends_with("Units")) {
        UnitsModel::units().loadSettings(m_settings);
        emit unitsChanged();
    } else if (key.starts_with("grib")) {
        m_weather.loadSettings(m_settings);
        emit weatherChanged();
    } else if (key == "interfaceScale" || key == "dimming") {
        applyTheme();
    } else if (key == "lowLight") {
        const bool low = m_settings.boolean("lowLight");
        if (low != (m_scheme == ColorScheme::Night))
            setScheme(low ? ColorScheme::Night : ColorScheme::Day);
    } else if (key == "colorScheme") {
        const auto scheme = schemeOf(m_settings);
        if (scheme != m_scheme)
            setScheme(scheme);
    }
    emit settingChanged(QString::fromStdString(key));
}

void Program::setScheme(ColorScheme scheme)
{
    m_scheme = scheme;
    m_settings.set("colorScheme", static_cast<long long>(scheme));
    m_settings.set("lowLight", scheme == ColorScheme::Night); // the chart's own name for it
    m_presentation.setColorTable(static_cast<int>(scheme) + 1);
    applyTheme();
}

void Program::chooseUnitsForRegion()
{
    constexpr const char* chosen = "firstStart.units";
    if (m_settings.boolean(chosen))
        return;
    m_settings.set(chosen, true);
    if (QLocale::system().measurementSystem() != QLocale::MetricSystem)
        return;
    m_settings.set("waterDepthUnits", static_cast<long long>(UnitsModel::Metres));
    m_settings.set("surfaceDistanceUnits",
                   static_cast<long long>(UnitsModel::NauticalMilesAndMetres));
    m_settings.set("temperatureUnits", static_cast<long long>(UnitsModel::Celsius));
}

void Program::applyTheme()
{
    Theme::theme().apply(m_scheme, m_presentation.portrayal()->colors,
                         m_settings.number("interfaceScale", 1), m_settings.number("dimming", 1));
    emit schemeChanged();
}

void Program::save()
{
    const auto saved = [this](const Result<void>& result) {
        if (!result)
            m_alarms.show({.key = "NSCannotSaveEdits",
                           .message = text("NSCannotSaveEdits").toStdString(),
                           .informativeText = result.error().message,
                           .button = text("NSOK").toStdString()});
    };
    if (m_waypoints.isChanged())
        saved(m_waypoints.save(m_places.data / WaypointsModel::fileName));
    if (m_routes.isChanged())
        saved(m_routes.save(m_places.data / RoutesModel::fileName));
    if (m_tracks.isChanged())
        saved(m_tracks.save(m_places.data / TracksModel::fileName));
    saved(m_settings.save());
}

void Program::undo()
{
    m_history.undo();
}

void Program::redo()
{
    m_history.redo();
}

} // namespace kelvox
