// No memory for a window: the shell says so, and is as it was before. The allocator of this program
// refuses what a test tells it to.
#include <cstdlib>
#include <new>

#include <QMdiSubWindow>
#include <QMenu>
#include <QTest>

#include "tests/windows/window_fixture.h"
#include "windows/childfrm1.h"
#include "windows/childfrm2.h"
#include "windows/childfrm3.h"
#include "windows/mdiform1.h"

namespace {
std::size_t refusedSize = 0;
}

// The next object of that size gets no memory; one time.
void* operator new(std::size_t size)
{
    if (size == refusedSize) {
        refusedSize = 0;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size ? size : 1);
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

using namespace velnor;
using namespace velnor::testing;

class TstLowMemory : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        fixture_ = std::make_unique<WindowFixture>();
        fixture_->makeCustomers();
        fixture_->sandbox.write("C:\\data\\notes.txt", "some words");
        shell_ = std::make_unique<MDIForm1>(ShellLinks{});
        shell_->Form_Load();
        shell_->show();
    }
    void cleanup()
    {
        refusedSize = 0;
        shell_.reset();
        fixture_.reset();
    }

    void noMemoryForAWindow_isTold_andNothingIsAdded_data()
    {
        QTest::addColumn<qsizetype>("refused");
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("entry");
        const QString table = "C:\\data\\CUSTOMER.DBF";
        QTest::newRow("browser") << qsizetype(sizeof(ChildFrm1)) << table << false;
        QTest::newRow("text") << qsizetype(sizeof(ChildFrm2)) << "C:\\data\\notes.txt" << false;
        QTest::newRow("data entry") << qsizetype(sizeof(ChildFrm3)) << table << true;
        QTest::newRow("the frame of a browser")
            << qsizetype(sizeof(QMdiSubWindow)) << table << false;
    }
    void noMemoryForAWindow_isTold_andNothingIsAdded()
    {
        QFETCH(qsizetype, refused);
        QFETCH(QString, file);
        QFETCH(bool, entry);
        const auto rows = windowRows();
        refusedSize = static_cast<std::size_t>(refused);
        open(file, entry);
        QCOMPARE(refusedSize, std::size_t(0));
        QCOMPARE(fixture_->prompt.told,
                 QStringList{"Running out of Memory - Please Close some File Windows"});
        QVERIFY(shell_->children().isEmpty());
        QCOMPARE(windowRows(), rows);
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
        QCOMPARE(shell_->DATABASE_COUNT, short(0));
        QCOMPARE(shell_->CHILD_LEFT, 0);
        open(file, entry);  // and with memory again it opens
        QCOMPARE(shell_->children().size(), 1);
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(1));
    }

private:
    void open(const QString& file, bool entry)
    {
        globals().SELECTED_FILE = file;
        globals().TEXT_FILE_FLG = file.endsWith(".txt");
        globals().DATA_ENTRY_FLG = entry;
        globals().RECORD_SOURCE.clear();
        shell_->NewWindowFile(file);
    }
    QStringList windowRows()
    {
        QStringList texts;
        for (const QMenu* menu : shell_->findChildren<QMenu*>())
            if (menu->title() == "&Window")
                for (const QAction* row : menu->actions())
                    texts << row->text();
        return texts;
    }
    std::unique_ptr<WindowFixture> fixture_;
    std::unique_ptr<MDIForm1> shell_;
};

QTEST_MAIN(TstLowMemory)
#include "tst_low_memory.moc"
