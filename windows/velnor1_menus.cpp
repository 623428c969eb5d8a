// The main window's menus by group of commands, and the tabs whose work is still to come.
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QTabBar>
#include <QToolBar>

#include "core/attempt.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/options_tab.h"
#include "organizer/organizer_pane.h"
#include "windows/copy_place.h"
#include "windows/databases_tab.h"
#include "windows/mdiform1.h"
#include "windows/not_there_yet.h"
#include "windows/velnor1.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

ToolRow later(const char* id, const QString& text, const QString& with, const QString& icon = {})
{
    return notThereYet(QString::fromLatin1(id), text, icon, with);
}

/// Hands a key to the field that has the focus, as its own context menu would.
void pressInFocus(QKeySequence::StandardKey key)
{
    QWidget* focus = QApplication::focusWidget();
    if (!focus)
        return;
    const QKeyCombination keys = QKeySequence(key)[0];
    QKeyEvent press(QEvent::KeyPress, keys.key(), keys.keyboardModifiers());
    QApplication::sendEvent(focus, &press);
}

}  // namespace

void Velnor1::addComingTabs()
{
    const auto coming = [this](const QString& caption, const QString& icon, const QString& words,
                               QList<ToolRow> rows) {
        return new ComingTab(caption, icon, words, std::move(rows), this);
    };
    const QString design = u"table design"_s, print = u"printing"_s, mail = u"mail"_s;
    const QString distribution = u"distribution"_s;
    addTab(databases_);
    addTab(coming(
        u"Design"_s, u"document-edit"_s,
        u"Here the fields and indexes of a table will be shown and changed."_s,
        {later("ID_OpenDatabase", u"&Open Database..."_s, design, u"document-open"_s),
         later("ID_CreateDatabase", u"&New Database..."_s, design, u"document-new"_s),
         later("ID_CreateTable", u"New &Table"_s, design, u"table"_s),
         later("ID_CreateIndex", u"New &Index"_s, design, u"view-sort-ascending"_s),
         later("ID_HelpDesign", u"&Help with Design"_s, design, u"help-contents"_s)}));
    addTab(copy_);
    addTab(coming(
        u"Print"_s, u"document-print"_s,
        u"Here texts, tables and lists of files will be printed."_s,
        {later("ID_PrintText/Documents", u"&Texts and Documents"_s, print, u"text-x-generic"_s),
         later("ID_PrintDatabaseFiles", u"&Database Files"_s, print, u"table"_s),
         later("ID_PrintFileLists", u"&File Lists"_s, print, u"view-list-details"_s),
         later("ID_HelpPrintingFiles", u"&Help with Printing"_s, print,
               u"help-contents"_s)}));
    addTab(
        coming(u"EMail"_s, u"mail-message"_s,
               u"Here files will be sent and received as attachments of mail."_s,
               {later("ID_ReceiveFirst", u"&First Message"_s, mail, u"go-first"_s),
                later("ID_ReceiveNext", u"&Next Message"_s, mail, u"go-next"_s),
                later("ID_ReadAll-UnRead", u"Read All or &Unread"_s, mail, u"mail-read"_s),
                later("ID_EMailStatus", u"S&tatus"_s, mail),
                later("ID_EMailSelect", u"S&elect Files"_s, mail, u"mail-attachment"_s),
                later("ID_Send", u"&Send"_s, mail, u"mail-send"_s),
                later("ID_Reply", u"&Reply"_s, mail, u"mail-reply-sender"_s),
                later("ID_Forward", u"For&ward"_s, mail, u"mail-forward"_s),
                later("ID_Addresses", u"&Addresses"_s, mail, u"view-pim-contacts"_s),
                later("ID_AddAddress", u"Add A&ddress"_s, mail, u"list-add"_s),
                later("ID_ThroughOutlookExp", u"Through the Mail &Program"_s, mail),
                later("ID_EMailHelp", u"&Help with Mail"_s, mail, u"help-contents"_s)}));
    addTab(coming(
        u"Distribution"_s, u"folder-cloud"_s,
        u"Here tables will be published as web pages, and files copied, moved and zipped."_s,
        {later("ID_DstOpenDistribution", u"&Open Distribution..."_s, distribution,
               u"document-open"_s),
         later("ID_DstDistributionLog", u"Distribution &Log"_s, distribution, u"view-list-text"_s),
         later("ID_DstHelp", u"&Help with Distribution"_s, distribution, u"help-contents"_s)}));
    addTab(options_);

    ToolBarComp1->fill(
        *toolbars_[0],
        {{u"ID_OpenBtn"_s, u"&Open..."_s, u"Open a file"_s, edge(this, &Velnor1::OpenBtn_Click),
          u"document-open"_s},
         later("ID_FindBtn", u"&Find Files..."_s, u"the file search"_s, u"edit-find"_s),
         later("ID_FindNextBtn", u"Find &Next"_s, u"the file search"_s, u"go-down-search"_s),
         toolLine()});
    for (qsizetype i = 0; i < tabs_.size(); ++i) {
        ToolBarComp1->fill(*toolbars_[i], tabs_[i]->tools());
        TabStrip1->addTab(tabs_[i]->caption());
    }
    ToolBarComp1->fill(*toolbars_[0],
                       {toolLine(),
                        {u"ID_HelpBtn"_s, u"&Help"_s, u"Help with files and folders"_s,
                         edge(this, &Velnor1::helpOnTab), u"help-contents"_s}});
}

ToolRow Velnor1::organizerView(const char* id, const QString& text, const QString& tip,
                               const QString& view)
{
    ToolRow row{QString::fromLatin1(id), text, tip,
                [this, view] { databases_->organizer->setView(view); }};
    row.group = u"OrganizerView"_s;
    return row;
}

void Velnor1::buildMenus()
{
    const QString files = u"the file operations"_s, organizer = u"the organizer"_s;
    ToolSet& tools = *ToolBarComp1;
    const auto own = [this](void (Velnor1::*procedure)()) { return edge(this, procedure); };

    tools.fill(
        *menuBar()->addMenu(tr("&File")),
        {{u"ID_mnuOpen"_s, u"&Open..."_s, u"Open a file"_s, own(&Velnor1::OpenBtn_Click),
          u"document-open"_s, QKeySequence::Open},
         {u"ID_mnuOpenFilewithanotherApplication"_s, u"Open with another &Application"_s,
          u"Open the selected file with the program that the desktop has for it"_s,
          own(&Velnor1::openWithAnother), u"document-open-folder"_s},
         {u"ID_mnuClose"_s, u"&Close"_s, u"Close the window of the selected file"_s,
          own(&Velnor1::closeSelectedWindow), u"document-close"_s, QKeySequence(u"Ctrl+W"_s)},
         {u"ID_mnuSaveAs"_s, u"Sav&e As..."_s, u"Copy the selected file under another name"_s,
          own(&Velnor1::saveSelected), u"document-save-as"_s, QKeySequence(u"Ctrl+Shift+S"_s)},
         toolLine(),
         later("ID_mnuRenameFile", u"Re&name..."_s, files, u"edit-rename"_s),
         later("ID_mnuMoveFile", u"&Move..."_s, files),
         later("ID_mnuDelete", u"&Delete..."_s, files, u"edit-delete"_s),
         later("ID_mnuFileProperties", u"P&roperties..."_s, files, u"document-properties"_s),
         toolLine(),
         later("ID_mnuSetUpPrinter", u"Printer Set&up..."_s, u"printing"_s),
         later("ID_mnuPrint", u"&Print..."_s, u"printing"_s, u"document-print"_s),
         later("ID_mnuSend", u"&Send..."_s, u"mail"_s, u"mail-send"_s),
         later("ID_mnuReceive", u"Recei&ve..."_s, u"mail"_s, u"mail-receive"_s),
         toolLine(),
         {u"ID_mnuExit"_s, u"E&xit"_s, u"End the program"_s, [this] { close(); },
          u"application-exit"_s, QKeySequence(u"Ctrl+Q"_s)}});

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    tools.fill(*edit,
               {{u"ID_mnuCopySelect"_s, u"&Copy"_s, u"Copy what is selected"_s,
                 [] { pressInFocus(QKeySequence::Copy); }, u"edit-copy"_s},
                {u"ID_mnuPaste"_s, u"&Paste"_s, u"Paste the clipboard's text"_s,
                 [] { pressInFocus(QKeySequence::Paste); }, u"edit-paste"_s},
                toolLine(),
                later("ID_mnuFindFiles", u"&Find Files..."_s, u"the file search"_s, u"edit-find"_s),
                later("ID_mnuFindNext", u"Find &Next"_s, u"the file search"_s)});

    QMenu* view = menuBar()->addMenu(tr("&View"));
    tools.fill(*view, {{u"ID_mnuViewBrowseTable"_s, u"&Browse Table"_s, u"Show the selected file"_s,
                        own(&Velnor1::browseSelected), u"table"_s, QKeySequence(u"Ctrl+B"_s)},
                       {u"ID_mnuViewEditTable"_s, u"&Edit Table"_s, u"Edit Database Table Data"_s,
                        own(&Velnor1::editSelected), u"document-edit"_s, QKeySequence(u"Ctrl+E"_s)},
                       toolLine(),
                       organizerView("ID_mnuViewOrganizerName", u"Organizer by &Name"_s,
                                     u"View Organizer Database by Database Name"_s, u"N"_s),
                       organizerView("ID_mnuViewOrganizerGroup", u"Organizer by &Group"_s,
                                     u"View Database Organizer  by Group"_s, u"G"_s),
                       organizerView("ID_mnuViewOrganizerDate", u"Organizer by &Date"_s,
                                     u"View Database Organizer by Date Modified"_s, u"D"_s),
                       organizerView("ID_mnuViewDatabaseSize", u"Organizer by Si&ze"_s,
                                     u"View Database Organizer by Size"_s, u"S"_s),
                       organizerView("ID_ViewCopyLog", u"View Copy &Log"_s,
                                     u"View Copy Log for Past Table Copies"_s, u"L"_s),
                       toolLine()});
    QMenu* list = view->addMenu(tr("File L&ist"));
    for (const char* id : {"ID_LargeIcons", "ID_SmallIcons", "ID_ListIcons", "ID_DetailIcons"})
        list->addAction(tools.find(QString::fromLatin1(id)));
    QMenu* filter = view->addMenu(tr("&Filter"));
    for (int i = 0; i < 8; ++i) {
        const ListFilter& row = kListFilters[static_cast<std::size_t>(i)];
        const QAction* onBar = tools.find(QString::fromLatin1(row.tool));
        ToolRow twin{QString::fromLatin1(row.menuTool), onBar->text(), onBar->toolTip(),
                     [this, i] { databases_->SetFilterButton(i); }};
        twin.group = u"filter in the menu"_s;
        QAction* inMenu = tools.add(twin);
        inMenu->setIcon(onBar->icon());
        filter->addAction(inMenu);
    }
    view->addAction(tools.find(u"ID_UpFolderBtn"_s));
    view->addAction(tools.find(u"ID_RefreshBtn"_s));

    tools.fill(
        *menuBar()->addMenu(tr("&Organize")),
        {{u"ID_mnuAddFiletoDatabase"_s, u"&Add File to Organizer"_s,
          u"File the selected file under the database that is chosen in the organizer"_s,
          [this] { databases_->organizer->addSelectedFile(); }, u"list-add"_s},
         later("ID_mnuOrganizeFileswithSearch", u"Organize Files with &Search..."_s, organizer),
         later("ID_mnuOrganizeCreateDatabase", u"Organizer &Databases..."_s, organizer),
         later("ID_mnuCreateGroups", u"Organizer &Groups..."_s, organizer),
         later("ID_mnuClearOrganizer", u"&Clear Organizer..."_s, organizer),
         later("ID_PrintReportofDatabaseOrganizer", u"&Print Report..."_s, organizer),
         toolLine(),
         later("ID_mnuBackUpDatabaseOrganizer", u"&Back Up Organizer..."_s, organizer),
         later("ID_mnuRestore", u"&Restore Organizer..."_s, organizer),
         later("ID_mnuRepairorCompact", u"Repa&ir or Compact Organizer..."_s, organizer)});

    QMenu* copy = menuBar()->addMenu(tr("&Copy"));
    tools.fill(*copy, {{u"ID_mnuCopyRecords"_s, u"Copy &Records"_s,
                        u"Append the records of one file to another"_s,
                        [this] { showTab(u"Copy"_s); }, u"edit-copy"_s}});
    tools.fill(*copy, copy_->tools().mid(0, 3));
    tools.fill(
        *copy,
        {toolLine(),
         later("ID_mnuCopyFileFormat", u"Copy to another &Format..."_s, u"the format conversion"_s),
         later("ID_mnuAddTabletoAccessDatabaseFile", u"Add &Table to an Access File..."_s,
               u"the format conversion"_s),
         later("ID_mnuDeleteDatabaseTableorFile", u"&Delete Table or File..."_s, files)});

    tools.fill(*menuBar()->addMenu(tr("&Query")),
               {later("ID_mnuQuerycurrentDatabaseTable", u"&Query the Table..."_s,
                      u"the query window"_s, u"view-filter"_s)});

    tools.fill(*menuBar()->addMenu(tr("&Utilities")),
               {later("ID_mnuSetWorkingFolderList", u"Working &Folder List..."_s,
                      u"the working folder list"_s),
                {u"ID_mnuSetApplicationColors"_s, u"Set Window &Colors"_s, u"Set the colors"_s,
                 own(&Velnor1::mnuUtilitiesColors_Click), u"color-management"_s},
                {u"ID_mnuSetApplicationOptions"_s, u"Set Program &Options"_s, u"Set the options"_s,
                 own(&Velnor1::mnuUtilitiesOptions_Click), u"configure"_s},
                toolLine(),
                later("ID_mnuRepairorCompactAccessDatabaseFile",
                      u"&Repair or Compact an Access File..."_s, u"the file operations"_s)});

    QMenu* window = menuBar()->addMenu(tr("&Window"));
    tools.fill(*window, {{u"ID_mnuOpenFiles"_s, u"&Open Files"_s,
                          u"Bring the window with the open files to the front"_s,
                          [this] {
                              if (shell_)
                                  shell_->bringUp();
                          },
                          u"window"_s}});
    window->addSeparator();
    for (int i = 0; i < TabStrip1->count(); ++i) {
        QAction* go = window->addAction(u"&%1  %2"_s.arg(i + 1).arg(TabStrip1->tabText(i)));
        go->setShortcut(QKeySequence(u"Ctrl+%1"_s.arg(i + 1)));
        connect(go, &QAction::triggered, this, [this, i] { TabStrip1->setCurrentIndex(i); });
    }
    connect(window, &QMenu::aboutToShow, this,
            [this] { ToolBarComp1->enable(u"ID_mnuOpenFiles"_s, shell_ != nullptr); });

    tools.fill(*menuBar()->addMenu(tr("&Help")),
               {{u"ID_mnuHelpTableofContents"_s, u"Table of &Contents"_s, u"Open the help"_s,
                 [this] { showHelp({}); }, u"help-contents"_s},
                {u"ID_mnuSearchonHelpTopic"_s, u"&Search on Help Topic..."_s, u"Search the help"_s,
                 own(&Velnor1::searchHelp), u"edit-find"_s},
                {u"ID_Help"_s, u"&Help on this Workspace"_s, u"Help on the tab in front"_s,
                 own(&Velnor1::helpOnTab), u"help-contextual"_s, QKeySequence::HelpContents},
                toolLine(),
                {u"ID_mnuQuickTips"_s, u"&Quick Tips"_s, u"Show the tip of the day"_s,
                 own(&Velnor1::showQuickTips), u"help-hint"_s},
                {u"ID_AbouttheDatabaseFileCopier"_s, u"&About the Database File Copier"_s,
                 u"About Velnor"_s, own(&Velnor1::showAbout), u"help-about"_s}});
}

}  // namespace velnor
