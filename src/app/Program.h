#pragma once

#include "app/AlarmCenter.h"
#include "app/ChartSet.h"
#include "app/CompanionBus.h"
#include "app/DeviceSession.h"
#include "app/LiveData.h"
#include "app/MainExecutor.h"
#include "app/SleepWatch.h"
#include "app/Theme.h"
#include "base/FileSettings.h"
#include "basemap/BaseMap.h"
#include "navigation/RouteController.h"
#include "navigation/SharedModels.h"
#include "navigation/TrackController.h"
#include "navigation/UnitsModel.h"
#include "navigation/WaypointController.h"
#include "painting/WorkerPool.h"
#include "presentation/S52Render.h"
#include "weather/GribController.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <filesystem>

namespace kelvox {

/// What all windows share: settings, the user's waypoints, routes and tracks, live data, alarms,
/// weather, colours. Owns the order in which they start and stop. Main thread.
class Program final : public QObject {
    Q_OBJECT
public:
    /// Where everything of the user's lies; tests give folders of their own.
    struct Places {
        std::filesystem::path configuration;
        std::filesystem::path data;
        std::filesystem::path cache;
        std::filesystem::path state;
        std::filesystem::path resources;
        /// Those of this machine (XDG base directories).
        [[nodiscard]] static Places ofUser();
    };

    explicit Program(Places places);
    ~Program() override;

    /// What went wrong while starting, for the first window to show.
    [[nodiscard]] const QStringList& startMessages() const { return m_startMessages; }

    [[nodiscard]] const Places& places() const { return m_places; }
    [[nodiscard]] FileSettings& settings() { return m_settings; }
    [[nodiscard]] const Clock& clock() const { return m_clock; }
    [[nodiscard]] MainExecutor& executor() { return m_executor; }
    [[nodiscard]] WorkerPool& pool() { return m_pool; }
    [[nodiscard]] AlarmCenter& alarms() { return m_alarms; }
    [[nodiscard]] LiveData& live() { return m_live; }
    [[nodiscard]] DeviceSession& devices() { return m_devices; }
    [[nodiscard]] WaypointsModel& waypoints() { return m_waypoints; }
    [[nodiscard]] RoutesModel& routes() { return m_routes; }
    [[nodiscard]] TracksModel& tracks() { return m_tracks; }
    [[nodiscard]] WaypointController& waypointController() { return m_waypointController; }
    [[nodiscard]] RouteController& routeController() { return m_routeController; }
    [[nodiscard]] TrackController& trackController() { return m_trackController; }
    [[nodiscard]] GribModel& gribModel() { return m_grib; }
    [[nodiscard]] GribController& weather() { return m_weather; }
    [[nodiscard]] S52Model& library() { return m_library; }
    [[nodiscard]] ChartSharing& chartSharing() { return m_chartSharing; }
    [[nodiscard]] S52Render& presentation() { return m_presentation; }
    /// The coasts of the world; null until they are read, and where none are installed.
    [[nodiscard]] const std::shared_ptr<const BaseMap>& baseMap() const { return m_baseMap; }

    [[nodiscard]] ColorScheme scheme() const { return m_scheme; }
    void setScheme(ColorScheme scheme);
    /// On the very first start: metres where the user's region counts in metres.
    void chooseUnitsForRegion();
    void applyTheme(); ///< after the interface scale or the dimmer changed

    /// Writes the models' files and the settings.
    void save();
    void undo();
    void redo();

signals:
    void schemeChanged(); ///< colours or sizes: charts, icons and styles are made anew
    void settingChanged(const QString& key);
    void unitsChanged();
    void baseMapChanged();
    void waypointsChanged(); ///< coalesced: once when the program is idle
    void routesChanged();
    void tracksChanged();
    void steeringChanged(); ///< the active waypoint or route, or a value seen from the vessel
    void weatherChanged();

private:
    void loadModels();
    void loadBaseMap();
    void connectModels();
    void connectLive();
    void recordTrack(const TrackSample& sample);
    [[nodiscard]] std::optional<SteeringTarget> steeringTarget() const;
    void settingWasChanged(const std::string& key);

    Places m_places;
    QStringList m_startMessages;
    FileSettings m_settings;
    SystemClock m_clock;
    MainExecutor m_executor;
    WorkerPool m_pool;
    AlarmCenter m_alarms;
    CompanionBus m_companions;
    SleepWatch m_sleepWatch;
    LiveData m_live;
    DeviceSession m_devices;
    EditHistory& m_history;
    WaypointsModel& m_waypoints;
    RoutesModel& m_routes;
    TracksModel& m_tracks;
    WaypointController m_waypointController;
    RouteController m_routeController;
    TrackController m_trackController;
    GribModel m_grib;
    GribController m_weather;
    S52Model& m_library;
    S52Render m_presentation;
    ChartSharing m_chartSharing;
    ColorScheme m_scheme = ColorScheme::Day;
    std::shared_ptr<const BaseMap> m_baseMap;
    QTimer m_saveTimer;
    // One signal for many changes in a row.
    QTimer m_waypointsTimer;
    QTimer m_routesTimer;
    QTimer m_tracksTimer;
};

} // namespace kelvox
