// Save As: the file, its companions, and what is told.
#include <QTest>

#include "core/globals.h"
#include "core/window_list.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"
#include "windows/save_file_as.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

/// An open window by its caption, which goes when it is closed, or stays.
struct Shown {
    explicit Shown(QString name, bool goes = true) : caption(std::move(name))
    {
        entry = WindowEntry(OpenWindow{[this] { return caption; }, [] {},
                                       [this, goes] {
                                           if (goes)
                                               entry = WindowEntry();
                                       }});
    }
    QString caption;
    WindowEntry entry;
};

}  // namespace

class TstSaveFileAs : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        sandbox_ = std::make_unique<Sandbox>();
        prompt_ = std::make_unique<ScriptedPrompt>();
        resetGlobals();
    }
    void cleanup()
    {
        prompt_.reset();
        sandbox_.reset();
    }

    void dbf_takesItsMemoAndIndexesAlong()
    {
        sandbox_->write("C:\\a\\T.DBF", "table");
        sandbox_->write("C:\\a\\T.DBT", "memo");
        sandbox_->write("C:\\a\\T.MDX", "index");
        sandbox_->write("C:\\a\\U.DBT", "older memo");
        prompt_->expectFile({"C:\\a\\U.DBF"}, "Enter New File Name for - C:\\a\\T.DBF");
        QVERIFY(SaveFileAs("C:\\a\\T.DBF"));
        QCOMPARE(sandbox_->read("C:\\a\\U.DBF"), std::string("table"));
        QCOMPARE(sandbox_->read("C:\\a\\U.DBT"), std::string("memo"));
        QCOMPARE(sandbox_->read("C:\\a\\U.MDX"), std::string("index"));
        QVERIFY(prompt_->told.isEmpty());
    }

    void existingTarget_isReplaced()
    {
        sandbox_->write("C:\\a\\T.MDB", "new");
        sandbox_->write("C:\\a\\U.MDB", "old");
        prompt_->expectFile({"C:\\a\\U.MDB"});
        QVERIFY(SaveFileAs("C:\\a\\T.MDB"));
        QCOMPARE(sandbox_->read("C:\\a\\U.MDB"), std::string("new"));
    }

    void windowThatCloses_doesNotChangeTheFileThatIsCopied()
    {
        sandbox_->write("C:\\a\\T.DB", "table");
        sandbox_->write("C:\\a\\OTHER.MDB", "other");
        globals().SELECTED_FILE = "C:\\a\\T.DB";
        const WindowEntry main(OpenWindow{[] { return QString("main"); }, [] {}, [] {}});
        const WindowEntry shown(OpenWindow{[] { return QString("C:\\a\\T.DB"); }, [] {},
                                           [] { globals().SELECTED_FILE = "C:\\a\\OTHER.MDB"; }});
        prompt_->expectFile({"C:\\a\\U.DB"});
        QVERIFY(SaveFileAs(globals().SELECTED_FILE));
        QCOMPARE(sandbox_->read("C:\\a\\U.DB"), std::string("table"));
    }

    void ontoItself_isRefused_andTheFileStays()  // the dialog offers the file's own name
    {
        sandbox_->write("C:\\a\\T.DBF", "table");
        sandbox_->write("C:\\a\\T.DBT", "memo");
        prompt_->expectFile({"C:\\a\\t.dbf"});
        QVERIFY(!SaveFileAs("C:\\a\\T.DBF"));
        QCOMPARE(prompt_->told, QStringList{"Error Copying File - C:\\a\\t.dbf"});
        QCOMPARE(sandbox_->read("C:\\a\\T.DBF"), std::string("table"));
        QCOMPARE(sandbox_->read("C:\\a\\T.DBT"), std::string("memo"));
    }

    void aSourceThatIsGone_leavesTheTarget()
    {
        sandbox_->write("C:\\a\\U.DBF", "table");
        prompt_->expectFile({"C:\\a\\U.DBF"});
        QVERIFY(!SaveFileAs("C:\\a\\T.DBF"));
        QCOMPARE(prompt_->told, QStringList{"Error Copying File - C:\\a\\U.DBF"});
        QCOMPARE(sandbox_->read("C:\\a\\U.DBF"), std::string("table"));
    }

    void companionsThatTheSourceLacks_stayBesideTheTarget()
    {
        sandbox_->write("C:\\a\\T.DBF", "table");
        sandbox_->write("C:\\a\\U.MDX", "older index");
        prompt_->expectFile({"C:\\a\\U.DBF"});
        QVERIFY(SaveFileAs("C:\\a\\T.DBF"));
        QCOMPARE(sandbox_->read("C:\\a\\U.MDX"), std::string("older index"));
    }

    void windowsOfBothTables_areClosedFirst()
    {
        sandbox_->write("C:\\a\\T.DBF", "new");
        sandbox_->write("C:\\a\\U.DBF", "old");
        Shown main("Velnor"), source("C:\\a\\T.DBF"), target("C:\\a\\U.DBF"),
            entry("C:\\a\\U.DBF - DATA ENTRY - U.DBF");
        prompt_->expectFile({"C:\\a\\U.DBF"});
        QVERIFY(SaveFileAs("C:\\a\\T.DBF"));
        const QString words = "Window Displaying Database File must be Closed to Save Table - ";
        QCOMPARE(prompt_->told,
                 (QStringList{words + "C:\\a\\U.DBF", words + "C:\\a\\U.DBF - DATA ENTRY - U.DBF",
                              words + "C:\\a\\T.DBF"}));
        QCOMPARE(sandbox_->read("C:\\a\\U.DBF"), std::string("new"));
    }

    void aWindowOfTheTargetThatStays_keepsTheTarget()  // it holds a record that cannot be saved
    {
        sandbox_->write("C:\\a\\T.MDB", "new");
        sandbox_->write("C:\\a\\U.MDB", "old");
        Shown main("Velnor"), entry("C:\\a\\U.MDB - DATA ENTRY - People", false);
        prompt_->expectFile({"C:\\a\\U.MDB"});
        QVERIFY(!SaveFileAs("C:\\a\\T.MDB"));
        QCOMPARE(prompt_->told.last(), "Error Copying File - C:\\a\\U.MDB");
        QCOMPARE(sandbox_->read("C:\\a\\U.MDB"), std::string("old"));
    }

    void cancel_saysNotSaved()
    {
        sandbox_->write("C:\\a\\T.DBF", "table");
        prompt_->expectFile({});
        QVERIFY(!SaveFileAs("C:\\a\\T.DBF"));
        QCOMPARE(prompt_->told, QStringList{"            File - C:\\a\\T.DBF Not Saved"});
    }

    void failedCopy_namesTheTarget()
    {
        sandbox_->write("C:\\a\\T.TXT", "text");
        prompt_->expectFile({"C:\\nowhere\\U.TXT"});
        QVERIFY(!SaveFileAs("C:\\a\\T.TXT"));
        QCOMPARE(prompt_->told, QStringList{"Error Copying File - C:\\nowhere\\U.TXT"});
    }

private:
    std::unique_ptr<Sandbox> sandbox_;
    std::unique_ptr<ScriptedPrompt> prompt_;
};

QTEST_MAIN(TstSaveFileAs)
#include "tst_save_file_as.moc"
