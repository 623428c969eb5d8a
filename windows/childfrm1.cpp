#include "windows/childfrm1.h"

#include <QHeaderView>
#include <QListWidget>
#include <QPlainTextEdit>

#include "access/workspace.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/twips.h"
#include "core/upcalls.h"
#include "core/wait_pointer.h"
#include "windows/child_geometry.h"
#include "windows/data_strip.h"
#include "windows/mdiform1.h"
#include "windows/paint_colors.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"
#include "windows/table_pane.h"

namespace velnor {

using namespace Qt::StringLiterals;

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
    source_ = TableSource(FILE_USE, ConnectForm::PasswordAlone);
    openFile();
    G.DATA_FILE_FLG = false;
    applyOptions();
}

void ChildFrm1::openFile()
{
    const WaitPointer busy;
    columnTypes_.fill(0);
    const Outcome opened = attempt([&] {
        if (!source_.isKnown())
            return;
        if (source_.inFolder())
            globals().TABLE_COUNT = 0;
        else if (!chooseFirstTable())
            return;
        source_.readStructure();
        refreshData();
        NUMINDEXES = globals().INDEX_COUNT;
        shell_.EnableDataButtons(NUMINDEXES);
        Frame1->setTables(source_.tables);
        fillIndexes();
        setColumns();
        enableTools();
        ++shell_.DATABASE_COUNT;
        opened_ = true;
    });
    if (!opened)
        tellOpening(opened.number, opened.description);
}

/// False when people cancelled the login: the window goes again.
bool ChildFrm1::chooseFirstTable()
{
    globals().DATABASE_PASSWORD.clear();
    if (!source_.listTables()) {
        shell_.CLOSE_WINDOW_FLG = true;
        closeWindow_ = true;
        return false;
    }
    HLDTABLE = source_.table;
    return true;
}

void ChildFrm1::refreshData()
{
    rows_->setRecordset(std::nullopt);
    Data1Strip->setMoving(false);
    source_.open(Data1);
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
    if (source_.holdsTables()) {
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
        if (!source_.isKnown()) {
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
    const QString& folder = source_.folder;
    G.SELECTED_FILE = folder + (folder.endsWith(u'\\') ? u""_s : u"\\"_s) + source_.fileName;
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

void ChildFrm1::mnuEditCopy_Click()
{
    MSFlexGrid1->copySelection();
}

void ChildFrm1::releaseFile()
{
    rows_->setRecordset(std::nullopt);
    Data1.Connect = "Text";
    Data1.DatabaseName = globals().APP_PATH.toStdString();
    Data1.RecordSource = "Close.Txt";
    attempt([&] { Data1.Refresh(); });  // whatever comes of it, the file is free
    MSFlexGrid1->setEmptyText(
        tr("The file was handed to another program. Refresh shows it again."));
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
