#pragma once

#include "app/ChartLayer.h"
#include "app/PictureMaker.h"
#include "chartview/ChartSettingsController.h"

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QWidget>

#include <optional>
#include <vector>

namespace kelvox {

/// The chart: shows the last picture moved, turned and scaled at once on every gesture, while the
/// next one is painted in the background.
class ChartView final : public QWidget {
    Q_OBJECT
public:
    explicit ChartView(WorkerPool& pool, QWidget* parent = nullptr);

    void setScene(std::shared_ptr<const ChartScene> scene);
    /// Painted over the chart on their own whenever the view is, the last on top; update() asks for
    /// it. Those on top meet the mouse first. They must outlive the view.
    void setLayers(std::vector<ChartLayer*> layers)
    {
        m_layers = std::move(layers);
        update();
    }
    /// Paints the layers for another frame, e.g. on paper. The painter is in its display points.
    void paintLayers(QPainter& painter, const ViewFrame& frame, const LayerLook& look) const;
    void setInterfaceScale(double scale) { m_interfaceScale = scale; }
    /// Takes light out of all that is shown. @param light from 0 to 1
    void setDimming(double light)
    {
        m_light = light;
        update();
    }
    /// Moves the chart so that the position stands in the middle.
    void centerOn(Position position);
    void setScale(int denominator); ///< about the middle
    void setRotation(double degrees); ///< about the middle
    /// Keeps a position at a share of the widget's width and height, e.g. the vessel low in the
    /// middle so that more is seen ahead.
    void keepAt(Position position, QPointF share);
    /// Shows a box of degrees (left west, bottom south).
    void showBounds(const Rect& degrees);
    /// The same at one of the zoom steps.
    void showBoundsAtStep(const Rect& degrees);

    [[nodiscard]] int scale() const { return m_scale; }
    [[nodiscard]] float rotation() const { return m_rotation; }
    /// The chart's transform for the widget as it is now.
    [[nodiscard]] ViewFrame frame() const;
    [[nodiscard]] Position center() const;
    [[nodiscard]] Position positionAt(QPointF widgetPoint) const;
    /// The thing of a layer under the point, the topmost.
    [[nodiscard]] std::optional<ChartItem> itemAt(QPointF widgetPoint) const;
    [[nodiscard]] const std::shared_ptr<const ChartScene>& scene() const { return m_scene; }
    /// Whether no newer picture is on its way.
    [[nodiscard]] bool showsWhatWasAskedFor() const { return m_shown == m_asked; }
    /// Nothing when the pointer is not over the chart and the keys do not point either.
    [[nodiscard]] std::optional<Position> cursorPosition() const;
    [[nodiscard]] QSize sizeHint() const override { return {1200, 800}; }

public slots:
    void zoomIn(); ///< to the next finer step, at the middle
    void zoomOut();
    void northUp();
    void clickWithKeys(); ///< at the middle, as the mouse would

signals:
    void viewChanged();
    void cursorMoved();
    void pathsDropped(const QStringList& paths);
    void panned(); ///< by the user's hand
    void clicked(const kelvox::ChartPointer& pointer); ///< on nothing of a layer's
    /// Right click, press and hold, or the menu key.
    void menuRequested(const kelvox::ChartPointer& pointer);
    void pictureShown(); ///< a finished picture of the chart has been taken over

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
    void timerEvent(QTimerEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

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
    [[nodiscard]] ChartPointer pointerAt(QPointF widgetPoint,
                                         Qt::KeyboardModifiers modifiers = {}) const;
    void clickAt(const ChartPointer& pointer);
    void pointWithKeys(); ///< at the middle, marked by a cross until the mouse is moved
    void paintCross(QPainter& painter, const LayerLook& look) const;
    void stopGliding();
    void glide();
    void requestPicture();
    [[nodiscard]] bool pictureCovers() const;
    void showPicture(const ChartPicture& picture);
    void paintPicture(QPainter& painter, const ViewFrame& now) const;

    std::vector<ChartLayer*> m_layers;
    double m_interfaceScale = 1;
    double m_light = 1;
    PictureMaker m_maker;
    std::shared_ptr<const ChartScene> m_scene;
    ChartPicture m_picture;
    ViewFrame m_requested; ///< what the last request shows
    std::uint64_t m_asked = 0; ///< requests so far
    std::uint64_t m_shown = 0; ///< the request whose picture is shown
    SheetPlace m_center;
    int m_scale = 200'000;
    float m_rotation = 0;
    std::optional<QPointF> m_pointer;
    bool m_keysPoint = false;
    // A press until its release: on a layer's thing, or on the chart.
    std::optional<QPointF> m_pressedAt;
    std::optional<QPointF> m_dragFrom; ///< the chart is being dragged, or would be
    ChartLayer* m_pressedLayer = nullptr;
    bool m_moved = false;
    int m_pinchScale = 1; ///< the scale that a pinch began with
    QBasicTimer m_holdTimer;
    // What is left of a drag's speed after the release, widget pixels a millisecond.
    QPointF m_speed;
    QElapsedTimer m_sinceMove;
    QBasicTimer m_glideTimer;
};

} // namespace kelvox
