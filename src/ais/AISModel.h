#pragma once

#include "ais/AISPosition.h"
#include "base/Clock.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace kelvox {

/// The table of all known targets, in the order of their keys. Main thread.
///
/// A target stays where it is in memory until it is removed.
class AISModel {
public:
    /// A stream of invented numbers ends here; real traffic is far below.
    static constexpr std::size_t maximumCount = 200'000;

    explicit AISModel(const Clock& clock)
        : m_clock(clock)
    {
    }
    /// The one table of the program.
    [[nodiscard]] static AISModel& ais();

    /// The target with this key, made when there is none; null when the table is full. A new one
    /// counts as heard now and is called "~" and its MMSI until a report brings its name.
    AISPosition* aisPositionWithMMSI(std::int32_t mmsi);
    /// Null when there is none.
    [[nodiscard]] AISPosition* find(std::int32_t mmsi) const;

    [[nodiscard]] std::size_t count() const { return m_sorted.size(); }
    [[nodiscard]] AISPosition& aisPosition(std::size_t index) const { return *m_sorted[index]; }
    [[nodiscard]] std::optional<std::size_t> indexOfPosition(std::int32_t mmsi) const;
    [[nodiscard]] std::span<AISPosition* const> positionEnumerator() const { return m_sorted; }
    void removePosition(std::int32_t mmsi);
    void removeAll();

    // Whether lists are behind the table.
    void reloadData() { m_dirty = true; }
    [[nodiscard]] bool dataReloaded() const { return m_dirty; }
    void resetDataReloaded() { m_dirty = false; }

    /// Says that the image of a target is no longer right where it stands now; called before and
    /// after a visible change.
    void setNeedsDisplayForAISPosition(const AISPosition& target) const
    {
        if (m_needsDisplay)
            m_needsDisplay(target);
    }
    void setNeedsDisplayHandler(std::function<void(const AISPosition&)> handler)
    {
        m_needsDisplay = std::move(handler);
    }

private:
    void sortPositions();

    const Clock& m_clock;
    std::unordered_map<std::int32_t, std::unique_ptr<AISPosition>> m_positions;
    std::vector<AISPosition*> m_sorted;
    std::function<void(const AISPosition&)> m_needsDisplay;
    bool m_dirty = false;
};

} // namespace kelvox
