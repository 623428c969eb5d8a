// core/globals.h - the shared state of the program: one struct for the life of the process.
//
// A procedure that uses several of these begins with `auto& G = globals();`. Start values stand
// here; StartProgram (core/startup.h) fills in what depends on the machine. A room's own members
// are not put here.
//
// Paths are "C:\folder\file.ext", without a closing backslash. A flag ends in _FLG, or is an
// option.
#pragma once

#include <QString>

#include "core/bounded_array.h"

namespace velnor {

/// A colour as it stands in the settings: blue, green, red from the high byte down, or a colour of
/// the desktop with the high bit set. core/colors.h turns it into one to paint with.
using ColorValue = qint32;

struct Globals {
    // Paths and identity.
    QString APP_PATH;         ///< application folder: settings, help, pictures, the organizer
    QString PATH_SEP = "\\";  ///< empty when APP_PATH is a drive root such as "D:\"
    QString ORGANIZER_PATH;   ///< the organizer database
    QString PRINT_INI_PATH;   ///< list file of a search that is run for a report
    QString COMPUTER_NAME;    ///< in upper case
    bool ASK_COMPUTER_NAME = true;

    // The file in hand, and what routing leaves.
    QString SELECTED_FILE;      ///< what tree, list or active window has selected; empty: nothing
    QString WORK_FILE;          ///< what a dialog or workspace is about to act on
    QString FILE_EXT;           ///< upper-case extension of the last routed file
    QString CONNECT_STRING;     ///< of the last routed file
    QString DATABASE_NAME;      ///< of the last routed file
    QString RECORD_SOURCE;      ///< of the last routed file
    QString DATABASE_PASSWORD;  ///< of the Access file in hand; one slot for all files
    bool LOGIN_ASKED_FLG = false;
    bool LOGIN_OK_FLG = false;
    bool FOXPRO_FLG = false;        ///< the loaded table was read through "FoxPro 3.0;"
    bool TEXT_FILE_FLG = false;     ///< the file in hand goes to the text and document viewer
    bool DATA_FILE_FLG = false;     ///< the file is one of the five database kinds
    bool DATA_ENTRY_FLG = false;    ///< the next child window is the data entry window
    bool FILE_WAITING_FLG = false;  ///< DisplayFile has a file for the shell's next activation

    // The last table read.
    BoundedArray<QString, 251> TABLE_NAMES;
    short TABLE_COUNT = 0;
    BoundedArray<QString, 252> FIELD_NAMES;
    BoundedArray<short, 252> FIELD_TYPES;
    BoundedArray<short, 252> FIELD_SIZES;
    short FIELD_COUNT = 0;
    BoundedArray<QString, 251> INDEX_NAMES;
    BoundedArray<bool, 251> INDEX_PRIMARY;
    BoundedArray<bool, 251> INDEX_UNIQUE;
    short INDEX_COUNT = 0;

    // Lists.
    BoundedArray<QString, 44> EXT_TABLE;     ///< core/file_types.h
    BoundedArray<QString, 202> FOLDER_LIST;  ///< working folder lines, from 1
    BoundedArray<QString, 202> ORG_GROUPS;

    // Date stamps, set by RefreshDateStamps (core/date_text.h).
    QString STAMP_DATE;     ///< yyyymmdd
    QString STAMP_TIME;     ///< hhmmss
    QString STAMP_KEY;      ///< both
    QString STAMP_DISPLAY;  ///< "11-18-2004 1:08:10 PM"

    // State of the workspaces.
    bool MDI_OPEN_FLG = false;       ///< the document shell is loaded
    bool SEARCH_ACTIVE_FLG = false;  ///< clicks that would leave the workspace test it
    QString SEARCH_MASK = "*.MDB";
    int SEARCH_NODE = 0;
    bool SEARCH_CANCEL = false;
    bool SEARCH_STOP = false;
    int SEARCH_ERROR = 0;
    bool SEARCH_STARTED = false;
    bool REPORT_SEARCH = false;
    QString ORG_DATABASE;
    QString ORG_GROUP = "Database";
    QString ORG_SAVE_MODE = "S";                     ///< "S" save, "R" restore of the organizer
    QString MAIL_MODE = "S";                         ///< "S" send, "R" receive
    QString DICTIONARY_NAME = "Field Dictionary 1";  ///< the dictionary that the design tab shows
    QString DESIGN_TARGET =
        "Databases";                  ///< shown for the file of the design tab until one is chosen
    QString DISTRIBUTION_KIND = "E";  ///< "E" or "D"
    bool QUERYRUN_FLG = false;        ///< a query has been run in the open query window
    QString MAIN_CAPTION;             ///< the main window's caption at its last activation

    // A flag for each secondary window: set by its load, cleared by its unload.
    bool FINDFILE_OPEN = false;
    bool GRPMAINT_OPEN = false;
    bool MOVE_OPEN = false;
    bool RENAME_OPEN = false;
    bool FPROPTEE_OPEN = false;
    bool DELETE_OPEN = false;
    bool DATBMAINT_OPEN = false;
    bool CREATEDATABASE_OPEN = false;
    bool CREATEDICT_OPEN = false;
    bool QUERYWINDOW_FLG = false;
    bool SETFOLDR_OPEN = false;
    bool ORGNCLEAR_OPEN = false;
    bool COPYTABL_OPEN = false;
    bool ORGNBATCH_OPEN = false;
    bool ORGNPRNT_OPEN = false;
    bool COMPACT_OPEN = false;
    bool QUIKTIP_OPEN = false;
    bool ABOUT_OPEN = false;

    // Options that Options.INI stores; SetDefaultOptions gives them their defaults.
    // Places of windows in twips. The shell's have no default: 0 means none.
    int MAIN_LEFT = 0, MAIN_TOP = 100, MAIN_HEIGHT = 7000, MAIN_WIDTH = 9500;
    int SHELL_LEFT = 0, SHELL_TOP = 0, SHELL_HEIGHT = 0, SHELL_WIDTH = 0;
    int SAVED_WIDTH_1 = 4515, SAVED_HEIGHT_1 = 2445, SAVED_MARGIN = 90;  // kept in the file only,
    int SAVED_WIDTH_2 = 4515, SAVED_HEIGHT_2 = 3480, SAVED_HEIGHT_3 = 2656;  // as are these
    int FILE_LIST_VIEW = 3;  ///< 0 large icons, 1 small, 2 list, 3 details
    int SEARCH_FIRST_BLOCK = 5000;
    qint32 SEARCH_NEXT_BLOCK = 500;
    int MENU_STYLE = 2;
    int MENU_FONT_TYPE = 1;
    int LABEL_TEXT_TYPE = 0;
    int GRID_ROW_HEIGHT = 250;    ///< twips
    QString OPTION_TEXT_1 = "0";  ///< kept in the file only
    QString OPTION_TEXT_2;        ///< kept in the file only
    QString DEFAULT_MAIL_FROM;
    bool BOLD_TEXT = false;
    bool SHOW_TIPS = true;
    bool STARTUP_FLG = true;  ///< kept in the file only
    bool EXPLORER_GRID_LINES = false;
    bool GRID_LINES = true;
    bool PROMPT_SAVE_COPYTO = true;
    bool PROMPT_SAVE_DESIGN = true;
    bool GROUP_BY_FOLDER = false;
    bool SAVE_WINDOW_SIZE = true;
    bool LOG_COPY = false;

    // Options that no file stores.
    QString GRID_TEXT_STYLE = "F";  ///< "F" flat, "R" raised, "I" lowered
    QString DEFAULT_ADDRESS_BOOK = "MailAddr.MLS";
    bool SHOW_TEXT_SOURCE = false;

    // Colours; SetDefaultColors gives them their values.
    ColorValue MAIN_BACK_COLOR = 0, MAIN_TEXT_COLOR = 0;
    ColorValue LIST_BACK_COLOR = 0, LIST_TEXT_COLOR = 0;
    ColorValue ENTRY_BACK_COLOR = 0, ENTRY_TEXT_COLOR = 0;
    ColorValue UNUSED_COLOR_1 = 0, UNUSED_COLOR_2 = 0, UNUSED_COLOR_3 = 0;  // kept in the file only
    ColorValue SELECT_BACK_COLOR = 0, SELECT_TEXT_COLOR = 0;
    ColorValue ENTRY_WINDOW_BACK_COLOR = 0, ENTRY_WINDOW_TEXT_COLOR = 0;
    ColorValue BROWSER_BACK_COLOR = 0, BROWSER_TEXT_COLOR = 0;
    ColorValue TIPS_BACK_COLOR = 0, TIPS_TEXT_COLOR = 0;
    ColorValue TOOLBAR_BACK_COLOR = 0, TOOLBAR_TEXT_COLOR = 0;
    ColorValue DESIGN_BACK_COLOR = 0, DESIGN_TEXT_COLOR = 0;
    // These six are in no file either.
    ColorValue TAB_BACK_COLOR = 0, TAB_TEXT_COLOR = 0;
    ColorValue DISPLAY_BACK_COLOR = 0, DISPLAY_TEXT_COLOR = 0;
    ColorValue BUTTON_BACK_COLOR = 0, BUTTON_TEXT_COLOR = 0;
};

Globals& globals();
/// Every variable at its start value again. For tests.
void resetGlobals();

}  // namespace velnor
