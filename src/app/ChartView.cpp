#include "app/ChartView.h"

#include "base/Reversed.h"
#include "painting/PainterCanvas.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QGestureEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QTimerEvent>
#include <QWheelEvent>

#include <cmath>

namespace kelvox {

namespace {
constexpr int pictureMargin = 160; ///< device pixels painted beyond each edge, for the next drag
constexpr double notch = 120; ///< wheel units of one click
constexpr int holdTime = 600; ///< milliseconds of a press that asks for the menu
constexpr int touchSlop = 6; ///< widget pixels that a click may wander
constexpr int glideStep = 16; ///< milliseconds

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
    if (m_keysPoint)
        return positionAt({width() / 2.0, height() / 2.0});
    return m_pointer ? std::optional(positionAt(*m_pointer)) : std::nullopt;
}

Position ChartView::positionAt(QPointF widgetPoint) const
{
    Position position = frame().positionOf(devicePixel(widgetPoint));
    position.longitude -= 360 * std::floor((position.longitude + 180) / 360);
    return position;
}

Position ChartView::center() const
{
    return positionAt({width() / 2.0, height() / 2.0});
}

ChartPointer ChartView::pointerAt(QPointF widgetPoint, Qt::KeyboardModifiers modifiers) const
{
    return {widgetPoint, positionAt(widgetPoint), modifiers};
}

std::optional<ChartItem> ChartView::itemAt(QPointF widgetPoint) const
{
    const ViewFrame now = frame();
    const ChartPointer pointer = pointerAt(widgetPoint);
    for (ChartLayer* layer : Reversed(m_layers))
        if (auto item = layer->itemAt(pointer, now))
            return item;
    return std::nullopt;
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

void ChartView::setRotation(double degrees)
{
    const auto turned = static_cast<float>(degrees - 360 * std::floor(degrees / 360));
    if (turned == m_rotation)
        return;
    m_rotation = turned;
    changed();
}

void ChartView::keepAt(Position position, QPointF share)
{
    const ViewFrame there = ViewFrame::at(position, m_scale, m_rotation, 0, 0, devicePixelRatioF(),
                                          static_cast<unsigned>(logicalDpiX()));
    const Point off = devicePixel({(0.5 - share.x()) * width(), (0.5 - share.y()) * height()});
    const SheetPlace center = there.placeOf(off);
    if (center == m_center)
        return;
    m_center = center;
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
    m_asked = m_maker.request(m_scene, m_requested);
}

void ChartView::showPicture(const ChartPicture& picture)
{
    m_picture = picture;
    m_shown = picture.number;
    update();
    emit pictureShown();
}

void ChartView::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), toQColor(RenderColors::from(m_scene->portrayal->colors).noDataColor));
    const ViewFrame now = frame();
    if (!m_picture.image.isNull())
        paintPicture(painter, now);
    painter.resetTransform(); // one unit is one widget pixel again
    painter.setRenderHint(QPainter::Antialiasing);
    const LayerLook look{*m_scene->portrayal, m_interfaceScale};
    paintLayers(painter, now, look);
    if (m_keysPoint)
        paintCross(painter, look);
    if (m_light < 1)
        painter.fillRect(rect(), QColor::fromRgbF(0, 0, 0, static_cast<float>(1 - m_light)));
}

void ChartView::paintLayers(QPainter& painter, const ViewFrame& frame, const LayerLook& look) const
{
    for (ChartLayer* layer : m_layers) {
        painter.save();
        layer->paint(painter, frame, look);
        painter.restore();
    }
}

void ChartView::paintPicture(QPainter& painter, const ViewFrame& now) const
{
    const QTransform move = moveBetween(m_picture.frame, now);
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
    stopGliding();
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->position();
    m_moved = false;
    m_pressedLayer = nullptr;
    const ViewFrame now = frame();
    const ChartPointer pointer = pointerAt(event->position(), event->modifiers());
    for (ChartLayer* layer : Reversed(m_layers))
        if (layer->press(pointer, now)) {
            m_pressedLayer = layer;
            m_holdTimer.start(holdTime, this);
            update();
            return;
        }
    m_dragFrom = event->position();
    m_holdTimer.start(holdTime, this);
}

void ChartView::mouseMoveEvent(QMouseEvent* event)
{
    m_pointer = event->position();
    m_keysPoint = false;
    if (m_pressedAt && !m_moved
        && (event->position() - *m_pressedAt).manhattanLength() > touchSlop) {
        m_moved = true;
        m_holdTimer.stop();
        m_sinceMove.start();
        m_speed = {};
    }
    const bool pressed = m_pressedAt.has_value();
    if (pressed && m_pressedLayer && m_moved) {
        m_pressedLayer->move(pointerAt(event->position(), event->modifiers()), frame());
        update();
    } else if (m_dragFrom && m_moved) {
        const QPointF by = event->position() - *m_dragFrom;
        m_dragFrom = event->position();
        // Averaged over the last moves: the very last one before a release says little.
        const auto passed = static_cast<double>(std::max<qint64>(m_sinceMove.restart(), 1));
        m_speed = m_speed * 0.6 + by / passed * 0.4;
        panBy(by);
    } else if (!pressed) {
        for (ChartLayer* layer : Reversed(m_layers))
            if (layer->wantsHover()) {
                layer->hover(pointerAt(event->position(), event->modifiers()), frame());
                update();
            }
    }
    emit cursorMoved();
}

void ChartView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_pressedAt)
        return;
    m_holdTimer.stop();
    m_pressedAt.reset();
    ChartLayer* const layer = std::exchange(m_pressedLayer, nullptr);
    const bool dragged = m_dragFrom.has_value() && m_moved;
    const bool held = !m_dragFrom && !layer;
    m_dragFrom.reset();
    const ChartPointer pointer = pointerAt(event->position(), event->modifiers());
    if (layer) {
        layer->release(pointer, frame());
        update();
    }
    if (dragged) {
        glide();
        return;
    }
    if (!m_moved && !held)
        clickAt(pointer);
}

void ChartView::clickAt(const ChartPointer& pointer)
{
    const ViewFrame now = frame();
    for (ChartLayer* other : Reversed(m_layers))
        if (other->click(pointer, now)) {
            update();
            return;
        }
    emit clicked(pointer);
}

void ChartView::clickWithKeys()
{
    setFocus();
    pointWithKeys();
    clickAt(pointerAt({width() / 2.0, height() / 2.0}));
}

void ChartView::pointWithKeys()
{
    m_keysPoint = true;
    const ViewFrame now = frame();
    const ChartPointer middle = pointerAt({width() / 2.0, height() / 2.0});
    for (ChartLayer* layer : Reversed(m_layers))
        if (layer->wantsHover())
            layer->hover(middle, now);
    update();
    emit cursorMoved();
}

void ChartView::paintCross(QPainter& painter, const LayerLook& look) const
{
    const QPointF middle(width() / 2.0, height() / 2.0);
    const double arm = 12 * look.scale;
    const double gap = 3 * look.scale; // what is pointed at is seen
    for (const auto& [token, line] : {std::pair("DEPDW", 4.0), std::pair("CURSR", 2.0)}) {
        painter.setPen(QPen(look.color(token), line * look.scale, Qt::SolidLine, Qt::RoundCap));
        for (const QPointF along : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)})
            painter.drawLine(middle + along * gap, middle + along * arm);
    }
}

void ChartView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const ViewFrame now = frame();
    const ChartPointer pointer = pointerAt(event->position(), event->modifiers());
    for (ChartLayer* layer : Reversed(m_layers))
        if (layer->doubleClick(pointer, now)) {
            update();
            return;
        }
    const QPointF middle(width() / 2.0, height() / 2.0);
    panBy(middle - event->position());
}

void ChartView::contextMenuEvent(QContextMenuEvent* event)
{
    stopGliding();
    const QPointF at = event->reason() == QContextMenuEvent::Keyboard
        ? m_pointer.value_or(QPointF(width() / 2.0, height() / 2.0))
        : QPointF(event->pos());
    emit menuRequested(pointerAt(at, event->modifiers()));
}

void ChartView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() == m_holdTimer.timerId()) {
        m_holdTimer.stop();
        if (m_pressedAt && !m_moved) {
            const QPointF at = *m_pressedAt;
            m_dragFrom.reset(); // the release is no click any more
            if (m_pressedLayer)
                std::exchange(m_pressedLayer, nullptr)->cancel();
            emit menuRequested(pointerAt(at));
        }
    } else if (event->timerId() == m_glideTimer.timerId()) {
        constexpr double friction = 0.9; // of the speed that is left after each step
        constexpr double slowest = 0.02;
        const double passed = static_cast<double>(m_sinceMove.restart());
        m_speed *= std::pow(friction, passed / glideStep);
        if (std::hypot(m_speed.x(), m_speed.y()) < slowest)
            stopGliding();
        else
            panBy(m_speed * passed);
    } else {
        QWidget::timerEvent(event);
    }
}

void ChartView::glide()
{
    constexpr qint64 rest = 60; // milliseconds without a move: the hand had stopped
    constexpr double slowest = 0.2;
    if (m_sinceMove.elapsed() > rest || std::hypot(m_speed.x(), m_speed.y()) < slowest)
        return;
    m_sinceMove.start();
    m_glideTimer.start(glideStep, Qt::PreciseTimer, this);
}

void ChartView::stopGliding()
{
    m_glideTimer.stop();
    m_speed = {};
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
    stopGliding();
    const auto pan = [this](QPointF by) {
        panBy(by);
        pointWithKeys();
    };
    switch (event->key()) {
    case Qt::Key_Escape:
        for (ChartLayer* layer : Reversed(m_layers))
            if (layer->cancel()) {
                m_pressedLayer = nullptr;
                update();
                return;
            }
        return QWidget::keyPressEvent(event);
    case Qt::Key_Left:
        return pan({step, 0});
    case Qt::Key_Right:
        return pan({-step, 0});
    case Qt::Key_Up:
        return pan({0, step});
    case Qt::Key_Down:
        return pan({0, -step});
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
            m_holdTimer.stop();
            const QPointF middle = mapFromGlobal(pinch->centerPoint());
            if (pinch->state() == Qt::GestureStarted)
                m_pinchScale = m_scale;
            if (pinch->changeFlags().testFlag(QPinchGesture::CenterPointChanged))
                panBy(pinch->centerPoint() - pinch->lastCenterPoint());
            // From the scale it began with: whole scales would swallow the steps of a slow pinch.
            if (pinch->changeFlags().testFlag(QPinchGesture::ScaleFactorChanged))
                zoomAt(middle, m_scale * pinch->totalScaleFactor() / m_pinchScale);
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
