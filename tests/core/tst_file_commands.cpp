#include <optional>

#include <QTest>

#include "core/file_commands.h"
#include "platform/memory_file_system.h"
#include "tests/core/error_of.h"
#include "tests/support/sandbox.h"

using namespace velnor;
using velnor::testing::errorOf;
using velnor::testing::Sandbox;

class FileCommandsTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        box_.emplace();
        box_->write("C:\\Data\\b.DBF", "12345");
        box_->write("C:\\Data\\A.dbf", "1");
        box_->write("C:\\Data\\note.txt", "");
        box_->write("C:\\Data\\.hidden.dbf", "");
        box_->makeFolders("C:\\Data\\Folder.dbf");
    }
    void cleanup() { box_.reset(); }

    void dirFindsANameInAnyCase_asItIsSpelled()
    {
        QCOMPARE(Dir("c:\\data\\a.DBF"), "A.dbf");
        QCOMPARE(Dir("C:\\Data\\none.dbf"), "");
        QCOMPARE(Dir("C:\\None\\a.dbf"), "");
    }

    void dirTakesPatterns()
    {
        QCOMPARE(dirAll("C:\\Data\\*.DBF"), (QStringList{"A.dbf", "b.DBF"}));
        QCOMPARE(dirAll("C:\\Data\\?.dbf"), (QStringList{"A.dbf", "b.DBF"}));
        QCOMPARE(dirAll("C:\\Data\\*.*"), (QStringList{"A.dbf", "b.DBF", "note.txt"}));
        QCOMPARE(Dir("C:\\Data\\*.DBF"), "A.dbf");
        QCOMPARE(Dir("C:\\Data\\*.XYZ"), "");
        QCOMPARE(Dir("C:\\Data\\"), "A.dbf");
    }

    void dirCountsFoldersOnlyWhenAskedTo()
    {
        QCOMPARE(Dir("C:\\Data"), "");
        QCOMPARE(Dir("C:\\Data", kAttributeFolder), "Data");
        QCOMPARE(Dir("C:\\None", kAttributeFolder), "");
        QCOMPARE(dirAll("C:\\Data\\*.dbf", kAttributeFolder),
                 (QStringList{"A.dbf", "b.DBF", "Folder.dbf"}));
    }

    void dirLeavesHiddenFilesOutOfPatterns_andFindsThemByName()
    {
        QCOMPARE(dirAll("C:\\Data\\*.dbf", kAttributeHidden),
                 (QStringList{".hidden.dbf", "A.dbf", "b.DBF"}));
        QCOMPARE(Dir("C:\\Data\\.HIDDEN.dbf"), ".hidden.dbf");
    }

    void dirOnAMissingDriveIsError68()
    {
        QCOMPARE(errorOf([] { Dir("Q:\\a.dbf"); }), 68);
        QCOMPARE(errorOf([] { Dir("Q:\\*.*"); }), 68);
        QCOMPARE(Dir("\\\\server\\share\\*.*"), "");
    }

    void bareNamesAreTakenFromTheCurrentFolder()
    {
        QCOMPARE(currentFolder(), "C:\\");
        QCOMPARE(Dir("a.dbf"), "");
        changeFolder("c:\\data\\");
        QCOMPARE(Dir("a.dbf"), "A.dbf");
        QCOMPARE(Dir("*.txt"), "note.txt");
        QCOMPARE(Dir(""), "A.dbf");
        QCOMPARE(fullPath("a.dbf"), "c:\\data\\a.dbf");
        QCOMPARE(fullPath("\\x"), "c:\\x");
        QCOMPARE(errorOf([] { changeFolder("C:\\None"); }), 76);
        QCOMPARE(errorOf([] { changeFolder("C:\\Data\\A.dbf"); }), 76);
        QCOMPARE(currentFolder(), "c:\\data");
        changeFolder("C:\\");
        QCOMPARE(currentFolder(), "C:\\");
    }

    void lengthAndDateOfAMissingFileAreError53()
    {
        QCOMPARE(fileLength("C:\\Data\\B.dbf"), 5);
        QCOMPARE(errorOf([] { fileLength("C:\\Data\\none"); }), 53);
        QCOMPARE(errorOf([] { fileDateTime("C:\\Data\\none"); }), 53);
    }

    void copyNewRefusesAnExistingTarget()
    {
        copyFileNew("C:\\Data\\b.dbf", "C:\\Data\\copy.dbf");
        QCOMPARE(box_->read("C:\\Data\\copy.dbf"), "12345");
        QCOMPARE(errorOf([] { copyFileNew("C:\\Data\\A.dbf", "C:\\Data\\COPY.DBF"); }), 58);
        QCOMPARE(box_->read("C:\\Data\\copy.dbf"), "12345");
        QCOMPARE(errorOf([] { copyFileNew("C:\\Data\\none", "C:\\Data\\new"); }), 53);
        QVERIFY(!box_->files().exists("C:\\Data\\new"));
    }

    void copyReplacesTheTarget()
    {
        copyFile("C:\\Data\\b.dbf", "C:\\Data\\A.dbf");
        QCOMPARE(box_->read("C:\\Data\\A.dbf"), "12345");
        QCOMPARE(dirAll("C:\\Data\\*new*"), QStringList{});
        QCOMPARE(errorOf([] { copyFile("C:\\Data\\none", "C:\\Data\\A.dbf"); }), 53);
        QCOMPARE(box_->read("C:\\Data\\A.dbf"), "12345");
        copyFile("C:\\Data\\b.dbf", "C:\\Data\\b.dbf");
        QCOMPARE(box_->read("C:\\Data\\b.dbf"), "12345");
    }

    void aCopyThatFailsLeavesNothing()
    {
        MemoryFileSystem small(3'000'000);
        const std::vector<std::uint8_t> block(2'000'000, 'x');
        small.put("C:\\a", block);
        small.put("C:\\b", {});
        box_->useFiles(&small);
        QCOMPARE(errorOf([] { copyFileNew("C:\\a", "C:\\c"); }), 61);
        QVERIFY(!small.exists("C:\\c"));
        QCOMPARE(errorOf([] { copyFile("C:\\a", "C:\\b"); }), 61);
        QCOMPARE(small.list("C:\\").size(), 2u);
        QCOMPARE(fileLength("C:\\b"), 0);
    }

    void aLongFileIsCopiedWhole()
    {
        std::string content(3'500'001, 'a');
        for (std::size_t i = 0; i < content.size(); i += 997)
            content[i] = static_cast<char>('b' + i % 20);
        box_->write("C:\\long", content);
        copyFileNew("C:\\long", "C:\\longer");
        QVERIFY(box_->read("C:\\longer") == content);
    }

    void renameRefusesAnExistingTarget()
    {
        QCOMPARE(errorOf([] { renameFile("C:\\Data\\A.dbf", "C:\\Data\\B.dbf"); }), 58);
        renameFile("C:\\Data\\A.dbf", "C:\\Data\\c.dbf");
        QCOMPARE(dirAll("C:\\Data\\*.dbf"), (QStringList{"b.DBF", "c.dbf"}));
        renameFile("C:\\Data\\c.dbf", "C:\\Data\\C.DBF");
        QCOMPARE(Dir("C:\\Data\\c.dbf"), "C.DBF");
        removeFile("C:\\Data\\c.dbf");
        QCOMPARE(Dir("C:\\Data\\c.dbf"), "");
    }

private:
    std::optional<Sandbox> box_;
};

QTEST_GUILESS_MAIN(FileCommandsTest)
#include "tst_file_commands.moc"
