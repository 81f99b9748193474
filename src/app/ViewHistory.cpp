#include "app/ViewHistory.h"

#include <cmath>

namespace kelvox {

namespace {
bool isAlike(const ViewHistory::View& a, const ViewHistory::View& b)
{
    constexpr double near = 0.2; // of the width of the view
    constexpr double turned = 5; // degrees
    const double reach = a.span * near;
    const double apart = std::remainder(a.center.longitude - b.center.longitude, 360);
    return a.scale == b.scale && std::abs(std::remainder(a.rotation - b.rotation, 360)) < turned
        && std::abs(apart) < reach && std::abs(a.center.latitude - b.center.latitude) < reach;
}
} // namespace

void ViewHistory::visit(const View& view)
{
    if (!m_views.empty() && isAlike(m_views[m_index], view)) {
        m_views[m_index] = view;
        return;
    }
    if (!m_views.empty())
        m_views.resize(m_index + 1);
    m_views.push_back(view);
    if (m_views.size() > longest)
        m_views.erase(m_views.begin());
    m_index = m_views.size() - 1;
}

std::optional<ViewHistory::View> ViewHistory::back()
{
    if (!canGoBack())
        return std::nullopt;
    return m_views[--m_index];
}

std::optional<ViewHistory::View> ViewHistory::forward()
{
    if (!canGoForward())
        return std::nullopt;
    return m_views[++m_index];
}

} // namespace kelvox
