#include "windows/childfrm3.h"

#include <QCheckBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopedValueRollback>
#include <QStatusBar>

#include "access/workspace.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/wait_pointer.h"
#include "windows/bound_field.h"
#include "windows/child_geometry.h"
#include "windows/entry_pane.h"
#include "windows/mdiform1.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr int kFileInUse = static_cast<int>(EngineErrorNumber::FileInUse);
}

ChildFrm3::ChildFrm3(MDIForm1& shell) : DocumentChild(shell), Data1(workspace())
{
    Data1.onReposition = [this] {
        if (!loading_)
            Data1_Reposition();
    };
    Data1.onValidate = [this](DataAction& action, bool& save) { Data1_Validate(action, save); };
    setMode(u'E');
    buildControls();
}

ChildFrm3::~ChildFrm3() = default;

void ChildFrm3::Form_Load()
{
    ++shell_.NUM_CHILDWINDOWS;
    shell_.CHILD_LEFT += kCascadeLeft;
    shell_.CHILD_TOP += kCascadeTop;
    FILE_USE = globals().SELECTED_FILE;
    source_ = TableSource(FILE_USE, ConnectForm::PasswordBehind);
    const WaitPointer wait;
    const Outcome opened = attempt([this] { openTable(); });
    if (!opened)
        tellOpening(opened.number, opened.description);
    nameWindow();
    applyOptions();
}

void ChildFrm3::openTable()
{
    clearEntryFields();
    setMode(u'E');
    writable_ = true;
    if (!chooseTable())
        return;
    source_.readStructure();
    if (!text::trim(Dir(FILE_USE)).isEmpty())
        openRecords();
    BuildEntryFields();
    if (opened_ || closing_)
        return;
    ++shell_.DATABASE_COUNT;
    opened_ = true;
}

/// RECORD_SOURCE, or the first table. False when people cancelled the login: the window goes again.
bool ChildFrm3::chooseTable()
{
    if (source_.inFolder())
        return true;
    closing_ = !source_.listTables(text::trim(globals().RECORD_SOURCE));
    if (!closing_)
        HLDTABLE = source_.table;
    return !closing_;
}

void ChildFrm3::openRecords()
{
    {
        const QScopedValueRollback opening(loading_, true);
        source_.open(Data1);
    }
    startRecords();
}

/// A table without records opens on a new one.
void ChildFrm3::startRecords()
{
    RecordTotal = static_cast<qint32>(Data1.Recordset().RecordCount());
    EmptyTable = RecordTotal == 0;
    if (!EmptyTable)
        return Data1_Reposition();
    attempt([this] { AddRecord(); });  // a file for reading only: the fields tell it
}

void ChildFrm3::tellOpening(int number, const QString& description)
{
    closing_ = true;
    prompt().tell(this, number == kFileInUse
                            ? u"File already Open - Please close File to Edit Data"_s
                            : u"Error - %1 - %2"_s.arg(QString::number(number), description));
}

void ChildFrm3::nameWindow()
{
    setCaption({});  // its own old name is free
    setCaption(shell_.uniqueCaption(FILE_USE + u" - DATA ENTRY - "_s + source_.table));
    shell_.renameInWindowList(this);
}

void ChildFrm3::enableTools()
{
    shell_.EnableButtons();
}

void ChildFrm3::Form_Activate()
{
    if (closing_) {
        unloadSoon();
        return;
    }
    if (auto* first =
            Text1.isEmpty() || firstActivated_ ? nullptr : qobject_cast<QLineEdit*>(Text1.first()))
        first->selectAll();  // ready to be typed over
    firstActivated_ = true;
    shell_.setWindowTitle(caption() + u" - "_s + QString::fromLatin1(kProgramTitle));
    globals().SELECTED_FILE = FILE_USE;
    attempt([&] { shell_.showFileLength(text::thousands(fileLength(FILE_USE)) + u" Bytes"_s); });
}

bool ChildFrm3::mayClose()
{
    if (closing_ || !Data1.isOpen() || !Data1.anyChanged())
        return true;
    const Outcome written = attempt([this] { saveWithoutMoving(); });
    if (!written)
        tellRefused(written.description + u" "_s + tr("Escape takes the changes back."));
    return bool(written);
}

void ChildFrm3::showTable(const QString& name)
{
    if (name == HLDTABLE)
        return;
    if (!mayClose()) {
        shell_.showTables(*this);
        return;
    }
    const WaitPointer wait;
    auto& G = globals();
    G.RECORD_SOURCE = name;
    G.DATABASE_PASSWORD = source_.password;
    const Outcome opened = attempt([this] { openTable(); });
    nameWindow();
    if (!opened)
        Data1_Error(opened.number, opened.description);
    if (closing_)
        unloadSoon();
}

void ChildFrm3::mnuFileRefresh_Click()
{
    ToolBarComp1_Click(u"ID_Refresh"_s);
}

void ChildFrm3::mnuFileSaveAs_Click()
{
    if (mayClose())
        DocumentChild::mnuFileSaveAs_Click();
}

void ChildFrm3::mnuEditCopy_Click()
{
    QWidget* box = focusWidget();
    if (auto* line = qobject_cast<QLineEdit*>(box))
        line->copy();
    else if (auto* memo = qobject_cast<QPlainTextEdit*>(box))
        memo->copy();
}

void ChildFrm3::releaseFile()
{
    if (!mayClose())
        return;
    clearEntryFields();
    // Whatever comes of it, the file is free.
    attempt([this] { attachTo(globals().APP_PATH, u"Close.Txt"_s, u"Text"_s); });
}

bool ChildFrm3::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn)
        pane->reveal(*qobject_cast<QWidget*>(watched));
    if (event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && Data1.isOpen()) {
        takeBack();
        return true;
    }
    return DocumentChild::eventFilter(watched, event);
}

void ChildFrm3::Form_Unload()
{
    Data1.close();
    --shell_.NUM_CHILDWINDOWS;
    shell_.CHILD_LEFT = qMax(0, shell_.CHILD_LEFT - kCascadeLeft);
    shell_.CHILD_TOP = qMax(0, shell_.CHILD_TOP - kCascadeTop);
    shell_.childGone(this);
    if (opened_)
        --shell_.DATABASE_COUNT;
}

}  // namespace velnor
