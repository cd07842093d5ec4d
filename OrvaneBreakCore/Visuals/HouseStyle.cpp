// SPDX-License-Identifier: GPL-3.0-or-later
#include "HouseStyle.h"

#include "Palette.h"

#include <QPainter>
#include <QPlainTextEdit>
#include <QStyleOption>

using namespace Qt::StringLiterals;

namespace {

constexpr qreal controlCornerRadius = 6;
constexpr int buttonHeight = 28;
constexpr int textFieldFrame = 3;
constexpr int textPadding = 4;

bool isDefaultButton(const QStyleOption &option)
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(&option);
    return button && button->features.testFlag(QStyleOptionButton::DefaultButton) &&
           option.state.testFlag(QStyle::State_Enabled);
}

/// The opacity of the shade over a control that is hovered, pressed or on.
float hoverOpacity(QStyle::State state)
{
    if (!state.testFlag(QStyle::State_Enabled))
        return 0;
    if (state & (QStyle::State_Sunken | QStyle::State_On))
        return 0.14F;
    return state.testFlag(QStyle::State_MouseOver) ? 0.06F : 0;
}

void paintBezel(QPainter &painter, const QStyleOption &option, const QWidget *widget)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF area = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
    const bool isDefault = isDefaultButton(option);
    const bool isDark = isDarkAppearance(option.palette);
    const QColor plain = isDark ? shade(option.palette, 0.1F) : QColor(Qt::white);
    painter.setPen(isDefault ? QPen(Qt::NoPen) : QPen(outline(option.palette, 0.22F), 1));
    painter.setBrush(isDefault ? breakTealFixed : plain);
    painter.drawRoundedRect(isDefault ? area.adjusted(-0.5, -0.5, 0.5, 0.5) : area, controlCornerRadius,
                            controlCornerRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade(option.palette, hoverOpacity(option.state)));
    painter.drawRoundedRect(area, controlCornerRadius, controlCornerRadius);
    if (widget)
        paintFocusRing(painter, *widget, QRectF(option.rect).adjusted(1, 1, -1, -1),
                       controlCornerRadius + 0.5, isDefault ? labelColor() : breakTeal());
    painter.restore();
}

void paintTextField(QPainter &painter, const QStyleOption &option)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool hasFocus = option.state.testFlag(QStyle::State_HasFocus);
    painter.setBrush(option.palette.base());
    // Text fields show the focus to users of the pointer as well.
    painter.setPen(hasFocus ? QPen(breakTeal().resolved(option.palette), 2)
                            : QPen(outline(option.palette, 0.25F), 1));
    const qreal inset = painter.pen().widthF() / 2;
    painter.drawRoundedRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset), controlCornerRadius,
                            controlCornerRadius);
    painter.restore();
}

void paintChevron(QPainter &painter, const QRect &area, const QPalette &palette)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(secondaryLabelColor().resolved(palette), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF middle = QRectF(area).center();
    const QPointF points[] = {middle + QPointF(-4, -2), middle + QPointF(0, 2), middle + QPointF(4, -2)};
    painter.drawPolyline(points, 3);
    painter.restore();
}

void paintMenuBarItem(QPainter &painter, const QStyleOptionMenuItem &item, const QStyle &style)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (item.state.testFlag(QStyle::State_Selected)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade(item.palette, 0.1F));
        painter.drawRoundedRect(QRectF(item.rect).adjusted(1, 1, -1, -1), controlCornerRadius - 2,
                                controlCornerRadius - 2);
    }
    painter.restore();
    const int mnemonic =
        style.styleHint(QStyle::SH_UnderlineShortcut, &item) ? Qt::TextShowMnemonic : Qt::TextHideMnemonic;
    style.drawItemText(&painter, item.rect, Qt::AlignCenter | Qt::TextSingleLine | mnemonic, item.palette,
                       item.state.testFlag(QStyle::State_Enabled), item.text, QPalette::WindowText);
}

} // namespace

QPalette lightPalette()
{
    QPalette palette(QColor(0xe9, 0xeb, 0xed), QColor(0xf4, 0xf5, 0xf6));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::Highlight, accentColor().light);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x0d, 0x94, 0x88));
    palette.setColor(QPalette::PlaceholderText, QColor(0x6b, 0x6f, 0x75));
    return palette;
}

QPalette darkPalette()
{
    QPalette palette(QColor(0x32, 0x35, 0x3a), QColor(0x24, 0x26, 0x2a));
    palette.setColor(QPalette::Base, QColor(0x1b, 0x1d, 0x20));
    palette.setColor(QPalette::AlternateBase, QColor(0x24, 0x26, 0x2a));
    palette.setColor(QPalette::ToolTipBase, QColor(0x32, 0x35, 0x3a));
    palette.setColor(QPalette::Highlight, QColor(0x0d, 0x73, 0x6a));
    palette.setColor(QPalette::Link, QColor(0x2d, 0xd4, 0xbf));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
          QPalette::HighlightedText, QPalette::BrightText}) {
        palette.setColor(role, QColor(0xf2, 0xf3, 0xf4));
        palette.setColor(QPalette::Disabled, role, QColor(0x80, 0x84, 0x8a));
    }
    palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9e, 0xa4));
    return palette;
}

QPalette inHighContrast(QPalette palette)
{
    const bool isDark = isDarkAppearance(palette);
    const QColor surface = isDark ? Qt::black : Qt::white;
    const QColor ink = isDark ? Qt::white : Qt::black;
    for (const QPalette::ColorRole role :
         {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button, QPalette::ToolTipBase})
        palette.setColor(role, surface);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                           QPalette::ToolTipText, QPalette::PlaceholderText})
        palette.setColor(role, ink);
    return palette;
}

HouseStyle::HouseStyle()
    : QProxyStyle(u"fusion"_s)
{
}

void HouseStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                               const QWidget *widget) const
{
    switch (element) {
    case PE_PanelLineEdit:
        paintTextField(*painter, *option);
        break;
    case PE_Frame:
        if (qobject_cast<const QPlainTextEdit *>(widget))
            paintTextField(*painter, *option);
        else
            QProxyStyle::drawPrimitive(element, option, painter, widget);
        break;
    case PE_PanelMenuBar:
        // The menu bar has the background of its window.
        break;
    case PE_FrameFocusRect:
        // The bezels of buttons have a focus ring of their own.
        if (!option || option->type != QStyleOption::SO_FocusRect || !widget ||
            !(widget->inherits("QPushButton") || widget->inherits("QComboBox")))
            QProxyStyle::drawPrimitive(element, option, painter, widget);
        break;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void HouseStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                             const QWidget *widget) const
{
    switch (element) {
    case CE_PushButtonBevel:
        paintBezel(*painter, *option, widget);
        break;
    case CE_PushButtonLabel:
        if (const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
            button && isDefaultButton(*option)) {
            QStyleOptionButton onAccent = *button;
            onAccent.palette.setColor(QPalette::ButtonText, breakTealInk);
            QProxyStyle::drawControl(element, &onAccent, painter, widget);
            break;
        }
        QProxyStyle::drawControl(element, option, painter, widget);
        break;
    case CE_MenuBarEmptyArea:
        break;
    case CE_MenuBarItem:
        if (const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option))
            paintMenuBarItem(*painter, *item, *this);
        break;
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void HouseStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                    QPainter *painter, const QWidget *widget) const
{
    if (control != CC_ComboBox) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    paintBezel(*painter, *option, widget);
    paintChevron(*painter, subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget), option->palette);
}

int HouseStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                          QStyleHintReturn *returned) const
{
    // The list of a pop-up looks like a menu, with a tick at the current entry.
    if (hint == SH_ComboBox_Popup)
        return 1;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

int HouseStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    if (metric == PM_DefaultFrameWidth && qobject_cast<const QPlainTextEdit *>(widget))
        return textFieldFrame;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

QRect HouseStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                 SubControl subControl, const QWidget *widget) const
{
    const QRect area = QProxyStyle::subControlRect(control, option, subControl, widget);
    const bool isText = control == CC_ComboBox && subControl == SC_ComboBoxEditField;
    return isText ? area.adjusted(textPadding, 0, 0, 0) : area;
}

QRect HouseStyle::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const
{
    const QRect area = QProxyStyle::subElementRect(element, option, widget);
    return element == SE_LineEditContents ? area.adjusted(textPadding, 0, -textPadding, 0) : area;
}

QSize HouseStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                   const QWidget *widget) const
{
    const QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_ComboBox)
        return result + QSize(textPadding, 0);
    return type == CT_PushButton ? result.expandedTo({0, buttonHeight}) : result;
}

QIcon HouseStyle::standardIcon(StandardPixmap icon, const QStyleOption *option, const QWidget *widget) const
{
    // Every menu bar asks for the arrow that it shows when it is too long, which the application's never is.
    // Loading the picture would load the plugins for all image formats.
    if (icon == SP_ToolBarHorizontalExtensionButton)
        return {};
    return QProxyStyle::standardIcon(icon, option, widget);
}
