// The records of the table browser: the one in hand, which the grid follows, the table and the
// order that people choose, and reading it all again.
#include <utility>

#include <QHeaderView>
#include <QListWidget>
#include <QScopedValueRollback>

#include "core/attempt.h"
#include "core/globals.h"
#include "core/wait_pointer.h"
#include "windows/child_geometry.h"
#include "windows/childfrm1.h"
#include "windows/data_strip.h"
#include "windows/mdiform1.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"
#include "windows/table_pane.h"

namespace velnor {

void ChildFrm1::Data1_Reposition()
{
    auto& records = Data1.Recordset();
    const auto count = records.RecordCount();
    const QString caption = positionText(source_.fileName, records.PercentPosition(), count);
    Data1.Caption = caption.toStdString();
    Data1Strip->setCaption(caption);
    if (const auto at = records.ordinal(); at >= 0)
        recordCell(static_cast<int>(at));
}

/// Shows the record in hand in the grid, without that counting as a click.
void ChildFrm1::recordCell(int row)
{
    gridRow_ = row;
    const QModelIndex here = MSFlexGrid1->currentIndex();
    if (row == here.row() || row >= rows_->rowCount())
        return;
    const QScopedValueRollback following(following_, true);
    MSFlexGrid1->setCurrentIndex(rows_->index(row, qMax(0, here.column())));
}

void ChildFrm1::MSFlexGrid1_Click()
{
    const QModelIndex here = MSFlexGrid1->currentIndex();
    if (!here.isValid())
        return;
    if (here.row() != gridRow_) {
        const auto distance = here.row() - gridRow_;
        gridRow_ = here.row();
        Data1.Move(distance);
    }
    const bool closed = following_ && Frame2->isHidden();
    if (!closed && isMemo(here.column()))
        showComments(here.row(), here.column());
}

void ChildFrm1::List1_Click()
{
    if (List1->currentItem())
        showTable(List1->currentItem()->text());
}

void ChildFrm1::showTable(const QString& name)
{
    auto& G = globals();
    if (name == HLDTABLE)
        return;
    const WaitPointer busy;
    HLDTABLE = source_.table = name;
    G.DATABASE_PASSWORD = source_.password;
    source_.readStructure();
    NUMINDEXES = G.INDEX_COUNT;
    SORTEDBY.clear();
    const Outcome opened = attempt([&] { refreshData(); });
    fillIndexes();
    Frame1->markTable(name);
    Frame2->hide();
    setColumns();
    enableTools();
    shell_.showTables(*this);
    if (!opened)
        MSFlexGrid1->setEmptyText(opened.description);
}

void ChildFrm1::List2_Click()
{
    if (List2->currentItem())
        orderBy(List2->currentItem()->text());
}

/// A table without such an order keeps the one that it has.
void ChildFrm1::orderBy(const QString& index)
{
    if (index == SORTEDBY)
        return;
    const WaitPointer busy;
    if (!attempt([&] { Data1.SetIndex(index.toStdString()); }))
        return;
    INDEX_NAME = SORTEDBY = index;
    const QModelIndex here = MSFlexGrid1->currentIndex();
    gridRow_ = 0;
    rows_->setRecordset(Data1.anotherCursor());
    MSFlexGrid1->setCurrentIndex(rows_->index(0, qMax(0, here.column())));
}

void ChildFrm1::mnuFileRefresh_Click()
{
    if (Data1.DatabaseName.empty() || Data1.RecordSource.empty())
        return;
    const WaitPointer busy;
    const int columns = rows_->columnCount();
    const QByteArray widths = MSFlexGrid1->horizontalHeader()->saveState();
    const QString order = std::exchange(SORTEDBY, {});
    const Outcome read = attempt([&] { refreshData(); });
    if (!order.isEmpty())
        orderBy(order);
    setColumns();
    if (rows_->columnCount() == columns)  // they stay as people made them
        MSFlexGrid1->horizontalHeader()->restoreState(widths);
    if (!read)
        MSFlexGrid1->setEmptyText(read.description);
}

void ChildFrm1::recordsChanged()
{
    const QModelIndex here = MSFlexGrid1->currentIndex();
    const int row = here.row(), column = here.column();
    attempt([this] { rows_->readAgain(); });
    if (row >= 0 && !MSFlexGrid1->currentIndex().isValid() && rows_->rowCount() > 0)
        MSFlexGrid1->setCurrentIndex(rows_->index(qMin(row, rows_->rowCount() - 1), column));
}

}  // namespace velnor
