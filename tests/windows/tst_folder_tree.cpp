// The folder tree: read where it is opened, found by path.
#include <QAbstractItemModelTester>
#include <QTest>

#include "tests/support/sandbox.h"
#include "windows/folder_tree_model.h"

using namespace velnor;
using namespace velnor::testing;

class TstFolderTree : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        sandbox_->makeFolders("C:\\data\\inner");
        sandbox_->makeFolders("C:\\Zoo");
        sandbox_->makeFolders("C:\\.hidden");
        sandbox_->write("C:\\file.txt", "x");
        model_ = std::make_unique<FolderTreeModel>();
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
        QVERIFY(model_->indexOf("C:\\data\\inner").isValid());
        sandbox_->makeFolders("C:\\data\\a first");
        sandbox_->files().removeFolder("C:\\data\\inner");
        model_->refresh(model_->indexOf("C:\\data"));
        QVERIFY(!model_->indexOf("C:\\data\\inner").isValid());
    }

    void readAgain_newFoldersCome_andThoseThatAreGoneGo()
    {
        const QModelIndex drive = model_->indexOf("C:");
        model_->fetchMore(drive);
        const QPersistentModelIndex zoo = model_->indexOf("C:\\Zoo");
        sandbox_->makeFolders("C:\\middle");
        sandbox_->files().removeFolder("C:\\data\\inner");
        sandbox_->files().removeFolder("C:\\data");
        model_->refresh(drive);
        QCOMPARE(model_->rowCount(drive), 2);
        QCOMPARE(model_->index(0, 0, drive).data().toString(), "middle");
        QCOMPARE(zoo.row(), 1);  // it stays the same row, open or not
        QCOMPARE(model_->parent(model_->index(0, 0, drive)), drive);
    }

    void aFolderMadeSinceThen_isFound()
    {
        QVERIFY(!model_->indexOf("C:\\data\\late").isValid());
        sandbox_->makeFolders("C:\\data\\late");
        QCOMPARE(model_->folder(model_->indexOf("C:\\data\\late")), "C:\\data\\late");
    }

    void aFolder_isReadWhenItIsOpened()
    {
        const QModelIndex drive = model_->indexOf("C:");
        QCOMPARE(model_->folder(drive), "C:");
        QCOMPARE(model_->rowCount(drive), 0);
        QVERIFY(model_->hasChildren(drive) && model_->canFetchMore(drive));
        model_->fetchMore(drive);
        QCOMPARE(model_->rowCount(drive), 2);  // no files, nothing hidden
        QCOMPARE(model_->index(0, 0, drive).data().toString(), "data");
        QVERIFY(!model_->canFetchMore(drive));
    }

    void aFolderWithoutFolders_losesItsArrow()
    {
        const QModelIndex zoo = model_->indexOf("C:\\Zoo");
        QVERIFY(model_->hasChildren(zoo));
        model_->fetchMore(zoo);
        QVERIFY(!model_->hasChildren(zoo));
    }

    void paths_areFoundBlindToCase_andUnknownOnesAreNot()
    {
        QCOMPARE(model_->folder(model_->indexOf("c:\\DATA\\INNER")), "C:\\data\\inner");
        QVERIFY(!model_->indexOf("C:\\data\\none").isValid());
        QVERIFY(!model_->indexOf("Q:\\").isValid());
        QVERIFY(!model_->indexOf("").isValid());
    }

private:
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<FolderTreeModel> model_;
};

QTEST_MAIN(TstFolderTree)
#include "tst_folder_tree.moc"
