#include "library/ChartSelection.h"

#include "library/CoverageSweep.h"
#include "raster/RasterRenderer.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

namespace kelvox {

namespace {
constexpr double mostReduced = 4; ///< times; beyond, a chart's detail runs together
constexpr double stayFactor = 1.25; ///< what was selected may be off by so much more
constexpr double enterMargin = 0.1; ///< of the view's sides, all around
constexpr double leaveMargin = 0.35;
constexpr std::size_t mostRasters = 24; ///< each keeps tiles of its own
constexpr int attempts = 6; ///< halvings of mostReduced until the limits hold

using Paths = std::set<std::filesystem::path>;

struct Candidate {
    const std::shared_ptr<const ChartRecord>* record = nullptr;
    int rank = 0; ///< 0 best
    double cost = 0; ///< within the rank, smaller first
};

/// Among the best the finest comes first; the others by doublings between chart and view.
Candidate cellCandidate(const std::shared_ptr<const ChartRecord>& record, double viewScale,
                        double reduced, bool wasSelected)
{
    if (record->scale <= 0)
        return {&record, 2, 0};
    const double ratio = viewScale / record->scale / (wasSelected ? stayFactor : 1.0);
    if (ratio <= reduced && ratio >= 1 / mostReduced)
        return {&record, 0, static_cast<double>(record->scale)};
    return {&record, 1, std::abs(std::log2(ratio / reduced * mostReduced))};
}

Candidate rasterCandidate(const std::shared_ptr<const ChartRecord>& record, double viewScale,
                          bool wasSelected)
{
    const double cost = quiltCost(record->scale, viewScale);
    return {&record, 0, cost - (wasSelected ? std::log2(stayFactor) : 0.0)};
}

bool comesBefore(const Candidate& a, const Candidate& b)
{
    if (a.rank != b.rank)
        return a.rank < b.rank;
    if (a.cost != b.cost)
        return a.cost < b.cost;
    return (*a.record)->path < (*b.record)->path;
}

Rect grown(const Rect& view, double margin)
{
    return view.grownBy(view.width() * margin, view.height() * margin);
}

std::vector<std::vector<Point>> boxRing(const Rect& box)
{
    return {{{box.left, box.bottom},
             {box.right, box.bottom},
             {box.right, box.top},
             {box.left, box.top}}};
}

/// The charts that add to what is covered, in the order of the candidates.
void take(const std::vector<Candidate>& candidates, const Rect& area, CoverageSweep& sweep,
          ChartRecords& taken)
{
    for (const Candidate& candidate : candidates) {
        if (sweep.isFull())
            return;
        const ChartRecord& chart = **candidate.record;
        const std::vector<std::vector<Point>> box =
            chart.coverage.empty() ? boxRing(chart.bounds) : std::vector<std::vector<Point>>();
        const auto& rings = chart.coverage.empty() ? box : chart.coverage;
        bool isTaken = false;
        for (const double shift : std::array{-360.0, 0.0, 360.0}) {
            Rect bounds = chart.bounds;
            bounds.left += shift;
            bounds.right += shift;
            if (!bounds.intersects(area) || !sweep.wouldAdd(rings, shift))
                continue;
            isTaken = true;
            if (!chart.coverage.empty()) // else what it holds inside its bounds is not known
                sweep.add(rings, shift);
        }
        if (isTaken)
            taken.push_back(*candidate.record);
    }
}

bool fits(const ChartRecords& charts, const SelectionLimits& limits)
{
    std::uint64_t bytes = 0;
    for (const auto& chart : charts)
        bytes += chart->stamp.size;
    return charts.size() <= limits.charts && bytes <= limits.fileBytes;
}

/// Leaves out the charts farthest from the middle.
void shorten(ChartRecords& charts, const Rect& area, const SelectionLimits& limits)
{
    if (fits(charts, limits))
        return;
    std::vector<std::pair<double, const ChartRecord*>> nearest;
    for (const auto& chart : charts) {
        const Point off = chart->bounds.center() - area.center();
        nearest.emplace_back(
            std::hypot(std::remainder(off.x, 360.0) / area.width(), off.y / area.height()),
            chart.get());
    }
    std::sort(nearest.begin(), nearest.end());
    std::set<const ChartRecord*> kept;
    std::uint64_t bytes = 0;
    for (const auto& [distance, chart] : nearest) {
        bytes += chart->stamp.size;
        if (!kept.empty() && (kept.size() >= limits.charts || bytes > limits.fileBytes))
            break;
        kept.insert(chart);
    }
    std::erase_if(charts, [&](const auto& chart) { return !kept.contains(chart.get()); });
}

struct Picked {
    ChartRecords cells;
    ChartRecords rasters;
};

Picked pick(const ChartRecords& charts, const ChartArea& view, const Rect& area, ChartChoice choice,
            const Paths& selected, const SelectionLimits& limits)
{
    Picked picked;
    CoverageSweep sweep(area);
    const auto candidatesOf = [&](ChartKind kind, const auto& candidateOf) {
        std::vector<Candidate> candidates;
        for (const auto& chart : charts) {
            double shift = 0;
            if (chart->kind == kind && meets(chart->bounds, area, shift))
                candidates.push_back(candidateOf(chart, selected.contains(chart->path)));
        }
        std::erase_if(candidates, [](const Candidate& c) { return std::isinf(c.cost); });
        std::sort(candidates.begin(), candidates.end(), comesBefore);
        return candidates;
    };
    if (choice != ChartChoice::Rasters) {
        double reduced = mostReduced;
        for (int attempt = 0; attempt < attempts; ++attempt, reduced /= 2) {
            sweep = CoverageSweep(area);
            picked.cells.clear();
            const auto candidates =
                candidatesOf(ChartKind::Cell, [&](const auto& chart, bool wasSelected) {
                    return cellCandidate(chart, view.scale, reduced, wasSelected);
                });
            take(candidates, area, sweep, picked.cells);
            const bool canGiveWay = std::any_of(candidates.begin(), candidates.end(),
                                                [](const Candidate& c) { return c.rank == 0; });
            if (!canGiveWay || fits(picked.cells, limits))
                break;
        }
        shorten(picked.cells, area, limits);
    }
    if (choice != ChartChoice::Cells) {
        const auto candidates =
            candidatesOf(ChartKind::Raster, [&](const auto& chart, bool wasSelected) {
                return rasterCandidate(chart, view.scale, wasSelected);
            });
        take(candidates, area, sweep, picked.rasters);
        if (picked.rasters.size() > mostRasters)
            picked.rasters.resize(mostRasters);
    }
    return picked;
}

/// What is needed near the view, and of what is needed in its wider surroundings that which is
/// there already; in the order of the latter.
ChartRecords settled(const ChartRecords& near, const ChartRecords& wide, const Paths& selected)
{
    Paths wanted;
    for (const auto& chart : near)
        wanted.insert(chart->path);
    ChartRecords charts;
    for (const auto& chart : wide)
        if (wanted.erase(chart->path) > 0 || selected.contains(chart->path))
            charts.push_back(chart);
    for (const auto& chart : near)
        if (wanted.contains(chart->path))
            charts.push_back(chart); // the wider selection had to do with coarser ones
    return charts;
}

/// Numbers as numbers, e.g. edition "10" after "9".
long numberOf(const std::string& text)
{
    long number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}
} // namespace

bool meets(const Rect& box, const Rect& other, double& shift)
{
    for (const double by : std::array{0.0, 360.0, -360.0}) {
        shift = by;
        Rect moved = box;
        moved.left += by;
        moved.right += by;
        if (moved.intersects(other))
            return true;
    }
    return false;
}

void ChartSelection::update(const ChartRecords& charts, const ChartArea& view, ChartChoice choice)
{
    if (view.bounds.isEmpty() || view.bounds.width() <= 0 || view.bounds.height() <= 0)
        return;
    Paths selected;
    for (const auto* list : {&m_cells, &m_rasters})
        for (const auto& chart : *list)
            selected.insert(chart->path);
    const Picked near =
        pick(charts, view, grown(view.bounds, enterMargin), choice, selected, m_limits);
    const Picked wide =
        pick(charts, view, grown(view.bounds, leaveMargin), choice, selected, m_limits);
    m_cells = settled(near.cells, wide.cells, selected);
    m_rasters = settled(near.rasters, wide.rasters, selected);
}

void ChartSelection::clear()
{
    m_cells.clear();
    m_rasters.clear();
}

ChartRecords ChartSelection::usable(const ChartRecords& charts)
{
    // A cell's file is named as its data set. Files of raster charts may share a name by chance,
    // but hardly a size too.
    using Key = std::tuple<ChartKind, std::string, std::uint64_t>;
    std::map<Key, std::shared_ptr<const ChartRecord>> best;
    for (const auto& chart : charts) {
        if (!chart->isUsable())
            continue;
        auto& known = best[{chart->kind, chart->path.stem().string(),
                            chart->kind == ChartKind::Raster ? chart->stamp.size : 0}];
        const auto age = [](const ChartRecord& c) {
            return std::pair(numberOf(c.edition), c.update);
        };
        if (!known || age(*known) < age(*chart))
            known = chart;
    }
    ChartRecords list;
    for (auto& [name, chart] : best)
        list.push_back(std::move(chart));
    return list;
}

} // namespace kelvox
