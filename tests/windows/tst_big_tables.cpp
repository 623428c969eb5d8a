// A table of a million records in the browser: first rows and last row at once, in little memory.
// VELNOR_BIG_FILE names another file for the same measurement; the figures are printed.
#include <ctime>

#include <QFile>
#include <QTest>

#include "tests/windows/big_table.h"
#include "tests/windows/window_fixture.h"
#include "windows/childfrm1.h"
#include "windows/mdiform1.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

/// Milliseconds of this process's own work: the machine may be busy with other things.
double cpuMs()
{
    return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// The most memory that the process has had, in MiB.
double peakMemory()
{
    QFile status("/proc/self/status");
    if (status.open(QIODevice::ReadOnly))
        for (const QByteArray& line : status.readAll().split('\n'))
            if (line.startsWith("VmHWM:"))
                return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    return 0;
}

}  // namespace

class TstBigTables : public QObject {
    Q_OBJECT
private slots:
    void aMillionRecords_openAtOnce_andJumpToTheLast()
    {
        WindowFixture fixture;
        QString file = "C:\\data\\BIG.DBF";
        fixture.sandbox.write(file.toStdString(), bigTable(1'000'000));
        if (const QString given = qEnvironmentVariable("VELNOR_BIG_FILE"); !given.isEmpty()) {
            file = "C:\\data\\given" + given.mid(given.lastIndexOf('.'));
            QVERIFY(QFile::link(
                given, QString::fromStdString(fixture.sandbox.native(file.toStdString()))));
        }
        MDIForm1 shell({});
        shell.Form_Load();
        shell.resize(1000, 700);
        shell.show();
        QCoreApplication::processEvents();

        const double before = cpuMs();
        globals().SELECTED_FILE = file;
        shell.NewWindowFile(file);
        auto* browser = qobject_cast<ChildFrm1*>(shell.activeChild());
        QVERIFY(browser);
        browser->MSFlexGrid1->grab();  // painted
        const double opened = cpuMs() - before;
        const int rows = browser->MSFlexGrid1->model()->rowCount();
        QTest::keyClick(browser->MSFlexGrid1, Qt::Key_End);
        browser->MSFlexGrid1->grab();
        const double jumped = cpuMs() - before - opened;
        QCOMPARE(browser->MSFlexGrid1->currentIndex().row(), rows - 1);
        qInfo("%d rows: first rows %.0f ms, last row %.0f ms, at most %.0f MiB", rows, opened,
              jumped, peakMemory());
#ifndef __SANITIZE_ADDRESS__
        QVERIFY(opened < 300);
        QVERIFY(jumped < 150);
        QVERIFY(peakMemory() < 150);
#endif
    }
};

QTEST_MAIN(TstBigTables)
#include "tst_big_tables.moc"
