// The main window's way to files: the open dialog, the gate to the viewing windows, other programs.
#include <QApplication>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/upcalls.h"
#include "core/wait_pointer.h"
#include "platform/host.h"
#include "windows/databases_tab.h"
#include "windows/mdiform1.h"
#include "windows/save_file_as.h"
#include "windows/velnor1.h"

namespace velnor {

using namespace Qt::StringLiterals;

void Velnor1::OpenBtn_Click()
{
    FileQuestion question;
    question.title = u"Select File to Open"_s;
    question.filter = kOpenFilter;
    question.filterIndex = openFilter_;
    question.folder = databases_->folder().isEmpty() ? openFolder_ : databases_->folder();
    const auto chosen = prompt().file(this, question);
    if (!chosen || chosen->isEmpty())
        return;
    openFilter_ = question.filterIndex;
    openFolder_ = question.folder;
    DisplayFile(chosen->first());
}

MDIForm1& Velnor1::loadShell()
{
    if (!shell_) {
        ShellLinks links;
        links.bringMainToFront = [this] {
            show();
            raise();
            activateWindow();
        };
        // The shell's menu names some of these commands in its own way.
        static const QHash<QString, QString> mainNames{
            {u"ID_mnuPrinterSetup"_s, u"ID_mnuSetUpPrinter"_s},
            {u"ID_mnuSetWorkingFolders"_s, u"ID_mnuSetWorkingFolderList"_s},
            {u"ID_mnuHelpContents"_s, u"ID_mnuHelpTableofContents"_s},
            {u"ID_mnuSearchHelpTopic"_s, u"ID_mnuSearchonHelpTopic"_s},
            {u"ID_mnuAbout"_s, u"ID_AbouttheDatabaseFileCopier"_s},
        };
        links.runMainTool = [this](const QString& id) {
            ToolBarComp1->click(mainNames.value(id, id));
        };
        links.whyMainToolOff = [this](const QString& id) {
            return ToolBarComp1->whyOff(mainNames.value(id, id));
        };
        shell_ = new MDIForm1(std::move(links));
        shell_->Form_Load();
    }
    return *shell_;
}

void Velnor1::DisplayFile(const QString& wanted)
{
    auto& G = globals();
    const QString path = wanted;  // `wanted` may be the selected file, which a question can change
    const Outcome shown = attempt([&] {
        switch (routeForDisplay(path, [&] { return !text::trim(Dir(path)).isEmpty(); })) {
        case DisplayRoute::Nothing:
            return;
        case DisplayRoute::AskOtherProgram:
            if (prompt().ask(this, u"File Type is not Supported by this Software. Do you want to "
                                   "Open the File with another Program?"_s))
                OpenwithOLE(path);
            return;
        case DisplayRoute::NotFound:
            prompt().tell(this, u"                               File not Found"_s);
            return;
        case DisplayRoute::Show:
            break;
        }
        G.SELECTED_FILE = path;
        EnableSelectMenus();
        const WaitPointer wait;
        G.FILE_WAITING_FLG = true;
        loadShell().bringUp();
    });
    if (!shown)
        prompt().tell(this, u"Error - %1 - %2 File not Supported"_s.arg(
                                QString::number(shown.number), shown.description));
}

void Velnor1::OpenwithOLE(const QString& file)
{
    const WaitPointer wait;
    const bool opened = host().desktop && host().desktop->openWith(file.toStdString());
    if (!opened)
        prompt().tell(this, u"Error Loading File Type - Check Explorer Options to set up Program "
                            "for this File Type - "_s +
                                file);
}

void Velnor1::openWithAnother()
{
    auto& G = globals();
    const QString file = text::trim(G.SELECTED_FILE);
    if (file.isEmpty())
        return;
    const QString type = GetFileExtension(file);
    if (G.MDI_OPEN_FLG && shell_ && shell_->NUM_CHILDWINDOWS > 0) {
        const int slot = extensionSlot(type);
        DocumentChild* child = shell_->activeChild();
        if (child && slot >= kFirstSlot && slot <= kLastDatabaseSlot)
            child->releaseFile();
        else if (child && (type == u"HTM" || type == u"HTML"))
            child->mnuFileClose_Click();
    }
    OpenwithOLE(file);
}

void Velnor1::browseSelected()
{
    auto& G = globals();
    G.RECORD_SOURCE.clear();
    G.DATA_ENTRY_FLG = false;
    if (!text::trim(G.SELECTED_FILE).isEmpty())
        DisplayFile(G.SELECTED_FILE);
}

void Velnor1::editSelected()
{
    auto& G = globals();
    G.DATA_ENTRY_FLG = true;
    G.RECORD_SOURCE.clear();
    if (!text::trim(G.SELECTED_FILE).isEmpty())
        DisplayFile(G.SELECTED_FILE);
}

void Velnor1::saveSelected()
{
    if (!globals().SELECTED_FILE.isEmpty() && SaveFileAs(globals().SELECTED_FILE, this))
        databases_->refresh();
}

void Velnor1::closeSelectedWindow()
{
    if (shell_ && shell_->activeChild())
        shell_->activeChild()->mnuFileClose_Click();
}

}  // namespace velnor
