// What stands around the grid of the table browser: tables and indexes, the comments, find, and the
// way to data entry.
#include <QPlainTextEdit>

#include "access/layout.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "windows/childfrm1.h"
#include "windows/childfrm3.h"
#include "windows/find_bar.h"
#include "windows/grid_search.h"
#include "windows/mdiform1.h"
#include "windows/pane_heading.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"
#include "windows/table_pane.h"

namespace velnor {

using namespace Qt::StringLiterals;

bool ChildFrm1::isMemo(int column) const
{
    return column >= 0 && column < columnTypes_.size() &&
           columnTypes_[column] == static_cast<int>(FieldType::Memo);
}

/// The heading says whose comment it is: it stays while people go on to other records.
void ChildFrm1::showComments(int row, int column)
{
    commentsHeading_->setText(
        tr("View Comments - %1 of record %2")
            .arg(fromUtf8(rows_->field(column).name), text::thousands(row + 1)));
    Text2->setPlainText(rows_->fullText(row, column));
    Frame2->show();
}

void ChildFrm1::mnuViewComments_Click()
{
    const QModelIndex here = MSFlexGrid1->currentIndex();
    if (!here.isValid() || !isMemo(here.column())) {
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

void ChildFrm1::mnuViewTable_Click()
{
    Frame1->toggleTables();
}

void ChildFrm1::mnuViewIndex_Click()
{
    Frame1->toggleIndexes();
}

void ChildFrm1::ExitDBaseBtn_Click()
{
    Frame1->hideBoth();
    MSFlexGrid1->setFocus();
}

QStringList ChildFrm1::tables() const
{
    return Frame1->tables();
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
    G.DATABASE_PASSWORD = source_.password;
    G.TEXT_FILE_FLG = false;
    G.DATA_ENTRY_FLG = true;
    shell_.NewWindowFile(FILE_USE);
}

}  // namespace velnor
