// The instances that the program shares: one history, and the three models on it.

#include "navigation/SharedModels.h"
#include "navigation/RoutesModel.h"
#include "navigation/TracksModel.h"

namespace kelvox {

EditHistory& sharedEditHistory()
{
    static EditHistory history;
    return history;
}

WaypointsModel& WaypointsModel::waypoints()
{
    static WaypointsModel model(sharedEditHistory());
    return model;
}

RoutesModel& RoutesModel::routes()
{
    static RoutesModel model(sharedEditHistory(), WaypointsModel::waypoints());
    return model;
}

TracksModel& TracksModel::tracks()
{
    static TracksModel model(sharedEditHistory());
    return model;
}

} // namespace kelvox
