#include "app/AlarmBanner.h"

#include "app/Text.h"
#include "app/Theme.h"

#include <QApplication>
#include <QHBoxLayout>

namespace kelvox {

AlarmBanner::AlarmBanner(AlarmCenter& alarms, QWidget& area)
    : QFrame(&area)
    , m_alarms(alarms)
    , m_area(area)
    , m_message(new QLabel(this))
    , m_information(new QLabel(this))
    , m_age(new QLabel(this))
    , m_more(new QLabel(this))
    , m_button(new QPushButton(this))
{
    setObjectName(QStringLiteral("alarmBanner"));
    setAutoFillBackground(true);
    m_message->setWordWrap(true);
    m_information->setWordWrap(true);
    auto* words = new QVBoxLayout;
    words->setSpacing(0);
    words->addWidget(m_message);
    words->addWidget(m_information);
    auto* row = new QHBoxLayout(this);
    row->addLayout(words, 1);
    row->addWidget(m_age);
    row->addWidget(m_more);
    row->addWidget(m_button);
    m_button->setAccessibleName(text("NSAcknowledge"));
    m_button->setObjectName(QStringLiteral("alarmButton"));
    connect(m_button, &QPushButton::clicked, this, [this] { m_alarms.acknowledge(m_key); });
    connect(&m_alarms, &AlarmCenter::changed, this, &AlarmBanner::update);
    connect(&m_ageTimer, &QTimer::timeout, this, &AlarmBanner::updateAge);
    update();
}

void AlarmBanner::update()
{
    const auto active = m_alarms.active();
    if (active.empty()) {
        m_ageTimer.stop();
        hide();
        return;
    }
    const AlarmEntry& first = active.front();
    m_key = first.key;
    m_message->setText(QString::fromStdString(first.message));
    m_information->setText(QString::fromStdString(first.informativeText));
    m_information->setVisible(!first.informativeText.empty());
    m_button->setText(first.button.empty() ? text("NSOK") : QString::fromStdString(first.button));
    m_more->setText(active.size() > 1 ? countedText("NSMoreAlarms", active.size() - 1) : QString());
    setAccessibleName(m_message->text() + QLatin1Char(' ') + m_information->text());
    setProperty("urgency",
                first.urgency == AlarmEntry::Urgency::Danger ? QStringLiteral("danger")
                                                             : QStringLiteral("caution"));
    restyle();
    updateAge();
    m_ageTimer.start(std::chrono::seconds(1));
    show();
    place();
    raise();
}

void AlarmBanner::updateAge()
{
    const auto active = m_alarms.active();
    if (active.empty())
        return;
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(
                         std::chrono::system_clock::now() - active.front().raised)
                         .count();
    m_age->setText(age < 60 ? text("NSSecondsAge", {QString::number(age)})
                            : text("NSMinutesAge", {QString::number(age / 60)}));
}

void AlarmBanner::restyle()
{
    const Theme& theme = Theme::theme();
    const bool danger = property("urgency") == QStringLiteral("danger");
    const QColor fill = danger ? theme.colors().red : theme.colors().amber;
    // Black on amber and white on red by day; by night the colours are dim and the text black.
    const QColor ink = danger && theme.scheme() == ColorScheme::Day ? theme.colors().background
        : theme.scheme() == ColorScheme::Day                        ? theme.colors().text
                                                                    : theme.colors().background;
    QPalette colors = QApplication::palette();
    colors.setColor(QPalette::Window, fill);
    colors.setColor(QPalette::Button, fill);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Mid,
                            QPalette::Link, QPalette::PlaceholderText})
        colors.setColor(role, ink);
    colors.setColor(QPalette::Highlight, fill.darker(120));
    setPalette(colors);
    const auto fontOf = [&](int size, QFont::Weight weight) {
        QFont font = QApplication::font();
        font.setPixelSize(theme.px(size));
        font.setWeight(weight);
        return font;
    };
    m_message->setFont(fontOf(20, QFont::Bold));
    m_information->setFont(fontOf(15, QFont::Normal));
    m_button->setFont(fontOf(13, QFont::DemiBold));
    m_button->setMinimumSize(theme.px(104), theme.px(44));
    const int margin = theme.px(12);
    layout()->setContentsMargins(margin, theme.px(8), margin, theme.px(8));
    layout()->setSpacing(margin);
    place();
}

void AlarmBanner::place()
{
    const int width = m_area.width();
    const int height =
        std::max(Theme::theme().px(64),
                 heightForWidth(width) > 0 ? heightForWidth(width) : sizeHint().height());
    setGeometry(0, 0, width, height);
}

} // namespace kelvox
