#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include "core/keyed_tree.h"
#include "organizer/organizer_pane.h"
#include "tests/core/error_of.h"
#include "tests/organizer/organizer_fixture.h"

using namespace velnor;
using velnor::testing::errorOf;
using velnor::testing::OrganizerFixture;

namespace {

constexpr const char* kStore = "C:\\app\\DataTabl.MDB";

}  // namespace

class OrganizerTreeTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        fixture_ = std::make_unique<OrganizerFixture>();
        pane_ = std::make_unique<OrganizerPane>();
        pane_->open = [this](const QString& path) { opened_ << path; };
        pane_->say = [this](const QString& words) { said_ << words; };
        pane_->setTitle = [this](const QString& title) { title_ = title; };
        opened_.clear();
        said_.clear();
        pane_->resize(300, 400);
        pane_->show();
        pane_->rebuild();
    }
    void cleanup()
    {
        pane_.reset();
        fixture_.reset();
    }

    void anEmptyStoreGetsItsFirstDatabase()
    {
        QCOMPARE(texts(), (QStringList{"Database 1 - Organize Files in Database 1"}));
        QCOMPARE(fixture_->rows("Databases").size(), 1);
        QCOMPARE(fixture_->rows("Databases")[0].mid(0, 5),
                 (QStringList{"Database 1", "C:\\app", "Organize Files in Database 1", "Access",
                              "Access Files"}));
        QCOMPARE(fixture_->cell("Databases", 0, 6), "20041118130810");
        QCOMPARE(tree().toolTip(),
                 "Drag and Drop Files to the Databases in the Database Organizer");
        pane_->rebuild();
        QCOMPARE(fixture_->rows("Databases").size(), 1);
    }

    void aTreeWithNodesIsNotSeeded()
    {
        pane_->seed();
        QCOMPARE(fixture_->rows("Databases").size(), 1);
        QCOMPARE(tree().topLevelItemCount(), 1);
    }

    void aClickOnADatabaseChoosesIt()
    {
        click("Database 1");
        QCOMPARE(globals().ORG_DATABASE, "Database 1");
        QCOMPARE(globals().ORG_GROUP, "Access Files");
    }

    void droppedFilesAreFiledUnderTheNode()
    {
        drop({file("A.DBF"), file("B.MDB")}, "Database 1");
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 2);
        QTreeWidgetItem* node = tree().node("A.DBF/C:\\data\\A.DBF");
        QVERIFY(node);
        QCOMPARE(node->text(0), "A.DBF - C:\\data\\A.DBF");
        QCOMPARE(KeyedTree::tag(*node), "C:\\data\\A.DBF");
        QCOMPARE(KeyedTree::nodeValue(*node), "A.DBF");
        QCOMPARE(fixture_->cell("DatabaseTable", 0, 2), "Access Files");

        pane_->rebuild();
        node = tree().node("Database 1/A.DBF");
        QVERIFY(node);
        QVERIFY(node->text(0).startsWith("A.DBF - A.DBF Description - "));
        QCOMPARE(KeyedTree::nodeValue(*node), "Database 1");
    }

    void theSamePathTwiceIsOneRow()
    {
        drop({file("A.DBF")}, "Database 1");
        drop({file("A.DBF")}, "Database 1");
        pane_->rebuild();
        drop({file("A.DBF")}, "Database 1");
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 1);
    }

    void anUnknownKindEndsTheDrop()
    {
        drop({file("A.DBF"), file("B.QQQ"), file("C.DBF")}, "Database 1");
        QCOMPARE(fixture_->prompt.told,
                 (QStringList{"File Type not supported - Did not add to Database"}));
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 1);
    }

    void aDroppedFolderBringsTheFilesOfTheListsPattern()
    {
        pane_->filePattern = [] { return QStringLiteral("*.DBF;*.DB"); };
        file("A.DBF");
        file("B.DB");
        file("C.TXT");
        drop({"C:\\data"}, "Database 1");
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 2);
    }

    void aDropOnEmptySpaceGoesToTheLastDatabase()
    {
        drop({file("A.DBF")}, "Database 1");
        globals().ORG_GROUP = "Web Pages";
        drop({file("B.DBF")}, {});
        QCOMPARE(fixture_->cell("DatabaseTable", 1, 0), "Database 1");
        QCOMPARE(fixture_->cell("DatabaseTable", 1, 2), "Web Pages");
    }

    void theSelectedFileIsFiledByCommand()
    {
        click("Database 1");
        globals().SELECTED_FILE = file("A.DBF");
        pane_->addSelectedFile();
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 1);
        QCOMPARE(said_, QStringList{"A.DBF is filed under Database 1."});
    }

    void aFileThatCannotBeFiledIsSaidInTheStatusBar()  // the tree itself says nothing
    {
        pane_->addSelectedFile();
        globals().SELECTED_FILE = file("A.DBF");
        globals().ORG_DATABASE = pane_->firstText();  // as at the start: no node has this key
        pane_->addSelectedFile();
        click("Database 1");
        pane_->addSelectedFile();
        pane_->addSelectedFile();
        QCOMPARE(said_,
                 (QStringList{"No file is selected.", "Choose a database in the organizer first.",
                              "A.DBF is filed under Database 1.",
                              "A.DBF stands under Database 1 already."}));
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void theCopyLogTakesNoFiles()
    {
        pane_->ViewCopyLog = [](KeyedTree& tree) { tree.clearNodes(); };
        pane_->setView("L");
        drop({file("A.DBF")}, {});
        QCOMPARE(said_, QStringList{"The copy log takes no files. Choose another view of the "
                                    "organizer."});
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 0);
    }

    void filesHangUnderTheirFolderWhenTheOptionIsOn()
    {
        drop({file("A.DBF")}, "Database 1");
        globals().GROUP_BY_FOLDER = true;
        pane_->rebuild();
        QTreeWidgetItem* folder = tree().node("Database 1/C:\\data");
        QVERIFY(folder);
        QCOMPARE(folder->text(0), "C:\\data");
        QCOMPARE(folder->childCount(), 1);
        QCOMPARE(KeyedTree::nodeValue(*folder), "Database 1");
        tree().expandAll();
        click("Database 1/C:\\data");
        QCOMPARE(globals().ORG_DATABASE, "");
        globals().GROUP_BY_FOLDER = false;
        pane_->rebuild();
        QCOMPARE(tree().node("Database 1")->childCount(), 1);
        QCOMPARE(tree().node("Database 1")->child(0)->childCount(), 0);
    }

    void twoRowsOfOneNameSideBySideAreOneNode()
    {
        fixture_->sandbox.makeFolders("C:\\data\\other");
        globals().ORG_DATABASE = "Database 1";
        AddtoDatabase("A.DBF", file("A.DBF"));
        AddtoDatabase("A.DBF", fixture_->makeFile("C:\\data\\other\\A.DBF"));
        pane_->rebuild();
        QCOMPARE(tree().node("Database 1")->childCount(), 1);
    }

    void groupsShowTheirFilesAndOthersStayAway()
    {
        drop({file("A.DBF")}, "Database 1");
        globals().ORG_GROUP = "No such group";
        globals().ORG_DATABASE = "Database 1";
        AddtoDatabase("B.DBF", file("B.DBF"));
        pane_->setView("G");
        QCOMPARE(texts(), (QStringList{"Access Files - Access Files Description"}));
        QCOMPARE(tree().node("Access Files")->childCount(), 1);
        QVERIFY(tree().node("Access Files/A.DBF"));
        QVERIFY(fixture_->prompt.told.isEmpty());
    }

    void theViewsByDateAndSizeHaveNoParents()
    {
        globals().ORG_DATABASE = "Database 1";
        AddtoDatabase("B.DBF", fixture_->makeFile("C:\\data\\B.DBF", 5000));
        AddtoDatabase("A.DBF", fixture_->makeFile("C:\\data\\A.DBF", 12345));
        pane_->setView("S");
        QCOMPARE(texts(), (QStringList{"Database 1 - B.DBF - B.DBF Description - 5. Kb",
                                       "Database 1 - A.DBF - A.DBF Description - 12.35 Kb"}));
        QTreeWidgetItem* node = tree().topLevelItem(1);
        QCOMPARE(KeyedTree::tag(*node), "C:\\data\\A.DBF");
        QCOMPARE(KeyedTree::nodeValue(*node), "Database 1 - A.DBF");
        QCOMPARE(globals().ORG_DATABASE, "Database 1");
        pane_->setView("D");
        QCOMPARE(tree().topLevelItemCount(), 2);
    }

    void aVanishedFileTakesTheDateOfTheOneBefore()
    {
        globals().ORG_DATABASE = "Database 1";
        AddtoDatabase("A.DBF", file("A.DBF"));
        AddtoDatabase("B.DBF", file("B.DBF"));
        const QString before = fixture_->cell("DatabaseTable", 0, 7);
        QVERIFY(QFile::remove(QString::fromStdString(fixture_->sandbox.native("C:\\data\\B.DBF"))));
        fixture_->makeFile("C:\\data\\A.DBF", 77);
        pane_->rebuild();
        const auto rows = fixture_->rows("DatabaseTable");
        QCOMPARE(rows[0][5], "77");
        QCOMPARE(rows[1][5], "1234");
        QCOMPARE(rows[1][7], rows[0][7]);
        QVERIFY(!before.isEmpty());
    }

    void aFileGoesFromTheViewByName()
    {
        drop({file("A.DBF")}, "Database 1");
        pane_->rebuild();
        select("Database 1/A.DBF");
        fixture_->prompt.expectQuestion(
            "Do you want to Delete C:\\data\\A.DBF from the Database Organizer?", false);
        QTest::keyClick(&tree(), Qt::Key_Delete);
        QVERIFY(tree().node("Database 1/A.DBF"));
        fixture_->prompt.expectQuestion(
            "Do you want to Delete C:\\data\\A.DBF from the Database Organizer?", true);
        QTest::keyClick(&tree(), Qt::Key_Delete);
        QVERIFY(!tree().node("Database 1/A.DBF"));
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 0);
    }

    void inOtherViewsTheRowStaysAndComesBack()
    {
        drop({file("A.DBF")}, "Database 1");
        pane_->setView("D");
        select("Database 1 - A.DBF");
        fixture_->prompt.expectQuestion(
            "Do you want to Delete C:\\data\\A.DBF from the Database Organizer?", true);
        tree().deleteCurrent();
        QCOMPARE(tree().topLevelItemCount(), 0);
        pane_->rebuild();
        QCOMPARE(tree().topLevelItemCount(), 1);
    }

    void aFileWithoutExtensionIsTakenBehindAnother()  // the empty slot of the types: required
    {
        drop({file("A.DBF"), file("PLAIN")}, "Database 1");
        QVERIFY(fixture_->prompt.told.isEmpty());
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 2);
    }

    void aFolderUnderADottedOneIsNoFolder()  // what stands behind the last dot counts: required
    {
        fixture_->sandbox.makeFolders("C:\\data\\v1.2\\inner");
        fixture_->makeFile("C:\\data\\v1.2\\inner\\A.DBF");
        drop({"C:\\data\\v1.2\\inner"}, "Database 1");
        QCOMPARE(fixture_->prompt.told,
                 QStringList{"File Type not supported - Did not add to Database"});
        QCOMPARE(fixture_->rows("DatabaseTable").size(), 0);
    }

    void aClosedFolderIsNotDeleted()
    {
        tree().setCurrentItem(tree().node("Database 1"));
        tree().deleteCurrent();
        QVERIFY(tree().node("Database 1"));
        QVERIFY(fixture_->prompt.asked.isEmpty());
    }

    void aClickOnAFileSelectsIt()
    {
        drop({file("A.DBF")}, "Database 1");
        pane_->rebuild();
        tree().expandAll();
        click("Database 1/A.DBF");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\A.DBF");
        QCOMPARE(title_, "Velnor - The Database File Utility - A.DBF");
        QTest::keyClick(&tree(), Qt::Key_Return);
        QCOMPARE(opened_, (QStringList{"C:\\data\\A.DBF"}));
    }

    void anOpenedFolderShowsItsPicture()
    {
        drop({file("A.DBF")}, "Database 1");
        QTreeWidgetItem* node = tree().node("Database 1");
        node->setExpanded(true);
        QCOMPARE(KeyedTree::image(*node), int(KeyedTree::OpenFolder));
        node->setExpanded(false);
        QCOMPARE(KeyedTree::image(*node), int(KeyedTree::ClosedFolder));
    }

    void aMissingStoreIsTold()
    {
        QVERIFY(QFile::remove(QString::fromStdString(fixture_->sandbox.native(kStore))));
        pane_->rebuild();
        QCOMPARE(fixture_->prompt.told.size(), 1);
        QVERIFY(fixture_->prompt.told[0].startsWith("Error - 3024 - "));
        QCOMPARE(errorOf([this] { pane_->BuildDatabaseTree(); }), 3024);
    }

private:
    KeyedTree& tree() { return *pane_->SSTree1; }
    QString file(const QString& name) { return fixture_->makeFile("C:\\data\\" + name); }
    QStringList texts()
    {
        QStringList all;
        for (int i = 0; i < tree().topLevelItemCount(); ++i)
            all << tree().topLevelItem(i)->text(0);
        return all;
    }
    void select(const QString& key)
    {
        tree().expandAll();
        tree().setCurrentItem(tree().node(key));
        QVERIFY(tree().currentItem());
    }
    void click(const QString& key)
    {
        const QRect place = tree().visualItemRect(tree().node(key));
        QTest::mouseClick(tree().viewport(), Qt::LeftButton, {}, place.center());
    }
    /// Lets files fall on a node, or on empty space, as the desktop does.
    void drop(const QStringList& paths, const QString& key)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls << QUrl::fromLocalFile(
                QString::fromStdString(fixture_->sandbox.native(path.toStdString())));
        data.setUrls(urls);
        const QPoint at = key.isEmpty() ? QPoint(10, tree().viewport()->height() - 5)
                                        : tree().visualItemRect(tree().node(key)).center();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(tree().viewport(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(tree().viewport(), &event);
    }

    std::unique_ptr<OrganizerFixture> fixture_;
    std::unique_ptr<OrganizerPane> pane_;
    QStringList opened_, said_;
    QString title_;
};

QTEST_MAIN(OrganizerTreeTest)
#include "tst_organizer_tree.moc"
