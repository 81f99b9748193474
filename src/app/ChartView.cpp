#include "app/ChartView.h"

#include "painting/PainterCanvas.h"

#include <QDragEnterEvent>
#include <QGestureEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace kelvox {

namespace {
constexpr int pictureMargin = 160; ///< device pixels painted beyond each edge, for the next drag
constexpr double notch = 120; ///< wheel units of one click

QTransform toQTransform(const ViewFrame& from, const ViewFrame& to)
{
    // Three corners of the old picture pin the affine transform to the new one.
    const auto middle = [](const ViewFrame& frame) {
        return frame.placeOf({frame.width / 2.0, frame.height / 2.0}).x;
    };
    const double around = std::round(middle(to) - middle(from)); // one of them crossed 180°
    const auto place = [&](double x, double y) {
        SheetPlace there = from.placeOf({x, y});
        there.x += around;
        const Point p = to.pixelOf(there);
        return QPointF(p.x, p.y);
    };
    const QPointF origin = place(0, 0);
    const QPointF right = place(from.width, 0) - origin;
    const QPointF down = place(0, from.height) - origin;
    return {right.x() / from.width,
            right.y() / from.width,
            down.x() / from.height,
            down.y() / from.height,
            origin.x(),
            origin.y()};
}
} // namespace

ChartView::ChartView(WorkerPool& pool, QWidget* parent)
    : QWidget(parent)
    , m_maker(pool)
    , m_scene(std::make_shared<ChartScene>())
{
    setMouseTracking(true);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    grabGesture(Qt::PinchGesture);
    connect(&m_maker, &PictureMaker::pictureReady, this, &ChartView::showPicture);
}

void ChartView::setScene(std::shared_ptr<const ChartScene> scene)
{
    m_scene = std::move(scene);
    m_requested = {};
    requestPicture();
}

ViewFrame ChartView::frameOf(int width, int height) const
{
    return ViewFrame::at(m_center, m_scale, m_rotation, width, height, devicePixelRatioF(),
                         static_cast<unsigned>(logicalDpiX()));
}

ViewFrame ChartView::frame() const
{
    return frameOf(static_cast<int>(std::ceil(width() * devicePixelRatioF())),
                   static_cast<int>(std::ceil(height() * devicePixelRatioF())));
}

Point ChartView::devicePixel(QPointF widgetPoint) const
{
    return {widgetPoint.x() * devicePixelRatioF(), widgetPoint.y() * devicePixelRatioF()};
}

std::optional<Position> ChartView::cursorPosition() const
{
    if (!m_pointer)
        return std::nullopt;
    const ViewFrame now = frame();
    Position position = now.view.pointToPosition(now.viewPointOf(devicePixel(*m_pointer)));
    position.longitude -= 360 * std::floor((position.longitude + 180) / 360);
    return position;
}

void ChartView::showBounds(const Rect& degrees)
{
    const ViewFrame now = frame();
    const ViewFrame fitting =
        ViewFrame::fitting(degrees, now.width, now.height, now.pixelsPerPoint, now.view.dpi());
    m_center = fitting.placeOf({fitting.width / 2.0, fitting.height / 2.0});
    m_scale = std::clamp(fitting.view.scale(), finestScale, coarsestScale);
    m_rotation = 0;
    changed();
}

void ChartView::showBoundsAtStep(const Rect& degrees)
{
    showBounds(degrees);
    const Size view{static_cast<double>(width()), static_cast<double>(height())};
    const auto step = ChartSettingsController::bestStep(view, view, m_scale);
    m_scale = ChartSettingsController::zoomSteps[step];
    changed();
}

void ChartView::centerOn(Position position)
{
    const ViewFrame there = ViewFrame::at(position, m_scale, 0, 0, 0, 1, S57Controller::maximumDpi);
    m_center = there.placeOf({0, 0});
    changed();
}

void ChartView::setScale(int denominator)
{
    m_scale = std::clamp(denominator, finestScale, coarsestScale);
    changed();
}

void ChartView::zoomIn()
{
    const auto& steps = ChartSettingsController::zoomSteps;
    const auto it = std::lower_bound(steps.begin(), steps.end(), m_scale);
    if (it == steps.begin())
        return;
    m_scale = *(it - 1);
    changed();
}

void ChartView::zoomOut()
{
    const auto& steps = ChartSettingsController::zoomSteps;
    const auto it = std::upper_bound(steps.begin(), steps.end(), m_scale);
    if (it == steps.end())
        return;
    m_scale = *it;
    changed();
}

void ChartView::northUp()
{
    m_rotation = 0;
    changed();
}

void ChartView::panBy(QPointF widgetPixels)
{
    const ViewFrame now = frame();
    const Point by = devicePixel(widgetPixels);
    m_center = now.placeOf({now.width / 2.0 - by.x, now.height / 2.0 - by.y});
    m_center.y = std::clamp(m_center.y, 0.0, 1.0);
    m_center.x -= std::floor(m_center.x); // around the world and back
    emit panned();
    changed();
}

void ChartView::keepPlaceAt(QPointF widgetPoint, SheetPlace place)
{
    const SheetPlace now = frame().placeOf(devicePixel(widgetPoint));
    m_center.x += place.x - now.x;
    m_center.y = std::clamp(m_center.y + place.y - now.y, 0.0, 1.0);
    m_center.x -= std::floor(m_center.x);
    changed();
}

void ChartView::zoomAt(QPointF widgetPoint, double factor)
{
    const SheetPlace place = frame().placeOf(devicePixel(widgetPoint));
    m_scale = static_cast<int>(std::clamp<double>(m_scale / factor, finestScale, coarsestScale));
    keepPlaceAt(widgetPoint, place);
}

void ChartView::turnAt(QPointF widgetPoint, double degrees)
{
    const SheetPlace place = frame().placeOf(devicePixel(widgetPoint));
    const double turned = m_rotation + degrees;
    m_rotation = static_cast<float>(turned - 360 * std::floor(turned / 360));
    keepPlaceAt(widgetPoint, place);
}

void ChartView::changed()
{
    update();
    emit viewChanged();
    emit cursorMoved();
    requestPicture();
}

bool ChartView::pictureCovers() const
{
    // The picture asked for last still reaches past every corner of the window by half its margin.
    const ViewFrame now = frame();
    if (m_requested.width == 0 || m_requested.view.scale() != now.view.scale()
        || m_requested.view.rotate() != now.view.rotate()
        || m_requested.pixelsPerPoint != now.pixelsPerPoint)
        return false;
    constexpr double reserve = pictureMargin / 2.0;
    for (const double x : {-reserve, now.width + reserve})
        for (const double y : {-reserve, now.height + reserve}) {
            const Point p = m_requested.pixelOf(now.placeOf({x, y}));
            if (p.x < 0 || p.y < 0 || p.x > m_requested.width || p.y > m_requested.height)
                return false;
        }
    return true;
}

void ChartView::requestPicture()
{
    if (width() < 1 || height() < 1 || pictureCovers())
        return;
    const ViewFrame now = frame();
    m_requested = frameOf(now.width + 2 * pictureMargin, now.height + 2 * pictureMargin);
    m_maker.request(m_scene, m_requested);
}

void ChartView::showPicture(const ChartPicture& picture)
{
    m_picture = picture;
    update();
}

void ChartView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), toQColor(RenderColors::from(m_scene->portrayal->colors).noDataColor));
    const ViewFrame now = frame();
    if (!m_picture.image.isNull())
        paintPicture(painter, now);
    if (m_overlay) {
        painter.resetTransform();
        painter.scale(1 / now.pixelsPerPoint, 1 / now.pixelsPerPoint);
        m_overlay(painter, now);
    }
}

void ChartView::paintPicture(QPainter& painter, const ViewFrame& now) const
{
    const QTransform move = toQTransform(m_picture.frame, now);
    painter.scale(1 / now.pixelsPerPoint, 1 / now.pixelsPerPoint); // to device pixels
    if (m_picture.frame.view.scale() == now.view.scale()
        && m_picture.frame.view.rotate() == now.view.rotate()) {
        // Only moved: whole pixels keep it sharp.
        painter.drawImage(QPoint(qRound(move.dx()), qRound(move.dy())), m_picture.image);
        return;
    }
    painter.setTransform(move, true);
    painter.drawImage(0, 0, m_picture.image);
}

void ChartView::resizeEvent(QResizeEvent* /*event*/)
{
    changed();
}

void ChartView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragFrom = event->position();
}

void ChartView::mouseMoveEvent(QMouseEvent* event)
{
    m_pointer = event->position();
    if (m_dragFrom) {
        panBy(event->position() - *m_dragFrom);
        m_dragFrom = event->position();
    }
    emit cursorMoved();
}

void ChartView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_dragFrom.reset();
}

void ChartView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPointF middle(width() / 2.0, height() / 2.0);
    panBy(middle - event->position());
}

void ChartView::wheelEvent(QWheelEvent* event)
{
    // Shift turns a vertical wheel into a horizontal one on some systems.
    const QPoint delta = event->angleDelta();
    const double clicks = (delta.y() != 0 ? delta.y() : delta.x()) / notch;
    if (event->modifiers().testFlag(Qt::ShiftModifier))
        turnAt(event->position(), clicks * 5);
    else
        zoomAt(event->position(), std::pow(2.0, clicks / 3));
    event->accept();
}

void ChartView::leaveEvent(QEvent* /*event*/)
{
    m_pointer.reset();
    emit cursorMoved();
}

void ChartView::keyPressEvent(QKeyEvent* event)
{
    constexpr double step = 80;
    switch (event->key()) {
    case Qt::Key_Left:
        return panBy({step, 0});
    case Qt::Key_Right:
        return panBy({-step, 0});
    case Qt::Key_Up:
        return panBy({0, step});
    case Qt::Key_Down:
        return panBy({0, -step});
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        return zoomIn();
    case Qt::Key_Minus:
        return zoomOut();
    default:
        QWidget::keyPressEvent(event);
    }
}

bool ChartView::event(QEvent* event)
{
    if (event->type() == QEvent::Gesture) {
        auto* gestures = static_cast<QGestureEvent*>(event);
        if (auto* pinch = static_cast<QPinchGesture*>(gestures->gesture(Qt::PinchGesture))) {
            m_dragFrom.reset();
            const QPointF middle = mapFromGlobal(pinch->centerPoint());
            if (pinch->changeFlags().testFlag(QPinchGesture::ScaleFactorChanged))
                zoomAt(middle, pinch->scaleFactor());
            if (pinch->changeFlags().testFlag(QPinchGesture::RotationAngleChanged))
                turnAt(middle, pinch->lastRotationAngle() - pinch->rotationAngle());
            gestures->accept();
            return true;
        }
    } else if (event->type() == QEvent::NativeGesture) {
        // A touch pad tells its pinches this way.
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture)
            zoomAt(gesture->position(), 1 + gesture->value());
        else if (gesture->gestureType() == Qt::RotateNativeGesture)
            turnAt(gesture->position(), -gesture->value());
        return true;
    }
    return QWidget::event(event);
}

void ChartView::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void ChartView::dropEvent(QDropEvent* event)
{
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    if (!paths.isEmpty())
        emit pathsDropped(paths);
    event->acceptProposedAction();
}

} // namespace kelvox
