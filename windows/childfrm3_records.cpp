// The records of the data entry window: editing, saving, moving, and the tools that do it.
#include <algorithm>

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QStatusBar>

#include "access/schema.h"
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

bool ChildFrm3::anyChanged() const
{
    return std::any_of(bound_.begin(), bound_.end(), [](const auto* b) { return b->changed(); });
}

void ChildFrm3::beginEdit()
{
    if (adding_ || editing_)
        return;
    Data1.Recordset().Edit();
    editing_ = true;
}

/// Writes what was changed. When the engine refuses, the texts stay in their boxes and the record
/// stays open.
void ChildFrm3::writeChanges()
{
    beginEdit();
    auto& records = Data1.Recordset();
    for (const BoundField* field : bound_)
        if (field->changed())
            field->writeTo(records);
    records.Update();
    const bool added = adding_;
    adding_ = editing_ = false;
    for (BoundField* field : bound_)
        field->forgetChange();
    Data1.commit();
    if (added)
        records.moveToBookmark(records.lastModified());
    shell_.recordsChanged(*this);
}

void ChildFrm3::dropChanges()
{
    if (adding_ || editing_)
        Data1.Recordset().CancelUpdate();
    adding_ = editing_ = false;
}

void ChildFrm3::showRecord()
{
    auto& records = Data1.Recordset();
    for (BoundField* field : bound_)
        field->show(records.value(field->position()));
    pane->Frame1->setEnabled(true);
}

void ChildFrm3::showPosition()
{
    ID_DataPosition->setText(
        adding_
            ? tr("New record")
            : u"Record %Position: "_s +
                  QString::number(static_cast<float>(Data1.Recordset().PercentPosition()), 'g', 7));
}

void ChildFrm3::tellNoRecords()
{
    prompt().tell(this, kNoneLeft);
}

/// Opens the record for editing and says where it stands; the ends of the table are not passed.
void ChildFrm3::Data1_Reposition()
{
    if (EntryMode == u'A')
        return;
    editing_ = false;
    auto& records = Data1.Recordset();
    const Outcome done = attempt([&] {
        const bool eof = records.Eof();
        const bool bof = records.Bof();
        ToolBarComp1->enable(u"ID_NextRecord"_s, !eof);
        ToolBarComp1->enable(u"ID_PreviousRecord"_s, !bof);
        if ((eof || bof) && RecordTotal <= 0)
            return tellNoRecords();
        if (eof)
            records.MoveLast();
        else if (bof)
            records.MoveFirst();
        showPosition();
        if (writable_)
            beginEdit();
    });
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
        auto& records = Data1.Recordset();
        if (!records.Eof() || !records.Bof()) {
            records.MoveFirst();
            standOnRecord();
        }
    });
}

/// Shows the record that a move has come to.
void ChildFrm3::standOnRecord()
{
    editing_ = false;
    if (EntryMode == u'A')
        attempt([this] {
            auto& records = Data1.Recordset();
            if (records.Eof())
                records.MoveLast();
            else if (records.Bof())
                records.MoveFirst();
            showPosition();
        });
    Data1_Reposition();
    const Outcome shown = attempt([this] { showRecord(); });
    if (shown)
        return;
    for (BoundField* field : bound_)
        field->clear();
    pane->Frame1->setEnabled(false);
    ID_DataPosition->clear();
}

void ChildFrm3::moveAway(void (velnor::Recordset::*step)())
{
    if (!adding_ && anyChanged())
        writeChanges();
    dropChanges();
    (Data1.Recordset().*step)();
    standOnRecord();
}

// The tools.

void ChildFrm3::AddRecord()
{
    if (anyChanged())
        writeChanges();
    dropChanges();
    const QChar before = EntryMode;
    EntryMode = u'A';
    const Outcome begun = attempt([this] { Data1.Recordset().AddNew(); });
    if (!begun) {
        EntryMode = before;
        throw EngineError(static_cast<EngineErrorNumber>(begun.number),
                          begun.description.toStdString());
    }
    adding_ = true;
    ++RecordTotal;
    showRecord();
    showPosition();
    if (!Text1.isEmpty() && Text1.first()->isEnabled())
        Text1.first()->setFocus();
}

void ChildFrm3::SaveRecord()
{
    writeChanges();
    EntryMode = u'E';
    standOnRecord();
    shell_.statusBar()->showMessage(tr("Record saved."), 4000);
}

void ChildFrm3::DeleteRecord()
{
    const QString shown = bound_.isEmpty() || Text1.isEmpty() ? QString() : [this] {
        for (const BoundField* field : bound_)
            if (field->box() == Text1.first())
                return field->text();
        return QString();
    }();
    if (!prompt().ask(this, u"Are you sure you want to Delete Record - "_s + shown + u" ?"_s))
        return;
    const bool wasNew = adding_;
    dropChanges();
    auto& records = Data1.Recordset();
    if (!wasNew) {
        records.Delete();
        Data1.commit();
    }
    --RecordTotal;
    EntryMode = u'E';
    if (!wasNew)
        attempt([&] { records.MovePrevious(); });  // nothing in front: the ends are seen to
    standOnRecord();
    if (!wasNew)
        shell_.recordsChanged(*this);
}

/// A Paradox table is locked while a control is attached to it, so that other programs' records
/// show only after it was attached elsewhere. Other formats need none of this.
void ChildFrm3::RefreshEntry()
{
    if (connect_ != u"Paradox 5.x;")
        return;
    if (!adding_ && anyChanged())
        writeChanges();
    dropChanges();
    const auto attach = [this](const QString& folder, const QString& source, const QString& word) {
        Data1.DatabaseName = folder.toStdString();
        Data1.RecordSource = source.toStdString();
        Data1.Connect = word.toStdString();
        loading_ = true;
        const Outcome done = attempt([this] { Data1.Refresh(); });
        loading_ = false;
        return done;
    };
    attach(globals().APP_PATH, u"Velnor.Txt"_s, u"Text;"_s);  // whatever comes of it
    LoadTableStructure(folder_, connect_, fileName_);
    Data1.Type = RecordsetType::Table;
    EntryMode = u'E';
    if (const Outcome back = attach(folder_, fileName_, connect_); !back)
        return Data1_Error(back.number, back.description);
    RecordTotal = static_cast<qint32>(Data1.Recordset().RecordCount());
    Data1_Reposition();
    BuildEntryFields();
}

void ChildFrm3::runTool(const QString& tool)
{
    auto& records = Data1.Recordset();
    using R = velnor::Recordset;
    if (tool == u"ID_AddRecord")
        AddRecord();
    else if (tool == u"ID_SaveRecord")
        SaveRecord();
    else if (tool == u"ID_DeleteRecord")
        DeleteRecord();
    else if (tool == u"ID_FirstRecord" && !records.Bof())
        moveAway(&R::MoveFirst);
    else if (tool == u"ID_PreviousRecord" && !records.Bof())
        moveAway(&R::MovePrevious);
    else if (tool == u"ID_NextRecord" && !records.Eof())
        moveAway(&R::MoveNext);
    else if (tool == u"ID_LastRecord" && !records.Eof())
        moveAway(&R::MoveLast);
    else if (tool == u"ID_Refresh")
        RefreshEntry();
}

void ChildFrm3::ToolBarComp1_Click(const QString& tool)
{
    shell_.statusBar()->clearMessage();
    const Outcome done = attempt([&] { runTool(tool); });
    if (!done)
        tellRefused(done.description);
}

void ChildFrm3::tellRefused(const QString& description)
{
    shell_.statusBar()->showMessage(description);  // which field, and why
    prompt().tell(this, u"Data Required or Data Invalid - Enter Data Correctly"_s);
}

}  // namespace velnor
