#pragma once

#include "app/ChartHost.h"
#include "weather/Mail.h"

#include <QDialog>

#include <optional>
#include <stop_token>

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace kelvox {

/// Asks a service for forecasts of the waters in view by e-mail; the mail is shown before it goes.
class GribRequestDialog final : public QDialog {
    Q_OBJECT
public:
    GribRequestDialog(ChartHost& host, QWidget* parent);
    ~GribRequestDialog() override;

private:
    [[nodiscard]] std::optional<Mail> compose() const;
    void refresh();
    void openInMailProgram();
    void sendDirectly();

    ChartHost& m_host;
    QComboBox* m_kind;
    QLineEdit* m_password;
    QPlainTextEdit* m_mail;
    QLabel* m_message;
    QPushButton* m_open;
    QPushButton* m_send;
    std::stop_source m_sending; ///< closing the dialog gives the mail up
};

} // namespace kelvox
