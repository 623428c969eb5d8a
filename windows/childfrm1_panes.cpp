// What stands around the grid of the table browser: tables and indexes, the comments, find, and the
// way to data entry.
#include <QListWidget>
#include <QPlainTextEdit>

#include "access/layout.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "windows/childfrm1.h"
#include "windows/childfrm3.h"
#include "windows/find_bar.h"
#include "windows/grid_search.h"
#include "windows/mdiform1.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr int kMemo = static_cast<int>(FieldType::Memo);
}

void ChildFrm1::showComments(int row, int column)
{
    Text2->setPlainText(rows_->fullText(row, column));
    Frame2->show();
}

void ChildFrm1::mnuViewComments_Click()
{
    const QModelIndex here = MSFlexGrid1->currentIndex();
    if (!here.isValid() || columnTypes_[here.column()] != kMemo) {
        prompt().tell(this, u"Please select a Comment Field to Display"_s);
        return;
    }
    showComments(here.row(), here.column());
}

void ChildFrm1::ExitCommBtn_Click()
{
    Frame2->hide();
    MSFlexGrid1->setFocus();
}

void ChildFrm1::showPanes()
{
    tableBox_->setVisible(tablePane_);
    indexBox_->setVisible(indexPane_);
    Frame1->setVisible(tablePane_ || indexPane_);
}

void ChildFrm1::mnuViewTable_Click()
{
    tablePane_ = !tablePane_;
    showPanes();
    if (tablePane_)
        List1->setFocus();
}

void ChildFrm1::mnuViewIndex_Click()
{
    indexPane_ = !indexPane_;
    showPanes();
    if (indexPane_)
        List2->setFocus();
}

void ChildFrm1::ExitDBaseBtn_Click()
{
    tablePane_ = indexPane_ = false;
    showPanes();
    MSFlexGrid1->setFocus();
}

void ChildFrm1::mnuFindText_Click()
{
    findBar->open();
}

void ChildFrm1::mnuFindNextText_Click()
{
    if (findBar->text().isEmpty())
        return findBar->open();
    const QModelIndex here = MSFlexGrid1->currentIndex();
    findBar->say(tr("Searching..."));
    search_->start(findBar->text(), here.row(), here.column());
}

void ChildFrm1::ID_DataToggle_Click()
{
    for (DocumentChild* other : shell_.children())
        if (qobject_cast<ChildFrm3*>(other) && other->FILE_USE == FILE_USE &&
            other->HLDTABLE == HLDTABLE)
            return shell_.bringToFront(other);
    auto& G = globals();
    G.SELECTED_FILE = FILE_USE;
    G.RECORD_SOURCE = HLDTABLE;
    G.DATABASE_PASSWORD = password_;
    G.TEXT_FILE_FLG = false;
    G.DATA_ENTRY_FLG = true;
    shell_.NewWindowFile(FILE_USE);
}

}  // namespace velnor
