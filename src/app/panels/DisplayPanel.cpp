#include "app/panels/DisplayPanel.h"

#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Text.h"

#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>

namespace kelvox {

DisplayPanel::DisplayPanel(ChartHost& host)
    : SidePanel(QStringLiteral("display"), "NSDisplay", QStringLiteral("layers"))
    , m_host(host)
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(makeLight());
    auto* area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget(area);
    auto* lines = new QVBoxLayout(page);
    lines->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    lines->setSpacing(0);
    const auto add = [&](const char* heading, std::initializer_list<const char*> keys) {
        auto* words = new QLabel(text(heading), page);
        words->setProperty("role", QStringLiteral("dim"));
        words->setContentsMargins(0, Theme::theme().px(8), 0, 0);
        lines->addWidget(words);
        for (const char* key : keys)
            if (const auto* item = SettingsCatalog::catalog().find(key))
                lines->addWidget(
                    new SettingRow(host.program(), *item, SettingRow::Detail::Compact, page));
    };
    add("NSDisplayDepths",
        {"showSoundings", "showDepthContours", "showSurface", "waterDepthUnits"});
    add("NSDisplayMarks", {"showMarkNames", "showLightSectors", "simplifiedSymbols", "largeText"});
    add("NSDisplayLand", {"showPlaceNames", "showElevations"});
    add("NSDisplayAreas",
        {"showRestrictedAreas", "showCautionAreas", "showRecommendedRoutes", "showAtAllScales"});
    add("NSCharts", {"chartChoice", "showGraticule", "showChartOutlines"});
    lines->addStretch(1);
    area->setWidget(page);
    rows->addWidget(area, 1);
    connect(&host.program(), &Program::schemeChanged, this, &DisplayPanel::refresh);
    refresh();
}

QWidget* DisplayPanel::makeLight()
{
    const Theme& theme = Theme::theme();
    auto* box = new QWidget(this);
    auto* rows = new QVBoxLayout(box);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* row = new QHBoxLayout;
    auto* group = new QButtonGroup(box);
    const std::pair<const char*, ColorScheme> schemes[] = {{"NSDay", ColorScheme::Day},
                                                           {"NSDusk", ColorScheme::Dusk},
                                                           {"NSNight", ColorScheme::Night}};
    for (const auto& [key, scheme] : schemes) {
        auto* button = new QPushButton(text(key), box);
        button->setCheckable(true);
        button->setMinimumHeight(theme.px(40));
        group->addButton(button);
        connect(button, &QPushButton::clicked, this,
                [this, scheme = scheme] { m_host.program().setScheme(scheme); });
        row->addWidget(button, 1);
        m_schemes.push_back(button);
    }
    rows->addLayout(row);
    auto* light = new QHBoxLayout;
    light->addWidget(new QLabel(text("NSSetting.dimming"), box));
    m_brightness = new QSlider(Qt::Horizontal, box);
    m_brightness->setRange(20, 100);
    m_brightness->setAccessibleName(text("NSSetting.dimming"));
    m_brightness->setMinimumHeight(theme.px(40));
    connect(m_brightness, &QSlider::valueChanged, this,
            [this](int percent) { m_host.program().settings().set("dimming", percent / 100.0); });
    light->addWidget(m_brightness, 1);
    rows->addLayout(light);
    return box;
}

void DisplayPanel::refresh()
{
    const auto scheme = static_cast<std::size_t>(m_host.program().scheme());
    for (std::size_t i = 0; i < m_schemes.size(); ++i)
        m_schemes[i]->setChecked(i == scheme);
    const QSignalBlocker quiet(m_brightness);
    m_brightness->setValue(qRound(m_host.program().settings().number("dimming", 1) * 100));
}

} // namespace kelvox
