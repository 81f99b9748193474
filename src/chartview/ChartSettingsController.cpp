#include "chartview/ChartSettingsController.h"

#include <algorithm>

namespace kelvox {

namespace {
/// The first step at which the extent, measured at the current scale, is narrower than the view.
std::size_t firstFitting(double view, double extent, int currentScale)
{
    const auto& steps = ChartSettingsController::zoomSteps;
    const auto it = std::find_if(steps.begin(), steps.end(),
                                 [&](int step) { return extent / step < view / currentScale; });
    return it == steps.end() ? steps.size() - 1 : static_cast<std::size_t>(it - steps.begin());
}
} // namespace

void ChartSettingsController::onZoom(std::size_t step)
{
    if (step >= zoomSteps.size())
        return;
    if (m_step != step)
        m_previous = m_step;
    if (chartViewWillZoomToScale)
        chartViewWillZoomToScale(zoomSteps[step]);
    m_step = step;
    if (chartViewDidZoomToScale)
        chartViewDidZoomToScale(zoomSteps[step]);
}

void ChartSettingsController::zoomIn()
{
    if (canZoomIn())
        onZoom(*m_step - 1);
}

void ChartSettingsController::zoomOut()
{
    if (canZoomOut())
        onZoom(*m_step + 1);
}

void ChartSettingsController::previousZoom()
{
    if (m_previous)
        onZoom(*m_previous);
}

void ChartSettingsController::bestZoom(Size view, Size extent, int currentScale)
{
    onZoom(bestStep(view, extent, currentScale));
}

std::size_t ChartSettingsController::bestStep(Size view, Size extent, int currentScale)
{
    return std::max(firstFitting(view.width, extent.width, currentScale),
                    firstFitting(view.height, extent.height, currentScale));
}

int ChartSettingsController::cellTypeForScale() const
{
    return m_step ? cellType(zoomSteps[*m_step]) : 6;
}

int ChartSettingsController::cellType(long long denominator)
{
    if (denominator < 0 || denominator > 20'000'000)
        return 6;
    if (denominator <= 5'000)
        return 6;
    if (denominator <= 50'000)
        return 5;
    if (denominator <= 150'000)
        return 4;
    if (denominator <= 500'000)
        return 3;
    return denominator <= 1'500'000 ? 2 : 1;
}

std::string_view ChartSettingsController::cellTypeNameKey(long long denominator)
{
    if (denominator < 0 || denominator > 1'500'000)
        return "NSOverview";
    constexpr std::array<std::string_view, 6> keys{"NSOverview", "NSGeneral", "NSCoastal",
                                                   "NSApproach", "NSHarbor",  "NSBerthing"};
    return keys[static_cast<std::size_t>(cellType(denominator) - 1)];
}

} // namespace kelvox
