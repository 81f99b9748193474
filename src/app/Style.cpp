#include "app/Style.h"

#include "app/Theme.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QStyleOption>

#include <array>
#include <cmath>

namespace kelvox {

namespace {
constexpr const char* roleProperty = "role";
constexpr const char* edgesProperty = "edges";
constexpr const char* cardProperty = "card";

constexpr int fieldHeight = 40; // what a finger hits
constexpr int buttonHeight = 40;
constexpr int fieldPadding = 6;
constexpr int arrowWidth = 28;
constexpr int stepWidth = 32;

int px(double length)
{
    return Theme::theme().px(length);
}

bool has(const QStyleOption* option, QStyle::State state)
{
    return (option->state & state) == state;
}

/// Filled and bordered with corners of the design, crisp at every pixel ratio.
void drawBox(QPainter* painter, const QRect& rect, const QBrush& fill, const QColor& line,
             double radius = 4)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(fill);
    painter->setPen(line.isValid() ? QPen(line, 1) : QPen(Qt::NoPen));
    const double corner = px(radius);
    const QRectF box = line.isValid() ? QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5) : QRectF(rect);
    painter->drawRoundedRect(box, corner, corner);
    painter->restore();
}

/// The frame of what is typed into or chosen from.
void drawField(QPainter* painter, const QStyleOption* option, QPalette::ColorRole fill)
{
    const bool focus = has(option, QStyle::State_HasFocus);
    drawBox(painter, option->rect, option->palette.color(fill),
            option->palette.color(focus ? QPalette::Link : QPalette::Mid));
}

void drawStroke(QPainter* painter, const QColor& color, const QPolygonF& points, double width = 1.5)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(
        QPen(color, width * Theme::theme().scale(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(points);
    painter->restore();
}

/// An arrow head that points downwards, or upwards with a negative height.
void drawChevron(QPainter* painter, const QRect& rect, const QColor& color, double height = 4)
{
    const QPointF middle = QRectF(rect).center();
    const double h = height * Theme::theme().scale() / 2;
    const double w = std::abs(h) * 2;
    drawStroke(painter, color,
               {{middle.x() - w, middle.y() - h},
                {middle.x(), middle.y() + h},
                {middle.x() + w, middle.y() - h}});
}

QColor inkOf(const QStyleOption* option, QPalette::ColorRole role)
{
    return option->palette.color(
        has(option, QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled, role);
}

void drawPush(QPainter* painter, const QStyleOption* option)
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const bool lit =
        (option->state & (QStyle::State_Sunken | QStyle::State_On | QStyle::State_MouseOver))
        && has(option, QStyle::State_Enabled);
    const bool marked = has(option, QStyle::State_HasFocus)
        || (button && button->features & QStyleOptionButton::DefaultButton);
    drawBox(painter, option->rect,
            option->palette.color(lit ? QPalette::Highlight : QPalette::Button),
            option->palette.color(marked ? QPalette::Link : QPalette::Mid));
}

void drawTool(QPainter* painter, const QStyleOption* option)
{
    const bool lit =
        (option->state & (QStyle::State_Sunken | QStyle::State_On | QStyle::State_MouseOver))
        && has(option, QStyle::State_Enabled);
    const bool focus = has(option, QStyle::State_HasFocus);
    if (lit || focus)
        drawBox(painter, option->rect,
                lit ? option->palette.brush(QPalette::Highlight) : QBrush(Qt::NoBrush),
                focus ? option->palette.color(QPalette::Link) : QColor());
}

void drawCheck(QPainter* painter, const QStyleOption* option)
{
    const bool focus = has(option, QStyle::State_HasFocus);
    const bool on = has(option, QStyle::State_On);
    drawBox(painter, option->rect, option->palette.color(on ? QPalette::Highlight : QPalette::Base),
            option->palette.color(focus || on ? QPalette::Link : QPalette::PlaceholderText), 3);
    const QRectF r = option->rect;
    const auto at = [&](double x, double y) {
        return QPointF(r.left() + x * r.width(), r.top() + y * r.height());
    };
    const QColor ink = inkOf(option, QPalette::Text);
    if (on)
        drawStroke(painter, ink, {at(0.25, 0.52), at(0.43, 0.7), at(0.77, 0.3)}, 2);
    else if (has(option, QStyle::State_NoChange))
        drawStroke(painter, ink, {at(0.25, 0.5), at(0.75, 0.5)}, 2);
}

void drawRadio(QPainter* painter, const QStyleOption* option)
{
    const bool on = has(option, QStyle::State_On);
    const bool focus = has(option, QStyle::State_HasFocus);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(option->palette.color(QPalette::Base));
    painter->setPen(
        option->palette.color(on || focus ? QPalette::Link : QPalette::PlaceholderText));
    const QRectF ring = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->drawEllipse(ring);
    if (on) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(inkOf(option, QPalette::Text));
        const double inset = ring.width() * 0.28;
        painter->drawEllipse(ring.adjusted(inset, inset, -inset, -inset));
    }
    painter->restore();
}

/// The lines or the card of a frame that asked for them.
void drawEdges(QPainter* painter, const QStyleOption* option, const QWidget& frame)
{
    const QColor line = option->palette.color(QPalette::Mid);
    if (frame.property(cardProperty).toBool()) {
        drawBox(painter, option->rect, option->palette.color(QPalette::Window), line, 8);
        return;
    }
    const Qt::Edges edges(frame.property(edgesProperty).toInt());
    const QRect r = option->rect;
    if (edges & Qt::TopEdge)
        painter->fillRect(QRect(r.left(), r.top(), r.width(), 1), line);
    if (edges & Qt::BottomEdge)
        painter->fillRect(QRect(r.left(), r.bottom(), r.width(), 1), line);
    if (edges & Qt::LeftEdge)
        painter->fillRect(QRect(r.left(), r.top(), 1, r.height()), line);
    if (edges & Qt::RightEdge)
        painter->fillRect(QRect(r.right(), r.top(), 1, r.height()), line);
}

void drawSlider(QPainter* painter, const QStyleOption* option, const QRect& handle)
{
    const bool across = has(option, QStyle::State_Horizontal);
    const int thick = px(4);
    const QPoint middle = option->rect.center();
    const QRect groove = across
        ? QRect(option->rect.left(), middle.y() - thick / 2, option->rect.width(), thick)
        : QRect(middle.x() - thick / 2, option->rect.top(), thick, option->rect.height());
    drawBox(painter, groove, option->palette.color(QPalette::Mid), {}, 2);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(inkOf(option, QPalette::Link));
    painter->setPen(has(option, QStyle::State_HasFocus)
                        ? QPen(option->palette.color(QPalette::Text), px(2))
                        : QPen(Qt::NoPen));
    const double radius = px(9);
    painter->drawEllipse(QRectF(handle).center(), radius, radius);
    painter->restore();
}

void drawSpin(QPainter* painter, const QStyleOptionSpinBox* spin, const QRect& down,
              const QRect& up)
{
    if (spin->frame)
        drawField(painter, spin, QPalette::Base);
    if (spin->buttonSymbols == QAbstractSpinBox::NoButtons)
        return;
    const auto drawStep = [&](const QRect& rect, QStyle::SubControl part,
                              QAbstractSpinBox::StepEnabledFlag enabled) {
        const bool possible = spin->stepEnabled & enabled && has(spin, QStyle::State_Enabled);
        if (possible && spin->activeSubControls & part)
            painter->fillRect(rect.adjusted(1, 1, -1, -1),
                              spin->palette.brush(QPalette::Highlight));
        const QColor ink =
            spin->palette.color(possible ? QPalette::Active : QPalette::Disabled, QPalette::Text);
        const QPointF middle = QRectF(rect).center();
        const double half = px(5);
        drawStroke(painter, ink,
                   {{middle.x() - half, middle.y()}, {middle.x() + half, middle.y()}});
        if (part == QStyle::SC_SpinBoxUp)
            drawStroke(painter, ink,
                       {{middle.x(), middle.y() - half}, {middle.x(), middle.y() + half}});
    };
    drawStep(down, QStyle::SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled);
    drawStep(up, QStyle::SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled);
}

QRect scrollPart(const QStyleOptionSlider& bar, QStyle::SubControl part, int shortest)
{
    const bool across = bar.orientation == Qt::Horizontal;
    const int length = across ? bar.rect.width() : bar.rect.height();
    const auto range = static_cast<qint64>(bar.maximum) - bar.minimum;
    int size = length;
    if (range > 0)
        size = std::clamp(static_cast<int>(static_cast<qint64>(bar.pageStep) * length
                                           / (range + std::max(bar.pageStep, 1))),
                          std::min(shortest, length), length);
    const int start = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                      length - size, bar.upsideDown);
    const auto span = [&](int from, int to) {
        return across ? QRect(bar.rect.left() + from, bar.rect.top(), to - from, bar.rect.height())
                      : QRect(bar.rect.left(), bar.rect.top() + from, bar.rect.width(), to - from);
    };
    switch (part) {
    case QStyle::SC_ScrollBarSlider:
        return span(start, start + size);
    case QStyle::SC_ScrollBarSubPage:
        return span(0, start);
    case QStyle::SC_ScrollBarAddPage:
        return span(start + size, length);
    case QStyle::SC_ScrollBarGroove:
        return bar.rect;
    default:
        return {}; // no arrows at its ends
    }
}

QRect comboPart(const QRect& rect, QStyle::SubControl part)
{
    switch (part) {
    case QStyle::SC_ComboBoxArrow:
        return rect.adjusted(rect.width() - px(arrowWidth), 0, 0, 0);
    case QStyle::SC_ComboBoxEditField:
        return rect.adjusted(px(fieldPadding), 1, -px(arrowWidth), -1);
    default:
        return rect;
    }
}

QRect spinPart(const QStyleOptionSpinBox& spin, QStyle::SubControl part)
{
    const QRect& rect = spin.rect;
    const int width = spin.buttonSymbols == QAbstractSpinBox::NoButtons ? 0 : px(stepWidth);
    switch (part) {
    case QStyle::SC_SpinBoxUp:
        return {rect.right() + 1 - width, rect.top(), width, rect.height()};
    case QStyle::SC_SpinBoxDown:
        return {rect.right() + 1 - 2 * width, rect.top(), width, rect.height()};
    case QStyle::SC_SpinBoxEditField:
        return rect.adjusted(px(fieldPadding), 1, -2 * width - (width == 0 ? px(fieldPadding) : 0),
                             -1);
    default:
        return rect;
    }
}

TextRole roleNamed(const QString& name)
{
    return name == QLatin1String("heading") ? TextRole::Heading
        : name == QLatin1String("dim")      ? TextRole::Dim
        : name == QLatin1String("warn")     ? TextRole::Warning
        : name == QLatin1String("bad")      ? TextRole::Bad
                                            : TextRole::Plain;
}

const char* nameOf(TextRole role)
{
    constexpr std::array names{"", "heading", "dim", "warn", "bad"};
    return names.at(static_cast<std::size_t>(role));
}

void dress(QLabel& label)
{
    const QString name = label.property(roleProperty).toString();
    const TextRole role =
        label.objectName() == QLatin1String("panelTitle") ? TextRole::Heading : roleNamed(name);
    if (role == TextRole::Plain && name.isNull())
        return; // whoever made it may have given it a font and a colour of its own
    label.setForegroundRole(role == TextRole::Dim           ? QPalette::PlaceholderText
                                : role == TextRole::Warning ? QPalette::LinkVisited
                                : role == TextRole::Bad     ? QPalette::BrightText
                                                            : QPalette::WindowText);
    QFont font = QApplication::font();
    if (role == TextRole::Heading) {
        font.setPixelSize(px(15));
        font.setWeight(QFont::DemiBold);
    } else if (role == TextRole::Dim) {
        font.setPixelSize(px(12));
    }
    label.setFont(font);
}
} // namespace

void setTextRole(QLabel& label, TextRole role)
{
    const QString name = QString::fromLatin1(nameOf(role));
    if (label.property(roleProperty).toString() == name && !name.isNull())
        return;
    label.setProperty(roleProperty, name);
    dress(label);
}

void setEdges(QWidget& frame, Qt::Edges edges)
{
    frame.setProperty(edgesProperty, static_cast<int>(edges));
}

void makeCard(QWidget& frame)
{
    frame.setProperty(cardProperty, true);
    frame.setAutoFillBackground(false); // its corners show the chart
}

Style::Style()
    : QProxyStyle(QStringLiteral("Fusion"))
{
}

void Style::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (auto* label = qobject_cast<QLabel*>(widget))
        dress(*label);
    else if (auto* view = qobject_cast<QAbstractItemView*>(widget))
        view->viewport()->setBackgroundRole(QPalette::Window);
}

void Style::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const
{
    switch (element) {
    case PE_PanelLineEdit:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame && frame->lineWidth > 0) // within a spin or combo box that draws the frame
            drawField(painter, option, QPalette::Base);
        return;
    case PE_FrameLineEdit:
        return;
    case PE_PanelButtonCommand:
        drawPush(painter, option);
        return;
    case PE_PanelButtonTool:
        drawTool(painter, option);
        return;
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        drawCheck(painter, option);
        return;
    case PE_IndicatorRadioButton:
        drawRadio(painter, option);
        return;
    case PE_FrameFocusRect:
        // The controls draw theirs; in a list it is seen while the keys are used.
        if (widget && widget->inherits("QAbstractItemView")
            && has(option, State_KeyboardFocusChange))
            drawBox(painter, option->rect, Qt::NoBrush, option->palette.color(QPalette::Link), 0);
        return;
    case PE_PanelMenu:
    case PE_FrameMenu:
        drawBox(painter, option->rect, option->palette.color(QPalette::Window),
                option->palette.color(QPalette::Mid), 0);
        return;
    case PE_PanelTipLabel:
        drawBox(painter, option->rect, option->palette.color(QPalette::ToolTipBase),
                option->palette.color(QPalette::Mid), 0);
        return;
    case PE_Frame:
        if (widget
            && (widget->inherits("QTextEdit") || widget->inherits("QPlainTextEdit")
                || widget->inherits("QComboBoxPrivateContainer") || widget->isWindow()))
            drawBox(
                painter, option->rect, Qt::NoBrush,
                option->palette.color(has(option, State_HasFocus) ? QPalette::Link : QPalette::Mid),
                0);
        return;
    case PE_FrameTabWidget:
        painter->fillRect(QRect(option->rect.topLeft(), QSize(option->rect.width(), 1)),
                          option->palette.color(QPalette::Mid));
        return;
    case PE_FrameTabBarBase:
    case PE_PanelItemViewRow:
    case PE_PanelScrollAreaCorner: // else a little box that looks like something to click
        return;
    case PE_IndicatorHeaderArrow:
        if (const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
            header && header->sortIndicator != QStyleOptionHeader::None)
            drawChevron(painter, option->rect, option->palette.color(QPalette::Text),
                        header->sortIndicator == QStyleOptionHeader::SortUp ? -4 : 4);
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Style::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                        const QWidget* widget) const
{
    switch (element) {
    case CE_ShapedFrame:
        if (widget
            && (widget->property(cardProperty).isValid()
                || widget->property(edgesProperty).isValid()))
            drawEdges(painter, option, *widget);
        else
            QProxyStyle::drawControl(element, option, painter, widget);
        return;
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
        painter->fillRect(option->rect, option->palette.color(QPalette::Window));
        painter->fillRect(
            QRect(option->rect.left(), option->rect.bottom(), option->rect.width(), 1),
            option->palette.color(QPalette::Mid));
        return;
    case CE_HeaderLabel:
        if (const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option)) {
            QStyleOptionHeader dim = *header;
            dim.palette.setColor(QPalette::ButtonText,
                                 option->palette.color(QPalette::PlaceholderText));
            QProxyStyle::drawControl(element, &dim, painter, widget);
        }
        return;
    case CE_TabBarTabShape:
        if (has(option, State_Selected))
            painter->fillRect(
                QRect(option->rect.left(), option->rect.bottom() - 1, option->rect.width(), 2),
                option->palette.color(QPalette::Link));
        return;
    case CE_ProgressBarGroove:
        drawBox(painter, option->rect, option->palette.color(QPalette::Base),
                option->palette.color(QPalette::Mid));
        return;
    case CE_ProgressBarLabel:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option))
            drawItemText(painter, option->rect, Qt::AlignCenter, option->palette,
                         has(option, State_Enabled), bar->text, QPalette::Text);
        return;
    case CE_Splitter:
        painter->fillRect(option->rect, option->palette.color(QPalette::Mid));
        return;
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void Style::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                               QPainter* painter, const QWidget* widget) const
{
    switch (control) {
    case CC_ScrollBar: {
        painter->fillRect(option->rect, option->palette.color(QPalette::Window));
        const int margin = px(2);
        const QRect handle = subControlRect(control, option, SC_ScrollBarSlider, widget)
                                 .adjusted(margin, margin, -margin, -margin);
        const bool lit = option->activeSubControls & SC_ScrollBarSlider;
        if (has(option, State_Enabled))
            drawBox(painter, handle,
                    option->palette.color(lit ? QPalette::PlaceholderText : QPalette::Mid), {});
        return;
    }
    case CC_Slider:
        drawSlider(painter, option, subControlRect(control, option, SC_SliderHandle, widget));
        return;
    case CC_SpinBox:
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option))
            drawSpin(painter, spin, spinPart(*spin, SC_SpinBoxDown), spinPart(*spin, SC_SpinBoxUp));
        return;
    case CC_ComboBox: {
        const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
        if (box && box->frame)
            drawField(painter, option,
                      has(option, State_MouseOver) && has(option, State_Enabled) && !box->editable
                          ? QPalette::Highlight
                          : QPalette::Base);
        drawChevron(painter, comboPart(option->rect, SC_ComboBoxArrow),
                    inkOf(option, QPalette::Text));
        return;
    }
    case CC_ToolButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option)) {
            proxy()->drawPrimitive(PE_PanelButtonTool, option, painter, widget);
            QStyleOptionToolButton label = *button;
            const int margin = px(2);
            label.rect = option->rect.adjusted(margin, margin, -margin, -margin);
            proxy()->drawControl(CE_ToolButtonLabel, &label, painter, widget);
        }
        return;
    default:
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QRect Style::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                            SubControl part, const QWidget* widget) const
{
    if (control == CC_ScrollBar) {
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option))
            return visualRect(option->direction, option->rect, scrollPart(*bar, part, px(40)));
    } else if (control == CC_ComboBox) {
        return visualRect(option->direction, option->rect, comboPart(option->rect, part));
    } else if (control == CC_SpinBox) {
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option))
            return visualRect(option->direction, option->rect, spinPart(*spin, part));
    }
    return QProxyStyle::subControlRect(control, option, part, widget);
}

QRect Style::subElementRect(SubElement element, const QStyleOption* option,
                            const QWidget* widget) const
{
    QRect rect = QProxyStyle::subElementRect(element, option, widget);
    if (element == SE_LineEditContents) {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth > 0)
            rect.adjust(px(fieldPadding), 0, -px(fieldPadding), 0);
    }
    return rect;
}

QSize Style::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                              const QWidget* widget) const
{
    QSize whole = QProxyStyle::sizeFromContents(type, option, size, widget);
    const auto atLeast = [](int height, int least) { return std::max(height, least); };
    switch (type) {
    case CT_PushButton:
        return {size.width() + 2 * px(16), atLeast(size.height(), px(buttonHeight))};
    case CT_ToolButton:
        return size + QSize(px(10), px(10));
    case CT_LineEdit:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame && frame->lineWidth > 0)
            return {size.width() + 2 * px(fieldPadding), atLeast(size.height(), px(fieldHeight))};
        return size;
    case CT_ComboBox:
        return {size.width() + px(fieldPadding + arrowWidth),
                atLeast(size.height() + 2, px(fieldHeight))};
    case CT_SpinBox: {
        const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
        const bool buttons = spin && spin->buttonSymbols != QAbstractSpinBox::NoButtons;
        return {size.width() + px(fieldPadding) + (buttons ? 2 * px(stepWidth) : px(fieldPadding)),
                atLeast(size.height() + 2, px(fieldHeight))};
    }
    case CT_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
            item && item->menuItemType == QStyleOptionMenuItem::Separator)
            return whole;
        return {whole.width() + px(20), atLeast(whole.height(), px(40))};
    case CT_ItemViewItem:
        if (widget && widget->inherits("QComboBoxListView"))
            return {whole.width(), px(buttonHeight)};
        return {whole.width(), whole.height() + px(8)};
    case CT_CheckBox:
    case CT_RadioButton:
    case CT_TabBarTab:
        return {whole.width(), atLeast(whole.height(), px(40))};
    default:
        return whole;
    }
}

QIcon Style::standardIcon(StandardPixmap picture, const QStyleOption* option,
                          const QWidget* widget) const
{
    QIcon icon = QProxyStyle::standardIcon(picture, option, widget);
    const Theme& theme = Theme::theme();
    if (theme.scheme() == ColorScheme::Day)
        return icon;
    QIcon dim;
    for (const int size : {16, 24, 32, 48}) {
        const QPixmap bright = icon.pixmap(size);
        if (bright.isNull())
            continue;
        QPixmap pixmap = bright;
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_Multiply);
        painter.fillRect(pixmap.rect(), theme.colors().text);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.drawPixmap(0, 0, bright);
        painter.end();
        dim.addPixmap(pixmap);
    }
    return dim;
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return px(12);
    case PM_ScrollBarSliderMin:
        return px(40);
    case PM_SliderLength:
        return px(20);
    case PM_SliderThickness:
    case PM_SliderControlThickness:
        return px(40);
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return px(18);
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return px(8);
    case PM_FocusFrameHMargin:
    case PM_HeaderMargin:
        return px(6);
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
    case PM_LineEditIconSize:
        return px(16);
    case PM_MenuVMargin:
        return px(4);
    case PM_DockWidgetTitleMargin:
        return px(6);
    case PM_DefaultFrameWidth:
        return 1;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int Style::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                     QStyleHintReturn* data) const
{
    switch (hint) {
    case SH_ComboBox_Popup: // a list below, not a menu over the field
    case SH_EtchDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_DockWidget_ButtonsHaveFrame:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

} // namespace kelvox
