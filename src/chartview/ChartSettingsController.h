#pragma once

#include "base/Position.h"

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

namespace kelvox {

/// The zoom steps, the best of them for an extent, and the kind of cell that a scale asks for.
class ChartSettingsController {
public:
    /// Scale denominators offered, finest first.
    static constexpr std::array<int, 16> zoomSteps{
        2'500,   5'000,   10'000,  15'000,    25'000,    50'000,    75'000,     150'000,
        250'000, 500'000, 750'000, 1'500'000, 2'500'000, 5'000'000, 10'000'000, 20'000'000};

    /// Told the scale before and after each chosen step; the second sets the view.
    std::function<void(int)> chartViewWillZoomToScale;
    std::function<void(int)> chartViewDidZoomToScale;

    /// Chooses a step by its index. An index outside the list is ignored.
    void onZoom(std::size_t step);
    void zoomIn(); ///< one step finer; nothing at the end of the list
    void zoomOut();
    [[nodiscard]] bool canZoomIn() const { return m_step && *m_step > 0; }
    [[nodiscard]] bool canZoomOut() const { return m_step && *m_step + 1 < zoomSteps.size(); }
    /// Back to the step before the last change; the next return leads here again.
    void previousZoom();
    [[nodiscard]] bool canReturn() const { return m_previous.has_value(); }
    /// Chooses the step at which an extent fills the view, both sizes at the current scale.
    void bestZoom(Size view, Size extent, int currentScale);

    [[nodiscard]] std::optional<std::size_t> selectedStep() const { return m_step; }
    /// 1 overview to 6 berthing, of the selected step; 6 without a selection.
    [[nodiscard]] int cellTypeForScale() const;

    [[nodiscard]] static std::size_t bestStep(Size view, Size extent, int currentScale);
    [[nodiscard]] static int cellType(long long denominator);
    /// Key of the cell type's name, e.g. "NSHarbor".
    [[nodiscard]] static std::string_view cellTypeNameKey(long long denominator);

private:
    std::optional<std::size_t> m_step;
    std::optional<std::size_t> m_previous;
};

} // namespace kelvox
