#include <QDir>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/desktop_qt/qt_desktop.h"
#include "platform/run_error.h"
#include "tests/support/sandbox.h"

using namespace velnor;

class QtDesktopTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(QDir(home_.path()).mkpath("share"));
        qputenv("HOME", home_.path().toUtf8());
        qputenv("XDG_DATA_HOME", (home_.path() + "/share").toUtf8());
    }

    void aFileGoesToTheTrash()
    {
        testing::Sandbox box;
        box.write("C:\\Data\\a.dbf", "x");
        const auto desktop = makeQtDesktop(box.paths());
        QVERIFY(
            desktop->moveToTrash("C:\\DATA\\A.DBF"));  // the home folder lies on this volume, too
        QVERIFY(!box.files().exists("C:\\Data\\a.dbf"));
        QVERIFY(QFile::exists(home_.path() + "/share/Trash/files/a.dbf"));
    }

    void aMissingFileIs53()
    {
        testing::Sandbox box;
        const auto desktop = makeQtDesktop(box.paths());
        try {
            desktop->moveToTrash("C:\\no.dbf");
            QFAIL("moved nothing to the trash");
        } catch (const RunError& error) {
            QCOMPARE(error.number(), 53);
        }
    }

    void theComputerIsNamed()
    {
        testing::Sandbox box;
        QCOMPARE(QString::fromStdString(makeQtDesktop(box.paths())->computerName()),
                 QSysInfo::machineHostName());
    }

    void spaceIsThatOfTheVolume_alsoForAPathYetToBeMade()
    {
        testing::Sandbox box;
        const auto desktop = makeQtDesktop(box.paths());
        const VolumeInfo root = desktop->volume("C:\\");
        QVERIFY(root.totalBytes > 0);
        QVERIFY(root.freeBytes <= root.totalBytes);
        QCOMPARE(desktop->volume("C:\\no\\such\\a.dbf").totalBytes, root.totalBytes);
    }

private:
    QTemporaryDir home_;
};

QTEST_GUILESS_MAIN(QtDesktopTest)
#include "tst_qt_desktop.moc"
