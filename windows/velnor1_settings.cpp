// The main window and its settings: what the files give at load, its place on the screen, what goes
// back at the end, and the step through the working folders.
#include <QCloseEvent>
#include <QListWidget>
#include <QScreen>
#include <QTimer>
#include <QTreeView>

#include "assist/about1.h"
#include "assist/help_window.h"
#include "assist/quik_tip1.h"
#include "core/attempt.h"
#include "core/globals.h"
#include "core/options_tab.h"
#include "core/twips.h"
#include "windows/databases_tab.h"
#include "windows/mdiform1.h"
#include "windows/paint_colors.h"
#include "windows/text_style_delegate.h"
#include "windows/velnor1.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr QSize kFirstSize{1180, 740};
}

void Velnor1::LoadFolderList()
{
    QStringList lines;
    velnor::LoadFolderList(lines);
    List1->clear();
    List1->addItems(lines);
}

void Velnor1::StepFolderList()
{
    const int lines = List1->count();
    if (lines == 0)
        return;
    if (List1->currentRow() < 0)
        List1->setCurrentRow(0);
    const int row = List1->currentRow();
    const WorkingFolder found = workingFolder(List1->item(row)->text());
    // A folder or a filter that isn't there must not hold up the steps to those behind it.
    attempt([&] {
        if (!found.folder.isEmpty())
            databases_->goToFolder(found.folder);
    });
    attempt([&] { databases_->SetFilterButton(found.filter); });
    List1->setCurrentRow((row + 1) % lines);
}

void Velnor1::stepFolders()
{
    if (List1->count() == 0)
        status(tr("There are no working folders yet."));
    StepFolderList();
}

void Velnor1::SetWinSize()
{
    auto& G = globals();
    const QSize screen = this->screen()->availableGeometry().size();
    const Globals fresh;
    G.MAIN_LEFT = placeOnScreen(G.MAIN_LEFT, toTwips(screen.width()));
    G.MAIN_TOP = placeOnScreen(G.MAIN_TOP, toTwips(screen.height()));
    move(toPixels(G.MAIN_LEFT), toPixels(G.MAIN_TOP));
    // Never stored: as large as the workspaces like it.
    if (G.MAIN_WIDTH == fresh.MAIN_WIDTH && G.MAIN_HEIGHT == fresh.MAIN_HEIGHT)
        resize(kFirstSize.boundedTo(screen - QSize(40, 60)));
    else
        resize(sizeInPixels(G.MAIN_WIDTH, screen.width()),
               sizeInPixels(G.MAIN_HEIGHT, screen.height()));
}

void Velnor1::SetWinSizeVariables()
{
    auto& G = globals();
    G.MAIN_LEFT = toTwips(x());
    G.MAIN_TOP = toTwips(y());
    G.MAIN_HEIGHT = toTwips(height());
    G.MAIN_WIDTH = toTwips(width());
    if (G.MDI_OPEN_FLG && shell_) {
        G.SHELL_LEFT = toTwips(shell_->x());
        G.SHELL_TOP = toTwips(shell_->y());
        G.SHELL_HEIGHT = toTwips(shell_->height());
        G.SHELL_WIDTH = toTwips(shell_->width());
    }
}

void Velnor1::applyOptions()
{
    paintWorkspace(*this);
    if (!lines_) {
        lines_ = new ExplorerLinesDelegate(this);
        databases_->PTxShList1->setItemDelegate(lines_);
        databases_->PTxShTree1->setItemDelegate(lines_);
    }
    databases_->PTxShList1->viewport()->update();
    databases_->PTxShTree1->viewport()->update();
    if (shell_)
        shell_->applyOptions();
}

void Velnor1::mnuUtilitiesColors_Click()
{
    showTab(u"Tools"_s);
    options_->showFrame(OptionsTab::kColorsFrame);
}

void Velnor1::mnuUtilitiesOptions_Click()
{
    showTab(u"Tools"_s);
    options_->showFrame(OptionsTab::kGeneralFrame);
}

void Velnor1::closeEvent(QCloseEvent* event)
{
    if (loaded_) {  // a window that read no options has none to write
        if (globals().SAVE_WINDOW_SIZE)
            SetWinSizeVariables();
        SaveOptions(MAIL_FAVORITES, this);
    }
    if (globals().MDI_OPEN_FLG && shell_ && !shell_->close()) {
        event->ignore();  // records that could not be saved are still open
        return;
    }
    closeAssistance();
    Timer1->stop();
    event->accept();
}

}  // namespace velnor
