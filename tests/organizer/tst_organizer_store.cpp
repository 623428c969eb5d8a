#include <QTest>

#include "core/date_text.h"
#include "tests/core/error_of.h"
#include "tests/organizer/organizer_fixture.h"
#include "tests/support/refusing_files.h"

using namespace velnor;
using velnor::testing::errorOf;
using velnor::testing::OrganizerFixture;

class OrganizerStoreTest : public QObject {
    Q_OBJECT

private slots:
    void init() { fixture_ = std::make_unique<OrganizerFixture>(); }
    void cleanup() { fixture_.reset(); }

    void theDeliveredStoreHasItsTablesIndexesAndGroups()
    {
        Workspace workspace(fixture_->sandbox.files());
        Database store = workspace.OpenDatabase("C:\\app\\DataTabl.MDB", false, true, "");
        const std::vector<std::pair<std::string, std::vector<std::string>>> expected{
            {"Databases", {"DatabaseGroup", "DatabaseName"}},
            {"DatabaseTable",
             {"DatabaseDate", "DatabaseGroup", "DatabaseName", "DatabaseSize", "Group_Type"}},
            {"GroupTable", {"GroupName"}},
            {"CopyLogFieldMap", {"DateIndex"}},
            {"FieldDictionary", {"DictionaryName"}},
            {"FieldDictionaryDetail", {"FieldNameKey"}}};
        for (const auto& [table, indexes] : expected) {
            TableDef& def = store.TableDefs().Item(table);
            QCOMPARE(def.Attributes(), 0u);
            std::vector<std::string> names;
            for (Index& index : def.Indexes())
                names.push_back(index.Name());
            std::sort(names.begin(), names.end());
            QCOMPARE(names, indexes);
        }
        QCOMPARE(store.TableDefs().Item("GroupTable").RecordCount(), 8);
        QCOMPARE(store.TableDefs().Item("Databases").RecordCount(), 0);
        QCOMPARE(globals().ORG_GROUPS[0], "Access Files");
        QCOMPARE(globals().ORG_GROUPS[7], "Web Pages");
        QCOMPARE(globals().ORG_GROUPS[8], "");
    }

    void theDeliveredStoreIsSound()
    {
        Workspace workspace(fixture_->sandbox.files());
        Database store = workspace.OpenDatabase("C:\\app\\DataTabl.MDB", false, true, "");
        store.check("", [](const Database::Finding& finding) {
            QFAIL((finding.where + ": " + finding.text).c_str());
        });
    }

    void aGroupHasItsDescription()
    {
        QCOMPARE(GroupDescription("web pages"), "Web Pages Description");
        QCOMPARE(GroupDescription("No such"), "");
    }

    void moreGroupsThanTheListHoldsStopTheReading()
    {
        QList<QVariantList> more;
        for (int i = 8; i < 202; ++i)
            more << QVariantList{QVariant(), QString("G%1").arg(i)};
        addGroups(more);
        QCOMPARE(errorOf([] { LoadGroupList(); }), 0);
        QVERIFY(!globals().ORG_GROUPS[201].isEmpty());
        addGroups({{QVariant(), "H"}});
        QCOMPARE(errorOf([] { LoadGroupList(); }), 9);
    }

    void aMissingStoreIsTheEnginesError()
    {
        QVERIFY(QFile::remove(
            QString::fromStdString(fixture_->sandbox.native("C:\\app\\DataTabl.MDB"))));
        QCOMPARE(errorOf([] { LoadGroupList(); }), 3024);
    }

    void aFiledPathStandsThereOnce()
    {
        const QString path = fixture_->makeFile("C:\\data\\A.DBF");
        globals().ORG_DATABASE = "Database 1";
        globals().ORG_GROUP = "DBase Files";
        QVERIFY(AddtoDatabase("A.DBF", path));
        QVERIFY(!AddtoDatabase("A.DBF", path));
        const auto rows = fixture_->rows("DatabaseTable");
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0].mid(0, 6), (QStringList{"Database 1", "A.DBF", "DBase Files",
                                                 "C:\\data\\A.DBF", "A.DBF Description", "1234"}));
        const QString date = FileDateText(path);
        QCOMPARE(rows[0][7], date);
        QCOMPARE(rows[0][6], DateKeyFromText(date));
    }

    void theSameNameInTwoFoldersIsTwoRows()
    {
        globals().ORG_DATABASE = "Database 1";
        fixture_->sandbox.makeFolders("C:\\data\\other");
        QVERIFY(AddtoDatabase("A.DBF", fixture_->makeFile("C:\\data\\A.DBF")));
        QVERIFY(AddtoDatabase("A.DBF", fixture_->makeFile("C:\\data\\other\\A.DBF")));
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 2);
    }

    void aDatabaseNamedWithABlankInFrontTakesAFileOnce()  // it is looked for without the blank
    {
        const QString path = fixture_->makeFile("C:\\data\\A.DBF");
        globals().ORG_DATABASE = " Database 1";
        QVERIFY(AddtoDatabase("A.DBF", path));
        QVERIFY(!AddtoDatabase("A.DBF", path));
        QCOMPARE(fixture_->prompt.told, QStringList{"File already exisits in the Database"});
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 1);
    }

    void whatCannotBeFiledIsTold()
    {
        globals().ORG_DATABASE = "Database 1";
        QVERIFY(!AddtoDatabase("gone.dbf", "C:\\data\\gone.dbf"));
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY2(fixture_->prompt.told[0].startsWith("Error - 53 - "),
                 qPrintable(fixture_->prompt.told[0]));
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 0);
    }

    void aStoreWithoutACurrentRecordIsTold()
    {
        globals().ORG_DATABASE = "Database 1";
        const QString path = fixture_->makeFile("C:\\data\\A.DBF");
        velnor::testing::RefusingFiles refusing(fixture_->sandbox.files(),
                                                EngineErrorNumber::NoCurrentRecord);
        fixture_->sandbox.useFiles(&refusing);
        QVERIFY(!AddtoDatabase("A.DBF", path));
        fixture_->sandbox.useFiles(nullptr);
        QCOMPARE(fixture_->prompt.told, QStringList{"No Current Record"});
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 0);
    }

    void yearsOfTwoDigitsTurnAt81()
    {
        QCOMPARE(DateKeyFromText("3/5/04 2:30:05 PM"), "20040305 2:30:05 PM");
        QCOMPARE(DateKeyFromText("12/15/80 1:00:00"), "20801215 1:00:00");
        QCOMPARE(DateKeyFromText("12/15/81 1:00:00"), "19811215 1:00:00");
        QCOMPARE(DateKeyFromText("3/15/2004 2:30:05 PM"), "20040315 2:30:05 PM");
    }

    void sizesAreThousandsOfBytes()
    {
        QCOMPARE(sizeText(0), ". Kb");
        QCOMPARE(sizeText(5), ".01 Kb");
        QCOMPARE(sizeText(1000), "1. Kb");
        QCOMPARE(sizeText(12345), "12.35 Kb");
        QCOMPARE(sizeText(1234567890), "1,234,567.89 Kb");
    }

    void theFolderOfAPathEndsBeforeItsLastBackslash()
    {
        QCOMPARE(FolderOfPath("C:\\data\\A.DBF"), "C:\\data");
        QCOMPARE(FolderOfPath("\\A.DBF"), "");
        QCOMPARE(FolderOfPath("A.DBF"), "");
    }

private:
    void addGroups(const QList<QVariantList>& rows)
    {
        QList<QVariantList> whole;
        for (QVariantList row : rows) {
            while (row.size() < 11)
                row << QVariant();
            whole << row;
        }
        velnor::testing::appendRows("C:\\app\\DataTabl.MDB", velnor::testing::kAccess, "GroupTable",
                                    whole);
    }

    std::unique_ptr<OrganizerFixture> fixture_;
};

QTEST_MAIN(OrganizerStoreTest)
#include "tst_organizer_store.moc"
