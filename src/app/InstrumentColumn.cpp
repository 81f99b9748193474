#include "app/InstrumentColumn.h"

#include "app/Gauges.h"
#include "app/Style.h"
#include "app/Text.h"
#include "app/Theme.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace kelvox {

InstrumentColumn::InstrumentColumn(Program& program, QWidget* parent)
    : QFrame(parent)
{
    setObjectName(QStringLiteral("instrumentColumn"));
    setEdges(*this, Qt::LeftEdge);
    setAccessibleName(text("NSInstruments"));
    // More gauges than the window is high can be scrolled to.
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameShape(QFrame::NoFrame);
    auto* content = new QWidget(scroll);
    auto* rows = new QVBoxLayout(content);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(new GaugeStack(program, 1, content));
    rows->addStretch(1);
    scroll->setWidget(content);
    content->setAutoFillBackground(false);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(1, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(scroll, 1);
}

void InstrumentColumn::setFooter(QWidget* footer)
{
    layout()->addWidget(footer);
}

QSize InstrumentColumn::sizeHint() const
{
    const int width = Theme::theme().px(188);
    return {width, 2 * width};
}

} // namespace kelvox
