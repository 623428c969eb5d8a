// The log of copies: the cut of a match line, rows written, shown and deleted, on a real store.
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include "copy/copy_log.h"
#include "core/keyed_tree.h"
#include "tests/copy/copy_tab_case.h"

using namespace velnor;
using namespace velnor::testing;

namespace {
const char* const kStore = "C:\\app\\DataTabl.MDB";
const QStringList kThreeLines{"NAME - Text - 20  =  NAME - Text - 20",
                              "CITY - Text - 30  =  CITY - Text - 30",
                              "AGE - Double - 8  =  AGE - Long - 4"};
}  // namespace

class TstCopyLog : public QObject, CopyTabCase {
    Q_OBJECT
private slots:
    void init()
    {
        setUp();
        globals().APP_PATH = "C:\\app";
        sandbox_->makeFolders("C:\\app");
        makeStore();
    }
    void cleanup() { tearDown(); }

    void aLine_isCutIntoSix_untrimmed()
    {
        const auto pieces = cutMatchLine(kThreeLines[2]);
        QCOMPARE(QStringList(pieces.begin(), pieces.end()),
                 (QStringList{"AGE", "Double", "8 ", " AGE", "Long", "4"}));
    }

    void aNameWithBlanksAndAHyphen_shiftsWhatFollows()
    {
        const auto pieces = cutMatchLine("A - B - Text - 5  =  X - Text - 9");
        QCOMPARE(pieces[0], "A");
        QCOMPARE(pieces[1], "B");
        QCOMPARE(pieces[2], "Text - 5 ");
        QCOMPARE(pieces[3], " X");
        QCOMPARE(pieces[4], "Text");
        QCOMPARE(pieces[5], "9");
    }

    void threeLines_areThreeRows_ofOneDate()
    {
        QVERIFY(writeCopyLog({"C:\\A.DBF", "A.DBF", "Members"}, kThreeLines));
        const auto rows = readRows(kStore, kAccess, "CopyLogFieldMap");
        QCOMPARE(rows.size(), 3);
        QCOMPARE(rows[0], (QStringList{"C:\\A.DBF", "C:\\A.DBF", "A.DBF", "Members", "NAME", "Text",
                                       "20", " NAME", "Text", "20", "20041118130810"}));
        QCOMPARE(rows[2], (QStringList{"C:\\A.DBF", "C:\\A.DBF", "A.DBF", "Members", "AGE",
                                       "Double", "8", " AGE", "Long", "4", "20041118130810"}));
    }

    void aMissingStore_isTold()
    {
        sandbox_->files().remove(kStore);
        QVERIFY(!writeCopyLog({"C:\\A.DBF", "A.DBF", "Members"}, kThreeLines));
        QCOMPARE(prompt_->told.size(), 1);
        QVERIFY(prompt_->told[0].startsWith("Error - 3024 - "));
        KeyedTree tree;
        QVERIFY(!ViewCopyLog(tree));
        QCOMPARE(prompt_->told.size(), 1);
        prompt_->expectQuestion(kClearQuestion, true);
        clearCopyLog();
        QCOMPARE(prompt_->told.size(), 2);
    }

    void anEmptyLog_leavesTheTreeEmpty()
    {
        KeyedTree tree;
        tree.add("old", "old", KeyedTree::File);
        QVERIFY(!ViewCopyLog(tree));
        QCOMPARE(tree.nodeCount(), 0);
    }

    void theTree_hasDates_copies_andFields()
    {
        writeCopyLog({"C:\\A.DBF", "A.DBF", "Members"}, kThreeLines);
        sandbox_->clock().time.day = 17;  // an earlier copy, logged later
        writeCopyLog({"C:\\B.DBF", "B.DBF", "Places"}, kThreeLines.mid(0, 1));
        KeyedTree tree;
        QVERIFY(ViewCopyLog(tree));
        QCOMPARE(tree.topLevelItemCount(), 2);
        const auto* first = tree.topLevelItem(0);
        QCOMPARE(first->text(0), "11/17/2004 13:08:10");
        QCOMPARE(KeyedTree::image(*first), 5);
        QVERIFY(!first->isExpanded());
        const auto* second = tree.topLevelItem(1);
        QCOMPARE(second->childCount(), 1);
        const auto* copy = second->child(0);
        QCOMPARE(copy->text(0), "C:\\A.DBF - A.DBF --> C:\\A.DBF - Members");
        QCOMPARE(KeyedTree::image(*copy), 3);
        QVERIFY(copy->isExpanded());
        QCOMPARE(copy->childCount(), 3);
        QCOMPARE(copy->child(0)->text(0), "NAME -->  NAME");  // the blank of the match line
        QCOMPARE(KeyedTree::image(*copy->child(0)), 4);
    }

    void theButton_asks_andDeletesAll()
    {
        writeCopyLog({"C:\\A.DBF", "A.DBF", "Members"}, kThreeLines);
        prompt_->expectQuestion(kClearQuestion, false);
        tab_->ClearCopyLogBtn->click();
        QCOMPARE(readRows(kStore, kAccess, "CopyLogFieldMap").size(), 3);
        prompt_->expectQuestion(kClearQuestion, true);
        tab_->ClearCopyLogBtn->click();
        QVERIFY(readRows(kStore, kAccess, "CopyLogFieldMap").isEmpty());
        prompt_->expectQuestion(kClearQuestion, true);
        tab_->ClearCopyLogBtn->click();  // an empty log is no error
        QVERIFY(prompt_->told.isEmpty());
    }

    void aCopy_isLogged_whenTheOptionSaysSo_alsoAFailedOne()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        answerTheCopy();
        tab_->CopyBtn->click();  // nothing to copy: unsuccessful
        QVERIFY(readRows(kStore, kAccess, "CopyLogFieldMap").isEmpty());
        globals().LOG_COPY = true;
        answerTheCopy();
        tab_->CopyBtn->click();
        QCOMPARE(tab_->Label3[2]->text(), "Copy Unsuccessful");
        const auto rows = readRows(kStore, kAccess, "CopyLogFieldMap");
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows[0][0], "C:\\PEOPLE.DBF");
        QCOMPARE(rows[0][1], "C:\\PEOPLE.DBF");  // required: not the To file
        QCOMPARE(rows[0][2], "PEOPLE.DBF");
        QCOMPARE(rows[0][3], "FRIENDS.DBF");
    }

private:
    void answerTheCopy()
    {
        prompt_->expectQuestion("Do you want to Append - PEOPLE.DBF Records to FRIENDS.DBF", true);
        prompt_->expectQuestion("Do you want to Copy NAME to NAME", true);
        prompt_->expectQuestion("Do you want to Copy CITY to CITY", true);
    }
    void makeStore()
    {
        makeAccessFile(kStore);
        Workspace workspace(sandbox_->files());
        Database store = workspace.OpenDatabase(kStore, false, false, "");
        TableDef table = store.CreateTableDef("CopyLogFieldMap");
        for (const char* column : {"FromTablePath", "ToTablePath", "FromRecordName", "ToRecordName",
                                   "FromFieldName", "FromFieldType", "FromFieldSize", "TOFIELDNAME",
                                   "ToFieldType", "ToFieldSize", "DateCreated"})
            table.Fields().Append(table.CreateField(column, int(FieldType::Text), 255));
        Index index = table.CreateIndex("DateIndex");
        index.Fields().Append(index.CreateField("DateCreated"));
        table.Indexes().Append(index);
        store.TableDefs().Append(table);
        store.Close();
    }

    const QString kClearQuestion = "Do you want to Delete all Records in the Copy Log?";
};

QTEST_MAIN(TstCopyLog)
#include "tst_copy_log.moc"
