// The records of the data entry window: what happens around Data1's moves, and the tools.
#include <QLabel>
#include <QScopedValueRollback>
#include <QStatusBar>

#include "core/attempt.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "windows/bound_field.h"
#include "windows/childfrm3.h"
#include "windows/entry_pane.h"
#include "windows/mdiform1.h"
#include "windows/tool_set.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

constexpr int kNoCurrentRecord = static_cast<int>(EngineErrorNumber::NoCurrentRecord);
constexpr int kReadOnly = static_cast<int>(EngineErrorNumber::ReadOnly);
constexpr int kClosedSource = 524;
constexpr int kNoSuchMember = 438;

const QString kNoneLeft =
    u"No Records Present. Pack or Compact Table or Copy Records into Table to Proceed"_s;

QString dataError(int number, const QString& description)
{
    return u"Data Error: %1 %2"_s.arg(QString::number(number), description);
}

}  // namespace

void ChildFrm3::setMode(QChar mode)
{
    EntryMode = mode;
    // What lies past the ends is Data1_Reposition's business, which a new record is not.
    Data1.BOFAction = Data1.EOFAction = mode == u'A' ? EndAction::Stay : EndAction::Pass;
}

void ChildFrm3::Data1_Validate(DataAction& action, bool& save)
{
    const bool moves = action >= DataAction::MoveFirst && action <= DataAction::MoveLast;
    if (moves && Data1.adding())
        save = false;  // only SaveRecord keeps a new record: required
    saved_ = saved_ || save || action == DataAction::Update || action == DataAction::Delete;
}

void ChildFrm3::tellOthers()
{
    if (std::exchange(saved_, false))
        shell_.recordsChanged(*this);
}

/// What was typed is safe in the file, and the record stays the one in hand.
void ChildFrm3::saveWithoutMoving()
{
    const bool wasNew = Data1.adding();
    Data1.UpdateRecord();
    if (wasNew)
        setMode(u'E');
    saved_ = true;
    tellOthers();
}

void ChildFrm3::showPosition()
{
    ID_DataPosition->setText(
        Data1.adding()
            ? tr("New record")
            : u"Record %Position: "_s +
                  QString::number(static_cast<float>(Data1.Recordset().PercentPosition()), 'g', 7));
}

void ChildFrm3::openForEditing()
{
    if (writable_)
        Data1.Recordset().Edit();
}

void ChildFrm3::backToTheEnd(bool last)
{
    auto& records = Data1.Recordset();
    last ? records.MoveLast() : records.MoveFirst();
    Data1.UpdateControls();
}

/// Opens the record for editing and says where it stands; the ends of the table are not passed.
void ChildFrm3::Data1_Reposition()
{
    auto& records = Data1.Recordset();
    const Outcome done = attempt([&] {
        if (EntryMode == u'A')
            return showPosition();
        const bool eof = records.Eof();
        const bool bof = records.Bof();
        ToolBarComp1->enable(u"ID_NextRecord"_s, !eof);
        ToolBarComp1->enable(u"ID_PreviousRecord"_s, !bof);
        if ((eof || bof) && RecordTotal <= 0)
            return prompt().tell(this, kNoneLeft);
        if (eof || bof)
            backToTheEnd(eof);
        showPosition();
        openForEditing();
    });
    const bool onRecord = Data1.adding() || (!records.Eof() && !records.Bof());
    pane->Frame1->setEnabled(onRecord);
    if (!onRecord)
        ID_DataPosition->clear();
    if (done || done.number == kClosedSource || done.number == kNoCurrentRecord)
        return;
    if (done.number == kReadOnly) {  // said once; from then on it is only looked at
        writable_ = false;
        for (BoundField* field : bound_)
            field->setWritable(false);
    }
    prompt().tell(this, dataError(done.number, done.description));
}

void ChildFrm3::Data1_Error(int number, const QString& description)
{
    if (number != kNoCurrentRecord && number != kClosedSource && number != kNoSuchMember) {
        prompt().tell(this, dataError(number, description));
        return;
    }
    attempt([this] {
        if (Data1.Recordset().Eof() && Data1.Recordset().Bof())
            return;
        backToTheEnd(false);
        Data1_Reposition();
    });
}

// The tools.

void ChildFrm3::AddRecord()
{
    const QChar before = EntryMode;
    setMode(u'A');
    const Outcome begun = attempt([this] { Data1.AddNew(); });
    if (!begun) {
        setMode(before);
        throw EngineError(static_cast<EngineErrorNumber>(begun.number),
                          begun.description.toStdString());
    }
    ++RecordTotal;
    pane->Frame1->setEnabled(true);
    showPosition();
    if (!Text1.isEmpty() && Text1.first()->isEnabled())
        Text1.first()->setFocus();
}

void ChildFrm3::SaveRecord()
{
    if (!Data1.adding())
        Data1.Recordset().Edit();  // there may be no record to save
    Data1.Update();
    setMode(u'E');
    Data1_Reposition();
    shell_.statusBar()->showMessage(tr("Record saved."), 4000);
}

QString ChildFrm3::firstText() const
{
    for (const BoundField* field : bound_)
        if (!Text1.isEmpty() && field->box() == Text1.first())
            return field->text();
    return {};
}

void ChildFrm3::DeleteRecord()
{
    if (!prompt().ask(this, u"Are you sure you want to Delete Record - "_s + firstText() + u" ?"_s))
        return;
    const bool wasNew = Data1.adding();
    Data1.Delete();
    --RecordTotal;
    setMode(u'E');
    // A new record was not there yet: the one behind it shows again.
    if (wasNew || !attempt([this] { Data1.MovePrevious(); }))
        Data1_Reposition();
}

/// The record shows as the file has it; a new one is given up.
void ChildFrm3::takeBack()
{
    const bool wasNew = Data1.adding();
    attempt([this] { Data1.UpdateControls(); });
    if (wasNew) {
        --RecordTotal;
        setMode(u'E');
    }
    Data1_Reposition();
}

void ChildFrm3::attachTo(const QString& folder, const QString& source, const QString& connect)
{
    Data1.DatabaseName = folder.toStdString();
    Data1.RecordSource = source.toStdString();
    Data1.Connect = connect.toStdString();
    const QScopedValueRollback opening(loading_, true);
    Data1.Refresh();
}

/// A Paradox table is locked while a control is attached to it, so that other programs' records
/// show only after it was attached elsewhere. Other formats need none of this.
void ChildFrm3::RefreshEntry()
{
    if (source_.connect != u"Paradox 5.x;")
        return;
    if (!Data1.adding() && Data1.anyChanged())
        saveWithoutMoving();
    for (BoundField* field : bound_)
        Data1.unbind(*field);
    attempt([this] { attachTo(globals().APP_PATH, u"Velnor.Txt"_s, u"Text;"_s); });
    source_.readStructure();
    setMode(u'E');
    const Outcome back = attempt([this] {
        const QScopedValueRollback opening(loading_, true);
        source_.open(Data1);
    });
    if (!back)
        return Data1_Error(back.number, back.description);
    RecordTotal = static_cast<qint32>(Data1.Recordset().RecordCount());
    BuildEntryFields();
    if (!closing_)
        Data1_Reposition();
}

void ChildFrm3::runTool(const QString& tool)
{
    auto& records = Data1.Recordset();
    if (tool == u"ID_AddRecord")
        AddRecord();
    else if (tool == u"ID_SaveRecord")
        SaveRecord();
    else if (tool == u"ID_DeleteRecord")
        DeleteRecord();
    else if (tool == u"ID_FirstRecord" && !records.Bof())
        Data1.MoveFirst();
    else if (tool == u"ID_PreviousRecord" && !records.Bof())
        Data1.MovePrevious();
    else if (tool == u"ID_NextRecord" && !records.Eof())
        Data1.MoveNext();
    else if (tool == u"ID_LastRecord" && !records.Eof())
        Data1.MoveLast();
    else if (tool == u"ID_Refresh")
        RefreshEntry();
}

void ChildFrm3::ToolBarComp1_Click(const QString& tool)
{
    shell_.statusBar()->clearMessage();
    const Outcome done = attempt([&] { runTool(tool); });
    tellOthers();
    if (!done)
        tellRefused(done.description);
}

void ChildFrm3::tellRefused(const QString& description)
{
    shell_.statusBar()->showMessage(description);  // which field, and why
    prompt().tell(this, u"Data Required or Data Invalid - Enter Data Correctly"_s);
}

}  // namespace velnor
