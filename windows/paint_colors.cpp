#include "windows/paint_colors.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QToolBar>

namespace velnor {

void paintField(QWidget& widget, ColorPair pair)
{
    if (isDesktopPair(pair)) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Base, toQColor(pair.back));
    palette.setColor(QPalette::AlternateBase, toQColor(pair.back));
    QColor text = toQColor(pair.text);
    palette.setColor(QPalette::Text, text);
    text.setAlpha(150);
    palette.setColor(QPalette::PlaceholderText, text);
    widget.setPalette(palette);
}

void paintSurface(QWidget& widget, ColorPair pair)
{
    widget.setAutoFillBackground(true);
    if (isDesktopPair(pair)) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Window, toQColor(pair.back));
    palette.setColor(QPalette::WindowText, toQColor(pair.text));
    widget.setPalette(palette);
}

namespace {

void paintButton(QWidget& widget, ColorPair pair)
{
    if (isDesktopPair(pair)) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Button, toQColor(pair.back));
    palette.setColor(QPalette::ButtonText, toQColor(pair.text));
    widget.setPalette(palette);
}

void paintTabs(QWidget& bar)
{
    const ColorPair pair = tabColors();
    if (isDesktopPair(pair)) {
        bar.setPalette({});
        return;
    }
    QPalette palette;
    for (const auto role : {QPalette::Window, QPalette::Button})
        palette.setColor(role, toQColor(pair.back));
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(role, toQColor(pair.text));
    bar.setPalette(palette);
}

/// Entry fields that people can't type into only display.
void paintControl(QWidget& widget)
{
    const auto& G = globals();
    const ColorPair entry{G.ENTRY_BACK_COLOR, G.ENTRY_TEXT_COLOR};
    if (auto* text = qobject_cast<QPlainTextEdit*>(&widget))
        paintField(widget, text->isReadOnly() ? displayColors() : entry);
    else if (qobject_cast<QLineEdit*>(&widget) || qobject_cast<QAbstractSpinBox*>(&widget) ||
             qobject_cast<QComboBox*>(&widget))
        paintField(widget, entry);
    else if (qobject_cast<QPushButton*>(&widget))
        paintButton(widget, buttonColors());
    else if (qobject_cast<QAbstractItemView*>(&widget) && !qobject_cast<QHeaderView*>(&widget))
        paintField(widget, {G.LIST_BACK_COLOR, G.LIST_TEXT_COLOR});
    else if (qobject_cast<QToolBar*>(&widget))
        paintSurface(widget, {G.TOOLBAR_BACK_COLOR, G.TOOLBAR_TEXT_COLOR});
    else if (qobject_cast<QTabBar*>(&widget))
        paintTabs(widget);
}

void paintAll(QWidget& window, ColorPair ground)
{
    paintSurface(window, ground);
    for (QWidget* widget : window.findChildren<QWidget*>())
        if (widget->window() == &window)
            paintControl(*widget);
    useBoldOption(window);
}

}  // namespace

void paintWorkspace(QWidget& window)
{
    const auto& G = globals();
    paintAll(window, {G.MAIN_BACK_COLOR, G.MAIN_TEXT_COLOR});
}

void paintDialog(QWidget& dialog)
{
    const auto& G = globals();
    paintAll(dialog, {G.SELECT_BACK_COLOR, G.SELECT_TEXT_COLOR});
}

void useBoldOption(QWidget& widget)
{
    QFont font = widget.font();
    font.setBold(globals().BOLD_TEXT);
    widget.setFont(font);
}

}  // namespace velnor
