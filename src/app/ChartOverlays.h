#pragma once

#include <QFrame>
#include <QLabel>
#include <QScrollArea>
#include <QTimer>
#include <QToolButton>

namespace kelvox {

class AlarmBanner;
class ChartView;
class PanelHost;

/// What lies over the chart, and where: panel and banner, a card with one widget at the lower
/// right, a note that goes by itself.
class ChartOverlays final : public QObject {
    Q_OBJECT
public:
    /// @param area parent of all of them
    ChartOverlays(QWidget& area, ChartView& chart, PanelHost& panels, AlarmBanner& banner);

    void showNote(const QString& note);
    void showCard(const QString& title, QWidget* content); ///< takes it over; null only closes
    void restyle();
    void place(); ///< fits all into the area
    void placeSoon(); ///< when the layout that is due has been done
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void placeCard();
    void placeNote();

    QWidget& m_area;
    ChartView& m_chart;
    PanelHost& m_panels;
    AlarmBanner& m_banner;
    QLabel* m_note;
    QTimer m_noteTimer;
    QFrame* m_card;
    QLabel* m_cardTitle;
    QToolButton* m_cardClose;
    QScrollArea* m_cardScroll;
    QWidget* m_cardContent = nullptr;
};

} // namespace kelvox
