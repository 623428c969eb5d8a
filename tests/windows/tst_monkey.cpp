// Random clicks and keys over all windows, prompts answered at random, files in a scratch folder:
// no crash, no hang, and every file is sound afterwards. VELNOR_MONKEY_SECONDS makes it play
// longer, VELNOR_MONKEY_SEED differently.
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QMenu>
#include <QMimeData>
#include <QSet>
#include <QTest>
#include <QTimer>

#include "core/attempt.h"
#include "core/file_commands.h"
#include "platform/host.h"
#include "tests/windows/monkey_prompt.h"
#include "tests/windows/window_fixture.h"
#include "windows/mdiform1.h"
#include "windows/save_file_as.h"
#include "windows/velnor1.h"

using namespace velnor;
using namespace velnor::testing;

namespace {

constexpr const char* kParadox = "Paradox 5.x;";
constexpr const char* kLocale = ";LANGID=0x0409;CP=1252;COUNTRY=0";

int environmentNumber(const char* name, int otherwise)
{
    bool given = false;
    const int number = qEnvironmentVariableIntValue(name, &given);
    return given ? number : otherwise;
}

/// Ends the program, or leaves it for another.
bool isOffLimits(const QAction& action)
{
    return action.menu() || action.isSeparator() || !action.isEnabled() ||
           action.text().contains("xit") || action.shortcut() == QKeySequence("Ctrl+Q");
}

}  // namespace

class TstMonkey : public QObject {
    Q_OBJECT

public:
    /// A long play is no hang: QTest ends a test after five minutes unless it is told otherwise.
    static void initMain()
    {
        const int seconds = environmentNumber("VELNOR_MONKEY_SECONDS", 6) + 240;
        qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(seconds * 1000));
    }

private slots:
    void init()
    {
        random_.seed(static_cast<unsigned>(environmentNumber("VELNOR_MONKEY_SEED", 1)));
        fixture_ = std::make_unique<WindowFixture>();
        fixture_->makeCustomers();
        fixture_->makeShop();
        fixture_->makeCustomers("SECOND");
        makeOtherKinds();
        fixture_->sandbox.write("C:\\data\\notes.txt", "some words\r\nmore words\r\n");
        prompt_ = std::make_unique<MonkeyPrompt>(
            random_, files_ + QStringList{"C:\\data\\SECOND.DBF", "C:\\data\\gone.dbf"});
        prompt_->play = [this](QDialog& dialog) {
            for (int i = 0; i < 5; ++i)
                actOn(dialog);
        };
        openWindow();
    }
    void cleanup()
    {
        window_.reset();
        prompt_.reset();
        fixture_.reset();
    }

    void randomHands_breakNothing()
    {
        // Menus and boxes run loops of their own: somebody has to close them.
        QTimer closer;
        connect(&closer, &QTimer::timeout, this, [] {
            if (QWidget* popup = QApplication::activePopupWidget())
                popup->close();
            else if (auto* modal = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
                modal->reject();
        });
        closer.start(5);

        const int seconds = environmentNumber("VELNOR_MONKEY_SECONDS", 6);
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < seconds * 1000) {
            if (!window_->isVisible())
                openWindow();
            act();
            ++steps_;
            QApplication::processEvents(QEventLoop::AllEvents, 5);
        }
        qInfo("%d steps, %d messages, %d questions, windows: %s", steps_, prompt_->messages,
              prompt_->questions, qPrintable(QStringList(seen_.values()).join(' ')));
        QVERIFY(steps_ > 20);
        window_->close();
        window_.reset();
        const QStringList found = faults();
        QVERIFY2(found.isEmpty(), qPrintable(found.join("\n")));
    }

private:
    void openWindow()
    {
        window_ = std::make_unique<Velnor1>();
        upcalls().DisplayFile = [this](const QString& path) { window_->DisplayFile(path); };
        upcalls().OpenwithOLE = [this](const QString& path) { window_->OpenwithOLE(path); };
        upcalls().SaveFileAs = [](const QString& path) { SaveFileAs(path); };
        upcalls().ShowHelp = [this](const QString& topic) { window_->showHelp(topic); };
        upcalls().EnableSelectMenus = [this] { window_->EnableSelectMenus(); };
        window_->setStartFolder("C:\\data");
        globals().LOG_COPY = true;
        window_->Form_Load();
        window_->show();
        window_->Form_Activate();
    }

    unsigned below(qsizetype limit)
    {
        return static_cast<unsigned>(random_() % static_cast<unsigned>(limit));
    }

    void act()
    {
        QWidgetList windows;
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible())
                windows << widget;
        if (windows.isEmpty())
            return;
        if (below(25) == 0)
            openSome();
        if (below(40) == 0)
            windows[below(windows.size())]->resize(200 + static_cast<int>(below(1200)),
                                                   150 + static_cast<int>(below(700)));
        actOn(*windows[below(windows.size())]);
    }

    /// A file of any kind, to be looked at or edited.
    void openSome()
    {
        const Outcome shown = attempt([&] {
            globals().SELECTED_FILE = files_[below(files_.size())];
            window_->ToolBarComp1->click(below(2) ? "ID_mnuViewBrowseTable"
                                                  : "ID_mnuViewEditTable");
        });
        Q_UNUSED(shown)
    }

    void actOn(QWidget& window)
    {
        seen_.insert(QString(window.metaObject()->className()).section("::", -1));
        const unsigned what = below(24);
        if (what < 5)
            runAction(window);
        else if (what < 13)
            click(window);
        else if (what < 15)
            drop(window);
        else if (what < 16)
            wheel(window);
        else
            type(window);
    }

    /// Files of the scratch folder fall on something, as the desktop lets them.
    void drop(QWidget& window)
    {
        QWidget* child = someChild(window);
        QMimeData data;
        QList<QUrl> urls;
        for (unsigned i = 0; i < 1 + below(3); ++i)
            urls << QUrl::fromLocalFile(QString::fromStdString(
                fixture_->sandbox.native(files_[below(files_.size())].toStdString())));
        data.setUrls(urls);
        const QPoint at(child->width() / 2, static_cast<int>(below(qMax(1, child->height()))));
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(child, &enter);
        if (!enter.isAccepted())
            return;
        QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(child, &event);
    }

    void wheel(QWidget& window)
    {
        QWidget* child = someChild(window);
        const QPointF at(child->rect().center());
        QWheelEvent turn(at, child->mapToGlobal(at), {}, {0, below(2) ? 240 : -240}, Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(child, &turn);
    }

    /// STAFF.DB: only with a primary key can its records be changed.
    static void makeKeyedStaff()
    {
        Workspace workspace(*host().files);
        Database folder = workspace.OpenDatabase("C:\\data", false, false, kParadox);
        TableDef table = folder.CreateTableDef("STAFF");
        table.Fields().Append(table.CreateField("Name", int(FieldType::Text), 20));
        table.Fields().Append(table.CreateField("Age", int(FieldType::Double)));
        Index key = table.CreateIndex("PrimaryKey");
        key.Primary(true);
        key.Unique(true);
        key.Fields().Append(key.CreateField("Name"));
        table.Indexes().Append(key);
        folder.TableDefs().Append(table);
        folder.Close();
    }

    void makeOtherKinds()
    {
        const auto make = [](const QString& file, const char* connect) {
            Workspace workspace(*host().files);
            workspace.CreateDatabase(file.toStdString(), std::string(kLocale) + connect).Close();
            makeTable(file, connect, "Prices",
                      {{"Item", FieldType::Text, 20}, {"Price", FieldType::Double}});
            appendRows(file, connect, "Prices", {{"pear", 3}, {"apple", 1}});
        };
        make("C:\\data\\prices.xls", "Excel 8.0;");
        make("C:\\data\\list.wk4", "Lotus WK4;");
        makeKeyedStaff();
        appendRows("C:\\data", kParadox, "STAFF", {{"Ada", 36}, {"Ben", 40}});
    }

    void runAction(QWidget& window)
    {
        const QList<QAction*> actions = window.findChildren<QAction*>();
        if (actions.isEmpty())
            return;
        QAction* action = actions[below(actions.size())];
        if (!isOffLimits(*action))
            action->trigger();
    }

    QWidget* someChild(QWidget& window)
    {
        QWidgetList seen;
        for (QWidget* child : window.findChildren<QWidget*>())
            if (child->isVisible() && child->isEnabled() && !child->size().isEmpty())
                seen << child;
        return seen.isEmpty() ? &window : seen[below(seen.size())];
    }

    void click(QWidget& window)
    {
        QWidget* child = someChild(window);
        const QPoint at(static_cast<int>(below(qMax(1, child->width()))),
                        static_cast<int>(below(qMax(1, child->height()))));
        const Qt::MouseButton button = below(8) ? Qt::LeftButton : Qt::RightButton;
        if (below(4))
            QTest::mouseClick(child, button, {}, at);
        else
            QTest::mouseDClick(child, button, {}, at);
    }

    void type(QWidget& window)
    {
        static const Qt::Key kKeys[] = {
            Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Up,     Qt::Key_Down,   Qt::Key_Left,
            Qt::Key_Right, Qt::Key_Return,  Qt::Key_Escape, Qt::Key_Delete, Qt::Key_Home,
            Qt::Key_End,   Qt::Key_PageUp,  Qt::Key_Space,  Qt::Key_F2,     Qt::Key_F3,
            Qt::Key_F5,    Qt::Key_A,       Qt::Key_7,      Qt::Key_Period, Qt::Key_Minus};
        QWidget* target = QApplication::focusWidget();
        if (!target || below(3) == 0)
            target = someChild(window);
        QTest::keyClick(target, kKeys[below(std::size(kKeys))],
                        below(12) ? Qt::NoModifier : Qt::ControlModifier);
    }

    /// Every data file of the scratch folder that is not sound.
    QStringList faults()
    {
        QStringList found;
        Workspace workspace(*host().files);
        const auto look = [&](const QString& database, const char* connect,
                              const std::string& table) {
            const Outcome done = attempt([&] {
                Database opened =
                    workspace.OpenDatabase(database.toStdString(), false, true, connect);
                opened.check(table, [&](const Database::Finding& finding) {
                    if (!finding.harmless)
                        found << QString::fromStdString(finding.where + ": " + finding.text);
                });
            });
            if (!done)
                found << database + ": " + done.description;
        };
        for (const QString& name : dirAll("C:\\data\\*.MDB"))
            look("C:\\data\\" + name, kAccess, "");
        for (const QString& name : dirAll("C:\\data\\*.DBF"))
            look("C:\\data", kDBase, name.chopped(4).toStdString());
        for (const QString& name : dirAll("C:\\data\\*.DB"))
            look("C:\\data", kParadox, name.chopped(3).toStdString());
        for (const QString& name : dirAll("C:\\data\\*.XLS"))
            look("C:\\data\\" + name, "Excel 8.0;", "");
        for (const QString& name : dirAll("C:\\data\\*.WK4"))
            look("C:\\data\\" + name, "Lotus WK4;", "");
        look("C:\\app\\DataTabl.MDB", kAccess, "");
        return found;
    }

    const QStringList files_{"C:\\data\\CUSTOMER.DBF", "C:\\data\\shop.mdb", "C:\\data\\STAFF.DB",
                             "C:\\data\\prices.xls",   "C:\\data\\list.wk4", "C:\\data\\notes.txt"};
    QSet<QString> seen_;  // kinds of windows that were played with
    std::mt19937 random_;
    std::unique_ptr<WindowFixture> fixture_;
    std::unique_ptr<MonkeyPrompt> prompt_;
    std::unique_ptr<Velnor1> window_;
    int steps_ = 0;
};

QTEST_MAIN(TstMonkey)
#include "tst_monkey.moc"
