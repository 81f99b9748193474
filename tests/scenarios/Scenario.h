#pragma once

#include "app/MainWindow.h"
#include "app/Program.h"
#include "support/TemporaryFolder.h"

#include <QImage>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace kelvox {

/// The whole program in folders of its own, used as a person would: by mouse, keys and eyes.
///
/// Each case runs in a process of its own (the user's records are shared instances). Pictures go to
/// the folder KELVOX_SCREENSHOTS where that is set.
class Scenario : public testing::Test {
protected:
    Scenario();
    ~Scenario() override;

    /// Starts the program, or starts it again with what it kept. By default on the demo charts.
    void start(const std::vector<std::filesystem::path>& charts = {});
    void startEmpty() { startIn(folder()); } ///< without any charts
    void startIn(const std::filesystem::path& home); ///< the same with what lies elsewhere
    void quit(); ///< as the user does
    void adoptWindow(); ///< the one that has taken the place of that which is gone

    [[nodiscard]] Program& program() { return *m_program; }
    [[nodiscard]] MainWindow& window() { return *m_window; }
    [[nodiscard]] ChartView& chart() { return m_window->chart(); }

    /// The widget of an object name, anywhere in the program's windows; a failure when missing.
    [[nodiscard]] QWidget* find(const QString& objectName);
    template <class Widget> [[nodiscard]] Widget* find(const QString& objectName)
    {
        auto* widget = qobject_cast<Widget*>(find(objectName));
        if (!widget)
            ADD_FAILURE() << objectName.toStdString() << " is of another kind";
        return widget;
    }
    void click(const QString& objectName);
    void type(const QString& objectName, const QString& words);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}); ///< to the chart
    void run(const std::string& command); ///< by the key or menu of that name

    /// Widget point of a position on the chart.
    [[nodiscard]] QPoint at(Position position);
    void clickChart(QPoint point, Qt::MouseButton button = Qt::LeftButton);
    void dragChart(QPoint from, QPoint to);

    /// Runs the event loop until it holds; a failure after the time.
    void waitFor(const std::function<bool()>& condition, const char* what,
                 std::chrono::milliseconds atMost = std::chrono::seconds(20));
    void waitForPicture(); ///< until the chart's picture shows what was asked for last

    /// Takes the window's picture and keeps it under the name.
    QImage shot(const QString& name);
    /// The same of a dialog or menu.
    QImage shot(const QString& name, QWidget& of);
    /// The dialog of a kind that is open; a failure when there is none.
    template <class Window> [[nodiscard]] Window* openDialog()
    {
        for (QWidget* top : QApplication::topLevelWidgets())
            if (auto* found = qobject_cast<Window*>(top); found && found->isVisible())
                return found;
        ADD_FAILURE() << "no such dialog";
        return nullptr;
    }
    /// Does what opens a dialog or menu that runs an event loop of its own, and `then` in there.
    void inDialog(const std::function<void()>& open, const std::function<void(QWidget&)>& then);
    /// The share of pixels that are brighter than a grey value.
    [[nodiscard]] static double brighterThan(const QImage& picture, int grey);
    [[nodiscard]] static int colorCount(const QImage& picture);

    [[nodiscard]] const std::filesystem::path& folder() const { return m_folder.path(); }

private:
    TemporaryFolder m_folder;
    std::unique_ptr<Program> m_program;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace kelvox
