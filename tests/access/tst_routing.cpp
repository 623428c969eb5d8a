// From paths to connections, classes and the route to a window.
#include <QTest>

#include "access/routing.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "tests/access/made_files.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"

using namespace velnor;
using namespace velnor::testing;

class TstRouting : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
        FillExtensionTable();
    }
    void cleanup()
    {
        prompt_.reset();
        sandbox_.reset();
    }

    void extension_isTheTextBehindTheLastDot_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("extension");
        QTest::newRow("lower case") << "c:\\x\\a.mdb"
                                    << "MDB";
        QTest::newRow("two dots") << "C:\\a.b.txt"
                                  << "TXT";
        QTest::newRow("no dot") << "C:\\data\\file"
                                << "";
        QTest::newRow("dotted folder counts") << "C:\\a.b\\file"
                                              << "B\\FILE";
        QTest::newRow("dot at the end") << "C:\\a."
                                        << "";
        QTest::newRow("empty") << ""
                               << "";
    }
    void extension_isTheTextBehindTheLastDot()
    {
        QFETCH(QString, path);
        QFETCH(QString, extension);
        QCOMPARE(GetFileExtension(path), extension);
    }

    void databaseType_isThePlainDriver()
    {
        QCOMPARE(SetDatabaseType("C:\\a.dbf"), "dBASE 5.0;");
        QCOMPARE(SetDatabaseType("C:\\a.db"), "Paradox 5.x;");
        QCOMPARE(SetDatabaseType("C:\\a.mdb"), "Access 2000;");
        QCOMPARE(SetDatabaseType("C:\\a.xls"), "Excel 8.0;");
        QCOMPARE(SetDatabaseType("C:\\a.wk4"), "Lotus WK4;");
        QCOMPARE(SetDatabaseType("C:\\a.txt"), "");
        globals().DATABASE_PASSWORD = "x";
        QCOMPARE(SetDatabaseType("C:\\a.mdb"), "Access 2000;");
    }

    void folderKinds_openTheFolder()
    {
        QVERIFY(SetFileConnection("C:\\data\\CUSTOMER.DBF"));
        QCOMPARE(globals().CONNECT_STRING, "dBASE 5.0;");
        QCOMPARE(globals().DATABASE_NAME, "C:\\data");
        QCOMPARE(globals().RECORD_SOURCE, "CUSTOMER.DBF");
        QCOMPARE(globals().FILE_EXT, "DBF");
        QVERIFY(SetFileConnection("C:\\data\\orders.db"));
        QCOMPARE(globals().CONNECT_STRING, "Paradox 5.x;");
        QCOMPARE(globals().RECORD_SOURCE, "orders.db");
    }

    void fileOnTheDrive_givesTheDriveWithoutBackslash()
    {
        QVERIFY(SetFileConnection("C:\\CUSTOMER.DBF"));
        QCOMPARE(globals().DATABASE_NAME, "C:");
    }

    void pathWithoutFolder_routesToNothing()
    {
        globals().CONNECT_STRING = "old";
        globals().DATABASE_NAME = "old";
        globals().RECORD_SOURCE = "old";
        globals().TABLE_COUNT = 3;
        for (const char* path : {"CUSTOMER.DBF", "\\CUSTOMER.DBF", ""}) {
            QVERIFY(!SetFileConnection(path));
            QCOMPARE(globals().CONNECT_STRING, "old");
            QCOMPARE(globals().DATABASE_NAME, "old");
            QCOMPARE(globals().RECORD_SOURCE, "old");
            QCOMPARE(globals().TABLE_COUNT, short(0));
        }
    }

    void otherExtension_leavesTheTexts_andIsTrue()
    {
        globals().CONNECT_STRING = "old";
        QVERIFY(SetFileConnection("C:\\data\\a.txt"));
        QCOMPARE(globals().CONNECT_STRING, "old");
        QCOMPARE(globals().FILE_EXT, "TXT");
    }

    void accessFile_opensItsFirstTable()
    {
        makeAccessFile("C:\\shop.mdb");
        makeTable("C:\\shop.mdb", kAccess, "Customers", {{"ID", FieldType::Long}});
        makeTable("C:\\shop.mdb", kAccess, "Orders", {{"ID", FieldType::Long}});
        QVERIFY(SetFileConnection("C:\\shop.mdb"));
        QCOMPARE(globals().CONNECT_STRING, "Access 2000;");
        QCOMPARE(globals().DATABASE_NAME, "C:\\shop.mdb");
        QCOMPARE(globals().TABLE_COUNT, short(2));
        QCOMPARE(globals().RECORD_SOURCE, globals().TABLE_NAMES[0]);
    }

    void accessFile_withAPasswordInHand_isConnectedByIt()
    {
        makeAccessFile("C:\\shop.mdb");
        makeTable("C:\\shop.mdb", kAccess, "Customers", {{"ID", FieldType::Long}});
        globals().DATABASE_PASSWORD = "secret";
        SetFileConnection("C:\\shop.mdb");
        QCOMPARE(globals().CONNECT_STRING, ";pwd=secret");
    }

    void accessFileThatDoesntOpen_leavesTheOldRecordSource()
    {
        globals().RECORD_SOURCE = "old";
        sandbox_->write("C:\\bad.mdb", "not a database at all");
        QVERIFY(SetFileConnection("C:\\bad.mdb"));
        QCOMPARE(globals().DATABASE_NAME, "C:\\bad.mdb");
        QCOMPARE(globals().RECORD_SOURCE, "old");
        QVERIFY(prompt_->told.isEmpty());
    }

    void accessFileWithoutTables_hasAnEmptyRecordSource()
    {
        globals().RECORD_SOURCE = "old";
        makeAccessFile("C:\\empty.mdb");
        QVERIFY(SetFileConnection("C:\\empty.mdb"));
        QCOMPARE(globals().RECORD_SOURCE, "");
        QCOMPARE(globals().TABLE_COUNT, short(0));
    }

    void classes_goByTheSlot()
    {
        ClassifyFile("C:\\a.DbF");
        QVERIFY(globals().DATA_FILE_FLG && !globals().TEXT_FILE_FLG);
        ClassifyFile("C:\\a.wk4");
        QVERIFY(globals().DATA_FILE_FLG && !globals().TEXT_FILE_FLG);
        ClassifyFile("C:\\a.txt");
        QVERIFY(!globals().DATA_FILE_FLG && globals().TEXT_FILE_FLG);
        ClassifyFile("C:\\a.zip");  // a text here, none for the viewer
        QVERIFY(!globals().DATA_FILE_FLG && globals().TEXT_FILE_FLG);
        ClassifyFile("C:\\a.pnp");
        QVERIFY(!globals().DATA_FILE_FLG && !globals().TEXT_FILE_FLG);
    }

    void classifyingABlankExtension_emptiesTheSelection()
    {
        globals().SELECTED_FILE = "C:\\old.txt";
        ClassifyFile("C:\\a.txt");
        QCOMPARE(globals().SELECTED_FILE, "C:\\old.txt");
        ClassifyFile("C:\\noextension");
        QCOMPARE(globals().SELECTED_FILE, "");
    }

    void webAddresses_beginWithHttpOrWww()
    {
        QVERIFY(isWebAddress("http://example.org"));
        QVERIFY(isWebAddress("HTTPS://example.org"));
        QVERIFY(isWebAddress("WWW.example.org"));
        QVERIFY(!isWebAddress("wwwx"));
        QVERIFY(!isWebAddress("C:\\www.txt"));
    }

    void routeForDisplay_ofEachKind()
    {
        const auto there = [] { return true; };
        const auto gone = [] { return false; };
        globals().SELECTED_FILE = "C:\\old.txt";

        QCOMPARE(routeForDisplay("C:\\a.mdb", there), DisplayRoute::Show);
        QVERIFY(!globals().TEXT_FILE_FLG);
        QCOMPARE(routeForDisplay("C:\\a.txt", there), DisplayRoute::Show);
        QVERIFY(globals().TEXT_FILE_FLG);
        QCOMPARE(routeForDisplay("C:\\a.txt", gone), DisplayRoute::NotFound);
        QCOMPARE(routeForDisplay("C:\\a.zip", there), DisplayRoute::Show);
        QVERIFY(!globals().TEXT_FILE_FLG);  // known, but nothing views it
        QCOMPARE(routeForDisplay("C:\\a.tmp", there), DisplayRoute::AskOtherProgram);
        QCOMPARE(routeForDisplay("C:\\a.pnp", there), DisplayRoute::AskOtherProgram);
        QCOMPARE(globals().SELECTED_FILE, "C:\\old.txt");
        QCOMPARE(routeForDisplay("C:\\noextension", there), DisplayRoute::Nothing);
        QCOMPARE(globals().SELECTED_FILE, "");
    }

    void webAddress_isShownUnasked()
    {
        bool asked = false;
        const DisplayRoute route = routeForDisplay("www.example", [&] { return asked = true; });
        QCOMPARE(route, DisplayRoute::Show);
        QVERIFY(globals().TEXT_FILE_FLG);
        QVERIFY(!asked);
    }

private:
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
};

QTEST_MAIN(TstRouting)
#include "tst_routing.moc"
