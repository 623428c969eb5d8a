#include "windows/paint_colors.h"

#include <QPalette>
#include <QWidget>

#include "core/colors.h"

namespace velnor {

namespace {
constexpr ColorValue kDesktopMenu = colorValue(0x80000004);
constexpr ColorValue kDesktopWindow = colorValue(0x80000005);
constexpr ColorValue kDesktopMenuText = colorValue(0x80000007);
constexpr ColorValue kDesktopWindowText = colorValue(0x80000008);
constexpr ColorValue kDesktopButton = colorValue(0x8000000F);
constexpr ColorValue kDesktopButtonText = colorValue(0x80000012);
}  // namespace

void paintField(QWidget& widget, ColorValue back, ColorValue text)
{
    if (back == kDesktopWindow && text == kDesktopWindowText) {
        widget.setPalette({});
        return;
    }
    QPalette palette;
    palette.setColor(QPalette::Base, toQColor(back));
    palette.setColor(QPalette::AlternateBase, toQColor(back));
    palette.setColor(QPalette::Text, toQColor(text));
    widget.setPalette(palette);
}

void useBoldOption(QWidget& widget)
{
    QFont font = widget.font();
    font.setBold(globals().BOLD_TEXT);
    widget.setFont(font);
}

void SetWindowColors()
{
    auto& G = globals();
    for (ColorValue* back :
         {&G.MAIN_BACK_COLOR, &G.LIST_BACK_COLOR, &G.SELECT_BACK_COLOR, &G.BROWSER_BACK_COLOR,
          &G.ENTRY_WINDOW_BACK_COLOR, &G.DESIGN_BACK_COLOR, &G.TIPS_BACK_COLOR, &G.ENTRY_BACK_COLOR,
          &G.DISPLAY_BACK_COLOR})
        *back = kDesktopWindow;
    for (ColorValue* text :
         {&G.MAIN_TEXT_COLOR, &G.LIST_TEXT_COLOR, &G.SELECT_TEXT_COLOR, &G.BROWSER_TEXT_COLOR,
          &G.ENTRY_WINDOW_TEXT_COLOR, &G.DESIGN_TEXT_COLOR, &G.TIPS_TEXT_COLOR, &G.ENTRY_TEXT_COLOR,
          &G.DISPLAY_TEXT_COLOR})
        *text = kDesktopWindowText;
    G.TOOLBAR_BACK_COLOR = G.TAB_BACK_COLOR = kDesktopMenu;
    G.TOOLBAR_TEXT_COLOR = G.TAB_TEXT_COLOR = kDesktopMenuText;
    G.BUTTON_BACK_COLOR = kDesktopButton;
    G.BUTTON_TEXT_COLOR = kDesktopButtonText;
}

}  // namespace velnor
