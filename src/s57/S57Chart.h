#pragma once

#include "s57/S57ChartItems.h"

namespace kelvox {

/// A chart as the library keeps it: the cells that make it up.
class S57Chart {
public:
    void addS57ChartItems(std::shared_ptr<S57ChartItems> items)
    {
        m_items.push_back(std::move(items));
    }
    [[nodiscard]] const std::vector<std::shared_ptr<S57ChartItems>>& s57ChartItems() const
    {
        return m_items;
    }
    [[nodiscard]] bool isLoaded() const { return !m_items.empty(); }
    /// Drops every cached path of every cell: the view has changed.
    void resetPaths()
    {
        for (const auto& items : m_items)
            items->resetPaths();
    }

private:
    std::vector<std::shared_ptr<S57ChartItems>> m_items;
};

} // namespace kelvox
