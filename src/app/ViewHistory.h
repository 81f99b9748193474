#pragma once

#include "base/Position.h"

#include <optional>
#include <vector>

namespace kelvox {

/// The views that the user has looked at, as a browser keeps its pages.
class ViewHistory {
public:
    struct View {
        Position center;
        int scale = 0;
        double rotation = 0; ///< degrees
        double span = 0; ///< degrees of longitude across the view
    };

    /// The view has come to rest. One much like the present one takes its place.
    void visit(const View& view);
    [[nodiscard]] bool canGoBack() const { return m_index > 0; }
    [[nodiscard]] bool canGoForward() const { return m_index + 1 < m_views.size(); }
    std::optional<View> back();
    std::optional<View> forward();

private:
    static constexpr std::size_t longest = 100;
    std::vector<View> m_views;
    std::size_t m_index = 0;
};

} // namespace kelvox
