#include "core/startup.h"

#include "core/attempt.h"
#include "core/colors.h"
#include "core/file_commands.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/text.h"
#include "core/upcalls.h"
#include "platform/host_paths.h"

namespace velnor {
namespace {

bool programIsHere()
{
    return !text::trim(Dir("Velnor.exe")).isEmpty();
}

/// Finds the application folder: the current one when it holds the program, else the usual one.
/// Where the usual folder exists without the program in it, the current folder has moved there all
/// the same, and APP_PATH is the old one: required.
void findApplicationFolder()
{
    auto& G = globals();
    G.APP_PATH = currentFolder();
    const QString startedIn = G.APP_PATH;
    if (programIsHere())
        return;
    G.APP_PATH = kApplicationFolder;
    if (Dir(G.APP_PATH, kAttributeFolder).isEmpty())
        return;
    changeFolder(G.APP_PATH);
    if (!programIsHere())
        G.APP_PATH = startedIn;
}

void setPaths()
{
    auto& G = globals();
    G.PATH_SEP = "\\";
    if (G.APP_PATH.size() == 3 && G.APP_PATH[2] == u'\\')
        G.PATH_SEP.clear();
    G.ORGANIZER_PATH = G.APP_PATH + G.PATH_SEP + "DataTabl.MDB";
    G.PRINT_INI_PATH = G.APP_PATH + "\\F@Prnt.INI";  // doubled at a drive root: required
}

/// Start values, and everything else as a fresh process has it; what the steps before found stays.
void setStartValues()
{
    auto& G = globals();
    Globals fresh;
    fresh.APP_PATH = G.APP_PATH;
    fresh.PATH_SEP = G.PATH_SEP;
    fresh.ORGANIZER_PATH = G.ORGANIZER_PATH;
    fresh.PRINT_INI_PATH = G.PRINT_INI_PATH;
    G = std::move(fresh);
}

}  // namespace

void StartProgram()
{
    attempt(findApplicationFolder);
    attempt(setPaths);
    attempt(setStartValues);
    attempt(SetDefaultColors);
    attempt(SetDefaultOptions);
    attempt([] { upcalls().LoadGroupList(); });
}

void SetDefaultColors()
{
    auto& G = globals();
    G.MAIN_BACK_COLOR = 0xFF8080;
    G.MAIN_TEXT_COLOR = colorValue(0x80000008);
    G.LIST_BACK_COLOR = colorValue(0x8000000C);
    G.LIST_TEXT_COLOR = 0xFF00;
    G.ENTRY_BACK_COLOR = 0xE0E0E0;
    G.ENTRY_TEXT_COLOR = 0x4080;
    G.UNUSED_COLOR_1 = 0xE0E0E0;
    G.UNUSED_COLOR_2 = 0x404040;
    G.UNUSED_COLOR_3 = colorValue(0x80000006);
    G.SELECT_BACK_COLOR = 0xFF0000;
    G.SELECT_TEXT_COLOR = 0xFFFFFF;
    G.ENTRY_WINDOW_BACK_COLOR = 0xC0E0FF;
    G.ENTRY_WINDOW_TEXT_COLOR = 0x800000;
    G.BROWSER_BACK_COLOR = 0xFFC0C0;
    G.BROWSER_TEXT_COLOR = 0x4040;
    G.TIPS_BACK_COLOR = 0xC0E0FF;
    G.TIPS_TEXT_COLOR = 0x800000;
    G.TOOLBAR_BACK_COLOR = 0xC0C0C0;
    G.TOOLBAR_TEXT_COLOR = 0x800000;
    G.DESIGN_BACK_COLOR = 0xFFFFFF;
    G.DESIGN_TEXT_COLOR = 255;
    G.TAB_BACK_COLOR = kFirstTabColors.back;
    G.TAB_TEXT_COLOR = kFirstTabColors.text;
    G.DISPLAY_BACK_COLOR = kFirstDisplayColors.back;
    G.DISPLAY_TEXT_COLOR = kFirstDisplayColors.text;
    G.BUTTON_BACK_COLOR = kFirstButtonColors.back;
    G.BUTTON_TEXT_COLOR = kFirstButtonColors.text;
}

void SetDefaultOptions()
{
    auto& G = globals();
    const Globals d;
    G.MAIN_LEFT = d.MAIN_LEFT;
    G.MAIN_TOP = d.MAIN_TOP;
    G.MAIN_HEIGHT = d.MAIN_HEIGHT;
    G.MAIN_WIDTH = d.MAIN_WIDTH;
    G.SAVED_WIDTH_1 = d.SAVED_WIDTH_1;
    G.SAVED_HEIGHT_1 = d.SAVED_HEIGHT_1;
    G.SAVED_MARGIN = d.SAVED_MARGIN;
    G.SAVED_WIDTH_2 = d.SAVED_WIDTH_2;
    G.SAVED_HEIGHT_2 = d.SAVED_HEIGHT_2;
    G.SAVED_HEIGHT_3 = d.SAVED_HEIGHT_3;
    G.FILE_LIST_VIEW = d.FILE_LIST_VIEW;
    G.SEARCH_FIRST_BLOCK = d.SEARCH_FIRST_BLOCK;
    G.SEARCH_NEXT_BLOCK = d.SEARCH_NEXT_BLOCK;
    G.MENU_STYLE = d.MENU_STYLE;
    G.MENU_FONT_TYPE = d.MENU_FONT_TYPE;
    G.LABEL_TEXT_TYPE = d.LABEL_TEXT_TYPE;
    G.GRID_ROW_HEIGHT = d.GRID_ROW_HEIGHT;
    G.OPTION_TEXT_1 = d.OPTION_TEXT_1;
    G.OPTION_TEXT_2 = d.OPTION_TEXT_2;
    G.DEFAULT_MAIL_FROM = d.DEFAULT_MAIL_FROM;
    G.COMPUTER_NAME = d.COMPUTER_NAME;
    G.BOLD_TEXT = d.BOLD_TEXT;
    G.SHOW_TIPS = d.SHOW_TIPS;
    G.STARTUP_FLG = d.STARTUP_FLG;
    G.ASK_COMPUTER_NAME = d.ASK_COMPUTER_NAME;
    G.EXPLORER_GRID_LINES = d.EXPLORER_GRID_LINES;
    G.GRID_LINES = d.GRID_LINES;
    G.PROMPT_SAVE_COPYTO = d.PROMPT_SAVE_COPYTO;
    G.PROMPT_SAVE_DESIGN = d.PROMPT_SAVE_DESIGN;
    G.GROUP_BY_FOLDER = d.GROUP_BY_FOLDER;
    G.SAVE_WINDOW_SIZE = d.SAVE_WINDOW_SIZE;
    G.LOG_COPY = d.LOG_COPY;
    G.GRID_TEXT_STYLE = d.GRID_TEXT_STYLE;
    G.DEFAULT_ADDRESS_BOOK = d.DEFAULT_ADDRESS_BOOK;
    G.SHOW_TEXT_SOURCE = d.SHOW_TEXT_SOURCE;
    FillExtensionTable();
}

}  // namespace velnor
