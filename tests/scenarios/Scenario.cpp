#include "scenarios/Scenario.h"

#include "base/Folders.h"

#include <QApplication>
#include <QDir>
#include <QSet>
#include <QTimer>

namespace kelvox {

Scenario::Scenario()
{
    S52Model::setFolders({folders::applicationResources(), folder() / "data"});
}

Scenario::~Scenario()
{
    m_window.reset();
    m_program.reset();
}

void Scenario::startIn(const std::filesystem::path& home)
{
    m_window.reset();
    m_program.reset();
    m_program =
        std::make_unique<Program>(Program::Places{.configuration = home / "config",
                                                  .data = home / "data",
                                                  .cache = home / "cache",
                                                  .state = home / "state",
                                                  .resources = folders::applicationResources()});
    m_window = std::make_unique<MainWindow>(*m_program);
    m_window->show();
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
}

void Scenario::start(const std::vector<std::filesystem::path>& charts)
{
    startEmpty();
    if (charts.empty())
        m_window->openDemo();
    else
        m_window->openFiles(charts);
    waitForPicture();
}

void Scenario::quit()
{
    m_window->close();
    m_window.reset();
    m_program.reset();
}

void Scenario::adoptWindow()
{
    (void)m_window.release();
    for (QWidget* top : QApplication::topLevelWidgets())
        if (auto* found = qobject_cast<MainWindow*>(top); found && found->isVisible()) {
            found->setAttribute(Qt::WA_DeleteOnClose, false);
            m_window.reset(found);
        }
    ASSERT_TRUE(m_window);
}

QWidget* Scenario::find(const QString& objectName)
{
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top->objectName() == objectName)
            return top;
        if (auto* found = top->findChild<QWidget*>(objectName))
            return found;
    }
    ADD_FAILURE() << "no widget " << objectName.toStdString();
    return nullptr;
}

void Scenario::click(const QString& objectName)
{
    QWidget* const widget = find(objectName);
    ASSERT_TRUE(widget && widget->isVisible()) << objectName.toStdString();
    QTest::mouseClick(widget, Qt::LeftButton);
}

void Scenario::type(const QString& objectName, const QString& words)
{
    QWidget* const widget = find(objectName);
    ASSERT_TRUE(widget);
    widget->setFocus();
    QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(widget, words);
}

void Scenario::key(Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    chart().setFocus();
    QTest::keyClick(&chart(), key, modifiers);
}

void Scenario::run(const std::string& command)
{
    QAction* const action = window().commands().action(command);
    ASSERT_TRUE(action) << command;
    action->trigger();
}

QPoint Scenario::at(Position position)
{
    const ViewFrame frame = chart().frame();
    const Point p = frame.pixelOf(frame.view.positionToPoint(position));
    return (QPointF(p.x, p.y) / frame.pixelsPerPoint).toPoint();
}

void Scenario::clickChart(QPoint point, Qt::MouseButton button)
{
    QTest::mouseClick(&chart(), button, {}, point);
}

void Scenario::dragChart(QPoint from, QPoint to)
{
    QTest::mousePress(&chart(), Qt::LeftButton, {}, from);
    constexpr int steps = 8;
    for (int i = 1; i <= steps; ++i) {
        const QPointF point = QPointF(from) + QPointF(to - from) * i / steps;
        QMouseEvent move(QEvent::MouseMove, point, chart().mapToGlobal(point), Qt::NoButton,
                         Qt::LeftButton, {});
        QApplication::sendEvent(&chart(), &move);
    }
    QTest::mouseRelease(&chart(), Qt::LeftButton, {}, to);
}

void Scenario::waitFor(const std::function<bool()>& condition, const char* what,
                       std::chrono::milliseconds atMost)
{
    EXPECT_TRUE(QTest::qWaitFor(condition, static_cast<int>(atMost.count())))
        << "never came: " << what;
}

void Scenario::waitForPicture()
{
    // A picture of the charts, not only of the empty scene.
    waitFor([this] { return !chart().scene()->cells.empty(); }, "charts");
    waitFor([this] { return chart().showsWhatWasAskedFor(); }, "the chart's picture");
}

QImage Scenario::shot(const QString& name)
{
    return shot(name, window());
}

QImage Scenario::shot(const QString& name, QWidget& of)
{
    QApplication::processEvents(); // what is to be laid out is laid out
    const QImage picture = of.grab().toImage();
    const QString folder = qEnvironmentVariable("KELVOX_SCREENSHOTS");
    if (!folder.isEmpty()) {
        QDir().mkpath(folder);
        EXPECT_TRUE(picture.save(folder + QLatin1Char('/') + name + QStringLiteral(".png")));
    }
    return picture;
}

void Scenario::inDialog(const std::function<void()>& open,
                        const std::function<void(QWidget&)>& then)
{
    bool came = false;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        QWidget* popup = QApplication::activePopupWidget();
        QWidget* const top = popup ? popup : QApplication::activeModalWidget();
        if (!top || !top->isVisible())
            return;
        look.stop();
        came = true;
        then(*top);
        top->close();
    });
    look.start(std::chrono::milliseconds(20));
    open();
    EXPECT_TRUE(came) << "nothing was opened";
}

double Scenario::brighterThan(const QImage& picture, int grey)
{
    std::size_t bright = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            bright += qGray(picture.pixel(x, y)) > grey ? 1 : 0;
    return static_cast<double>(bright) / (static_cast<double>(picture.width()) * picture.height());
}

int Scenario::colorCount(const QImage& picture)
{
    QSet<QRgb> colors;
    for (int y = 0; y < picture.height(); y += 2)
        for (int x = 0; x < picture.width(); x += 2)
            colors.insert(picture.pixel(x, y));
    return static_cast<int>(colors.size());
}

} // namespace kelvox
