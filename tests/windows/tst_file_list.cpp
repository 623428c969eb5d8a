// The files of a folder: filtered, sorted, read beside the window's work.
#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include "core/globals.h"
#include "tests/support/sandbox.h"
#include "windows/file_list_model.h"

using namespace velnor;
using namespace velnor::testing;

class TstFileList : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        model_ = std::make_unique<FileListModel>();
        sandbox_->write("C:\\data\\b.dbf", "12345");
        sandbox_->write("C:\\data\\A.DBF", "1");
        sandbox_->write("C:\\data\\note.txt", "x");
        sandbox_->write("C:\\data\\.hidden.dbf", "x");
        sandbox_->makeFolders("C:\\data\\zoo");
    }
    void cleanup()
    {
        model_.reset();
        sandbox_.reset();
    }

    void model_keepsTheRulesOfModels()
    {
        QAbstractItemModelTester tester(model_.get(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        show("C:\\data");
        model_->sort(FileListModel::Size, Qt::DescendingOrder);
        model_->setPattern("*.TXT");
    }

    void foldersComeFirst_thenNamesBlindToCase()
    {
        show("C:\\data");
        QCOMPARE(names(), (QStringList{"zoo", "A.DBF", "b.dbf", "note.txt"}));
        model_->sort(FileListModel::Name, Qt::DescendingOrder);
        QCOMPARE(names(), (QStringList{"zoo", "note.txt", "b.dbf", "A.DBF"}));
        model_->sort(FileListModel::Size, Qt::DescendingOrder);
        QCOMPARE(names().at(1), "b.dbf");
    }

    void filter_hidesFiles_neverFolders_andCountsWhatItHides()
    {
        show("C:\\data");
        model_->setPattern("*.DBF;*.DB");
        QCOMPARE(names(), (QStringList{"zoo", "A.DBF", "b.dbf"}));
        QCOMPARE(model_->shownFiles(), 2);
        QCOMPARE(model_->hiddenFiles(), 1);
    }

    void driveRoot_isListed_andPathsHaveOneBackslash()
    {
        show("C:");
        const QModelIndex data = model_->indexOf("C:\\data");
        QVERIFY(data.isValid());
        QCOMPARE(model_->path(data), "C:\\data");
        QVERIFY(model_->isFolder(data));
    }

    void missingFolder_saysWhy()
    {
        show("C:\\nowhere");
        QVERIFY(!model_->failure().isEmpty());
        QCOMPARE(model_->rowCount(), 0);
    }

    void aFolderLeftMeanwhile_isDropped()
    {
        model_->setFolder("C:");
        show("C:\\data\\zoo");
        QTest::qWait(50);
        QCOMPARE(model_->folder(), "C:\\data\\zoo");
        QCOMPARE(model_->rowCount(), 0);
    }

    void draggedFiles_leaveAsNativePaths()
    {
        show("C:\\data");
        std::unique_ptr<QMimeData> data(
            model_->mimeData({model_->indexOf("C:\\data\\A.DBF"), model_->index(2, 1)}));
        QCOMPARE(data->urls(), QList<QUrl>{QUrl::fromLocalFile(
                                   QString::fromStdString(sandbox_->native("C:\\data\\A.DBF")))});
    }

    void tenThousandFiles_letTheWindowWork()
    {
        sandbox_->makeFolders("C:\\many");
        const QString many = QString::fromStdString(sandbox_->native("C:\\many"));
        for (int i = 0; i < 10'000; ++i)
            QVERIFY(QFile(many + QString("/file%1.dbf").arg(i)).open(QIODevice::WriteOnly));
        QElapsedTimer clock;
        clock.start();
        model_->setFolder("C:\\many");
        const qint64 asked = clock.elapsed();
        QSignalSpy filled(model_.get(), &FileListModel::filled);
        QVERIFY(filled.wait(10'000));
        qInfo("asked in %lld ms, filled after %lld ms", asked, clock.elapsed());
        QVERIFY2(asked < 100, "the folder must be read beside the window's work");
        QCOMPARE(model_->rowCount(), 10'000);
    }

private:
    void show(const QString& folder)
    {
        QSignalSpy filled(model_.get(), &FileListModel::filled);
        model_->setFolder(folder);
        QVERIFY(filled.wait(5000));
    }
    QStringList names()
    {
        QStringList all;
        for (int i = 0; i < model_->rowCount(); ++i)
            all << model_->index(i, 0).data().toString();
        return all;
    }
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<FileListModel> model_;
};

QTEST_MAIN(TstFileList)
#include "tst_file_list.moc"
