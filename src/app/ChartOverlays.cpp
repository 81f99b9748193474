#include "app/ChartOverlays.h"

#include "app/AlarmBanner.h"
#include "app/ChartView.h"
#include "app/PanelHost.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/Theme.h"

#include <QEvent>
#include <QHBoxLayout>

#include <algorithm>

namespace kelvox {

namespace {
constexpr auto noteTime = std::chrono::seconds(6);
constexpr int gap = 16; // between what lies over the chart and its edges
} // namespace

ChartOverlays::ChartOverlays(QWidget& area, ChartView& chart, PanelHost& panels,
                             AlarmBanner& banner)
    : m_area(area)
    , m_chart(chart)
    , m_panels(panels)
    , m_banner(banner)
    , m_note(new QLabel(&area))
    , m_card(new QFrame(&area))
    , m_cardTitle(new QLabel(m_card))
    , m_cardClose(new QToolButton(m_card))
    , m_cardScroll(new QScrollArea(m_card))
{
    m_note->setObjectName(QStringLiteral("note"));
    makeCard(*m_note);
    m_note->setWordWrap(true);
    m_note->hide();
    m_noteTimer.setSingleShot(true);
    connect(&m_noteTimer, &QTimer::timeout, m_note, &QWidget::hide);
    m_card->setObjectName(QStringLiteral("card"));
    makeCard(*m_card);
    m_cardTitle->setObjectName(QStringLiteral("panelTitle"));
    m_cardClose->setObjectName(QStringLiteral("cardClose"));
    m_cardClose->setFocusPolicy(Qt::TabFocus);
    m_cardClose->setAccessibleName(text("NSClose"));
    connect(m_cardClose, &QToolButton::clicked, this, [this] { showCard({}, nullptr); });
    auto* heading = new QHBoxLayout;
    heading->addWidget(m_cardTitle, 1);
    heading->addWidget(m_cardClose);
    m_cardScroll->setFrameShape(QFrame::NoFrame);
    m_cardScroll->setWidgetResizable(true);
    m_cardScroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* rows = new QVBoxLayout(m_card);
    rows->addLayout(heading);
    rows->addWidget(m_cardScroll);
    m_card->hide();
}

void ChartOverlays::showNote(const QString& note)
{
    m_note->setText(note);
    m_note->show();
    m_noteTimer.start(noteTime);
    place();
}

void ChartOverlays::showCard(const QString& title, QWidget* content)
{
    if (m_cardContent) {
        m_cardScroll->takeWidget();
        m_cardContent->deleteLater();
    }
    m_cardContent = content;
    m_card->setVisible(content != nullptr);
    if (!content)
        return;
    content->installEventFilter(this);
    // Wrapped words ask for a least height at a width of their own choice; at this one they need
    // less, and the scroll bar would be for nothing.
    content->setMinimumHeight(1);
    m_cardTitle->setText(title);
    m_cardScroll->setWidget(content);
    content->show();
    m_card->raise(); // what is opened last lies above, card or panel
    place();
}

bool ChartOverlays::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest && object == m_cardContent)
        placeSoon(); // it has become another height
    return QObject::eventFilter(object, event);
}

void ChartOverlays::restyle()
{
    const Theme& theme = Theme::theme();
    m_note->setMargin(theme.px(12));
    m_card->layout()->setContentsMargins(theme.px(12), theme.px(4), theme.px(4), theme.px(12));
    m_cardClose->setIcon(theme.icon(QStringLiteral("close")));
    m_cardClose->setIconSize(QSize(theme.px(24), theme.px(24)));
    m_cardClose->setFixedSize(theme.px(40), theme.px(40));
}

void ChartOverlays::placeSoon()
{
    QTimer::singleShot(0, this, &ChartOverlays::place);
}

void ChartOverlays::place()
{
    m_chart.setGeometry(m_area.rect());
    m_banner.place();
    m_panels.setTop(m_banner.isHidden() ? 0 : m_banner.height());
    if (!m_card->isHidden())
        placeCard();
    if (!m_note->isHidden())
        placeNote();
    m_banner.raise();
}

void ChartOverlays::placeCard()
{
    const Theme& theme = Theme::theme();
    const int margin = theme.px(gap);
    m_card->setFixedWidth(std::min(theme.px(380), m_area.width() - 2 * margin));
    if (m_cardContent) {
        // As high as what is in it, as far as there is room; then it scrolls.
        const QMargins around = m_card->layout()->contentsMargins();
        const int width = m_card->width() - around.left() - around.right();
        const int wanted = m_cardContent->hasHeightForWidth() ? m_cardContent->heightForWidth(width)
                                                              : m_cardContent->sizeHint().height();
        const int room = m_area.height() - 4 * margin - theme.px(56);
        m_cardScroll->setFixedHeight(std::clamp(wanted, 0, std::max(room, theme.px(40))));
    }
    m_card->adjustSize();
    m_card->move(m_area.width() - m_card->width() - margin,
                 m_area.height() - m_card->height() - 3 * margin);
}

void ChartOverlays::placeNote()
{
    // In the middle of what panel and card leave of the chart, or else above the card.
    const Theme& theme = Theme::theme();
    const int margin = theme.px(gap);
    int left = m_panels.isHidden() ? 0 : m_panels.width();
    int right = m_card->isHidden() ? m_area.width() : m_card->x();
    int bottom = m_area.height() - 4 * margin;
    if (right - left < theme.px(280)) {
        left = 0;
        right = m_area.width();
        if (!m_card->isHidden())
            bottom = m_card->y() - margin;
    }
    m_note->setFixedWidth(std::min(theme.px(480), right - left - 2 * margin));
    m_note->adjustSize();
    m_note->move(left + (right - left - m_note->width()) / 2, bottom - m_note->height());
    m_note->raise();
}

} // namespace kelvox
