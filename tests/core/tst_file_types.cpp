#include <QTest>

#include "core/file_types.h"
#include "core/globals.h"
#include "tests/core/error_of.h"

using namespace velnor;
using velnor::testing::errorOf;

class FileTypesTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        resetGlobals();
        FillExtensionTable();
    }

    void tableHas27TypesInTheirSlots()
    {
        const auto& G = globals();
        const QStringList expected{"DBF",   "DB",  "MDB", "XLS", "WK4", "TXT",  "RTF",
                                   "INI",   "LOG", "BAT", "BAK", "DOS", "SYS",  "DOC",
                                   "WPS",   "WDB", "WRI", "LST", "HTM", "HTML", "SHTM",
                                   "SHTML", "ASP", "URL", "MSG", "PDF", "ZIP"};
        QCOMPARE(G.EXT_TABLE[0], "");
        for (int slot = 1; slot <= 27; ++slot)
            QCOMPARE(G.EXT_TABLE[slot], expected[slot - 1]);
        for (int slot = 28; slot <= 43; ++slot)
            QCOMPARE(G.EXT_TABLE[slot], "");
        QCOMPARE(errorOf([&] { (void)G.EXT_TABLE[44]; }), 9);
    }

    void anExtensionIsFoundInAnyCase()
    {
        QCOMPARE(extensionSlot("DbF"), 1);
        QCOMPARE(extensionSlot("wk4"), 5);
        QCOMPARE(extensionSlot("TXT"), 6);
        QCOMPARE(extensionSlot("DB2"), 0);
        QCOMPARE(extensionSlot(""), 0);
    }

    void zipIsTextToTheClassAndHasNoViewer()
    {
        const int zip = extensionSlot("ZIP");
        QVERIFY(zip > kLastDatabaseSlot);
        QVERIFY(zip <= kLastTextSlot);
        QVERIFY(zip > kLastViewerSlot);
    }

    void pnpIsListedAsTextAndYetNoType()
    {
        QCOMPARE(extensionSlot("PNP"), 0);
        QVERIFY(passesFilter("a.pnp", filterPattern(kTextFilter)));
    }

    void captionAndPatternOfTextFilesDiffer()  // required as they stand
    {
        const auto& text = kListFilters[kTextFilter];
        for (const char* only : {"*.PDF", "*.PNP", "*.ASP"})
            QVERIFY(QString(text.pattern).contains(only));
        for (const char* missing : {"PDF", "PNP", "ASP"})
            QVERIFY(!QString(text.caption).contains(missing));
    }

    void filtersPassTheirFiles_data()
    {
        QTest::addColumn<int>("filter");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("passes");
        QTest::newRow("dbase") << 0 << "a.dbf" << true;
        QTest::newRow("paradox is not dbase") << 1 << "a.dbf" << false;
        QTest::newRow("paradox") << 1 << "a.DB" << true;
        QTest::newRow("all data") << 5 << "a.wk4" << true;
        QTest::newRow("all data, no text") << 5 << "a.txt" << false;
        QTest::newRow("all files, even without a dot") << 7 << "README" << true;
        QTest::newRow("databases and documents") << 8 << "a.asp" << true;
        QTest::newRow("an empty slot") << 9 << "a.dbf" << false;
    }
    void filtersPassTheirFiles()
    {
        QFETCH(int, filter);
        QFETCH(QString, name);
        QTEST(passesFilter(name, filterPattern(filter)), "passes");
    }

    void filterIndexHasBounds()
    {
        QCOMPARE(filterPattern(0), "*.DBF");
        QCOMPARE(filterPattern(10), "");
        QCOMPARE(errorOf([] { filterPattern(11); }), 9);
        QCOMPARE(errorOf([] { filterPattern(-1); }), 9);
    }

    void everyFilterOfADialogHasCaptionAndPattern()
    {
        QCOMPARE(dialogFilters(kOpenFilter).size(), 7);
        QCOMPARE(dialogFilters(kOpenFilter).first(), "DBase and FoxPro (*.DBF *.dbf)");
        QCOMPARE(dialogFilters(kShellOpenFilter).size(), 7);
        QCOMPARE(dialogFilters(kShellOpenFilter).first(), "Access Files (*.MDB *.mdb)");
        QCOMPARE(dialogFilters(kShellOpenFilter).last(), "All Files (*.*)");
        QCOMPARE(dialogFilters(kMailListFilter), QStringList{"E-Mail Address List (*.MLS *.mls)"});
        QCOMPARE(dialogFilters(kSavedQueryFilter), QStringList{"*.QRD (*.QRD *.qrd)"});
        QCOMPARE(dialogFilters(""), QStringList{});
    }

    void openFilterOfTheMainWindowListsPnpLast()  // and that of the list before ASP: required
    {
        QVERIFY(QString(kOpenFilter).endsWith("*.MSG;*.PDF;*.ASP;*.PNP"));
        QVERIFY(filterPattern(kTextFilter).endsWith("*.MSG;*.PDF;*.PNP;*.ASP"));
    }
};

QTEST_GUILESS_MAIN(FileTypesTest)
#include "tst_file_types.moc"
