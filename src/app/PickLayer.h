#pragma once

#include "app/ChartHost.h"
#include "app/ChartLayer.h"
#include "presentation/ChartPick.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <optional>
#include <vector>

class QVBoxLayout;

namespace kelvox {

/// What lies under a click on the chart: a card that tells it, topmost first, and its outline on
/// the chart. Also marks a place that a search has found.
class PickLayer final : public QObject, public ChartLayer {
    Q_OBJECT
public:
    explicit PickLayer(ChartHost& host);

    /// Looks under the widget's point and shows what is there; closes the card where nothing is.
    void pick(const ChartPointer& pointer);
    /// A ring around a place until the next click.
    void mark(Position position);
    /// Begins to measure at a place: a command of the chart's menu.
    void setMeasure(std::function<void(Position)> measure) { m_measure = std::move(measure); }
    [[nodiscard]] const std::vector<ChartPick::Hit>& hits() const { return m_hits; }
    [[nodiscard]] std::size_t current() const { return m_current; }
    void show(std::size_t index); ///< one of the hits, in the card and on the chart

    void paint(QPainter& painter, const ViewFrame& frame, const LayerLook& look) override;
    void addToMenu(QMenu& menu, const ChartPointer& pointer, const ViewFrame& frame) override;
    bool cancel() override;

private:
    void clear();
    void addHeading(QVBoxLayout& rows, const ChartPick::Description& description);
    void addFacts(QVBoxLayout& rows, const ChartPick::Description& description);
    void addTexts(QVBoxLayout& rows, const ChartPick::Description& description);

    ChartHost& m_host;
    std::vector<ChartPick::Hit> m_hits;
    std::size_t m_current = 0;
    QPointer<QWidget> m_card;
    std::optional<Position> m_mark;
    std::function<void(Position)> m_measure;
};

} // namespace kelvox
