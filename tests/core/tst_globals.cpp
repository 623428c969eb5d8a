#include <QTest>

#include "core/globals.h"
#include "core/twips.h"
#include "tests/core/error_of.h"

using namespace velnor;
using velnor::testing::errorOf;

class GlobalsTest : public QObject {
    Q_OBJECT

private slots:
    void init() { resetGlobals(); }

    void startValues()
    {
        const auto& G = globals();
        QCOMPARE(G.PATH_SEP, "\\");
        QVERIFY(G.ASK_COMPUTER_NAME);
        QCOMPARE(G.SEARCH_MASK, "*.MDB");
        QCOMPARE(G.ORG_GROUP, "Database");
        QCOMPARE(G.MAIL_MODE, "S");
        QCOMPARE(G.DICTIONARY_NAME, "Field Dictionary 1");
        QCOMPARE(G.DESIGN_TARGET, "Databases");
        QCOMPARE(G.ORG_SAVE_MODE, "S");
        QCOMPARE(G.DISTRIBUTION_KIND, "E");
        QVERIFY(G.SELECTED_FILE.isEmpty() && G.WORK_FILE.isEmpty() && G.FILE_EXT.isEmpty());
        QVERIFY(!G.LOGIN_OK_FLG && !G.LOGIN_ASKED_FLG && !G.FOXPRO_FLG && !G.MDI_OPEN_FLG);
    }

    void resetTakesBackEveryChange()
    {
        auto& G = globals();
        G.SELECTED_FILE = "C:\\a.dbf";
        G.FIELD_NAMES[251] = "X";
        G.FIELD_COUNT = 252;
        G.LOG_COPY = true;
        resetGlobals();
        QCOMPARE(G.SELECTED_FILE, "");
        QCOMPARE(G.FIELD_NAMES[251], "");
        QCOMPARE(G.FIELD_COUNT, short(0));
        QVERIFY(!G.LOG_COPY);
    }

    void arraysOfATableHaveTheirBounds()
    {
        auto& G = globals();
        QCOMPARE(errorOf([&] { G.TABLE_NAMES[250] = "X"; }), 0);
        QCOMPARE(errorOf([&] { G.TABLE_NAMES[251] = "X"; }), 9);
        QCOMPARE(errorOf([&] { G.FIELD_NAMES[251] = "X"; }), 0);
        QCOMPARE(errorOf([&] { G.FIELD_NAMES[252] = "X"; }), 9);
        QCOMPARE(errorOf([&] { G.FIELD_TYPES[252] = 1; }), 9);
        QCOMPARE(errorOf([&] { G.FIELD_SIZES[252] = 1; }), 9);
        QCOMPARE(errorOf([&] { G.INDEX_NAMES[251] = "X"; }), 9);
        QCOMPARE(errorOf([&] { G.INDEX_PRIMARY[251] = true; }), 9);
        QCOMPARE(errorOf([&] { G.INDEX_UNIQUE[-1] = true; }), 9);
        QCOMPARE(errorOf([&] { G.FOLDER_LIST[201] = "X"; }), 0);
        QCOMPARE(errorOf([&] { G.FOLDER_LIST[202] = "X"; }), 9);
        QCOMPARE(errorOf([&] { G.ORG_GROUPS[202] = "X"; }), 9);
    }

    void twipsAndPixels()
    {
        QCOMPARE(toPixels(1440), 96);
        QCOMPARE(toPixels(250), 17);
        QCOMPARE(toTwips(96), 1440);
        for (int pixels = -10; pixels < 5000; ++pixels)
            QCOMPARE(toPixels(toTwips(pixels)), pixels);
    }

    void aWindowStoredOffTheScreenOpensAt500()
    {
        QCOMPARE(placeOnScreen(99999, 19200), 500);
        QCOMPARE(placeOnScreen(-1, 19200), 500);
        QCOMPARE(placeOnScreen(0, 19200), 0);
        QCOMPARE(placeOnScreen(19200, 19200), 19200);
    }
};

QTEST_GUILESS_MAIN(GlobalsTest)
#include "tst_globals.moc"
