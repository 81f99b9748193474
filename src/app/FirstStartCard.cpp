#include "app/FirstStartCard.h"

#include "app/Dialogs.h"
#include "app/Program.h"
#include "app/SettingRow.h"
#include "app/Text.h"
#include "connections/Serial.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace kelvox {

namespace {
constexpr const char* doneKey = "firstStart.done";

QLabel* makeWords(const char* key, QWidget* parent, const char* role = nullptr)
{
    auto* label = new QLabel(text(key), parent);
    label->setWordWrap(true);
    if (role)
        label->setProperty("role", QLatin1String(role));
    return label;
}

QPushButton* makeButton(const QString& words, QWidget* parent)
{
    auto* button = new QPushButton(words, parent);
    button->setMinimumHeight(Theme::theme().px(40));
    return button;
}

QVBoxLayout* makeRows(QWidget* page)
{
    auto* rows = new QVBoxLayout(page);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    return rows;
}
} // namespace

FirstStartCard::FirstStartCard(ChartHost& host)
    : m_host(host)
    , m_pages(new QStackedWidget(this))
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addWidget(m_pages);
    m_pages->addWidget(makeWelcome());
    m_pages->addWidget(makeCharts());
    m_pages->addWidget(makeConnection());
    m_pages->addWidget(makeUnits());
}

bool FirstStartCard::isWanted(const Settings& settings)
{
    return !settings.boolean(doneKey);
}

void FirstStartCard::showPage(Page page)
{
    m_pages->setCurrentIndex(page);
}

QWidget* FirstStartCard::makeWelcome()
{
    auto* page = new QWidget(this);
    auto* rows = makeRows(page);
    rows->addWidget(makeWords("NSDemoData", page));
    const std::pair<const char*, Page> ways[] = {{"NSOpenYourCharts", Charts},
                                                 {"NSConnectInstruments", Connection},
                                                 {"NSSettings.Units", Units}};
    for (const auto& [key, to] : ways) {
        auto* button = makeButton(text(key), page);
        connect(button, &QPushButton::clicked, this, [this, to = to] { showPage(to); });
        rows->addWidget(button);
    }
    rows->addWidget(makeWords("NSNavigationNotice", page, "dim"));
    auto* understood = makeButton(text("NSUnderstood"), page);
    connect(understood, &QPushButton::clicked, this, &FirstStartCard::finish);
    rows->addWidget(understood);
    return page;
}

QWidget* FirstStartCard::makeCharts()
{
    auto* page = new QWidget(this);
    auto* rows = makeRows(page);
    rows->addWidget(makeWords("NSGuideCharts", page));
    auto* choose = makeButton(text("NSAddFolder"), page);
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString name = askForFolder(m_host.window(), text("NSOpenFolderTitle"));
        if (name.isEmpty())
            return;
        m_host.openFiles({std::filesystem::path(name.toStdString())});
        showPage(Connection);
    });
    rows->addWidget(choose);
    rows->addStretch(1);
    rows->addWidget(makeSteps(Charts));
    return page;
}

QWidget* FirstStartCard::makeConnection()
{
    auto* page = new QWidget(this);
    auto* rows = makeRows(page);
    const auto ports = Serial::listPorts();
    rows->addWidget(makeWords(ports.empty() ? "NSGuideNoPorts" : "NSGuidePorts", page));
    constexpr std::size_t most = 4;
    for (std::size_t i = 0; i < std::min(ports.size(), most); ++i) {
        auto* button = makeButton(QString::fromStdString(ports[i].name), page);
        connect(button, &QPushButton::clicked, this, [this, port = ports[i].path] {
            FileSettings& settings = m_host.program().settings();
            settings.set("serialPort", port);
            settings.set("connectGPSAtStartup", true);
            m_host.openPanel(QStringLiteral("connections"));
            showPage(Units);
        });
        rows->addWidget(button);
    }
    auto* panel = makeButton(text("NSOpenConnections"), page);
    connect(panel, &QPushButton::clicked, this,
            [this] { m_host.openPanel(QStringLiteral("connections")); });
    rows->addWidget(panel);
    rows->addStretch(1);
    rows->addWidget(makeSteps(Connection));
    return page;
}

QWidget* FirstStartCard::makeUnits()
{
    auto* page = new QWidget(this);
    auto* rows = makeRows(page);
    for (const char* key : {"surfaceDistanceUnits", "waterDepthUnits", "boatSpeedUnits",
                            "windSpeedUnits", "temperatureUnits", "positionFormatUnits"})
        if (const auto* item = SettingsCatalog::catalog().find(key))
            rows->addWidget(
                new SettingRow(m_host.program(), *item, SettingRow::Detail::Compact, page));
    rows->addStretch(1);
    rows->addWidget(makeSteps(Units));
    return page;
}

QWidget* FirstStartCard::makeSteps(Page page)
{
    auto* box = new QWidget(this);
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins(0, 0, 0, 0);
    auto* back = makeButton(text("NSBack"), box);
    connect(back, &QPushButton::clicked, this, [this] { showPage(Welcome); });
    auto* next = makeButton(text(page == Units ? "NSDone" : "NSSkip"), box);
    connect(next, &QPushButton::clicked, this, [this, page] {
        if (page == Units)
            finish();
        else
            showPage(static_cast<Page>(page + 1));
    });
    row->addWidget(back);
    row->addStretch(1);
    row->addWidget(next);
    return box;
}

void FirstStartCard::finish()
{
    m_host.program().settings().set(doneKey, true);
    m_host.showCard({}, nullptr);
}

} // namespace kelvox
