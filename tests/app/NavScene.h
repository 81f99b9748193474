#pragma once

#include "app/ChartView.h"
#include "app/MainWindow.h"
#include "app/Program.h"
#include "app/nav/NavActions.h"
#include "base/Folders.h"
#include "navigation/RouteEditor.h"
#include "support/TemporaryFolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>

#include <gtest/gtest.h>

namespace kelvox {

/// A program in folders of its own, its shared records emptied, with one window on open water.
class NavScene : public ::testing::Test {
protected:
    NavScene()
        : program({.configuration = folder.path() / "config",
                   .data = folder.path() / "data",
                   .cache = folder.path() / "cache",
                   .state = folder.path() / "state",
                   .resources = folders::applicationResources()})
        , window(program)
    {
        program.tracks().removeAll();
        program.routes().removeAll();
        program.waypoints().removeAll();
        sharedEditHistory().clear();
        window.resize(1000, 700);
        window.show();
        chart().setScale(50'000);
        chart().centerOn({.longitude = 10, .latitude = 55});
        settle();
    }
    ~NavScene() override
    {
        program.tracks().removeAll();
        program.routes().removeAll();
        program.waypoints().removeAll();
    }

    [[nodiscard]] ChartView& chart() { return window.chart(); }
    [[nodiscard]] NavActions& actions() { return *window.findChild<NavActions*>(); }
    void settle()
    {
        QApplication::processEvents();
        chart().grab(); // the layers learn where they drew what
        QApplication::processEvents();
    }
    void waitFor(const std::function<bool()>& condition)
    {
        QElapsedTimer clock;
        clock.start();
        while (!condition() && clock.elapsed() < 20'000)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        EXPECT_TRUE(condition());
    }

    [[nodiscard]] Position at(QPointF point) { return chart().positionAt(point); }
    WaypointPointer waypoint(const char* name, QPointF where)
    {
        Waypoint made;
        made.name = name;
        made.setPositionOnGPS(at(where));
        return program.waypoints().add(std::move(made));
    }
    RoutePointer route(const char* name, const std::vector<WaypointPointer>& through)
    {
        Route made;
        made.name = name;
        for (const auto& it : through)
            made.addWaypointReference(it);
        return program.routes().add(std::move(made));
    }

    void mouse(QEvent::Type type, QPointF where, Qt::MouseButtons buttons)
    {
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, where, chart().mapToGlobal(where), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(&chart(), &event);
    }
    void press(QPointF where) { mouse(QEvent::MouseButtonPress, where, Qt::LeftButton); }
    void move(QPointF where, Qt::MouseButtons buttons = Qt::LeftButton)
    {
        mouse(QEvent::MouseMove, where, buttons);
    }
    void release(QPointF where) { mouse(QEvent::MouseButtonRelease, where, Qt::NoButton); }
    void click(QPointF where)
    {
        move(where, Qt::NoButton);
        press(where);
        release(where);
    }
    void drag(QPointF from, QPointF to)
    {
        press(from);
        move((from + to) / 2);
        move(to);
        release(to);
    }
    void key(Qt::Key code)
    {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier);
        QApplication::sendEvent(&chart(), &event);
    }
    [[nodiscard]] static std::string through(const RoutePointer& route)
    {
        std::string names;
        for (const auto& reference : route->waypointReferences())
            names += (names.empty() ? "" : " ") + reference->waypoint->name;
        return names;
    }
    /// Where a position stands on the chart, widget pixels.
    [[nodiscard]] double missedBy(const WaypointPointer& waypoint, QPointF where)
    {
        const Position there = at(where);
        const Position here = waypoint->positionOnGPS();
        return std::hypot(there.longitude - here.longitude, there.latitude - here.latitude);
    }

    static constexpr double onePixel = 3e-4; ///< degrees at this scale, generously

    TemporaryFolder folder;
    Program program;
    MainWindow window;
};

} // namespace kelvox
