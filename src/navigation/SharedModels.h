#pragma once

#include "navigation/EditHistory.h"

namespace kelvox {

/// The history that the shared WaypointsModel, RoutesModel and TracksModel write to. Open its
/// journal before they load.
[[nodiscard]] EditHistory& sharedEditHistory();

/// Where the journal belongs, beside the models' files.
inline constexpr const char* journalFileName = "Preferences/KelvoxEdits.journal";

} // namespace kelvox
