// The document shell: captions, the window list, which tools are on, cascade and close.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>

#include "core/colors.h"
#include "core/window_list.h"
#include "tests/windows/window_fixture.h"
#include "windows/childfrm2.h"
#include "windows/find_bar.h"
#include "windows/mdiform1.h"

using namespace velnor;
using namespace velnor::testing;

class TstDocumentShell : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        fixture_ = std::make_unique<WindowFixture>();
        mainTools_.clear();
        ShellLinks links;
        links.runMainTool = [this](const QString& id) { mainTools_ << id; };
        links.bringMainToFront = [this] { mainTools_ << "front"; };
        shell_ = new MDIForm1(std::move(links));
        shell_->Form_Load();
        shell_->show();
    }
    void cleanup()
    {
        delete shell_;
        fixture_.reset();
    }

    void theSameFileTwice_isToldApart()
    {
        fixture_->makeCustomers();
        open("C:\\data\\CUSTOMER.DBF");
        open("C:\\data\\CUSTOMER.DBF");
        open("C:\\data\\CUSTOMER.DBF");
        QCOMPARE(captions(), (QStringList{"C:\\data\\CUSTOMER.DBF", "C:\\data\\CUSTOMER.DBF@1",
                                          "C:\\data\\CUSTOMER.DBF@2"}));
        QCOMPARE(shell_->activeChild()->FILE_USE, "C:\\data\\CUSTOMER.DBF");
        QCOMPARE(shell_->activeChild()->windowTitle(), "CUSTOMER.DBF@2");
    }

    void theThirdWindow_standsTwoStepsIn()
    {
        fixture_->makeCustomers();
        for (int i = 0; i < 2; ++i)
            open("C:\\data\\CUSTOMER.DBF");
        QCOMPARE(shell_->CHILD_LEFT, 400);
        QCOMPARE(shell_->CHILD_TOP, 300);
        shell_->children().first()->mnuFileClose_Click();
        QCOMPARE(shell_->CHILD_LEFT, 200);  // though another was the last to open: required
        QCOMPARE(shell_->CHILD_TOP, 150);
    }

    void aFileWithoutExtension_opensNothing()
    {
        open("C:\\data\\plain");
        QVERIFY(shell_->children().isEmpty());
    }

    void noChild_onlyOpenAndHelpAreOn()
    {
        const ToolSet& tools = *shell_->ToolBarComp1;
        QVERIFY(tools.enabled("ID_OpenBtn"));
        QVERIFY(tools.enabled("ID_mnuOpenFile"));
        for (const char* id :
             {"ID_CloseBtn", "ID_SaveBtn", "ID_RefreshBtn", "ID_CopyBtn", "ID_TableBtn",
              "ID_IndexBtn", "ID_mnuEdit", "ID_mnuView", "ID_mnuSaveFileAs"})
            QVERIFY2(!tools.enabled(id), id);
    }

    void eachKindOfChild_switchesItsTools()
    {
        const ToolSet& tools = *shell_->ToolBarComp1;
        shell_->EnableDataButtons(0);
        QVERIFY(tools.enabled("ID_RefreshBtn") && tools.enabled("ID_mnuView"));
        QVERIFY(!tools.enabled("ID_TableBtn") && !tools.enabled("ID_IndexBtn"));
        QVERIFY(!tools.enabled("ID_CopyBtn") && !tools.enabled("ID_SaveBtn"));
        QVERIFY(tools.enabled("ID_mnuSetTableComments"));
        shell_->EnableDataButtons(2);
        QVERIFY(tools.enabled("ID_TableBtn") && tools.enabled("ID_IndexBtn"));
        shell_->EnableTextButtons();
        QVERIFY(tools.enabled("ID_CloseBtn") && tools.enabled("ID_CopyBtn"));
        QVERIFY(!tools.enabled("ID_RefreshBtn") && !tools.enabled("ID_mnuView"));
        QVERIFY(!tools.enabled("ID_TableBtn") && !tools.enabled("ID_mnuSetTableComments"));
        shell_->EnableButtons();
        QVERIFY(tools.enabled("ID_SaveBtn") && tools.enabled("ID_mnuSaveFileAs"));
        QVERIFY(tools.enabled("ID_mnuEdit") && tools.enabled("ID_mnuView"));
        QVERIFY(!tools.enabled("ID_IndexBtn"));
    }

    void toolsOfLaterWork_stayOff_andSayWhy()
    {
        shell_->EnableDataButtons(1);
        const ToolSet& tools = *shell_->ToolBarComp1;
        QVERIFY(!tools.enabled("ID_Query"));
        QVERIFY(tools.find("ID_Query")->toolTip().contains("Not there yet"));
    }

    void closingTheLastChild_emptiesTheShell()
    {
        fixture_->makeCustomers();
        DocumentChild* child = open("C:\\data\\CUSTOMER.DBF");
        QVERIFY(shell_->ToolBarComp1->enabled("ID_CloseBtn"));
        shell_->ToolBarComp1->click("ID_CloseBtn");
        QVERIFY(child->unloaded());
        QVERIFY(!shell_->ToolBarComp1->enabled("ID_CloseBtn"));
        QVERIFY(shell_->ToolBarComp1->enabled("ID_OpenBtn"));
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
    }

    void keysOfTheShell_areNobodyElses()
    {
        fixture_->makeCustomers();
        open("C:\\data\\CUSTOMER.DBF");
        QSet<QKeySequence> seen;
        for (const QAction* action : shell_->findChildren<QAction*>()) {
            if (action->shortcut().isEmpty())
                continue;
            QVERIFY2(!seen.contains(action->shortcut()), qPrintable(action->text()));
            seen.insert(action->shortcut());
        }
        QVERIFY(seen.contains(QKeySequence("Ctrl+W")));
        QVERIFY(QTest::qWaitForWindowActive(shell_));
        QTest::keySequence(shell_, QKeySequence("Ctrl+W"));
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(0));
    }

    void clicksOff_runNothing()
    {
        fixture_->makeCustomers();
        open("C:\\data\\CUSTOMER.DBF");
        shell_->SHUTOFFCLICK_FLG = true;
        shell_->ToolBarComp1->click("ID_CloseBtn");
        shell_->ToolBarComp1->click("ID_ReturnBtn");
        QCOMPARE(shell_->NUM_CHILDWINDOWS, short(1));
        QVERIFY(mainTools_.isEmpty());
        shell_->SHUTOFFCLICK_FLG = false;
        shell_->ToolBarComp1->click("ID_ReturnBtn");
        shell_->ToolBarComp1->click("ID_mnuExit");
        QCOMPARE(mainTools_, (QStringList{"front", "ID_mnuExit"}));
    }

    void closeWindowOfFile_findsTheChild_byItsCaption()
    {
        QWidget main;
        // The main window is the first of the list, the shell after it.
        WindowEntry mainEntry(&main);
        fixture_->makeCustomers();
        open("C:\\data\\CUSTOMER.DBF");
        QVERIFY(!CloseWindowOfFile("C:\\data\\OTHER.DBF"));
        QVERIFY(CloseWindowOfFile("C:\\data\\CUSTOMER.DBF"));
        QCOMPARE(fixture_->prompt.told,
                 QStringList{"Window Displaying Database must be Closed to Send - "
                             "C:\\data\\CUSTOMER.DBF"});
        QVERIFY(shell_->children().isEmpty());
    }

    void tableCombo_followsTheChild_andChangesItsTable()
    {
        fixture_->makeShop();
        DocumentChild* child = open("C:\\data\\shop.mdb");
        QCOMPARE(shell_->ID_CMBTable->currentText(), "Items");
        shell_->ID_CMBTable->setCurrentIndex(1);
        QCOMPARE(child->HLDTABLE, "Orders");
    }

    void texts_areShown_andDocumentsSayWhatIsMissing()
    {
        fixture_->sandbox.write("C:\\data\\a.txt", "one\r\ntwo \xE9");
        globals().TEXT_FILE_FLG = true;
        auto* text = qobject_cast<ChildFrm2*>(openText("C:\\data\\a.txt"));
        QVERIFY(text);
        QCOMPARE(text->Text1->toPlainText(), QString::fromUtf8("one\ntwo \xC3\xA9"));
        QVERIFY(text->notice->isHidden());
        fixture_->sandbox.write("C:\\data\\a.htm", "<b>x</b>");
        auto* page = qobject_cast<ChildFrm2*>(openText("C:\\data\\a.htm"));
        QVERIFY(!page->notice->isHidden());
        QCOMPARE(page->Text1->toPlainText(), "<b>x</b>");
    }

    void aTextsColours_areTheDesktops_untilPeopleSetThem()
    {
        auto& G = globals();
        G.MAIN_BACK_COLOR = kDesktopWindow.back;
        G.MAIN_TEXT_COLOR = kDesktopWindow.text;
        fixture_->sandbox.write("C:\\data\\a.txt", "one");
        auto* text = qobject_cast<ChildFrm2*>(openText("C:\\data\\a.txt"));
        const QColor desktop = QApplication::palette(text->Text1).color(QPalette::Base);
        QCOMPARE(text->Text1->palette().color(QPalette::Base), desktop);
        G.DISPLAY_BACK_COLOR = 0x102030;
        text->Form_Activate();
        QCOMPARE(text->Text1->palette().color(QPalette::Base), QColor(0x30, 0x20, 0x10));
        QCOMPARE(text->Text1->palette().color(QPalette::Text), QColor(0x80, 0x40, 0));
    }

    void findInAText_goesOnBehindWhatItFound_andStaysAtTheEnd()
    {
        fixture_->sandbox.write("C:\\data\\a.txt", "one two one");
        auto* text = qobject_cast<ChildFrm2*>(openText("C:\\data\\a.txt"));
        shell_->ToolBarComp1->click("ID_mnuFindText");
        text->findBar->words->setText("ONE");
        for (const int end : {3, 11, 11}) {
            shell_->ToolBarComp1->click("ID_mnuFindNextText");
            QCOMPARE(text->Text1->textCursor().position(), end);
            QCOMPARE(text->Text1->textCursor().selectedText(), "one");
        }
        QCOMPARE(text->findBar->answer(), "Not found");
    }

    void arranging_keepsEveryChild()
    {
        fixture_->makeCustomers();
        for (int i = 0; i < 3; ++i)
            open("C:\\data\\CUSTOMER.DBF");
        shell_->ToolBarComp1->click("ID_mnuCascade");
        shell_->ToolBarComp1->click("ID_mnuTileVertically");
        const auto all = shell_->children();
        QCOMPARE(all.size(), 3);
        QCOMPARE(all[0]->parentWidget()->y(), 0);
        QVERIFY(all[1]->parentWidget()->x() > all[0]->parentWidget()->x());
        shell_->ToolBarComp1->click("ID_mnuTileHorizontally");
        QVERIFY(all[1]->parentWidget()->y() > all[0]->parentWidget()->y());
    }

    void closingTheShell_unloadsAll_andStoresItsPlace()
    {
        fixture_->makeCustomers();
        open("C:\\data\\CUSTOMER.DBF");
        shell_->resize(800, 600);
        QPointer<MDIForm1> gone(shell_);
        shell_->close();
        QVERIFY(!globals().MDI_OPEN_FLG);
        QCOMPARE(globals().SHELL_WIDTH, 12000);
        QCOMPARE(globals().SHELL_HEIGHT, 9000);
        QTRY_VERIFY(!gone);
        shell_ = nullptr;
    }

private:
    DocumentChild* open(const QString& path)
    {
        globals().SELECTED_FILE = path;
        globals().TEXT_FILE_FLG = false;
        shell_->NewWindowFile(path);
        return shell_->activeChild();
    }
    DocumentChild* openText(const QString& path)
    {
        globals().SELECTED_FILE = path;
        globals().TEXT_FILE_FLG = true;
        shell_->NewWindowFile(path);
        return shell_->activeChild();
    }
    QStringList captions()
    {
        QStringList all;
        for (const DocumentChild* child : shell_->children())
            all << child->caption();
        return all;
    }
    std::unique_ptr<WindowFixture> fixture_;
    MDIForm1* shell_ = nullptr;
    QStringList mainTools_;
};

QTEST_MAIN(TstDocumentShell)
#include "tst_document_shell.moc"
