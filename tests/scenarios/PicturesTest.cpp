#include "app/GribRequestDialog.h"
#include "app/MonitorDialog.h"
#include "app/SettingsDialog.h"
#include "app/Text.h"
#include "app/nav/NavActions.h"
#include "scenarios/Scenario.h"
#include "scenarios/WindForecast.h"

#include <QAccessible>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeySequenceEdit>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>

#include <fstream>

namespace kelvox {
namespace {

/// Every panel and dialog as it is met, by day and by night. At night nothing may be bright: one
/// control in the toolkit's own colours blinds for minutes.
class PicturesTest : public Scenario, public testing::WithParamInterface<const char*> {
protected:
    QString named(const QString& what) const
    {
        return what + QLatin1Char('-') + QLatin1String(GetParam());
    }
    void look(const QString& what) { look(what, window()); }
    void look(const QString& what, QWidget& of)
    {
        const QImage picture = shot(named(what), of);
        // Grey 71 is the brightest of the night table.
        if (QLatin1String(GetParam()) == QLatin1String("night")) {
            EXPECT_LT(brighterThan(picture, 90), 0.003) << what.toStdString();
        }
    }
    void begin()
    {
        start();
        run(std::string("view.") + GetParam());
        waitFor([this] { return program().live().ais().model().count() > 3; }, "traffic");
        waitForPicture();
    }
    /// Something of everything that panels list.
    void fill()
    {
        auto* actions = window().findChild<NavActions*>();
        const Position vessel = program().live().gps().position();
        std::vector<RoutePlace> places;
        for (int i = 0; i < 6; ++i) {
            const Position there{.longitude = vessel.longitude + 0.004 * (i % 3),
                                 .latitude = vessel.latitude + 0.006 * (i + 1)};
            places.push_back({there, nullptr});
        }
        const auto route = actions->editor().makeRoute(places);
        window().showCard({}, nullptr);
        actions->followRoute(route);
        for (int i = 0; i < 40; ++i) {
            Track point;
            point.set({vessel.longitude - 0.0003 * i, vessel.latitude - 0.0008 * i},
                      Date(std::chrono::system_clock::now() - std::chrono::minutes(40 - i)), 20, 6,
                      20, 6, 40, 60, 30, 12, {}, {});
            program().tracks().add(std::move(point), std::chrono::seconds(1));
        }
        const auto grib = folder() / "wind.grb";
        std::ofstream(grib, std::ios::binary) << windForecast(8);
        window().openFiles({grib});
        waitFor([this] { return program().weather().forecastDates().size() == 8; }, "the weather");
    }
};

TEST_P(PicturesTest, FirstStart)
{
    begin();
    look(QStringLiteral("first-start"));
    for (const char* page : {"NSOpenYourCharts", "NSConnectInstruments", "NSSettings.Units"}) {
        const auto buttons = find(QStringLiteral("card"))->findChildren<QPushButton*>();
        for (QPushButton* button : buttons)
            if (button->text() == text(page) && button->isVisible())
                button->click();
        look(QStringLiteral("first-start-") + QLatin1String(page).mid(2));
        for (QPushButton* button : buttons)
            if (button->text() == text("NSBack") && button->isVisible())
                button->click();
    }
}

TEST_P(PicturesTest, Panels)
{
    begin();
    fill();
    for (const char* panel : {"gps", "instruments", "ais", "waypoints", "routes", "tracks",
                              "weather", "charts", "display", "connections", "devices", "alarms"}) {
        if (!window().openPanel(QLatin1String(panel)))
            continue;
        waitForPicture();
        look(QStringLiteral("panel-") + QLatin1String(panel));
    }
    run("vessel.manOverboard");
    waitForPicture();
    look(QStringLiteral("alarm"));
}

TEST_P(PicturesTest, Dialogs)
{
    begin();
    fill();
    run("program.settings");
    if (auto* settings = openDialog<SettingsDialog>()) {
        auto* groups = settings->findChild<QListWidget*>();
        for (int row = 0; groups && row < groups->count(); ++row) {
            groups->setCurrentRow(row);
            const QString name = groups->item(row)->data(Qt::UserRole).toString();
            look(QStringLiteral("settings-") + name.section(QLatin1Char('.'), 1), *settings);
        }
        settings->close();
    }
    GribRequestDialog request(window(), &window());
    request.show();
    look(QStringLiteral("dialog-weather-request"), request);
    request.close();
    MonitorDialog monitor(program(), program().live().connection(ConsumerRole::GPS).monitor(),
                          QStringLiteral("GPS"), &window());
    monitor.show();
    look(QStringLiteral("dialog-monitor"), monitor);
    monitor.close();
    for (const auto& [command, name] :
         {std::pair("file.open", "dialog-open"), std::pair("file.openFolder", "dialog-folder"),
          std::pair("file.import", "dialog-import"), std::pair("file.export", "dialog-export"),
          std::pair("file.print", "dialog-print")})
        inDialog([&] { run(command); },
                 [&](QWidget& dialog) { look(QLatin1String(name), dialog); });
}

TEST_P(PicturesTest, Menus)
{
    begin();
    window().showCard({}, nullptr);
    inDialog(
        [this] {
            const QPoint there(500, 300);
            QContextMenuEvent ask(QContextMenuEvent::Mouse, there, chart().mapToGlobal(there));
            QApplication::sendEvent(&chart(), &ask);
        },
        [&](QWidget& menu) { look(QStringLiteral("menu-chart"), menu); });
    inDialog([this] { click(QStringLiteral("menuButton")); },
             [&](QWidget& menu) { look(QStringLiteral("menu-main"), menu); });
    clickChart(chart().rect().center() + QPoint(60, 80));
    waitForPicture();
    look(QStringLiteral("pick"));
    type(QStringLiteral("searchBox"), QStringLiteral("kel"));
    waitFor([this] { return find(QStringLiteral("searchResults"))->isVisible(); }, "results");
    look(QStringLiteral("search"));
}

INSTANTIATE_TEST_SUITE_P(Scheme, PicturesTest, testing::Values("day", "dusk", "night"),
                         [](const auto& scheme) { return std::string(scheme.param); });

/// Larger windows and interfaces: nothing cut off, nothing out of reach.
TEST_F(Scenario, InterfaceScalesAndWindowSizes)
{
    start();
    window().showCard({}, nullptr);
    for (const double scale : {1.0, 1.5, 2.0, 3.0}) {
        program().settings().set("interfaceScale", scale);
        for (const char* panel : {"routes", "ais", "connections"}) {
            window().openPanel(QLatin1String(panel));
            waitForPicture();
            shot(QStringLiteral("scale-%1-%2").arg(scale).arg(QLatin1String(panel)));
        }
        auto* const mob = find(QStringLiteral("mobButton"));
        EXPECT_TRUE(window().rect().contains(QRect(mob->mapTo(&window(), QPoint()), mob->size())))
            << "out of reach at " << scale;
    }
}

/// A screen reader says what each control is, and a finger hits it.
TEST_F(Scenario, EveryControlHasANameAndIsLargeEnough)
{
    start();
    const auto check = [](QWidget& in, const char* where) {
        constexpr int lowest = 40;
        for (QWidget* control : in.findChildren<QWidget*>()) {
            const bool counts = qobject_cast<QAbstractButton*>(control)
                || qobject_cast<QComboBox*>(control) || qobject_cast<QAbstractSpinBox*>(control)
                || qobject_cast<QSlider*>(control) || qobject_cast<QAbstractItemView*>(control)
                || (qobject_cast<QLineEdit*>(control)
                    && !qobject_cast<QAbstractSpinBox*>(control->parentWidget())
                    && !qobject_cast<QComboBox*>(control->parentWidget())
                    && !qobject_cast<QKeySequenceEdit*>(control->parentWidget()));
            if (!counts || !control->isVisible() || qobject_cast<QHeaderView*>(control)
                || (qobject_cast<QAbstractButton*>(control)
                    && qobject_cast<QLineEdit*>(control->parentWidget())))
                continue;
            auto* const spoken = QAccessible::queryAccessibleInterface(control);
            EXPECT_TRUE(spoken && !spoken->text(QAccessible::Name).isEmpty())
                << where << ": " << control->metaObject()->className() << ' '
                << control->objectName().toStdString();
            EXPECT_GE(control->height(), lowest)
                << where << ": " << control->metaObject()->className() << ' '
                << control->objectName().toStdString();
        }
    };
    check(window(), "window"); // with the card of the first start
    window().showCard({}, nullptr);
    for (const char* panel : {"gps", "instruments", "ais", "waypoints", "routes", "tracks",
                              "weather", "charts", "display", "connections", "devices", "alarms"})
        if (auto* opened = window().openPanel(QLatin1String(panel))) {
            QApplication::processEvents();
            check(*opened, panel);
        }
    run("program.settings");
    if (auto* settings = openDialog<SettingsDialog>()) {
        auto* groups = settings->findChild<QListWidget*>();
        for (int row = 0; groups && row < groups->count(); ++row) {
            groups->setCurrentRow(row);
            QApplication::processEvents();
            check(*settings, "settings");
        }
        settings->close();
    }
    GribRequestDialog request(window(), &window());
    request.show();
    check(request, "weather request");
    request.close();
    MonitorDialog monitor(program(), program().live().connection(ConsumerRole::GPS).monitor(),
                          QStringLiteral("GPS"), &window());
    monitor.show();
    check(monitor, "monitor");
    monitor.close();
    for (const char* command : {"file.export", "file.print"})
        inDialog([&] { run(command); }, [&](QWidget& dialog) { check(dialog, command); });
}

TEST_F(Scenario, TwoChartWindowsSideBySide)
{
    start();
    window().showCard({}, nullptr);
    run("file.newWindow");
    MainWindow* other = nullptr;
    for (QWidget* top : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<MainWindow*>(top); found && found != &window())
            other = found;
    ASSERT_TRUE(other);
    other->chart().setScale(200'000);
    const auto whole = [](MainWindow& one) {
        return !one.chart().scene()->cells.empty() && one.chart().showsWhatWasAskedFor();
    };
    waitFor([&] { return whole(*other) && whole(window()); }, "both pictures");
    EXPECT_EQ(chart().scale(), 50'000) << "each has a view of its own";
    run("view.night");
    waitFor([&] { return whole(*other) && whole(window()); }, "both pictures");
    EXPECT_LT(brighterThan(shot(QStringLiteral("second-window"), *other), 90), 0.004);
    other->close();
}

} // namespace
} // namespace kelvox
