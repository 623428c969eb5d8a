// Matching fields by hand and automatically, the choice of the record source, the active query.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTest>

#include "tests/copy/copy_tab_case.h"

using namespace velnor;
using namespace velnor::testing;

class TstCopyMatching : public QObject, CopyTabCase {
    Q_OBJECT
private slots:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    // Matching.

    void handMatch_withoutHighlights_isRefused()
    {
        openBoth();
        tab_->SelectBtn->click();
        QCOMPARE(prompt_->told,
                 QStringList{"Please Select From and To Database File Fields to Match"});
        QCOMPARE(prompt_->toldTitles, QStringList{kProgramTitle});
        QCOMPARE(tab_->List3[2]->count(), 0);
    }

    void handMatch_joinsTheHighlights_alsoTwice()
    {
        openBoth();
        tab_->List3[0]->highlight(0);
        tab_->List3[1]->highlight(1);
        tab_->SelectBtn->click();
        tab_->SelectBtn->click();
        const QString line = "NAME - Text - 20  =  NAME - Text - 20";
        QCOMPARE(tab_->List3[2]->lines(), (QStringList{line, line}));
        QVERIFY(tab_->CopyBtn->isEnabled());
        QVERIFY(tab_->CancelBtn->isEnabled());
    }

    void handMatch_withOneHighlight_leavesTheOtherHalfEmpty()
    {
        openBoth();
        tab_->List3[1]->highlight(0);
        tab_->SelectBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), QStringList{"  =  CITY - Text - 30"});
    }

    void cancel_removesTheHighlightedMatch()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->count(), 2);
        tab_->CancelBtn->click();  // nothing is highlighted
        QCOMPARE(tab_->List3[2]->count(), 2);
        tab_->List3[2]->highlight(0);
        tab_->CancelBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), QStringList{"CITY - Text - 30  =  CITY - Text - 30"});
        QVERIFY(tab_->CopyBtn->isEnabled());
        tab_->List3[2]->highlight(0);
        QVERIFY(QTest::qWaitForWindowActive(tab_.get()));
        tab_->List3[2]->setFocus();
        QTest::keyClick(tab_->List3[2], Qt::Key_Delete);
        QCOMPARE(tab_->List3[2]->count(), 0);
        QVERIFY(!tab_->CancelBtn->isEnabled());
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    void matchAll_pairsByName_andTwiceGivesTheSame()
    {
        openBoth();
        tab_->SelectAllBtn->click();
        const QStringList once = tab_->List3[2]->lines();
        QCOMPARE(once, (QStringList{"NAME - Text - 20  =  NAME - Text - 20",
                                    "CITY - Text - 30  =  CITY - Text - 30"}));
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->lines(), once);
        QVERIFY(tab_->CopyBtn->isEnabled());
    }

    void matchAll_ofEmptyLists_leavesTheButtons()
    {
        tab_->SelectAllBtn->click();
        QCOMPARE(tab_->List3[2]->count(), 0);
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    /// Flags for 201 To lines are kept: a From line that meets no namesake and no free line of its
    /// type runs past them.
    void matchAll_pastTheRange_isTold_andKeepsWhatItFound()
    {
        QList<MadeField> fields{{"NAME", FieldType::Text, 20}};
        for (int i = 1; i < 202; ++i)
            fields << MadeField{QString("T%1").arg(i), FieldType::Long};
        makeAccessFile("C:\\wide.mdb");
        makeTable("C:\\wide.mdb", kAccess, "Wide", fields);
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\wide.mdb");
        QCOMPARE(tab_->List3[1]->count(), 202);
        tab_->SelectAllBtn->click();
        QCOMPARE(prompt_->told.size(), 1);
        QVERIFY(prompt_->told[0].startsWith("Error - 9 - "));
        QCOMPARE(tab_->List3[2]->lines(),
                 (QStringList{"NAME - Text - 20  =  NAME - Text - 20",
                              "CITY - Text - 30  =  T1 - Long - 4"}));  // both below a Text 20
        QVERIFY(!tab_->CopyBtn->isEnabled());
    }

    void namesOfARealTable_matchByTheirFirstPart_andBySpelling()
    {
        makeAccessFile("C:\\odd.mdb");
        makeTable("C:\\odd.mdb", kAccess, "From",
                  {{"A-B", FieldType::Text, 5}, {"City", FieldType::Text, 30}});
        makeTable("C:\\odd.mdb", kAccess, "To",
                  {{"CITY", FieldType::Text, 30}, {"C-D", FieldType::Memo}});
        openFrom("C:\\odd.mdb");
        openTo("C:\\odd.mdb");
        chooseRecord(0, "From");
        chooseRecord(1, "To");
        QCOMPARE(tab_->List3[0]->lines(), (QStringList{"A-B - Text - 5", "City - Text - 30"}));
        tab_->SelectAllBtn->click();
        // Both hyphenated names are empty up to the hyphen; City is not CITY, and no line stands
        // below one of its type and size.
        QCOMPARE(tab_->List3[2]->lines(), QStringList{"A-B - Text - 5  =  C-D - Memo - 0"});
    }

    void aTableOfManyFields_isListedUpToThe301st()
    {
        sandbox_->write("C:\\WIDE.DBF", wideTable(310));
        openFrom("C:\\WIDE.DBF");
        QCOMPARE(tab_->List3[0]->count(), 301);
        QCOMPARE(tab_->List3[0]->lines().last(), "F301 - Text - 1");
        QVERIFY(prompt_->told.isEmpty());
    }

    // The record source.

    void recordClick_reloads_andLosesTheMatches()
    {
        makeShop();
        openFrom("C:\\PEOPLE.DBF");
        openTo("C:\\shop.mdb");
        QComboBox& records = *tab_->CMBRECORD[1];
        QCOMPARE(records.count(), 2);
        const int members = records.findText("Members");
        records.setCurrentIndex(members);
        tab_->CMBRECORD_Click(1);
        QCOMPARE(records.currentIndex(), members);
        QCOMPARE(tab_->To.Record, "Members");
        QCOMPARE(tab_->List3[1]->lines(),
                 (QStringList{"NAME - Text - 20", "AGE - Double - 8", "CODE - Long - 4"}));
        tab_->SelectAllBtn->click();
        QVERIFY(tab_->List3[2]->count() > 0);
        records.setCurrentIndex(records.findText("Places"));
        tab_->CMBRECORD_Click(1);
        QCOMPARE(tab_->List3[2]->count(), 0);
        QCOMPARE(tab_->List3[1]->lines(), QStringList{"PLACE - Text - 30"});
        QCOMPARE(tab_->List3[0]->count(), 3);
    }

    void recordChosenByKey_reloads()
    {
        makeShop();
        openTo("C:\\shop.mdb");
        QComboBox& records = *tab_->CMBRECORD[1];
        const QString first = tab_->To.Record;
        QTest::keyClick(&records, Qt::Key_Down);
        QVERIFY(tab_->To.Record != first);
        QCOMPARE(records.currentText(), tab_->To.Record);
    }

    // The active query.

    void queryBox_withoutAQueryWindow_doesNothing()
    {
        tab_->CHKCPYQRY->click();
        QVERIFY(!tab_->COPY_FROM_QUERY);
        QVERIFY(tab_->CHKCPYQRY->isChecked());
    }

    void queryBox_onTheOpenFile_isSet_andEachClickResetsIt()
    {
        openFrom("C:\\PEOPLE.DBF");
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "c:\\people.dbf";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->COPY_FROM_QUERY);
        tab_->CHKCPYQRY->click();
        QVERIFY(!tab_->COPY_FROM_QUERY);
    }

    void queryBox_withNoFromFile_opensTheQuerys()
    {
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "C:\\PEOPLE.DBF";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->COPY_FROM_QUERY);
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QCOMPARE(tab_->List3[0]->count(), 3);
    }

    void queryBox_onAnotherFile_staysTicked_andSaysNothing()
    {
        openFrom("C:\\PEOPLE.DBF");
        globals().QUERYWINDOW_FLG = true;
        queryMembers().QueryFile = "C:\\FRIENDS.DBF";
        tab_->CHKCPYQRY->click();
        QVERIFY(tab_->CHKCPYQRY->isChecked());
        QVERIFY(!tab_->COPY_FROM_QUERY);
        QCOMPARE(tab_->Label3[0]->text(), "C:\\PEOPLE.DBF");
        QVERIFY(prompt_->told.isEmpty());
    }

private:
    void chooseRecord(int index, const QString& name)
    {
        QComboBox& records = *tab_->CMBRECORD[index];
        records.setCurrentIndex(records.findText(name));
        tab_->CMBRECORD_Click(index);
    }
    /// A dBASE table without records: fields F1, F2 ... of one character.
    static std::string wideTable(int fields)
    {
        const int header = 32 + 32 * fields + 1;
        const int record = 1 + fields;
        std::string out("\x03\x68\x0B\x12\0\0\0\0", 8);
        for (const int number : {header, record}) {
            out += static_cast<char>(number & 0xFF);
            out += static_cast<char>(number >> 8);
        }
        out.resize(32);
        for (int i = 1; i <= fields; ++i) {
            std::string field = "F" + std::to_string(i);
            field.resize(11);
            field += 'C';
            field.resize(16);
            field += '\x01';
            field.resize(32);
            out += field;
        }
        return out + "\r\x1A";
    }
};

QTEST_MAIN(TstCopyMatching)
#include "tst_copy_matching.moc"
