#include "app/EventLoop.h"
#include "app/NavScene.h"

#include <map>

namespace kelvox {
namespace {

/// Counts what is painted, by widget.
class PaintCounter final : public QObject {
public:
    PaintCounter() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* object, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && object->isWidgetType())
            ++m_paints[std::string(object->metaObject()->className()) + ' '
                       + object->objectName().toStdString()];
        return false;
    }
    /// "ChartView  3; QLabel gps 1", nothing when nothing was painted.
    [[nodiscard]] std::string take()
    {
        std::string text;
        for (const auto& [widget, count] : std::exchange(m_paints, {}))
            text += widget + ' ' + std::to_string(count) + "; ";
        return text;
    }

private:
    std::map<std::string, int> m_paints;
};

class QuietWindowTest : public NavScene {
protected:
    static void letSecondsPass(double seconds)
    {
        bool over = false;
        QTimer::singleShot(static_cast<int>(1000 * seconds), [&] { over = true; });
        ASSERT_TRUE(runUntil([&] { return over; }));
    }
};

TEST_F(QuietWindowTest, NothingIsPaintedWhileNothingArrives)
{
    // Two turns of every timer that runs once a second, with the fullest panels open.
    PaintCounter paints;
    for (const char* panel : {"instruments", "gps", "ais", "connections", "waypoints"}) {
        window.openPanel(QLatin1String(panel));
        letSecondsPass(1); // what opening it sets going
        (void)paints.take();
        letSecondsPass(2.2);
        EXPECT_EQ(paints.take(), "") << panel;
    }
}

} // namespace
} // namespace kelvox
