#pragma once

#include "app/ChartHost.h"
#include "app/SidePanel.h"
#include "positioning/Satellites.h"

#include <map>

class QCheckBox;
class QLabel;
class QPushButton;

namespace kelvox {

/// The sky over the vessel: each satellite where it stands, those in use filled, and its signal.
class SkyView final : public QWidget {
    Q_OBJECT
public:
    explicit SkyView(QWidget* parent);
    void setView(const SatelliteView& view);

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] QSize sizeHint() const override;

private:
    void paintSky(QPainter& painter, const QRectF& room) const;
    void paintSignals(QPainter& painter, const QRectF& room) const;
    [[nodiscard]] bool isUsed(int number) const;

    SatelliteView m_view;
};

/// The receiver: where it says the vessel is, how good that is, its satellites; the anchor watch;
/// the vessel's own size.
class GpsPanel final : public SidePanel {
    Q_OBJECT
public:
    explicit GpsPanel(ChartHost& host);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void refreshAnchor();
    void setAnchorWatch(bool on);

    ChartHost& m_host;
    QLabel* m_position;
    QLabel* m_quality;
    QLabel* m_hint;
    std::map<std::string, QLabel*> m_values;
    SkyView* m_sky;
    QCheckBox* m_anchorSwitch;
    QLabel* m_anchorState;
    QPushButton* m_connect;
};

} // namespace kelvox
