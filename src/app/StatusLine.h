#pragma once

#include "navigation/PositionFormatter.h"

#include <QFrame>
#include <QLabel>

namespace kelvox {

class ChartSet;
class ChartView;
class Program;

/// The line below the chart: the cursor's position, range and bearing, the scale, the charts, GPS.
class StatusLine final : public QFrame {
    Q_OBJECT
public:
    StatusLine(Program& program, const ChartView& chart, const ChartSet& charts, QWidget* parent);

    void restyle();
    void updateView(); ///< scale, rotation and charts
    void updateCursor();
    void updateVessel();
    void showProgress(int done, int total); ///< of the search for charts; until updateView()

private:
    QLabel* addLabel(int stretch = 0);

    Program& m_program;
    const ChartView& m_chart;
    const ChartSet& m_charts;
    NSPositionFormatter m_latitude;
    NSPositionFormatter m_longitude;
    QLabel* m_position;
    QLabel* m_range;
    QLabel* m_rotation;
    QLabel* m_scale;
    QLabel* m_cells;
    QLabel* m_gps;
};

} // namespace kelvox
