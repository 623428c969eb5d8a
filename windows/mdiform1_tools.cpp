// The shell's tools: which there are, and which are on for which kind of window in front.
#include <array>
#include <optional>

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QWidgetAction>

#include "core/attempt.h"
#include "core/upcalls.h"
#include "windows/mdiform1.h"
#include "windows/not_there_yet.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

// What each state makes of a tool; Keep: it isn't touched.
enum class Put { Keep, On, Off, Indexed };

enum State { Disable, Mdi, Text, Data, Entry, StateCount };

struct ToolStates {
    const char* id;
    std::array<Put, StateCount> put;
};

constexpr Put K = Put::Keep, N = Put::On, F = Put::Off, X = Put::Indexed;

constexpr ToolStates kToolStates[] = {
    {"ID_OpenBtn", {K, N, N, N, N}},
    {"ID_mnuOpenFile", {F, N, N, N, N}},
    {"ID_CloseBtn", {F, K, N, N, N}},
    {"ID_mnuCloseFile", {F, K, N, N, N}},
    {"ID_SaveBtn", {F, K, F, F, N}},
    {"ID_RefreshBtn", {F, K, F, N, N}},
    {"ID_RenameBtn", {F, K, N, N, N}},
    {"ID_MoveBtn", {F, K, N, N, N}},
    {"ID_DeleteBtn", {F, K, N, N, N}},
    {"ID_PrintBtn", {F, K, N, N, N}},
    {"ID_SendBtn", {F, K, N, N, N}},
    {"ID_ReceiveBtn", {F, K, N, N, N}},
    {"ID_CopyBtn", {F, K, N, F, N}},
    {"ID_Query", {F, K, F, N, F}},
    {"ID_mnuQueryTable", {F, K, F, N, F}},
    {"ID_DataToggle", {F, K, F, N, F}},
    {"ID_TableBtn", {F, K, F, X, F}},
    {"ID_IndexBtn", {F, K, F, X, F}},
    {"ID_mnuEdit", {F, K, K, K, N}},
    {"ID_mnuView", {F, K, F, N, N}},
    {"ID_mnuFindText", {F, K, N, N, F}},
    {"ID_mnuFindNextText", {F, K, N, N, F}},
    {"ID_mnuSaveFileAs", {F, K, F, F, N}},
    {"ID_mnuSetDatabaseTable", {K, K, F, N, F}},
    {"ID_mnuSetTableComments", {K, K, F, N, F}},
    {"ID_mnuSetDatabaseTableIndex", {K, K, F, N, F}},
    {"ID_HelpBtn", {K, N, N, N, N}},
};

}  // namespace

void MDIForm1::setState(int column, bool indexed)
{
    for (const ToolStates& tool : kToolStates) {
        const Put put = tool.put[static_cast<std::size_t>(column)];
        if (put == Put::On || put == Put::Off)
            ToolBarComp1->enable(QString::fromLatin1(tool.id), put == Put::On);
        else if (put == Put::Indexed)
            ToolBarComp1->enable(QString::fromLatin1(tool.id), indexed);
    }
}

void MDIForm1::DisableButtons()
{
    setState(Disable);
}

void MDIForm1::EnableMDIButtons()
{
    setState(Mdi);
}

void MDIForm1::EnableTextButtons()
{
    setState(Text);
}

void MDIForm1::EnableDataButtons(short indexes)
{
    setState(Data, indexes > 0);
}

void MDIForm1::EnableButtons()
{
    setState(Entry);
}

ToolRow MDIForm1::childTool(const QString& id, const QString& text, const QString& tip,
                            const QString& icon, ChildCommand command, QKeySequence key)
{
    const auto run = [this, command] {
        if (DocumentChild* child = activeChild(); child && !SHUTOFFCLICK_FLG)
            (child->*command)();
    };
    return {id, text, tip, run, icon, key};
}

ToolRow MDIForm1::mainTool(const QString& id, const QString& text, const QString& icon)
{
    ToolRow row{id, text, {}, {}, icon};
    row.whyOff = links_.whyMainToolOff(id);
    if (row.whyOff.isEmpty())
        row.procedure = [this, id] {
            if (!SHUTOFFCLICK_FLG)
                links_.runMainTool(id);
        };
    return row;
}

void MDIForm1::buildTools()
{
    const auto own = [this](void (MDIForm1::*procedure)()) {
        return [this, procedure] {
            if (!SHUTOFFCLICK_FLG)
                (this->*procedure)();
        };
    };
    const auto later = [](const char* id, const QString& text, const QString& icon,
                          const QString& with) {
        return notThereYet(QString::fromLatin1(id), text, icon, with);
    };
    const QList<ToolRow> rows{
        {u"ID_ReturnBtn"_s, u"&Main Window"_s, u"Bring the main window to the front"_s,
         [this] { SHUTOFFCLICK_FLG ? void() : links_.bringMainToFront(); }, u"go-home"_s},
        {u"ID_NextFile"_s, u"&Next File"_s, u"Go to the next open file"_s, own(&MDIForm1::nextFile),
         u"go-next-view"_s, QKeySequence(u"F6"_s)},
        toolLine(),
        {u"ID_OpenBtn"_s, u"&Open..."_s, u"Open a file"_s, own(&MDIForm1::openDialog),
         u"document-open"_s},
        childTool(u"ID_CloseBtn"_s, u"&Close"_s, u"Close this file's window"_s, u"document-close"_s,
                  &DocumentChild::mnuFileClose_Click),
        childTool(u"ID_SaveBtn"_s, u"Save &As..."_s, u"Save the file under another name"_s,
                  u"document-save-as"_s, &DocumentChild::mnuFileSaveAs_Click),
        childTool(u"ID_RefreshBtn"_s, u"&Refresh"_s, u"Read the table again"_s, u"view-refresh"_s,
                  &DocumentChild::mnuFileRefresh_Click, QKeySequence::Refresh),
        toolLine(),
        childTool(u"ID_TableBtn"_s, u"&Tables"_s, u"Show the tables of this file"_s,
                  u"view-list-tree"_s, &DocumentChild::mnuViewTable_Click),
        childTool(u"ID_IndexBtn"_s, u"&Indexes"_s, u"Show the indexes of this table"_s,
                  u"view-sort-ascending"_s, &DocumentChild::mnuViewIndex_Click),
        childTool(u"ID_DataToggle"_s, u"&Data Entry"_s, u"Edit the records of this table"_s,
                  u"document-edit"_s, &DocumentChild::ID_DataToggle_Click,
                  QKeySequence(u"Ctrl+E"_s)),
        later("ID_Query", u"&Query..."_s, u"view-filter"_s, u"the query window"_s),
        toolLine(),
        childTool(u"ID_CopyBtn"_s, u"&Copy"_s, u"Copy the selected text"_s, u"edit-copy"_s,
                  &DocumentChild::mnuEditCopy_Click),
        later("ID_RenameBtn", u"Re&name..."_s, u"edit-rename"_s, u"the file operations"_s),
        later("ID_MoveBtn", u"&Move..."_s, u"folder-move"_s, u"the file operations"_s),
        later("ID_DeleteBtn", u"&Delete..."_s, u"edit-delete"_s, u"the file operations"_s),
        later("ID_PrintBtn", u"&Print..."_s, u"document-print"_s, u"printing"_s),
        later("ID_SendBtn", u"&Send..."_s, u"mail-send"_s, u"mail"_s),
        later("ID_ReceiveBtn", u"Recei&ve"_s, u"mail-receive"_s, u"mail"_s),
        toolLine(),
        {u"ID_HelpBtn"_s, u"&Help"_s, u"Help with tables"_s,
         [this] { SHUTOFFCLICK_FLG ? void() : upcalls().ShowHelp(u"browser"_s); },
         u"help-contents"_s, QKeySequence::HelpContents},
    };
    auto* bar = addToolBar(tr("Tools"));
    bar->setObjectName(u"ToolBarComp1"_s);
    bar->setMovable(false);
    bar->setIconSize({22, 22});
    ToolBarComp1->fill(*bar, rows);

    ID_CMBTable = new QComboBox(bar);
    ID_CMBTable->setObjectName(u"ID_CMBTable"_s);
    ID_CMBTable->setAccessibleName(tr("Table"));
    ID_CMBTable->setToolTip(tr("The tables of this file"));
    ID_CMBTable->setMinimumContentsLength(18);
    ID_CMBTable->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    ID_CMBTable->setEnabled(false);
    bar->insertWidget(ToolBarComp1->find(u"ID_IndexBtn"_s), ID_CMBTable);
    connect(ID_CMBTable, &QComboBox::currentIndexChanged, this, [this](int index) {
        const Outcome done = attempt([&] {
            if (!SHUTOFFCLICK_FLG)
                ID_CMBTable_Change(index);
        });
        if (!done)
            tellUnexpected(done);
    });
}

void MDIForm1::buildMenus()
{
    const auto own = [this](void (MDIForm1::*procedure)()) {
        return [this, procedure] {
            if (!SHUTOFFCLICK_FLG)
                (this->*procedure)();
        };
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    ToolBarComp1->fill(
        *file,
        {{u"ID_mnuOpenFile"_s,
          u"&Open..."_s,
          {},
          own(&MDIForm1::openDialog),
          u"document-open"_s,
          QKeySequence::Open},
         childTool(u"ID_mnuOpenFileApplication"_s, u"Open with another &Application"_s, {}, {},
                   &DocumentChild::mnuFileOLE_Click),
         childTool(u"ID_mnuCloseFile"_s, u"&Close"_s, {}, u"document-close"_s,
                   &DocumentChild::mnuFileClose_Click, QKeySequence(u"Ctrl+W"_s)),
         childTool(u"ID_mnuSaveFileAs"_s, u"Sav&e As..."_s, {}, u"document-save-as"_s,
                   &DocumentChild::mnuFileSaveAs_Click),
         toolLine(),
         notThereYet(u"ID_mnuRenameFile"_s, u"Re&name..."_s, {}, u"the file operations"_s),
         notThereYet(u"ID_mnuMoveFile"_s, u"&Move..."_s, {}, u"the file operations"_s),
         notThereYet(u"ID_mnuDeleteFile"_s, u"&Delete..."_s, {}, u"the file operations"_s),
         notThereYet(u"ID_mnuFileProperties"_s, u"P&roperties..."_s, {}, u"the file operations"_s),
         toolLine(),
         notThereYet(u"ID_mnuPrintFile"_s, u"&Print..."_s, u"document-print"_s, u"printing"_s),
         notThereYet(u"ID_mnuSendFiles"_s, u"&Send..."_s, {}, u"mail"_s),
         notThereYet(u"ID_mnuReceiveFile"_s, u"Recei&ve"_s, {}, u"mail"_s),
         toolLine(),
         mainTool(u"ID_mnuExit"_s, u"E&xit"_s, u"application-exit"_s)});

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    ToolBarComp1->adopt(u"ID_mnuEdit"_s, edit->menuAction());
    ToolBarComp1->fill(
        *edit,
        {childTool(u"ID_mnuCopySelect"_s, u"&Copy"_s, {}, u"edit-copy"_s,
                   &DocumentChild::mnuEditCopy_Click),
         childTool(u"ID_mnuFindText"_s, u"&Find..."_s, u"Find a text"_s, u"edit-find"_s,
                   &DocumentChild::mnuFindText_Click, QKeySequence::Find),
         childTool(u"ID_mnuFindNextText"_s, u"Find &Next"_s, u"Find the text again"_s,
                   u"go-down-search"_s, &DocumentChild::mnuFindNextText_Click,
                   QKeySequence::FindNext)});
    // A menu that is off takes its keys along; these work for tables, too.
    addActions({ToolBarComp1->find(u"ID_mnuFindText"_s), ToolBarComp1->find(u"ID_mnuFindNextText"_s)});

    QMenu* view = menuBar()->addMenu(tr("&View"));
    ToolBarComp1->adopt(u"ID_mnuView"_s, view->menuAction());
    ToolBarComp1->fill(
        *view,
        {childTool(u"ID_mnuSetDatabaseTable"_s, u"&Tables"_s, u"Show the tables of this file"_s,
                   u"view-list-tree"_s, &DocumentChild::mnuViewTable_Click),
         childTool(u"ID_mnuSetDatabaseTableIndex"_s, u"&Indexes"_s,
                   u"Show the indexes of this table"_s, u"view-sort-ascending"_s,
                   &DocumentChild::mnuViewIndex_Click),
         childTool(u"ID_mnuSetTableComments"_s, u"&Comments"_s,
                   u"Show the memo in hand as a whole"_s, u"view-pim-notes"_s,
                   &DocumentChild::mnuViewComments_Click)});

    ToolBarComp1->fill(*menuBar()->addMenu(tr("&Query")),
                       {notThereYet(u"ID_mnuQueryTable"_s, u"&Query Table..."_s, u"view-filter"_s,
                                    u"the query window"_s)});
    ToolBarComp1->fill(*menuBar()->addMenu(tr("&Utilities")),
                       {mainTool(u"ID_mnuFindFiles"_s, u"&Find Files..."_s),
                        mainTool(u"ID_mnuFindNext"_s, u"Find &Next"_s), toolLine(),
                        mainTool(u"ID_mnuPrinterSetup"_s, u"Printer &Setup..."_s),
                        mainTool(u"ID_mnuSetWorkingFolders"_s, u"&Working Folders..."_s),
                        mainTool(u"ID_mnuSetApplicationColors"_s, u"&Colors..."_s),
                        mainTool(u"ID_mnuSetApplicationOptions"_s, u"&Options..."_s)});

    windowMenu_ = menuBar()->addMenu(tr("&Window"));
    windowMenu_->setObjectName(u"ID_mnuWindow"_s);
    ToolBarComp1->fill(
        *windowMenu_,
        {{u"ID_mnuCascade"_s, u"&Cascade"_s, {}, own(&MDIForm1::cascade), u"window-duplicate"_s},
         {u"ID_mnuTileHorizontally"_s,
          u"Tile &Horizontally"_s,
          {},
          [this] { SHUTOFFCLICK_FLG ? void() : tile(Qt::Horizontal); },
          u"view-split-top-bottom"_s},
         {u"ID_mnuTileVertically"_s,
          u"Tile &Vertically"_s,
          {},
          [this] { SHUTOFFCLICK_FLG ? void() : tile(Qt::Vertical); },
          u"view-split-left-right"_s},
         {u"ID_mnuTabs"_s, u"As &Tabs"_s, u"Show one file at a time, each on a tab"_s,
          own(&MDIForm1::showAsTabs), u"tab-new"_s}});

    ToolBarComp1->fill(*menuBar()->addMenu(tr("&Help")),
                       {mainTool(u"ID_mnuHelpContents"_s, u"&Contents"_s, u"help-contents"_s),
                        mainTool(u"ID_mnuSearchHelpTopic"_s, u"&Search on Help Topic..."_s),
                        mainTool(u"ID_mnuQuickTips"_s, u"&Quick Tips"_s),
                        mainTool(u"ID_mnuAbout"_s, u"&About"_s, u"help-about"_s)});
}

}  // namespace velnor
