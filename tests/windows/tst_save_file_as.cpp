// Save As: the file, its companions, and what is told.
#include <QTest>

#include "core/globals.h"
#include "core/window_list.h"
#include "tests/support/sandbox.h"
#include "tests/support/scripted_prompt.h"
#include "windows/save_file_as.h"

using namespace velnor;
using namespace velnor::testing;

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
