#include "windows/velnor1.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QLabel>
#include <QListWidget>
#include <QMimeData>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTabBar>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include "access/routing.h"
#include "assist/about1.h"
#include "assist/help_window.h"
#include "assist/quik_tip1.h"
#include "copy/copy_log.h"
#include "core/attempt.h"
#include "core/date_text.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/options_tab.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/twips.h"
#include "core/upcalls.h"
#include "organizer/organizer_pane.h"
#include "platform/host.h"
#include "windows/copy_place.h"
#include "windows/databases_tab.h"
#include "windows/dropped_files.h"
#include "windows/mdiform1.h"
#include "windows/save_file_as.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr int kLeastHeight = 1000;  // twips: a smaller window is a minimized one
constexpr int kLeastWidth = 800;
}  // namespace

QString joinedArguments(const QStringList& arguments)
{
    QStringList six = arguments.mid(0, 6);
    QString joined = text::trim(six.join(u' '));
    if (joined.size() > 2 && joined.startsWith(u'"'))
        joined = joined.mid(1).chopped(1);
    return joined;
}

Velnor1::Velnor1(QWidget* parent) : QMainWindow(parent)
{
    setObjectName(u"Velnor1"_s);
    setWindowTitle(kProgramTitle);
    setWindowIcon(QIcon(u":/velnor/icons/velnor.svg"_s));
    setAcceptDrops(true);
    setContextMenuPolicy(Qt::NoContextMenu);
    entry_ = WindowEntry(this);
    ToolBarComp1 = new ToolSet(this);
    buildStatusBar();
    buildTabs();
    buildMenus();
}

Velnor1::~Velnor1()
{
    closeAssistance();
    delete shell_.data();
}

MDIForm1* Velnor1::shell() const
{
    return shell_;
}

void Velnor1::buildStatusBar()
{
    selectedFile_ = new QLabel(this);
    selectedFile_->setObjectName(u"SelectedFile"_s);
    selectedFile_->setTextFormat(Qt::PlainText);
    selectedFile_->setIndent(6);
    ID_Date = new QLabel(this);
    ID_Date->setObjectName(u"ID_Date"_s);
    ID_Date->setToolTip(tr("Date"));
    ID_Time = new QLabel(this);
    ID_Time->setObjectName(u"ID_Time"_s);
    ID_Time->setToolTip(tr("Time"));
    statusBar()->addWidget(selectedFile_, 1);
    statusBar()->addPermanentWidget(ID_Date);
    statusBar()->addPermanentWidget(ID_Time);
    Timer1 = new QTimer(this);
    Timer1->setObjectName(u"Timer1"_s);
    Timer1->setInterval(1000);
    connect(Timer1, &QTimer::timeout, this, edge(this, &Velnor1::Timer1_Timer));
}

void Velnor1::buildTabs()
{
    auto* middle = new QWidget(this);
    auto* column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    TabStrip1 = new QTabBar(middle);
    TabStrip1->setObjectName(u"TabStrip1"_s);
    TabStrip1->setAccessibleName(tr("Workspaces"));
    TabStrip1->setDocumentMode(true);
    TabStrip1->setExpanding(false);
    TabStrip1->setDrawBase(true);
    stack_ = new QStackedWidget(middle);
    column->addWidget(TabStrip1);
    column->addWidget(stack_, 1);
    setCentralWidget(middle);

    databases_ = new DatabasesTab(this);
    copy_ = new CopyPlace(this);
    options_ = new OptionsTab(MAIL_FAVORITES, this);
    options_->applied = [this] { applyOptions(); };
    List1 = new QListWidget(this);
    List1->setObjectName(u"List1"_s);
    List1->setAccessibleName(tr("Working folders"));
    List1->hide();
    databases_->StepFolderList = [this] { stepFolders(); };
    addComingTabs();
    databases_->EnableSelectMenus = [this] { EnableSelectMenus(); };
    databases_->DisableSelectMenus = [this] { DisableSelectMenus(); };
    OrganizerPane& organizer = *databases_->organizer;
    organizer.EnableSelectMenus = [this] { EnableSelectMenus(); };
    organizer.setTitle = [this](const QString& title) { setWindowTitle(title); };
    organizer.open = [this](const QString& path) { DisplayFile(path); };
    organizer.ViewCopyLog = [](KeyedTree& tree) { ViewCopyLog(tree); };
    databases_->pressTool = [this](const QString& id) {
        ToolBarComp1->press(id);
        for (const ListFilter& filter : kListFilters)  // the same filter in the menu
            if (id == QLatin1String(filter.tool))
                ToolBarComp1->press(QString::fromLatin1(filter.menuTool));
    };
    connect(TabStrip1, &QTabBar::currentChanged, this, [this](int index) {
        const Outcome done = attempt([&] { TabStrip1_Click(index); });
        if (!done)
            tellUnexpected(done);
    });
}

void Velnor1::addTab(MainTab* tab)
{
    tabs_ << tab;
    stack_->addWidget(tab);
    auto* bar = addToolBar(tr("%1 Tools").arg(tab->caption()));
    // The menu is bar 1; the tabs' bars count on from 2.
    bar->setObjectName(u"ToolBarComp1_%1"_s.arg(tabs_.size() + 1));
    bar->setMovable(false);
    bar->setIconSize({22, 22});
    // The explorer has many tools, the others few: those have room for their names.
    if (tab != databases_)
        bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toolbars_ << bar;
    connect(tab, &MainTab::statusText, this, &Velnor1::status);
}

void Velnor1::Form_Load()
{
    auto& G = globals();
    notActivated_ = true;
    Timer1_Timer();
    Timer1->start();
    G.FILE_EXT = u"DBF"_s;
    for (qsizetype i = 0; i < toolbars_.size(); ++i)
        toolbars_[i]->setVisible(i == 0);
    LoadFolderList();
    LoadColors(this);
    LoadOptions(MAIL_FAVORITES, this);
    options_->Form_Load();
    applyOptions();
    databases_->setListView(G.FILE_LIST_VIEW);
    databases_->SetFilterButton(kAllDataFilter);
    databases_->organizer->rebuild();
    if (const QString first = databases_->organizer->firstText(); !first.isEmpty())
        G.ORG_DATABASE = first;
    SetWinSize();
    if (G.ASK_COMPUTER_NAME && host().desktop) {
        const QString name = QString::fromStdString(host().desktop->computerName());
        if (!name.isEmpty()) {
            G.COMPUTER_NAME = name.toUpper();
            G.ASK_COMPUTER_NAME = false;
        }
    }
    ToolBarComp1->clicksOff = true;
    ToolBarComp1->press(u"ID_mnuViewOrganizerName"_s);
    DisableSelectMenus();
    ToolBarComp1->clicksOff = false;
    loaded_ = true;
}

void Velnor1::Form_Activate()
{
    globals().MAIN_CAPTION = windowTitle();
    if (!notActivated_)
        return;
    notActivated_ = false;
    databases_->focusFiles();
    if (!text::trim(commandLine_).isEmpty()) {
        const QString file = commandLine_;
        commandLine_.clear();
        if (!isWebAddress(file))
            attempt([&] { databases_->showFile(file); });
        DisplayFile(file);
        setWindowTitle(file + u" - "_s + QString::fromLatin1(kProgramTitle));
    }
    StepFolderList();
    if (databases_->folder().isEmpty())
        databases_->goToFolder(startFolder_);
    if (globals().SHOW_TIPS)
        showQuickTips();
    globals().MAIN_CAPTION = windowTitle();
}

void Velnor1::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    // Not every desktop tells that a window came to the front: the first time is now at the latest.
    if (loaded_ && notActivated_)
        QTimer::singleShot(0, this, edge(this, &Velnor1::Form_Activate));
}

void Velnor1::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && loaded_) {
        const Outcome done = attempt([this] { Form_Activate(); });
        if (!done)
            tellUnexpected(done);
    }
}

bool Velnor1::event(QEvent* event)
{
    const bool handled = QMainWindow::event(event);
    if (event->type() == QEvent::ApplicationPaletteChange && loaded_)
        applyOptions();  // colours of the desktop among those that people set
    return handled;
}

void Velnor1::Timer1_Timer()
{
    const LocalTime now = host().clock->now();
    ID_Date->setText(dateText(now));
    const int hour = now.hour % 12 == 0 ? 12 : now.hour % 12;
    ID_Time->setText(
        QString::asprintf("%d:%02d %s", hour, now.minute, now.hour < 12 ? "AM" : "PM"));
}

void Velnor1::EnableSelectMenus()
{
    for (const char* id : {"ID_mnuClose", "ID_mnuSaveAs", "ID_mnuMoveFile", "ID_mnuRenameFile",
                           "ID_mnuPrint", "ID_mnuFileProperties", "ID_mnuDelete", "ID_mnuSend"})
        ToolBarComp1->enable(QString::fromLatin1(id), true);
}

void Velnor1::DisableSelectMenus()
{
    for (const char* id : {"ID_mnuClose", "ID_mnuSaveAs", "ID_mnuMoveFile", "ID_mnuRenameFile",
                           "ID_mnuPrint", "ID_mnuFileProperties", "ID_mnuDelete", "ID_mnuSend"})
        ToolBarComp1->enable(QString::fromLatin1(id), false);
}

void Velnor1::status(const QString& text)
{
    const QString shown =
        selectedFile_->fontMetrics().elidedText(text, Qt::ElideMiddle, qMax(200, width() - 260));
    selectedFile_->setText(shown);
    selectedFile_->setToolTip(text);
    selectedFile_->repaint();  // what runs next may give events no turn
}

void Velnor1::TabStrip1_Click(int index)
{
    if (index < 0 || index >= tabs_.size() || index == tabInFront_)
        return;
    if (toTwips(height()) < kLeastHeight || toTwips(width()) < kLeastWidth ||
        globals().SEARCH_ACTIVE_FLG) {
        const QSignalBlocker quiet(TabStrip1);
        TabStrip1->setCurrentIndex(tabInFront_);
        return;
    }
    setUpdatesEnabled(false);
    tabs_[tabInFront_]->left();
    for (qsizetype i = 0; i < toolbars_.size(); ++i)
        toolbars_[i]->setVisible(i == index);
    stack_->setCurrentIndex(index);
    tabInFront_ = index;
    status(globals().SELECTED_FILE);  // what another workspace said is over
    ToolBarComp1->enable(u"ID_mnuCopySelect"_s, true);
    ToolBarComp1->enable(u"ID_mnuPaste"_s, true);
    const Outcome entered = attempt([&] { tabs_[index]->entered(); });
    if (tabs_[index]->caption() == u"EMail") {
        ToolBarComp1->enable(u"ID_mnuCopySelect"_s, false);
        ToolBarComp1->enable(u"ID_mnuPaste"_s, false);
    }
    setUpdatesEnabled(true);
    if (!entered)
        tellUnexpected(entered);
}

void Velnor1::showTab(const QString& caption)
{
    for (int i = 0; i < TabStrip1->count(); ++i)
        if (QString(TabStrip1->tabText(i)).remove(u'&') == caption)
            TabStrip1->setCurrentIndex(i);
}

void Velnor1::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void Velnor1::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    openDroppedFiles(*event->mimeData());
}

}  // namespace velnor
