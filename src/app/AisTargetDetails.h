#pragma once

#include "app/ChartHost.h"

#include <QLabel>
#include <QWidget>

#include <map>

class QGridLayout;

namespace kelvox {

/// All that is known of the selected target, kept up to date.
class AisTargetDetails final : public QWidget {
    Q_OBJECT
public:
    AisTargetDetails(ChartHost& host, QWidget* parent);
    [[nodiscard]] QString title() const; ///< the target's name

protected:
    void showEvent(QShowEvent* event) override;

private:
    void refresh();
    void setRow(const char* key, const QString& value, const char* role = "");

    ChartHost& m_host;
    QGridLayout* m_grid;
    QLabel* m_name;
    std::map<std::string, std::pair<QLabel*, QLabel*>> m_rows;
};

/// "12 s", "3 min": how long ago a report came.
[[nodiscard]] QString ageText(double seconds);

} // namespace kelvox
