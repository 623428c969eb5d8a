#include "windows/childfrm1.h"

#include <QHeaderView>
#include <QListWidget>
#include <QPlainTextEdit>

#include "access/routing.h"
#include "access/schema.h"
#include "access/workspace.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/twips.h"
#include "core/upcalls.h"
#include "core/wait_pointer.h"
#include "platform/paths.h"

#include "windows/child_geometry.h"
#include "windows/data_strip.h"
#include "windows/mdiform1.h"
#include "windows/paint_colors.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"
#include "windows/table_pane.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMemo = static_cast<int>(FieldType::Memo);

bool isFolderKind(const QString& type)
{
    return type == u"DBF" || type == u"DB";
}

bool isDatabaseKind(const QString& type)
{
    return type == u"MDB" || type == u"XLS" || type == u"WK4";
}

}  // namespace

ChildFrm1::ChildFrm1(MDIForm1& shell) : DocumentChild(shell), Data1(workspace())
{
    Data1.ReadOnly = true;  // a viewer: what may only be read can be looked at
    Data1.onReposition = [this] { Data1_Reposition(); };
    buildControls();
}

ChildFrm1::~ChildFrm1()
{
    rows_->setRecordset(std::nullopt);  // before the database it reads from
}

void ChildFrm1::Form_Load()
{
    auto& G = globals();
    firstActivation_ = true;
    ++shell_.NUM_CHILDWINDOWS;
    shell_.CLOSE_WINDOW_FLG = false;
    shell_.CHILD_LEFT += kCascadeLeft;
    shell_.CHILD_TOP += kCascadeTop;
    FILE_USE = G.SELECTED_FILE;
    fileType_ = GetFileExtension(FILE_USE);
    openFile();
    G.DATA_FILE_FLG = false;
    applyOptions();
}

void ChildFrm1::openFile()
{
    const WaitPointer busy;
    columnTypes_.fill(0);
    folder_ = fromUtf8(paths::folder(FILE_USE.toStdString()));
    fileName_ = fromUtf8(paths::fileName(FILE_USE.toStdString()));
    const Outcome opened = attempt([&] {
        if (isFolderKind(fileType_))
            openFolderTable();
        else if (!isDatabaseKind(fileType_) || !openDatabaseFile())
            return;
        auto& G = globals();
        NUMINDEXES = G.INDEX_COUNT;
        shell_.EnableDataButtons(NUMINDEXES);
        fillLists();
        setColumns();
        enableTools();
        ++shell_.DATABASE_COUNT;
        opened_ = true;
    });
    if (!opened)
        tellOpening(opened.number, opened.description);
}

void ChildFrm1::openFolderTable()
{
    auto& G = globals();
    connect_ = fileType_ == u"DBF" ? u"dBASE 5.0;"_s : u"Paradox 5.x;"_s;
    G.TABLE_COUNT = 0;
    LoadTableStructure(folder_, connect_, fileName_);
    if (G.FOXPRO_FLG)
        connect_ = u"FoxPro 3.0;"_s;
    Data1.Connect = connect_.toStdString();
    Data1.DatabaseName = folder_.toStdString();
    Data1.RecordSource = fileName_.toStdString();
    refreshData();
}

bool ChildFrm1::openDatabaseFile()
{
    auto& G = globals();
    password_.clear();
    G.DATABASE_PASSWORD.clear();
    connect_ = SetDatabaseType(FILE_USE);
    HLDTABLE = ListTableNames(FILE_USE, connect_);
    if (G.LOGIN_ASKED_FLG && !G.LOGIN_OK_FLG) {
        shell_.CLOSE_WINDOW_FLG = true;
        closeWindow_ = true;
        return false;
    }
    LoadTableStructure(FILE_USE, connect_, HLDTABLE);
    if (fileType_ == u"MDB")
        password_ = G.DATABASE_PASSWORD;
    Data1.Connect = accessConnect(password_, connect_).toStdString();
    Data1.DatabaseName = FILE_USE.toStdString();
    Data1.RecordSource = HLDTABLE.toStdString();
    refreshData();
    return true;
}

/// Opens Data1, in table form so that an index can order it; a source that has no such form opens
/// as a set.
void ChildFrm1::refreshData()
{
    rows_->setRecordset(std::nullopt);
    Data1.Type = RecordsetType::Table;
    const Outcome opened = attempt([&] { Data1.Refresh(); });
    if (opened.number == static_cast<int>(EngineErrorNumber::NotSupported)) {
        Data1.Type = RecordsetType::Dynaset;
        Data1.Refresh();
    } else if (!opened) {
        throw EngineError(static_cast<EngineErrorNumber>(opened.number),
                          opened.description.toStdString());
    }
    gridRow_ = 0;
    rows_->setRecordset(Data1.anotherCursor());
    Data1Strip->setMoving(rows_->rowCount() > 0);
}

void ChildFrm1::tellOpening(int number, const QString& description)
{
    if (number == static_cast<int>(EngineErrorNumber::ReadOnly)) {
        prompt().tell(this, u"File Viewer could not open this Database Table"_s);
        upcalls().OpenwithOLE(FILE_USE);
    } else if (number == 523 || number == 7) {
        prompt().tell(
            this,
            u"Not Enough Memory to Load the File - Close some Windows or Rerun the Program"_s);
    } else {
        prompt().tell(this, u"Error - %1 - %2"_s.arg(QString::number(number), description));
    }
    shell_.CLOSE_WINDOW_FLG = true;
    closeWindow_ = true;
}

void ChildFrm1::fillLists()
{
    auto& G = globals();
    QStringList tables;
    if (isDatabaseKind(fileType_))
        for (int i = 0; i < G.TABLE_COUNT; ++i)
            tables << G.TABLE_NAMES[i];
    Frame1->setTables(tables);
    fillIndexes();
}

void ChildFrm1::fillIndexes()
{
    QStringList indexes;
    for (int i = 0; i < NUMINDEXES; ++i)
        indexes << globals().INDEX_NAMES[i];
    Frame1->setIndexes(indexes);
}

void ChildFrm1::setColumns()
{
    // Of the grid's own fields: the table last read may be another window's by now.
    columnTypes_.fill(0);
    for (int i = 0; i < qMin(rows_->columnCount(), columnTypes_.size()); ++i)
        columnTypes_[i] = static_cast<short>(rows_->field(i).type);

    QHeaderView& header = *MSFlexGrid1->horizontalHeader();
    for (int i = 0; i < rows_->columnCount(); ++i) {
        const auto& field = rows_->field(i);
        const int wide =
            toPixels(browserColumnWidth(static_cast<int>(fromUtf8(field.name).size()), field.size));
        // Type is larger on some screens: names are never cut, the first values rarely.
        const int needed = qMin(MSFlexGrid1->firstValuesWidth(i), toPixels(kWidestColumn));
        MSFlexGrid1->setColumnWidth(i, qMax(wide, qMax(needed, header.sectionSizeHint(i))));
    }
    setRowHeight();
    MSFlexGrid1->setEmptyText(rows_->columnCount() > 0
                                  ? tr("This table has no records.")
                                  : tr("This table has no fields that can be shown."));
}

/// As the option says, but never so low that the type is cut.
void ChildFrm1::setRowHeight()
{
    const int least = MSFlexGrid1->fontMetrics().height() + 4;
    MSFlexGrid1->verticalHeader()->setDefaultSectionSize(
        qMax(toPixels(globals().GRID_ROW_HEIGHT), least));
}

void ChildFrm1::enableTools()
{
    shell_.EnableDataButtons(NUMINDEXES);
    ToolSet& tools = *shell_.ToolBarComp1;
    tools.enable(u"ID_mnuSetTableComments"_s, true);
    if (NUMINDEXES > 0) {
        tools.enable(u"ID_IndexBtn"_s, true);
        tools.enable(u"ID_mnuSetDatabaseTableIndex"_s, true);
    }
    if (isDatabaseKind(fileType_)) {
        tools.enable(u"ID_TableBtn"_s, true);
        tools.enable(u"ID_mnuSetDatabaseTable"_s, true);
    }
}

void ChildFrm1::Form_Activate()
{
    auto& G = globals();
    if (firstActivation_) {
        firstActivation_ = false;
        if (closeWindow_) {
            shell_.CLOSE_WINDOW_FLG = false;
            unloadSoon();
            return;
        }
        if (!isFolderKind(fileType_) && !isDatabaseKind(fileType_)) {
            if (prompt().ask(this, u"File Type is not Supported by this Software. Do you want to "
                                   "Open the File with another Program?"_s))
                upcalls().OpenwithOLE(G.SELECTED_FILE);
            unloadSoon();
            return;
        }
        paintWindow();
        MSFlexGrid1->setFocus();
    }
    shell_.setWindowTitle(caption() + u" - "_s + QString::fromLatin1(kProgramTitle));
    G.SELECTED_FILE = folder_.endsWith(u'\\') ? folder_ + fileName_ : folder_ + u'\\' + fileName_;
    attempt([&] { shell_.showFileLength(text::thousands(fileLength(FILE_USE)) + u" Bytes"_s); });
    G.WORK_FILE = caption();
}

void ChildFrm1::paintWindow()
{
    auto& G = globals();
    paintField(*MSFlexGrid1, {G.BROWSER_BACK_COLOR, G.BROWSER_TEXT_COLOR});
    paintField(*Text2, displayColors());
    useBoldOption(*MSFlexGrid1);
    useBoldOption(*Text2);
    MSFlexGrid1->setShowGrid(G.GRID_LINES);
    MSFlexGrid1->viewport()->update();
}

void ChildFrm1::applyOptions()
{
    const auto& G = globals();
    for (QListWidget* list : {List1, List2}) {
        paintField(*list, {G.LIST_BACK_COLOR, G.LIST_TEXT_COLOR});
        useBoldOption(*list);
    }
    paintWindow();
    setRowHeight();
}

void ChildFrm1::Data1_Reposition()
{
    auto& records = Data1.Recordset();
    const auto count = records.RecordCount();
    const QString caption = positionText(fileName_, records.PercentPosition(), count);
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
    if (here.column() < columnTypes_.size() && columnTypes_[here.column()] == kMemo)
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
    HLDTABLE = name;
    G.DATABASE_PASSWORD = password_;
    LoadTableStructure(FILE_USE, connect_, HLDTABLE);
    Data1.RecordSource = HLDTABLE.toStdString();
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
    if (!List2->currentItem())
        return;
    const QString name = List2->currentItem()->text();
    const Outcome ordered = attempt([&] { Data1.SetIndex(name.toStdString()); });
    if (!ordered)
        return;  // no such order: it stays as it was
    INDEX_NAME = SORTEDBY = name;
    const QModelIndex here = MSFlexGrid1->currentIndex();
    gridRow_ = 0;
    rows_->setRecordset(Data1.anotherCursor());
    MSFlexGrid1->setCurrentIndex(rows_->index(0, qMax(0, here.column())));
}

void ChildFrm1::mnuFileRefresh_Click()
{
    if (Data1.DatabaseName.empty() || Data1.RecordSource.empty())
        return;
    const int columns = rows_->columnCount();
    const QByteArray widths = MSFlexGrid1->horizontalHeader()->saveState();
    attempt([&] { refreshData(); });
    if (!SORTEDBY.isEmpty())
        List2_Click();
    setColumns();
    if (rows_->columnCount() == columns)  // they stay as people made them
        MSFlexGrid1->horizontalHeader()->restoreState(widths);
}

void ChildFrm1::mnuEditCopy_Click()
{
    MSFlexGrid1->copySelection();
}

void ChildFrm1::recordsChanged()
{
    const QModelIndex here = MSFlexGrid1->currentIndex();
    const int row = here.row(), column = here.column();
    attempt([this] { rows_->readAgain(); });
    if (row >= 0 && !MSFlexGrid1->currentIndex().isValid() && rows_->rowCount() > 0)
        MSFlexGrid1->setCurrentIndex(rows_->index(qMin(row, rows_->rowCount() - 1), column));
}

void ChildFrm1::releaseFile()
{
    rows_->setRecordset(std::nullopt);
    Data1.Connect = "Text";
    Data1.DatabaseName = globals().APP_PATH.toStdString();
    Data1.RecordSource = "Close.Txt";
    attempt([&] { Data1.Refresh(); });  // whatever comes of it, the file is free
    MSFlexGrid1->setEmptyText(
        tr("The file was handed to another program. Open it again to see it."));
}

void ChildFrm1::Form_Unload()
{
    rows_->setRecordset(std::nullopt);
    Data1.close();
    --shell_.NUM_CHILDWINDOWS;
    shell_.CHILD_LEFT = qMax(0, shell_.CHILD_LEFT - kCascadeLeft);
    shell_.CHILD_TOP = qMax(0, shell_.CHILD_TOP - kCascadeTop);
    shell_.childGone(this);
    if (opened_)
        --shell_.DATABASE_COUNT;
}

}  // namespace velnor
