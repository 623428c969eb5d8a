#include "copy/copy_tab.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>

#include "access/routing.h"
#include "access/schema.h"
#include "access/workspace.h"
#include "copy/copy_log.h"
#include "copy/field_line.h"
#include "copy/field_match.h"
#include "copy/line_list.h"
#include "copy/query_members.h"
#include "core/attempt.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/upcalls.h"
#include "core/wait_pointer.h"
#include "core/window_list.h"

namespace velnor {

CopyTab::CopyTab(QWidget* parent) : QWidget(parent)
{
    setObjectName("CopyTab");
    buildControls();
    connectControls();
    showEmptyStates();
}

QList<CopyCommand> CopyTab::commands()
{
    return {
        {"ID_mnuSelectCopyFrFile", "Select Copy From File",
         "Select File from which to Copy Records", edge(this, &CopyTab::OpenFromBtn_Click)},
        {"ID_mnuSelectCopyToFile", "Select Copy To File", "Select Copy To File",
         edge(this, &CopyTab::OpenToBtn_Click)},
        {"ID_mnuAutoMatchFields", "Auto Match Fields",
         "Automatically Match Fields between From and To Files",
         edge(this, &CopyTab::SelectAllBtn_Click)},
        {"ID_mnuHelpwithCopy",
         "Help with Copy",
         "Help with Copying Records between From and To File",
         [] { upcalls().ShowHelp("copy"); }},
    };
}

/// Says what runs before it starts: the window doesn't paint by itself until it has ended.
void CopyTab::say(const QString& text)
{
    emit statusText(text);
    if (isVisible())
        window()->repaint();
}

// Opening and closing a side.

/// When the dialog is cancelled WORK_FILE stays as it stood, and the caller goes on with that:
/// required.
void CopyTab::SelectCopyFile()
{
    FileQuestion question;
    question.title = "Select Database File to Open";
    question.filter = kOpenFilter;
    question.filterIndex = filterIndex_;
    question.folder = folder_;
    const auto chosen = prompt().file(this, question);
    if (!chosen || chosen->isEmpty())
        return;
    const QString& name = chosen->first();
    if (text::trim(name).isEmpty())
        return;
    const int backslash = text::instrRev(name, "\\");
    if (text::instrRev(name, ".") > 1 && backslash > 1)
        folder_ = text::left(name, backslash - 1);
    filterIndex_ = question.filterIndex;
    globals().WORK_FILE = name;
    Label3[2]->hide();
}

void CopyTab::OpenFromBtn_Click()
{
    SelectCopyFile();
    openWorkFile(0);
}

void CopyTab::OpenToBtn_Click()
{
    SelectCopyFile();
    openWorkFile(1);
}

void CopyTab::openWorkFile(int index)
{
    setCopyFile(index);
    LoadCopyFields(index);
}

void CopyTab::SetCopyFromFile()
{
    setCopyFile(0);
}

void CopyTab::SetCopyToFile()
{
    setCopyFile(1);
}

void CopyTab::setCopyFile(int index)
{
    auto& G = globals();
    CopySide& s = side(index);
    SetFileConnection(G.WORK_FILE);
    s.FileType = G.FILE_EXT;
    s.FilePath = G.WORK_FILE;
    s.Password = G.DATABASE_PASSWORD;
    s.Connect = G.CONNECT_STRING;
    s.Database = G.DATABASE_NAME;
    s.Record = G.RECORD_SOURCE;
    if (s.FileType == "MDB")
        s.Connect = text::trim(s.Password).isEmpty() ? "Access 2000;" : ";pwd=" + s.Password;
    Label3[index]->setText(s.FilePath);
}

void CopyTab::CloseFromBtn_Click()
{
    closeSide(0);
}

void CopyTab::CloseToBtn_Click()
{
    closeSide(1);
}

/// The matches of both sides go with either.
void CopyTab::closeSide(int index)
{
    Label3[index]->setText("'");
    Label3[index]->hide();
    CMBRECORD[index]->clear();
    CMBRECORD[index]->clearEditText();
    side(index).Fields.close();
    List3[index]->clear();
    List3[2]->clear();
    enableMatchButtons();
    showEmptyStates();
}

bool CopyTab::LoadCopyFields(int index)
{
    bool begun = false;
    attempt([&] {  // no word on a failure: what was added stays
        CopySide& s = side(index);
        closeSide(index);
        Label3[index]->setText(s.FilePath);
        Label3[index]->show();
        if (s.hasRecordSources() && listTableNames(s.Database, s.Connect).listed) {
            for (int i = 0; i < globals().TABLE_COUNT; ++i)
                CMBRECORD[index]->addItem(globals().TABLE_NAMES[i]);
        }
        s.Fields.count = 0;
        CMBRECORD[index]->setEditText(s.Record);
        begun = true;
        loadFields(index);
    });
    List3[index]->setLines(side(index).Fields.lines);
    showEmptyStates();
    return begun;
}

void CopyTab::loadFields(int index)
{
    CopySide& s = side(index);
    if (const int dot = text::instrRev(s.Record, "."); s.inFolder() && dot > 0)
        s.Record = text::left(s.Record, dot - 1);
    const WaitPointer wait;
    const Outcome read = attempt([&] { s.readFields(workspace()); });
    if (read.number != static_cast<int>(EngineErrorNumber::UnexpectedFormat) ||
        s.Connect != "dBASE 5.0;")
        return;
    // A table of FoxPro that dBASE refuses.
    s.Connect = "FoxPro 3.0;";
    attempt([&] { s.readFields(workspace()); });
}

void CopyTab::CMBRECORD_Click(int index)
{
    if (recordClickGuard_)
        return;
    QComboBox& combo = *CMBRECORD[index];
    const int noted = combo.currentIndex();
    side(index).Record = combo.itemText(noted);
    LoadCopyFields(index);
    recordClickGuard_ = true;  // selecting again is no click
    if (noted != -1)
        combo.setCurrentIndex(noted);
    recordClickGuard_ = false;
}

void CopyTab::CHKCPYQRY_Click()
{
    COPY_FROM_QUERY = false;
    if (!CHKCPYQRY->isChecked() || !globals().QUERYWINDOW_FLG)
        return;
    const QString queryFile = queryMembers().QueryFile;
    if (queryFile.toUpper() == Label3[0]->text().toUpper()) {
        COPY_FROM_QUERY = true;
    } else if (List3[0]->count() == 0 && Label3[0]->isHidden()) {
        globals().WORK_FILE = queryFile;
        SetCopyFromFile();
        LoadCopyFields(0);
        COPY_FROM_QUERY = true;
    }  // another From file is open: the box stays ticked, and nothing is said
}

// Matching.

void CopyTab::enableMatchButtons()
{
    const bool any = List3[2]->count() > 0;
    CancelBtn->setEnabled(any);
    CopyBtn->setEnabled(any);
}

void CopyTab::SelectBtn_Click()
{
    const int from = List3[0]->highlighted();
    const int to = List3[1]->highlighted();
    if (from < 0 && to < 0) {
        prompt().tell(this, "Please Select From and To Database File Fields to Match");
        return;
    }
    List3[2]->addLine(matchLine(List3[0]->lines().value(from), List3[1]->lines().value(to)));
    enableMatchButtons();
}

/// A failure on the way leaves the matches found so far, and the buttons as they were.
void CopyTab::SelectAllBtn_Click()
{
    List3[2]->clear();
    std::vector<FieldPair> pairs;
    const Outcome outcome = attempt([&] { matchFields(From.Fields, To.Fields, pairs); });
    QStringList lines;
    for (const FieldPair& pair : pairs)
        lines.append(matchLine(From.Fields.lines[pair.from], To.Fields.lines[pair.to]));
    List3[2]->setLines(lines);
    if (!outcome)
        return tellUnexpected(outcome);
    if (!lines.isEmpty())
        enableMatchButtons();
}

void CopyTab::CancelBtn_Click()
{
    delete List3[2]->takeItem(List3[2]->highlighted());
    if (List3[2]->count() == 0)
        enableMatchButtons();
}

// Copying.

void CopyTab::BuildFieldMatches()
{
    buildFieldMatches(List3[2]->lines(), List3[0]->lines(), List3[1]->lines(), Matches);
}

bool CopyTab::CheckFieldTypes()
{
    return checkFieldTypes(Matches, List3[2]->count(), From.Fields, To.Fields,
                           [this](int line, const QString& question) {
                               List3[2]->highlight(line);
                               return prompt().ask(this, question);
                           });
}

void CopyTab::CopyBtn_Click()
{
    auto& G = globals();
    if (!prompt().ask(this, "Do you want to Append - " + CMBRECORD[0]->currentText() +
                                " Records to " + CMBRECORD[1]->currentText()))
        return;
    BuildFieldMatches();
    if (!CheckFieldTypes()) {
        prompt().tell(this, "       File not Copied");
        return;
    }
    if (G.PROMPT_SAVE_COPYTO)
        backUpTarget();
    const bool closed = CloseWindowOfFile(From.FilePath);
    CopyRecords();
    if (closed) {  // that window came to the front: the result is here
        window()->raise();
        window()->activateWindow();
    }
    if (G.LOG_COPY)
        WriteCopyLog();
}

bool CopyTab::WriteCopyLog()
{
    return writeCopyLog(
        {Label3[0]->text(), CMBRECORD[0]->currentText(), CMBRECORD[1]->currentText()},
        List3[2]->lines(), this);
}

void CopyTab::ClearCopyLogBtn_Click()
{
    clearCopyLog(this);
}

void CopyTab::backUpTarget()
{
    QString path = Label3[1]->text();
    if (To.inFolder())
        path += "\\" + To.Record;
    attempt([&] { upcalls().SaveFileAs(path); });
    globals().FILE_EXT = To.FileType;
}

CopyJob CopyTab::job() const
{
    const auto end = [](const CopySide& s) {
        return CopyJob::End{s.Database.toStdString(), s.Connect.toStdString(),
                            s.Record.toStdString()};
    };
    return {end(From), end(To), fieldPairs(Matches, List3[2]->count())};
}

void CopyTab::CopyRecords()
{
    const WaitPointer wait;
    say(tr("Copying records from %1 to %2...")
            .arg(CMBRECORD[0]->currentText(), CMBRECORD[1]->currentText()));
    From.Connect = copyFromConnect(From.Connect, From.Password);
    To.Connect = copyToConnect(To.Connect, To.Password, globals().DATABASE_PASSWORD);
    if (COPY_FROM_QUERY)
        From.Record = queryMembers().QuerySQL;  // kept until the next load of the From side

    CopyTally tally;
    const Outcome copied = attempt([&] { runCopy(workspace(), job(), tally); });
    showResult(copied ? "Copy Successful" : "Copy Unsuccessful");
    QString told =
        copied ? tr("Copy successful: %1 records appended.").arg(text::thousands(tally.copied))
               : tr("Copy unsuccessful: it ended after %1 appended records.")
                     .arg(text::thousands(tally.copied));
    for (const std::string& sheet : tally.furtherSheets)
        told += tr(" The sheet was full; records went on in %1.").arg(QString::fromStdString(sheet));
    emit statusText(told);
}

void CopyTab::showResult(const QString& text)
{
    Label3[2]->setText(text);
    Label3[2]->show();
    Label3[2]->repaint();
}

}  // namespace velnor
