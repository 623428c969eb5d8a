#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "core/application_folder.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/startup.h"
#include "tests/core/error_of.h"
#include "tests/support/sandbox.h"

using namespace velnor;
using velnor::testing::errorOf;
using velnor::testing::Sandbox;

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

}  // namespace

class ApplicationFolderTest : public QObject {
    Q_OBJECT

private slots:
    void aNewFolderGetsTheDeliveredFiles()
    {
        QTemporaryDir home;
        HostPaths paths;
        const QString folder = home.path() + "/share/Velnor3";
        prepareApplicationFolder(paths, folder);
        QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name | QDir::IgnoreCase),
                 (QStringList{"Close.Txt", "Colors.INI", "Options.INI", "TIPHELP.TXT", "Velnor.exe",
                              "Velnor.Txt"}));
        QVERIFY(contentOf(folder + "/TIPHELP.TXT").count("\r\n") > 3);
        QCOMPARE(paths.toNative("C:\\program files\\velnor3\\close.txt"),
                 (folder + "/Close.Txt").toStdString());
    }

    void whatStandsThereIsNeverTouched()
    {
        QTemporaryDir home;
        HostPaths paths;
        QFile own(home.path() + "/TIPHELP.TXT");
        QVERIFY(own.open(QIODevice::WriteOnly));
        own.write("my tip");
        own.close();
        prepareApplicationFolder(paths, home.path());
        QCOMPARE(contentOf(own.fileName()), "my tip");
        QVERIFY(QFile::remove(home.path() + "/Close.Txt"));
        prepareApplicationFolder(paths, home.path());
        QVERIFY(QFile::exists(home.path() + "/Close.Txt"));
    }

    void theProgramFindsItsFolderFromAnywhere()
    {
        Sandbox box;
        box.makeFolders("C:\\home");
        prepareApplicationFolder(box.paths(),
                                 QString::fromStdString(box.native("C:\\home") + "/app"));
        resetGlobals();
        StartProgram();
        QCOMPARE(globals().APP_PATH, kApplicationFolder);
        QCOMPARE(Dir(globals().APP_PATH + "\\Close.Txt"), "Close.Txt");
    }

    void theUsualPlaceIsThePersonsDataFolder()
    {
        QTemporaryDir home;
        qputenv("XDG_DATA_HOME", home.path().toUtf8());
        HostPaths paths;
        QCOMPARE(prepareApplicationFolder(paths), home.path() + "/Velnor3");
        QVERIFY(QFile::exists(home.path() + "/Velnor3/Velnor.exe"));
    }

    void drivesComeFromThePersonsMap()
    {
        QTemporaryDir home;
        qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
        HostPaths paths;
        readDriveMap(paths);
        QCOMPARE(errorOf([&] { paths.toNative("D:\\a"); }), 68);
        QVERIFY(QDir(home.path()).mkpath("velnor"));
        QFile map(home.path() + "/velnor/drives.map");
        QVERIFY(map.open(QIODevice::WriteOnly));
        map.write("# drives\nD: = /mnt/data\n");
        map.close();
        readDriveMap(paths);
        QCOMPARE(paths.toNative("D:\\a"), "/mnt/data/a");
    }
};

QTEST_GUILESS_MAIN(ApplicationFolderTest)
#include "tst_application_folder.moc"
