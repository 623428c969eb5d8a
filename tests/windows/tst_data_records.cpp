// The data entry window on records: modes, moves that save, deletes, refusals, the ends.
#include <QCheckBox>
#include <QLabel>

#include "tests/windows/data_entry_case.h"
#include "windows/childfrm1.h"
#include "windows/entry_pane.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

namespace {
const QString kInvalid = "Data Required or Data Invalid - Enter Data Correctly";
const QString kNoRecords =
    "No Records Present. Pack or Compact Table or Copy Records into Table to Proceed";
}  // namespace

class TstDataRecords : public QObject, DataEntryCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void moving_savesWhatWasTyped_andNothingElse()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 0), "Ada L.");
        child->CHKLOGIC[0]->click();
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QCOMPARE(staff()[0], (QStringList{"Ada L.", "36", "first\r\nsecond", "False"}));
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ada L.");
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(child->RecordTotal, 3);
    }

    void lookingAtRecords_changesNoByte()
    {
        makeStaff();
        const std::string before = fixture_->sandbox.read("C:\\data\\staff.mdb");
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_NextRecord");
        tool(child, "ID_LastRecord");
        tool(child, "ID_FirstRecord");
        child->mnuFileClose_Click();
        QVERIFY(fixture_->sandbox.read("C:\\data\\staff.mdb") == before);
    }

    void pastTheLastRecord_staysOnIt_withNextOff()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        QCOMPARE(line(child, 0)->text(), "Cleo");
        QVERIFY(child->ToolBarComp1->enabled("ID_NextRecord"));
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Cleo");
        QVERIFY(!child->ToolBarComp1->enabled("ID_NextRecord"));
        QVERIFY(fixture_->prompt.told.isEmpty());
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QVERIFY(child->ToolBarComp1->enabled("ID_NextRecord"));
        tool(child, "ID_FirstRecord");
        tool(child, "ID_PreviousRecord");
        QCOMPARE(line(child, 0)->text(), "Ada");
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
        tool(child, "ID_NextRecord");
        QVERIFY(child->ToolBarComp1->enabled("ID_PreviousRecord"));
    }

    void aNewRecord_isSaved_andStoodOn()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        QCOMPARE(child->EntryMode, QChar('A'));
        QCOMPARE(child->RecordTotal, 4);
        QCOMPARE(line(child, 0)->text(), "");
        type(line(child, 0), "Dan");
        type(line(child, 1), "41");
        tool(child, "ID_SaveRecord");
        QCOMPARE(child->EntryMode, QChar('E'));
        QCOMPARE(line(child, 0)->text(), "Dan");
        QCOMPARE(staff().last(), (QStringList{"Dan", "41", "(Null)", "False"}));
        type(line(child, 1), "42");  // at once open for editing again
        tool(child, "ID_FirstRecord");
        QCOMPARE(staff().last()[1], "42");
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void aNewRecordNotSaved_isDroppedByAMove()  // required: only SaveRecord keeps it
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Dan");
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QCOMPARE(staff().size(), 3);
        QCOMPARE(child->RecordTotal, 4);  // kept by hand
        type(line(child, 1), "50");
        tool(child, "ID_SaveRecord");
        QCOMPARE(child->EntryMode, QChar('E'));
        QCOMPARE(staff()[1][1], "50");
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void closing_savesWhatWasTyped()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Eve");
        child->mnuFileClose_Click();
        QVERIFY(shell_->children().isEmpty());
        QCOMPARE(staff().last()[0], "Eve");
        QCOMPARE(shell_->CHILD_LEFT, 0);
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QVERIFY(!shell_->ToolBarComp1->enabled("ID_CloseBtn"));
    }

    void anInvalidValue_isTold_andStaysInItsBox()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 1), "many");
        tool(child, "ID_NextRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kInvalid});
        QCOMPARE(line(child, 0)->text(), "Ada");
        QCOMPARE(line(child, 1)->text(), "many");
        QCOMPARE(staff()[0][1], "36");
        child->mnuFileClose_Click();  // nothing is thrown away behind people's backs
        QCOMPARE(shell_->children().size(), 1);
        QCOMPARE(fixture_->prompt.told.size(), 2);
        shell_->close();
        QCOMPARE(shell_->children().size(), 1);
        QVERIFY(globals().MDI_OPEN_FLG);
        QTest::keyClick(line(child, 1), Qt::Key_Escape);
        QCOMPARE(line(child, 1)->text(), "36");
        child->mnuFileClose_Click();
        QVERIFY(shell_->children().isEmpty());
    }

    void aRequiredFieldLeftEmpty_isTold_andCanBeMended()
    {
        makeAccessFile("C:\\data\\need.mdb");
        makeTable("C:\\data\\need.mdb", kAccess, "Need",
                  {{"Key", FieldType::Text, 10, true}, {"Rest", FieldType::Text, 10}});
        appendRows("C:\\data\\need.mdb", kAccess, "Need", {{"one", "x"}});
        ChildFrm3* child = open("C:\\data\\need.mdb");
        tool(child, "ID_AddRecord");
        type(line(child, 1), "y");
        tool(child, "ID_SaveRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kInvalid});
        QCOMPARE(child->EntryMode, QChar('A'));
        type(line(child, 0), "two");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data\\need.mdb", kAccess, "Need").last(), (QStringList{"two", "y"}));
    }

    void anEmptiedBox_isNull()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 1), "");
        tool(child, "ID_SaveRecord");
        QCOMPARE(staff()[0][1], "(Null)");
    }

    void aDeletion_isAskedFor_byTheFirstText()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Cleo ?", false);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(staff().size(), 3);
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Cleo ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(staff().size(), 2);
        QCOMPARE(child->RecordTotal, 2);
        QCOMPARE(line(child, 0)->text(), "Ben");
        tool(child, "ID_FirstRecord");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Ada ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
    }

    void deletingTheLastOneLeft_saysThatThereAreNone()
    {
        makeAccessFile("C:\\data\\one.mdb");
        makeTable("C:\\data\\one.mdb", kAccess, "One", {{"Key", FieldType::Text, 10}});
        appendRows("C:\\data\\one.mdb", kAccess, "One", {{"only"}});
        ChildFrm3* child = open("C:\\data\\one.mdb");
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - only ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kNoRecords});
        QVERIFY(!child->ToolBarComp1->enabled("ID_PreviousRecord"));
        QCOMPARE(line(child, 0)->text(), "");
        QCOMPARE(child->RecordTotal, 0);
        tool(child, "ID_AddRecord");  // and it goes on from there
        QVERIFY(line(child, 0)->isEnabled());
        type(line(child, 0), "again");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data\\one.mdb", kAccess, "One"), QList<QStringList>{{"again"}});
    }

    void anEmptyTable_opensOnANewRecord()
    {
        makeTable("C:\\data", kDBase, "EMPTY", {{"NAME", FieldType::Text, 10}});
        ChildFrm3* child = open("C:\\data\\EMPTY.DBF");
        QCOMPARE(child->EntryMode, QChar('A'));
        QVERIFY(child->EmptyTable);
        QCOMPARE(child->RecordTotal, 1);
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(child->caption(), "C:\\data\\EMPTY.DBF - DATA ENTRY - EMPTY.DBF");
        type(line(child, 0), "Ada");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data", kDBase, "EMPTY"), QList<QStringList>{{"Ada"}});
    }

    void binaryFields_haveNoRow_andKeepTheirData()
    {
        makeAccessFile("C:\\data\\bin.mdb");
        makeTable("C:\\data\\bin.mdb", kAccess, "Bin",
                  {{"Name", FieldType::Text, 10}, {"Raw", FieldType::LongBinary}});
        putBytes("C:\\data\\bin.mdb", "Bin");
        ChildFrm3* child = open("C:\\data\\bin.mdb");
        QCOMPARE(child->Text1.size(), 1);
        type(line(child, 0), "renamed");
        tool(child, "ID_SaveRecord");
        Workspace workspace(fixture_->sandbox.files());
        Database db = workspace.OpenDatabase("C:\\data\\bin.mdb", false, true, "");
        Recordset rows = db.OpenRecordset("Bin");
        QCOMPARE(rows.value(0).asText(), std::string_view("renamed"));
        QCOMPARE(rows.value(1).asBytes().size(), std::size_t(3));
    }

    void recordsOfOthers_dontCount()  // and the drifted total decides at the ends
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        appendRows("C:\\data\\staff.mdb", kAccess, "People", {{"Zoe", 20, "", true}});
        QCOMPARE(child->RecordTotal, 3);
        tool(child, "ID_LastRecord");
        QCOMPARE(line(child, 0)->text(), "Zoe");
        QCOMPARE(child->RecordTotal, 3);
    }

    void refresh_onADbf_doesNothing()
    {
        fixture_->makeCustomers();
        ChildFrm3* child = open("C:\\data\\CUSTOMER.DBF");
        tool(child, "ID_NextRecord");
        type(line(child, 0), "typed");
        tool(child, "ID_Refresh");
        QCOMPARE(line(child, 0)->text(), "typed");
        QCOMPARE(child->Data1.Connect, std::string("dBASE 5.0;"));
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void refreshOfAParadoxTable_countsTheRecordsOfOthers()
    {
        const QString paradox = "Paradox 5.x;";
        makeKeyedTable(paradox);
        appendRows("C:\\data", paradox, "STAFF", {{"Ada", 36.0}, {"Ben", 40.0}});
        ChildFrm3* child = open("C:\\data\\STAFF.DB");
        QCOMPARE(child->RecordTotal, 2);
        type(line(child, 0), "Ada L.");
        tool(child, "ID_LastRecord");
        appendRows("C:\\data", paradox, "STAFF", {{"Cleo", 20.0}});
        QCOMPARE(child->RecordTotal, 2);
        QCOMPARE(fixture_->prompt.told.join('|'), QString());
        tool(child, "ID_Refresh");
        QCOMPARE(fixture_->prompt.told.join('|'), QString());
        QCOMPARE(child->RecordTotal, 3);
        QCOMPARE(child->Data1.Connect, std::string("Paradox 5.x;"));
        QCOMPARE(child->Data1.DatabaseName, std::string("C:\\data"));
        QCOMPARE(child->Data1.RecordSource, std::string("STAFF.DB"));
        QCOMPARE(line(child, 0)->text(), "Ada L.");
        tool(child, "ID_LastRecord");
        type(line(child, 1), "21");
        tool(child, "ID_SaveRecord");
        QCOMPARE(readRows("C:\\data", paradox, "STAFF").last(), (QStringList{"Cleo", "21"}));
    }

    void noRecordsWhileTheFieldsAreMade_isTold_andTheWindowGoes()
    {
        const QString paradox = "Paradox 5.x;";
        makeKeyedTable(paradox);
        appendRows("C:\\data", paradox, "STAFF", {{"Ada", 36.0}});
        ChildFrm3* child = open("C:\\data\\STAFF.DB");
        {
            Workspace workspace(fixture_->sandbox.files());
            Database folder =
                workspace.OpenDatabase("C:\\data", false, false, paradox.toStdString());
            Recordset rows = folder.OpenRecordset("STAFF");
            rows.Delete();
            rows.Close();
            folder.Close();
        }
        tool(child, "ID_Refresh");
        QCOMPARE(fixture_->prompt.told,
                 QStringList{" No Records in File - STAFF.DB - Copy Records into Table or Pack / "
                             "Compact Table and Add New Records."});
        QTRY_VERIFY(shell_->children().isEmpty());
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
    }

    void aRefusedMove_keepsTheRecord_andTheNextTrySaves()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 0), "Ada L.");
        type(line(child, 1), "many");
        tool(child, "ID_NextRecord");
        QCOMPARE(fixture_->prompt.told, QStringList{kInvalid});
        QCOMPARE(child->Data1.anyChanged(), true);
        QCOMPARE(staff()[0], (QStringList{"Ada", "36", "first\r\nsecond", "True"}));
        type(line(child, 1), "37");
        tool(child, "ID_NextRecord");
        QCOMPARE(line(child, 0)->text(), "Ben");
        QCOMPARE(staff()[0], (QStringList{"Ada L.", "37", "first\r\nsecond", "True"}));
    }

    void otherWindowsOnTheFile_showWhatWasSaved()
    {
        makeStaff();
        globals().SELECTED_FILE = "C:\\data\\staff.mdb";
        globals().DATA_ENTRY_FLG = false;
        globals().TEXT_FILE_FLG = false;
        shell_->NewWindowFile("C:\\data\\staff.mdb");
        const auto* browser = qobject_cast<ChildFrm1*>(shell_->activeChild());
        const QAbstractItemModel& rows = *browser->MSFlexGrid1->model();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        type(line(child, 0), "Ada L.");
        tool(child, "ID_NextRecord");
        QCOMPARE(rows.index(0, 0).data().toString(), "Ada L.");
        tool(child, "ID_AddRecord");
        type(line(child, 0), "Dan");
        tool(child, "ID_SaveRecord");
        QCOMPARE(rows.rowCount(), 4);
        fixture_->prompt.expectQuestion("Are you sure you want to Delete Record - Dan ?", true);
        tool(child, "ID_DeleteRecord");
        QCOMPARE(rows.rowCount(), 3);
        type(line(child, 1), "21");
        QVERIFY(child->mayClose());
        QCOMPARE(rows.index(2, 1).data().toString(), "21");
    }

    void errorsOfTheControl_areTold_orGoToTheFirstRecord()
    {
        makeStaff();
        ChildFrm3* child = open("C:\\data\\staff.mdb");
        tool(child, "ID_LastRecord");
        child->Data1_Error(3021, "No current record.");
        QCOMPARE(line(child, 0)->text(), "Ada");
        child->Data1_Error(3197, "Damaged.");
        QCOMPARE(fixture_->prompt.told, QStringList{"Data Error: 3197 Damaged."});
    }

private:
    /// STAFF.DB: only a table with a primary key lets its records be changed.
    void makeKeyedTable(const QString& connect)
    {
        Workspace workspace(fixture_->sandbox.files());
        Database folder = workspace.OpenDatabase("C:\\data", false, false, connect.toStdString());
        TableDef table = folder.CreateTableDef("STAFF");
        table.Fields().Append(table.CreateField("Name", int(FieldType::Text), 20));
        table.Fields().Append(table.CreateField("Age", int(FieldType::Double)));
        Index key = table.CreateIndex("PrimaryKey");
        key.Primary(true);
        key.Unique(true);
        key.Fields().Append(key.CreateField("Name"));
        table.Indexes().Append(key);
        folder.TableDefs().Append(table);
        folder.Close();
    }
};

QTEST_MAIN(TstDataRecords)
#include "tst_data_records.moc"
