#pragma once

#include "app/ChartHost.h"
#include "app/ViewHistory.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

namespace kelvox {

/// Keeps the views of a window: the way back to those before, and the last one in the settings, so
/// that it outlives a program that is killed.
class ViewKeeper final : public QObject {
    Q_OBJECT
public:
    explicit ViewKeeper(ChartHost& host);

    void back();
    void forward();

private:
    void visit();
    void remember();
    void show(const ViewHistory::View& view);
    [[nodiscard]] bool isFollowing() const;

    ChartHost& m_host;
    ViewHistory m_history;
    QTimer m_rest; ///< until the view counts as one that was looked at
    QElapsedTimer m_sinceRemembered;
};

} // namespace kelvox
