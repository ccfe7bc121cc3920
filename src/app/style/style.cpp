#include "app/style/style.h"

#include "app/style/icons.h"
#include "app/style/metrics.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPainter>
#include <QPushButton>
#include <QStyleOption>
#include <QTreeView>

namespace tidwen {

namespace {

constexpr double controlRadius = 7;
constexpr int controlHeight = 30;
constexpr int openingTime = 150; ///< milliseconds, for the tiers of a tree
constexpr int focusWidth = 2;    ///< room that controls leave around themselves for the ring

constexpr const char* primaryMark = "primary"; ///< a property

/// The ring appears for people who work by keyboard.
bool showsFocus(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus)
           && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

} // namespace

Style::Style(Appearance appearance) : QProxyStyle(QStringLiteral("fusion")), colors_(appearance) {}

void Style::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const {
    switch (element) {
    case PE_PanelButtonCommand:
        return drawPanel(*option, *painter, isPrimary(widget), showsFocus(*option));
    case PE_PanelButtonTool:
        return drawPanel(*option, *painter, false, showsFocus(*option));
    case PE_PanelLineEdit: {
        QStyleOption field = *option; // a field is always "sunken", and is not pressed
        field.state.setFlag(State_Sunken, false).setFlag(State_MouseOver, false);
        return drawPanel(field, *painter, false, option->state.testFlag(State_HasFocus));
    }
    case PE_FrameLineEdit:
    case PE_FrameFocusRect: // each control draws it in its own shape
    case PE_FrameDefaultButton:
        return;
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        return drawCheckBox(*option, *painter);
    case PE_IndicatorArrowDown: { // of a button with a menu
        const int size = scaled(14);
        const QPoint corner = option->rect.center() - QPoint(size / 2, size / 2);
        return paintIcon(*painter, QRect(corner, QSize(size, size)), QStringLiteral("chevron-down"),
                         colors_[Role::second]);
    }
    case PE_PanelMenu:
    case PE_FrameMenu:
        painter->fillRect(option->rect, colors_[Role::surface]);
        painter->setPen(colors_[Role::line]);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void Style::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                        const QWidget* widget) const {
    if (element == CE_PushButtonLabel && isPrimary(widget)) {
        auto button = *qstyleoption_cast<const QStyleOptionButton*>(option);
        button.palette.setColor(QPalette::ButtonText, colors_[Role::onAccent]);
        return QProxyStyle::drawControl(element, &button, painter, widget);
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void Style::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                               const QWidget* widget) const {
    if (control != CC_ScrollBar) return QProxyStyle::drawComplexControl(control, option, painter, widget);
    const auto handle =
        proxy()->subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget).adjusted(2, 2, -2, -2);
    fillRounded(*painter, handle,
                colors_[option->state.testFlag(State_MouseOver) ? Role::second : Role::line], 3);
}

QRect Style::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                            const QWidget* widget) const {
    if (control != CC_ScrollBar) return QProxyStyle::subControlRect(control, option, part, widget);
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (!bar || part == SC_ScrollBarGroove) return option->rect;
    if (part != SC_ScrollBarSlider) return {}; // no arrows
    const bool isUpright = bar->orientation == Qt::Vertical;
    const int length = isUpright ? option->rect.height() : option->rect.width();
    const qint64 range = static_cast<qint64>(bar->maximum) - bar->minimum;
    const auto share =
        range > 0 ? length * static_cast<qint64>(bar->pageStep) / (range + bar->pageStep) : length;
    const int size = qBound(qMin(28, length), static_cast<int>(share), length);
    const int place = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, length - size,
                                              bar->upsideDown);
    return isUpright ? QRect(0, place, option->rect.width(), size)
                     : QRect(place, 0, size, option->rect.height());
}

int Style::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_ScrollBarExtent:
        return 10;
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_SmallIconSize:
    case PM_LineEditIconSize:
        return scaled(16);
    case PM_DefaultFrameWidth:
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuButtonIndicator:
        return scaled(18);
    case PM_ButtonMargin:
        return scaled(20);
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_ButtonDefaultIndicator:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize Style::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                              const QWidget* widget) const {
    auto size = QProxyStyle::sizeFromContents(type, option, contents, widget);
    if (type == CT_PushButton || type == CT_LineEdit || type == CT_ToolButton || type == CT_ComboBox)
        size.setHeight(qMax(size.height(), scaled(controlHeight) + 2 * focusWidth));
    return size;
}

/// Every menu bar asks for the mark of what does not fit into it; the toolkit's is a picture file, for which
/// it loads the readers of all formats.
QIcon Style::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const {
    if (which == SP_ToolBarHorizontalExtensionButton)
        return controlIcon(QStringLiteral("chevron-right"), Role::text);
    return QProxyStyle::standardIcon(which, option, widget);
}

int Style::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                     QStyleHintReturn* data) const {
    switch (hint) {
    case SH_Widget_Animation_Duration:
        return qobject_cast<const QTreeView*>(widget) ? openingTime : 0; // of those that move at all
    case SH_ScrollBar_Transient:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_UnderlineShortcut:
    case SH_EtchDisabledText:
    case SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

void Style::drawPanel(const QStyleOption& option, QPainter& painter, bool isPrimary, bool isFocused) const {
    const bool isEnabled = option.state.testFlag(State_Enabled);
    auto fill = colors_[isPrimary ? Role::accent : Role::surface];
    if (option.state.testFlag(State_On))
        fill = colors_[Role::chosen];
    else if (option.state.testFlag(State_Sunken))
        fill = fill.darker(108);
    else if (option.state.testFlag(State_MouseOver) && isEnabled && !isPrimary)
        fill = colors_[Role::hover];
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (isPrimary && !isEnabled) painter.setOpacity(0.45);
    const auto frame = QRectF(option.rect).adjusted(focusWidth, focusWidth, -focusWidth, -focusWidth);
    painter.setBrush(fill);
    painter.setPen(isPrimary ? QPen(Qt::NoPen) : QPen(colors_[Role::line], 1));
    painter.drawRoundedRect(frame.adjusted(.5, .5, -.5, -.5), controlRadius, controlRadius);
    if (isFocused) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors_[Role::accent], focusWidth));
        painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), controlRadius + 1,
                                controlRadius + 1);
    }
    painter.restore();
}

void Style::drawCheckBox(const QStyleOption& option, QPainter& painter) const {
    const bool isOn = option.state.testFlag(State_On);
    const bool isMixed = option.state.testFlag(State_NoChange);
    const auto box = QRectF(option.rect).adjusted(1, 1, -1, -1);
    painter.save();
    if (!option.state.testFlag(State_Enabled)) painter.setOpacity(0.4);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(isOn || isMixed ? QPen(Qt::NoPen) : QPen(colors_[Role::second], 1.2));
    painter.setBrush(colors_[isOn || isMixed ? Role::accent : Role::surface]);
    painter.drawRoundedRect(box, 4, 4);
    painter.setPen(
        QPen(colors_[Role::onAccent], box.width() / 7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(box.topLeft());
    painter.scale(box.width() / 14, box.width() / 14);
    painter.setPen(QPen(colors_[Role::onAccent], 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (isMixed)
        painter.drawLine(QPointF(4, 7), QPointF(10, 7));
    else if (isOn)
        painter.drawPolyline(QPolygonF{{3.6, 7.2}, {6, 9.6}, {10.6, 4.6}});
    painter.restore();
}

void makePrimary(QPushButton& button) {
    button.setProperty(primaryMark, true);
}

bool isPrimary(const QWidget* button) {
    return button && button->property(primaryMark).toBool();
}

const Colors& colors() {
    static const Colors light(Appearance::light);
    const auto* style = dynamic_cast<const Style*>(QApplication::style());
    return style ? style->colors() : light;
}

void dress(Appearance appearance, double textScale) {
#ifdef Q_OS_MACOS
    QFont body = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
#else
    QFont body(QStringLiteral("Inter"));
    body.setStyleHint(QFont::SansSerif);
#endif
    body.setPixelSize(qRound(designTextSize * textScale));
    QApplication::setFont(body);
    wear(appearance);
}

void wear(Appearance appearance) {
    auto* style = new Style(appearance); // the application owns it
    QApplication::setStyle(style);
    QApplication::setPalette(style->colors().palette());
}

void fillRounded(QPainter& painter, const QRectF& place, const QColor& color, double radius) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(place, radius, radius);
    painter.restore();
}

} // namespace tidwen
