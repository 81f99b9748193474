#include "app/nav/ProgressCard.h"

#include "app/Text.h"
#include "app/Theme.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace kelvox {

QWidget* makeProgressCard(const QString& label, const QObject* context,
                          const std::function<void()>& cancel)
{
    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, Theme::theme().px(8), 0);
    auto* words = new QLabel(label, content);
    words->setTextFormat(Qt::PlainText);
    words->setWordWrap(true);
    auto* bar = new QProgressBar(content);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setAccessibleName(label);
    auto* button = new QPushButton(text("NSCancel"), content);
    button->setMinimumHeight(Theme::theme().px(40));
    QObject::connect(button, &QPushButton::clicked, context, cancel);
    rows->addWidget(words);
    rows->addWidget(bar);
    rows->addWidget(button, 0, Qt::AlignRight);
    return content;
}

} // namespace kelvox
