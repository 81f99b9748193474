#pragma once

#include "app/ChartHost.h"
#include "base/Settings.h"

#include <QWidget>

class QStackedWidget;

namespace kelvox {

/// What a new user meets: that the waters are invented and the program no substitute for paper and
/// eyes, and the way to the three things to be set up. Every page may be left out.
class FirstStartCard final : public QWidget {
    Q_OBJECT
public:
    explicit FirstStartCard(ChartHost& host);

    enum Page { Welcome, Charts, Connection, Units };
    void showPage(Page page);
    /// Whether the user has not put it away yet.
    [[nodiscard]] static bool isWanted(const Settings& settings);

private:
    [[nodiscard]] QWidget* makeWelcome();
    [[nodiscard]] QWidget* makeCharts();
    [[nodiscard]] QWidget* makeConnection();
    [[nodiscard]] QWidget* makeUnits();
    /// Buttons to the page before, to the next one or the end.
    [[nodiscard]] QWidget* makeSteps(Page page);
    void finish();

    ChartHost& m_host;
    QStackedWidget* m_pages;
};

} // namespace kelvox
