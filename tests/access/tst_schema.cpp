// Names of tables and structures of tables, read into the shared arrays.
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "access/schema.h"
#include "core/globals.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

/// Presses OKBtn with a text in the password box.
int giveAndAccept(QDialog& dialog, const QString& password)
{
    dialog.findChild<QLineEdit*>("txtPassword")->setText(password);
    dialog.findChild<QPushButton*>("OKBtn")->click();
    return dialog.result();
}

int cancel(QDialog& dialog)
{
    dialog.findChild<QPushButton*>("CancelBtn")->click();
    return dialog.result();
}

}  // namespace

class TstSchema : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
    }
    void cleanup()
    {
        prompt_.reset();
        sandbox_.reset();
    }

    void typeNames_goBothWays()
    {
        for (short code = 1; code <= 23; ++code) {
            if (const QString name = FieldTypeName(code); !name.isEmpty() && code != 17)
                QCOMPARE(FieldTypeCode(name), code);
        }
        QCOMPARE(FieldTypeName(17), "Binary");
        QCOMPARE(FieldTypeCode("Binary"), short(9));  // a type 17 is written back as 9
        QCOMPARE(FieldTypeName(13), "");
        QCOMPARE(FieldTypeName(0), "");
        QCOMPARE(FieldTypeName(24), "");
        QCOMPARE(FieldTypeCode("text"), short(0));
        QCOMPARE(FieldTypeCode(""), short(0));
    }

    void typeChoices_nameEveryType_andBinaryTwice()
    {
        QStringList choices;
        for (const char* choice : kFieldTypeChoices) {
            choices << choice;
            QVERIFY(FieldTypeCode(choice) != 0);
        }
        QCOMPARE(choices.size(), 21);
        QCOMPARE(choices.first(), "BigInt");
        QCOMPARE(choices.last(), "Binary");
        QCOMPARE(choices.count("Binary"), 2);
    }

    void names_comeWithoutSystemTables()
    {
        makeShop();
        QCOMPARE(ListTableNames("C:\\shop.mdb", "Access 2000;"), globals().TABLE_NAMES[0]);
        QStringList names;
        for (int i = 0; i < globals().TABLE_COUNT; ++i)
            names << globals().TABLE_NAMES[i];
        names.sort();
        QCOMPARE(names, (QStringList{"Customers", "Orders"}));
        QVERIFY(!globals().LOGIN_ASKED_FLG);
    }

    void emptyDatabase_hasNoNames()
    {
        globals().TABLE_COUNT = 5;
        makeAccessFile("C:\\empty.mdb");
        QCOMPARE(ListTableNames("C:\\empty.mdb", "Access 2000;"), "");
        QCOMPARE(globals().TABLE_COUNT, short(0));
    }

    void failure_isSilent_andLeavesTheCount()
    {
        globals().TABLE_COUNT = 5;
        QCOMPARE(ListTableNames("C:\\none.mdb", "Access 2000;"), "");
        QCOMPARE(globals().TABLE_COUNT, short(5));
        QVERIFY(prompt_->told.isEmpty());
    }

    void moreThan251Tables_areAFailure_withTheNamesSoFar()
    {
        sandbox_->makeFolders("C:\\many");
        makeTable("C:\\many", kDBase, "ONE", {{"A", FieldType::Text, 5}});
        const std::string table = sandbox_->read("C:\\many\\ONE.DBF");
        for (int i = 0; i < 251; ++i)
            sandbox_->write("C:\\many\\T" + std::to_string(i) + ".DBF", table);
        globals().TABLE_COUNT = 5;
        QCOMPARE(ListTableNames("C:\\many", "dBASE 5.0;"), "");
        QCOMPARE(globals().TABLE_COUNT, short(5));
        QVERIFY(!globals().TABLE_NAMES[250].isEmpty());
        sandbox_->files().remove("C:\\many\\T0.DBF");
        QVERIFY(!ListTableNames("C:\\many", "dBASE 5.0;").isEmpty());
        QCOMPARE(globals().TABLE_COUNT, short(251));
    }

    void protectedFile_asksUntilThePasswordFits()
    {
        makeProtected();
        prompt_->expectDialog("Login", [this](QDialog& dialog) {
            [&] { QCOMPARE(globals().WORK_FILE, "C:\\locked.mdb"); }();
            giveAndAccept(dialog, "wrong");
            [&] { QCOMPARE(prompt_->told, QStringList{"Invalid Password, try again!"}); }();
            return giveAndAccept(dialog, "Geheim97");
        });
        QCOMPARE(ListTableNames("C:\\locked.mdb", "Access 2000;"), "Table1");
        QCOMPARE(globals().TABLE_COUNT, short(3));
        QVERIFY(globals().LOGIN_ASKED_FLG);
        QVERIFY(globals().LOGIN_OK_FLG);
        QCOMPARE(globals().DATABASE_PASSWORD, "Geheim97");
        // From now on the password in hand is used, unasked.
        QCOMPARE(ListTableNames("C:\\locked.mdb", "Access 2000;"), "Table1");
        QVERIFY(!globals().LOGIN_ASKED_FLG);
        QVERIFY(LoadTableStructure("C:\\locked.mdb", "Access 2000;", "Table1"));
        QVERIFY(globals().FIELD_COUNT > 0);
    }

    void cancelledLogin_givesAnEmptyResult()
    {
        makeProtected();
        prompt_->expectDialog("Login", cancel);
        globals().TABLE_COUNT = 5;
        QCOMPARE(ListTableNames("C:\\locked.mdb", "Access 2000;"), "");
        QVERIFY(globals().LOGIN_ASKED_FLG);
        QVERIFY(!globals().LOGIN_OK_FLG);
        QCOMPARE(globals().TABLE_COUNT, short(5));
    }

    void passwordOfAnotherFile_isAskedAnew()
    {
        makeProtected();
        globals().DATABASE_PASSWORD = "of another file";
        prompt_->expectDialog("Login",
                              [](QDialog& dialog) { return giveAndAccept(dialog, "Geheim97"); });
        QCOMPARE(ListTableNames("C:\\locked.mdb", "Access 2000;"), "Table1");
    }

    void structure_ofAProtectedFile_ridesOnTheLogin()
    {
        makeProtected();
        QVERIFY(!LoadTableStructure("C:\\locked.mdb", "", "Table1"));
        globals().DATABASE_PASSWORD = "Geheim97";
        QVERIFY(!LoadTableStructure("C:\\locked.mdb", "", "Table1"));  // no login was accepted
        globals().LOGIN_OK_FLG = true;
        QVERIFY(LoadTableStructure("C:\\locked.mdb", "", "Table1"));
        globals().DATABASE_PASSWORD = "wrong";  // tried once, not for ever
        QVERIFY(!LoadTableStructure("C:\\locked.mdb", "", "Table1"));
        QVERIFY(prompt_->dialogsRun.isEmpty());
    }

    void structure_fillsFieldsAndIndexes()
    {
        makeShop();
        QVERIFY(LoadTableStructure("C:\\shop.mdb", "Access 2000;", "customers"));
        auto& G = globals();
        QCOMPARE(G.FIELD_COUNT, short(3));
        QCOMPARE(G.FIELD_NAMES[0], "ID");
        QCOMPARE(G.FIELD_TYPES[0], short(4));
        QCOMPARE(G.FIELD_NAMES[1], "Name");
        QCOMPARE(G.FIELD_TYPES[1], short(10));
        QCOMPARE(G.FIELD_SIZES[1], short(40));
        QCOMPARE(G.FIELD_TYPES[2], short(12));
        QCOMPARE(G.INDEX_COUNT, short(1));
        QCOMPARE(G.INDEX_NAMES[0], "Name");
        QVERIFY(G.INDEX_UNIQUE[0]);
        QVERIFY(!G.INDEX_PRIMARY[0]);
        QVERIFY(!G.FOXPRO_FLG);
    }

    void structure_forgetsTheLastTable()
    {
        makeShop();
        QVERIFY(LoadTableStructure("C:\\shop.mdb", "Access 2000;", "Customers"));
        QVERIFY(LoadTableStructure("C:\\shop.mdb", "Access 2000;", "Orders"));
        QCOMPARE(globals().FIELD_COUNT, short(1));
        QCOMPARE(globals().FIELD_NAMES[1], "");
        QCOMPARE(globals().FIELD_TYPES[1], short(0));
    }

    void unknownTable_isFalse_andSilent()
    {
        makeShop();
        QVERIFY(!LoadTableStructure("C:\\shop.mdb", "Access 2000;", "Nobody"));
        QCOMPARE(globals().FIELD_COUNT, short(0));
        QVERIFY(prompt_->told.isEmpty());
    }

    void dBaseTable_isNamedByItsFile()
    {
        makeTable("C:", kDBase, "PEOPLE",
                  {{"NAME", FieldType::Text, 20}, {"AGE", FieldType::Double}});
        QVERIFY(LoadTableStructure("C:", "dBASE 5.0;", "PEOPLE.DBF"));
        QCOMPARE(globals().FIELD_COUNT, short(2));
        QCOMPARE(globals().FIELD_NAMES[0], "NAME");
        QCOMPARE(globals().FIELD_SIZES[0], short(20));
        QVERIFY(!globals().FOXPRO_FLG);  // looked at twice, and no index either time
    }

    void foxProTable_thatDBaseRefuses_isReadAsFoxPro()
    {
        makeTable("C:", kFoxPro, "FOX", {{"NAME", FieldType::Text, 20}});
        QVERIFY(LoadTableStructure("C:", "dBASE 5.0;", "FOX.DBF"));
        QCOMPARE(globals().FIELD_COUNT, short(1));
        QVERIFY(!globals().FOXPRO_FLG);  // only indexes set it
    }

    void indexesThatOnlyFoxProSees_areFoundByTheSecondLook()
    {
        makeTable("C:", "FoxPro 2.6;", "FOX", {{"NAME", FieldType::Text, 20}}, "NAME");
        appendRows("C:", "FoxPro 2.6;", "FOX", {{"one"}, {"two"}});
        QVERIFY(sandbox_->files().fileExists("C:\\FOX.CDX"));
        QVERIFY(LoadTableStructure("C:", "dBASE 5.0;", "FOX.DBF"));
        QVERIFY(globals().FOXPRO_FLG);
        QCOMPARE(globals().INDEX_COUNT, short(1));
        QCOMPARE(globals().INDEX_NAMES[0], "NAME");
        QVERIFY(globals().INDEX_UNIQUE[0]);
        QCOMPARE(globals().FIELD_COUNT, short(1));
    }

    void indexesOfDBase_areSeenAtOnce()
    {
        makeTable("C:", kDBase, "ORDERS", {{"NO", FieldType::Long}}, "NO");
        QVERIFY(sandbox_->files().fileExists("C:\\ORDERS.MDX"));
        QVERIFY(LoadTableStructure("C:", "dBASE 5.0;", "ORDERS.DBF"));
        QVERIFY(!globals().FOXPRO_FLG);
        QCOMPARE(globals().INDEX_COUNT, short(1));
        QCOMPARE(globals().INDEX_NAMES[0], "NO");
    }

    void moreThan252Fields_areAFailure_withTheFieldsSoFar()
    {
        for (const int count : {252, 253}) {
            QList<MadeField> fields;
            for (int i = 0; i < count; ++i)
                fields << MadeField{QString("F%1").arg(i), FieldType::Text, 3};
            const QString table = QString("WIDE%1").arg(count);
            makeTable("C:", kDBase, table, fields);
            QCOMPARE(LoadTableStructure("C:", "dBASE 5.0;", table + ".DBF"), count == 252);
            QCOMPARE(globals().FIELD_NAMES[251], "F251");
            QCOMPARE(globals().FIELD_COUNT, short(count == 252 ? 252 : 0));
        }
        QVERIFY(prompt_->told.isEmpty());
    }

    void moreThan251Indexes_areAFailure()
    {
        makeTable("C:", "FoxPro 2.6;", "MANY", {{"NAME", FieldType::Text, 20}});
        Workspace work(sandbox_->files());
        Database database = work.OpenDatabase("C:", false, false, "FoxPro 2.6;");
        Collection<Index>& indexes = database.TableDefs().Item("MANY").Indexes();
        for (int i = 0; i < 251; ++i)
            appendIndex(indexes, i);
        database.Close();
        QVERIFY(LoadTableStructure("C:", "dBASE 5.0;", "MANY.DBF"));
        QCOMPARE(globals().INDEX_COUNT, short(251));
        QVERIFY(globals().FOXPRO_FLG);

        database = work.OpenDatabase("C:", false, false, "FoxPro 2.6;");
        appendIndex(database.TableDefs().Item("MANY").Indexes(), 251);
        database.Close();
        QVERIFY(!LoadTableStructure("C:", "dBASE 5.0;", "MANY.DBF"));
        QVERIFY(!globals().INDEX_NAMES[250].isEmpty());
        QVERIFY(prompt_->told.isEmpty());
    }

    void dBaseTable_withoutADot_isNotRead()
    {
        makeTable("C:", kDBase, "PEOPLE", {{"NAME", FieldType::Text, 20}});
        QVERIFY(!LoadTableStructure("C:", "dBASE 5.0;", "PEOPLE"));
        QVERIFY(prompt_->told.isEmpty());
    }

    void fileInUse_isTold()
    {
        makeShop();
        Workspace other(sandbox_->files());
        Database held = other.OpenDatabase("C:\\shop.mdb", true, false, "");
        QVERIFY(!LoadTableStructure("C:\\shop.mdb", "Access 2000;", "Customers"));
        QCOMPARE(prompt_->told, QStringList{"File already Open - Please close File to Edit Data"});
    }

private:
    static void appendIndex(Collection<Index>& indexes, int number)
    {
        IndexDef def;
        def.name = "X" + std::to_string(number);
        def.fields = {{"NAME", false}};
        indexes.Append(Index(def));
    }

    void makeShop()
    {
        makeAccessFile("C:\\shop.mdb");
        makeTable(
            "C:\\shop.mdb", kAccess, "Customers",
            {{"ID", FieldType::Long}, {"Name", FieldType::Text, 40}, {"Note", FieldType::Memo}},
            "Name");
        makeTable("C:\\shop.mdb", kAccess, "Orders", {{"ID", FieldType::Long}});
    }
    static void makeProtected()
    {
        makeAccessFile("C:\\locked.mdb", "Geheim97");
        for (const char* table : {"Table1", "Table2", "Table3"})
            makeTable("C:\\locked.mdb", ";pwd=Geheim97", table, {{"NAME", FieldType::Text, 20}});
    }

    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
};

QTEST_MAIN(TstSchema)
#include "tst_schema.moc"
