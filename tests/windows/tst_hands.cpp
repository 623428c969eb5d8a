// What people's hands and ears expect of both frames: a name for each control, one letter for each
// command of a form, keys, header clicks, the clipboard, places on a screen that is gone.
#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QProxyStyle>
#include <QScreen>
#include <QTabBar>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "access/login.h"
#include "access/workspace.h"
#include "assist/about1.h"
#include "assist/help_window.h"
#include "assist/quik_tip1.h"
#include "core/keyed_tree.h"
#include "core/twips.h"
#include "organizer/organizer_pane.h"
#include "tests/windows/main_window_case.h"
#include "windows/childfrm1.h"
#include "windows/context_key.h"
#include "windows/databases_tab.h"
#include "windows/file_list_model.h"
#include "windows/find_bar.h"
#include "windows/record_grid.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

/// A desktop on which a single click opens.
class SingleClickDesktop {
public:
    SingleClickDesktop() : before_(QApplication::style()->name())
    {
        QApplication::setStyle(new Style);
    }
    ~SingleClickDesktop() { QApplication::setStyle(before_); }

private:
    class Style : public QProxyStyle {
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* data) const override
        {
            return hint == SH_ItemView_ActivateItemOnSingleClick
                       ? 1
                       : QProxyStyle::styleHint(hint, option, widget, data);
        }
    };
    QString before_;
};

/// Parts of Qt's own controls speak through those.
bool isPartOfAnother(const QWidget& widget)
{
    return widget.objectName().startsWith("qt_") || qobject_cast<const QHeaderView*>(&widget) ||
           qobject_cast<const QComboBox*>(widget.parentWidget()) ||
           widget.inherits("QComboBoxListView") || widget.inherits("QMdiAreaTabBar") ||
           widget.inherits("QMdiArea") || widget.inherits("QMdiSubWindow");
}

QStringList namelessControls(const QWidget& window)
{
    QStringList nameless;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        if (!(widget->focusPolicy() & Qt::TabFocus) || isPartOfAnother(*widget))
            continue;
        const QAccessibleInterface* heard = QAccessible::queryAccessibleInterface(widget);
        if (!heard || heard->text(QAccessible::Name).trimmed().isEmpty())
            nameless << QString("%1 %2").arg(widget->metaObject()->className(),
                                             widget->objectName());
    }
    return nameless;
}

/// The letter that a text underlines; null when none.
QChar letterOf(const QString& text)
{
    const auto at = QString(text).replace("&&", "  ").indexOf('&');
    return at < 0 || at + 1 >= text.size() ? QChar() : text[at + 1].toUpper();
}

/// Every text with a letter that is seen now in a window, with what bears it.
QStringList lettersTwice(const QWidget& window, QString seen)
{
    QStringList twice;
    const auto look = [&](const QString& text) {
        const QChar letter = letterOf(text);
        if (letter.isNull())
            return;
        if (seen.contains(letter))
            twice << text;
        seen += letter;
    };
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window))
            continue;
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget))
            look(button->text());
        else if (const auto* label = qobject_cast<const QLabel*>(widget); label && label->buddy())
            look(label->text());
    }
    return twice;
}

QString menuLetters(const QMainWindow& window)
{
    QString letters;
    for (const QAction* menu : window.menuBar()->actions())
        letters += letterOf(menu->text());
    return letters;
}

}  // namespace

class TstHands : public QObject, MainWindowCase {
    Q_OBJECT
private slots:
    void init()
    {
        setUp();
        window_->Form_Load();
        globals().SHOW_TIPS = false;  // a window of its own in front
    }
    void cleanup() { tearDown(); }

    void everyControl_hasAName()
    {
        QCOMPARE(namelessControls(*window_).join(", "), QString());
        openOneOfEachKind();
        QCOMPARE(namelessControls(*window_->shell()).join(", "), QString());
        globals().WORK_FILE = "C:\\data\\locked.mdb";
        Login login(workspace());
        QCOMPARE(namelessControls(login).join(", "), QString());
        QCOMPARE(namelessControls(About1()).join(", "), QString());
        QCOMPARE(namelessControls(QuikTip1()).join(", "), QString());
        QCOMPARE(namelessControls(HelpWindow()).join(", "), QString());
    }

    void lettersOfATab_areDifferent_alsoFromTheMenus()
    {
        window_->show();
        const QString menus = menuLetters(*window_);
        for (int i = 0; i < window_->TabStrip1->count(); ++i) {
            window_->TabStrip1->setCurrentIndex(i);
            const QStringList twice = lettersTwice(*window_, menus);
            QVERIFY2(twice.isEmpty(),
                     qPrintable(window_->TabStrip1->tabText(i) + ": " + twice.join(", ")));
        }
    }

    void lettersOfAChild_areDifferent_alsoFromTheMenus()
    {
        openOneOfEachKind();
        MDIForm1& shell = *window_->shell();
        for (DocumentChild* child : shell.children()) {
            shell.bringToFront(child);
            child->mnuViewTable_Click();
            child->mnuViewIndex_Click();
            child->mnuFindText_Click();
            const QStringList twice = lettersTwice(*child, menuLetters(shell));
            QVERIFY2(twice.isEmpty(), qPrintable(child->caption() + ": " + twice.join(", ")));
        }
    }

    void keysOfTheMainWindow_areNobodyElses()
    {
        QMap<QKeySequence, QString> seen;
        for (const QAction* action : window_->findChildren<QAction*>())
            for (const QKeySequence& key : action->shortcuts()) {
                QVERIFY2(!seen.contains(key), qPrintable(action->text() + ": " + seen.value(key)));
                seen.insert(key, action->text());
            }
        for (const char* key :
             {"Ctrl+O", "Ctrl+W", "F5", "Ctrl+Q", "F1", "Ctrl+B", "Ctrl+E", "Ctrl+Shift+S"})
            QVERIFY2(seen.contains(QKeySequence(key)), key);
    }

    void aClickOnAHeader_sortsTheFiles()
    {
        fixture_->sandbox.write("C:\\data\\big.txt", std::string(5000, 'x'));
        fixture_->sandbox.write("C:\\data\\small.txt", "x");
        window_->show();
        DatabasesTab& tab = window_->databases();
        tab.SetFilterButton(6);
        tab.goToFolder("C:\\data");
        QTRY_COMPARE(fileNames(), (QStringList{"big.txt", "small.txt"}));
        clickHeader(FileListModel::Size);
        QCOMPARE(fileNames(), (QStringList{"small.txt", "big.txt"}));
        clickHeader(FileListModel::Size);
        QCOMPARE(fileNames(), (QStringList{"big.txt", "small.txt"}));
    }

    void sortingAndReadingAgain_leaveTheFileSelected()
    {
        fixture_->sandbox.write("C:\\data\\big.txt", std::string(5000, 'x'));
        fixture_->sandbox.write("C:\\data\\small.txt", "x");
        window_->show();
        DatabasesTab& tab = window_->databases();
        tab.SetFilterButton(6);
        tab.goToFolder("C:\\data");
        QTRY_VERIFY(!tab.files().loading());
        tab.PTxShList1->setCurrentIndex(tab.files().indexOf("C:\\data\\big.txt"));
        globals().SELECTED_FILE = "C:\\data\\another.dbf";  // chosen elsewhere since
        clickHeader(FileListModel::Size);
        QCOMPARE(currentFile(), "big.txt");
        fixture_->sandbox.write("C:\\data\\a late one.txt", "x");
        tab.refresh();
        QTRY_COMPARE(fileNames().size(), 3);
        QCOMPARE(currentFile(), "big.txt");
        tab.SetFilterButton(7);
        QCOMPARE(currentFile(), "big.txt");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\another.dbf");
    }

    void aClickSelects_alsoWhereTheDesktopOpensOnIt()
    {
        const SingleClickDesktop desktop;
        fixture_->makeCustomers();
        window_->show();
        DatabasesTab& tab = window_->databases();
        tab.goToFolder("C:\\data");
        QTRY_VERIFY(!tab.files().loading());
        const QRect row = tab.PTxShList1->visualRect(tab.files().indexOf("C:\\data\\CUSTOMER.DBF"));
        QTest::mouseClick(tab.PTxShList1->viewport(), Qt::LeftButton, {}, row.center());
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\CUSTOMER.DBF");
        KeyedTree& tree = *tab.organizer->SSTree1;
        const QRect node = tree.visualItemRect(tree.topLevelItem(0));
        QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, node.center());
        QCOMPARE(globals().ORG_DATABASE, "Database 1");
        QCOMPARE(globals().SELECTED_FILE, "C:\\data\\CUSTOMER.DBF");
        QVERIFY(!window_->shell());
        QTest::mouseDClick(tab.PTxShList1->viewport(), Qt::LeftButton, {}, row.center());
        QVERIFY(window_->shell());
        QCOMPARE(window_->shell()->children().size(), 1);
    }

    void shiftF10_opensTheContextMenuOfTheListsTreesAndGrids()
    {
        const ContextKey key(*qApp);
        ChildFrm1* child = browse();
        window_->show();
        DatabasesTab& tab = window_->databases();
        tab.goToFolder("C:\\data");
        QTRY_VERIFY(!tab.files().loading());
        QCOMPARE(contextMenuOf(*tab.PTxShList1).first(), "Open");
        QCOMPARE(contextMenuOf(*tab.PTxShTree1).first(), "Refresh");
        QCOMPARE(contextMenuOf(*tab.organizer->SSTree1).first(), "Open");
        QCOMPARE(contextMenuOf(*child->MSFlexGrid1),
                 (QStringList{"Copy Cells", "Find...", "View Comments", "Data Entry", "Refresh"}));
    }

    void F5_readsTheFolderAgain()
    {
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
        DatabasesTab& tab = window_->databases();
        tab.SetFilterButton(6);
        tab.goToFolder("C:\\data");
        QTRY_VERIFY(!tab.files().loading());
        fixture_->sandbox.write("C:\\data\\late.txt", "x");
        QTest::keyClick(window_.get(), Qt::Key_F5);
        QTRY_COMPARE(fileNames(), QStringList{"late.txt"});
    }

    void cellsOfAGrid_areCopied_withTabsBetween()
    {
        ChildFrm1* child = browse();
        RecordGrid& grid = *child->MSFlexGrid1;
        grid.setCurrentIndex(grid.model()->index(0, 0));
        QTest::keyClick(&grid, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(&grid, Qt::Key_Down, Qt::ShiftModifier);
        QTest::keySequence(&grid, QKeySequence(QKeySequence::Copy));
        QCOMPARE(QGuiApplication::clipboard()->text(), "Ada\t1\nBen\t2");
    }

    void findKeys_openTheBar_andGoOn()
    {
        ChildFrm1* child = browse();
        MDIForm1& shell = *window_->shell();
        QVERIFY(QTest::qWaitForWindowActive(&shell));
        QTest::keySequence(child->MSFlexGrid1, QKeySequence(QKeySequence::Find));
        QVERIFY(child->findBar->isVisible());
        QTest::keyClicks(child->findBar->words, "s");
        QTest::keyClick(child->findBar->words, Qt::Key_Return);
        QTRY_COMPARE(child->MSFlexGrid1->currentIndex().column(), 2);  // "first"
        QCOMPARE(child->MSFlexGrid1->currentIndex().row(), 0);
        QTest::keyClick(child->findBar->words, Qt::Key_F3);
        QTRY_COMPARE(child->MSFlexGrid1->currentIndex().row(), 2);  // "last"
        QTest::keyClick(child->findBar->words, Qt::Key_Escape);
        QVERIFY(child->findBar->isHidden());
        QVERIFY(child->MSFlexGrid1->hasFocus());
    }

    void F5_readsTheTableAgain_andItsColumnsStay()
    {
        ChildFrm1* child = browse();
        MDIForm1& shell = *window_->shell();
        child->MSFlexGrid1->setColumnWidth(0, 77);
        // The table that was read last is another window's.
        fixture_->makeShop();
        window_->DisplayFile("C:\\data\\shop.mdb");
        shell.bringToFront(child);
        appendRows("C:\\data", kDBase, "CUSTOMER", {{"Dan", 4, QVariant()}});
        QVERIFY(QTest::qWaitForWindowActive(&shell));
        QTest::keyClick(child->MSFlexGrid1, Qt::Key_F5);
        QCOMPARE(child->MSFlexGrid1->model()->rowCount(), 4);
        QCOMPARE(child->MSFlexGrid1->columnWidth(0), 77);
        QCOMPARE(child->columnType(2), short(12));
        child->MSFlexGrid1->setCurrentIndex(child->MSFlexGrid1->model()->index(0, 2));
        QVERIFY(!child->Frame2->isHidden());
    }

    void aShellStoredOnAScreenThatIsGone_comesBack_data()
    {
        QTest::addColumn<int>("left");
        QTest::addColumn<int>("top");
        QTest::newRow("right of it") << 99999 << 300;
        QTest::newRow("left of it") << -20000 << 300;
        QTest::newRow("below it") << 300 << 99999;
        QTest::newRow("above it") << 300 << -20000;
    }
    void aShellStoredOnAScreenThatIsGone_comesBack()
    {
        QFETCH(int, left);
        QFETCH(int, top);
        globals().SHELL_LEFT = left;
        globals().SHELL_TOP = top;
        globals().SHELL_WIDTH = 6000;
        globals().SHELL_HEIGHT = 5000;
        browse();
        const MDIForm1& shell = *window_->shell();
        QVERIFY(shell.screen()->availableGeometry().contains(shell.pos()));
        QCOMPARE(shell.x(), toPixels(left == 300 ? 300 : 500));
        QCOMPARE(shell.y(), toPixels(top == 300 ? 300 : 500));
    }

private:
    ChildFrm1* browse()
    {
        fixture_->makeCustomers();
        window_->DisplayFile("C:\\data\\CUSTOMER.DBF");
        return qobject_cast<ChildFrm1*>(window_->shell()->activeChild());
    }
    void openOneOfEachKind()
    {
        fixture_->makeCustomers();
        fixture_->makeShop();
        fixture_->sandbox.write("C:\\data\\notes.txt", "words");
        for (const char* file : {"CUSTOMER.DBF", "shop.mdb", "notes.txt"})
            window_->DisplayFile(QString("C:\\data\\") + file);
        globals().SELECTED_FILE = "C:\\data\\CUSTOMER.DBF";
        window_->ToolBarComp1->click("ID_mnuViewEditTable");
        QCOMPARE(window_->shell()->children().size(), 4);
    }
    QStringList fileNames()
    {
        const FileListModel& files = window_->databases().files();
        QStringList names;
        for (int row = 0; row < files.rowCount(); ++row)
            names << files.index(row, FileListModel::Name).data().toString();
        return names;
    }
    /// The texts of the menu that the key opens, and closes it.
    static QStringList contextMenuOf(QWidget& widget)
    {
        QStringList texts;
        QTimer closer;
        connect(&closer, &QTimer::timeout, &closer, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (const QAction* action : menu->actions())
                texts << action->text().remove(u'&');
            menu->close();
        });
        closer.start(10);
        QTest::keyClick(&widget, Qt::Key_F10, Qt::ShiftModifier);
        return texts;
    }
    QString currentFile()
    {
        return window_->databases().PTxShList1->currentIndex().siblingAtColumn(0).data().toString();
    }
    void clickHeader(int column)
    {
        QHeaderView& header = *window_->databases().PTxShList1->header();
        const QPoint at(header.sectionViewportPosition(column) + header.sectionSize(column) / 2,
                        header.height() / 2);
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, at);
    }
};

QTEST_MAIN(TstHands)
#include "tst_hands.moc"
