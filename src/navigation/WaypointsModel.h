#pragma once

#include "navigation/ChartMarkersModel.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kelvox {

[[nodiscard]] bool comesBefore(const Waypoint& a, const Waypoint& b); ///< by name

/// Told by the waypoints when routes through them are concerned.
class WaypointObserver {
public:
    virtual ~WaypointObserver() = default;
    virtual void waypointRenamed(const WaypointPointer& waypoint) = 0;
    virtual void waypointsRemoved(const std::unordered_set<const Waypoint*>& waypoints) = 0;
};

/// All waypoints of the user, with their groups and the search over them. See RecordsModel.
class WaypointsModel final : public ChartMarkersModel<Waypoint> {
public:
    explicit WaypointsModel(EditHistory& history);
    static WaypointsModel& waypoints(); ///< the shared instance

    static constexpr const char* fileName = "Preferences/KelvoxWaypoints.plist";
    static constexpr const char* importedGroup = "Imported"; ///< where exchanged waypoints go
    enum class GroupCode { None = 0, Selected = 1, Imported = 2 };

    using ChartMarkersModel::add;
    /// @param markChanged false leaves the Save button as it was; the journal has the waypoint
    WaypointPointer add(Waypoint waypoint, bool markChanged);
    using ChartMarkersModel::remove;
    bool remove(const WaypointPointer& waypoint) override; ///< and from every route
    void removeAll() override;

    [[nodiscard]] WaypointPointer waypoint(std::size_t index) const { return at(index); }
    /// White space at the ends of the name does not count, case does.
    [[nodiscard]] WaypointPointer waypointFromName(std::string_view name) const;
    [[nodiscard]] WaypointPointer waypointForPosition(Position position) const; ///< exactly there
    [[nodiscard]] std::vector<WaypointPointer>
    waypointsFromIndexes(const std::vector<std::size_t>& indexes) const;
    /// "WP0001" to "WP9999", the first that is free; nothing when all are taken.
    [[nodiscard]] std::optional<std::string> uniqueName() const;
    bool setUniqueName(Waypoint& waypoint) const;

    /// A waypoint that came from a file, a receiver or a track. One of the same name within a
    /// boat's length is the same waypoint: it takes the new description and icon, when there are
    /// any, and is returned. One of the same name elsewhere makes the new one's name get a number.
    WaypointPointer createWaypointFromGPS(std::string_view name, Position position,
                                          std::string_view description, int icon = 0);
    WaypointPointer createWaypoint(std::string_view name, std::string_view description, int icon,
                                   GroupCode group, Position position);
    bool editWaypointPosition(const WaypointPointer& waypoint, Position position);
    /// By distanceFromPosition, nearest first; the collection keeps its order.
    [[nodiscard]] std::vector<WaypointPointer> sortedByDistanceFromPosition() const;

    // Groups. A group exists while a waypoint belongs to it. The empty name stands for all.
    void setSelectedGroup(std::string group) { m_selectedGroup = std::move(group); }
    [[nodiscard]] const std::string& selectedGroup() const { return m_selectedGroup; }
    [[nodiscard]] std::vector<std::string> createGroupsFromWaypoints() const; ///< sorted
    void renameGroupsInWaypoints(const std::string& from, const std::string& to);
    void assignGroup(const std::string& group, const WaypointPointer& waypoint);
    void removeFromGroup(const std::string& group, const WaypointPointer& waypoint);
    [[nodiscard]] std::vector<WaypointPointer> waypointsForGroup(const std::string& group) const;
    [[nodiscard]] static bool groupHasWaypoint(const std::string& group, const Waypoint& waypoint);
    [[nodiscard]] bool selectedGroupHasWaypoint(const Waypoint& waypoint) const;

    /// In the selected group only: see TextSearch. No text and an empty text match every one.
    [[nodiscard]] std::vector<WaypointPointer>
    waypointsThatMatch(std::optional<std::string_view> text) const;
    void setMatch(std::optional<std::string_view> text) { m_matches = waypointsThatMatch(text); }
    [[nodiscard]] std::size_t countMatch() const { return m_matches.size(); }
    [[nodiscard]] WaypointPointer waypointMatch(std::size_t index) const;
    [[nodiscard]] std::size_t indexOfMatch(const WaypointPointer& waypoint) const;
    bool removeMatch(std::size_t index);

    void setObserver(WaypointObserver* observer) { m_observer = observer; }

protected:
    void makeNameFree(Waypoint& waypoint) override;
    void tidy(Waypoint& waypoint) const override;
    void onRenamed(const WaypointPointer& waypoint) override;
    void onNameFreed() override { m_lowestFree = 1; }
    void onLoaded() override;

private:
    std::vector<WaypointPointer> m_matches;
    std::string m_selectedGroup;
    WaypointObserver* m_observer = nullptr;
    mutable int m_lowestFree = 1; // no free number lies below
};

} // namespace kelvox
