#pragma once

#include "app/Program.h"

#include <QTimer>
#include <QWidget>

#include <optional>
#include <vector>

class QGridLayout;

namespace kelvox {

enum class GaugeKind {
    SpeedOverGround,
    CourseOverGround,
    Heading,
    SpeedThroughWater,
    Depth,
    Wind,
    Temperature,
    VelocityMadeGood,
    Position,
    Time
};

/// What a gauge shows, in the user's units. Two that are equal look alike.
struct GaugeReading {
    QString label;
    QString number; ///< empty while there is none
    QString unit;
    QString second; ///< a line beneath: the wind's angle, the longitude
    std::optional<float> degrees; ///< of a dial's pointer
    std::size_t samples = 0; ///< of the line beneath the depth
    double lastSample = 0;
    bool stale = false;
    int minutes = 0; ///< for how many whole ones a stale value has stood
    friend bool operator==(const GaugeReading&, const GaugeReading&) = default;
};

/// All kinds in the order in which they are offered.
[[nodiscard]] const std::vector<GaugeKind>& allGauges();
/// What settings call it: "depth".
[[nodiscard]] std::string gaugeId(GaugeKind kind);
[[nodiscard]] QString gaugeName(GaugeKind kind); ///< in words
[[nodiscard]] GaugeReading readGauge(Program& program, GaugeKind kind);

/// The user's choice in its order: the setting "instruments.shown", ids with commas between.
[[nodiscard]] std::vector<GaugeKind> chosenGauges(const Settings& settings);
void chooseGauges(Settings& settings, const std::vector<GaugeKind>& gauges);

/// One instrument, large. Paints itself only when what it shows has changed.
class Gauge final : public QWidget {
    Q_OBJECT
public:
    Gauge(Program& program, GaugeKind kind, QWidget* parent);
    [[nodiscard]] GaugeKind kind() const { return m_kind; }
    [[nodiscard]] bool isWide() const; ///< wants the whole width of a panel
    void refresh();

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

private:
    void paintFigure(QPainter& painter, const QRectF& room) const;
    void paintTape(QPainter& painter, const QRectF& room) const;
    void paintDepths(QPainter& painter, const QRectF& room) const;
    void paintWind(QPainter& painter, const QRectF& room) const;

    Program& m_program;
    GaugeKind m_kind;
    GaugeReading m_reading;
};

/// The chosen gauges, below each other or in two columns. Follows the live data.
class GaugeStack final : public QWidget {
    Q_OBJECT
public:
    GaugeStack(Program& program, int columns, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void rebuild();
    void refresh();

    Program& m_program;
    int m_columns;
    QGridLayout* m_grid;
    std::vector<Gauge*> m_gauges;
    QTimer m_ageTimer; ///< nothing else says that a minute has passed
};

} // namespace kelvox
