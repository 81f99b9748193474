#pragma once

#include "connections/MonitorLog.h"

#include <QAbstractListModel>
#include <QDialog>
#include <QTimer>

class QLabel;
class QLineEdit;
class QListView;
class QPushButton;

namespace kelvox {

class Program;

/// The lines of a monitor log that hold the filter's words, as of the last refresh.
class MonitorModel final : public QAbstractListModel {
    Q_OBJECT
public:
    explicit MonitorModel(MonitorLog& log, QObject* parent = nullptr);
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    void setFilter(const QString& words);
    [[nodiscard]] const std::string& filter() const { return m_filter; }
    /// False when nothing came since.
    bool refresh();

private:
    MonitorLog& m_log;
    std::string m_filter;
    std::vector<std::string> m_lines;
    std::uint64_t m_revision = ~0ULL;
};

/// What goes over a connection, line by line: paused, filtered, saved.
class MonitorDialog final : public QDialog {
    Q_OBJECT
public:
    MonitorDialog(Program& program, MonitorLog& log, const QString& title, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    void save();

    MonitorLog& m_log;
    MonitorModel* m_model;
    QListView* m_list;
    QLineEdit* m_filter;
    QPushButton* m_pause;
    QLabel* m_state;
    QTimer m_timer;
};

} // namespace kelvox
