#pragma once

#include "app/PictureMaker.h"
#include "chartview/ChartSettingsController.h"

#include <QWidget>

#include <functional>
#include <optional>

namespace kelvox {

/// The chart: shows the last picture moved, turned and scaled at once on every gesture, while the
/// next one is painted in the background.
class ChartView final : public QWidget {
    Q_OBJECT
public:
    explicit ChartView(WorkerPool& pool, QWidget* parent = nullptr);

    void setScene(std::shared_ptr<const ChartScene> scene);
    /// Painted over the chart on its own whenever the view is; update() asks for it.
    void setOverlay(std::function<void(QPainter&, const ViewFrame&)> paint)
    {
        m_overlay = std::move(paint);
    }
    /// Moves the chart so that the position stands in the middle.
    void centerOn(Position position);
    void setScale(int denominator); ///< about the middle
    /// Shows a box of degrees (left west, bottom south).
    void showBounds(const Rect& degrees);
    /// The same at one of the zoom steps.
    void showBoundsAtStep(const Rect& degrees);

    [[nodiscard]] int scale() const { return m_scale; }
    [[nodiscard]] float rotation() const { return m_rotation; }
    /// The chart's transform for the widget as it is now.
    [[nodiscard]] ViewFrame frame() const;
    /// Nothing when the pointer is not over the chart.
    [[nodiscard]] std::optional<Position> cursorPosition() const;
    [[nodiscard]] QSize sizeHint() const override { return {1200, 800}; }

public slots:
    void zoomIn(); ///< to the next finer step, at the middle
    void zoomOut();
    void northUp();

signals:
    void viewChanged();
    void cursorMoved();
    void pathsDropped(const QStringList& paths);
    void panned(); ///< by the user's hand

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool event(QEvent* event) override;

private:
    static constexpr int finestScale = 500;
    static constexpr int coarsestScale = 50'000'000;

    [[nodiscard]] ViewFrame frameOf(int width, int height) const;
    [[nodiscard]] Point devicePixel(QPointF widgetPoint) const;
    void panBy(QPointF widgetPixels);
    /// Keeps the place under the point where it is.
    void zoomAt(QPointF widgetPoint, double factor);
    void turnAt(QPointF widgetPoint, double degrees);
    void keepPlaceAt(QPointF widgetPoint, SheetPlace place);
    void changed();
    void requestPicture();
    [[nodiscard]] bool pictureCovers() const;
    void showPicture(const ChartPicture& picture);
    void paintPicture(QPainter& painter, const ViewFrame& now) const;

    std::function<void(QPainter&, const ViewFrame&)> m_overlay;
    PictureMaker m_maker;
    std::shared_ptr<const ChartScene> m_scene;
    ChartPicture m_picture;
    ViewFrame m_requested; ///< what the last request shows
    SheetPlace m_center;
    int m_scale = 200'000;
    float m_rotation = 0;
    std::optional<QPointF> m_dragFrom;
    std::optional<QPointF> m_pointer;
};

} // namespace kelvox
