#include "windows/mdiform1.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMimeData>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTabBar>
#include <QToolBar>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/twips.h"
#include "core/upcalls.h"
#include "platform/run_error.h"
#include "windows/child_geometry.h"
#include "windows/childfrm1.h"
#include "windows/childfrm2.h"
#include "windows/childfrm3.h"
#include "windows/dropped_files.h"
#include "windows/paint_colors.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr qreal kCascadedPart = 0.7;  // of the room that there is, in each direction
}

MDIForm1::MDIForm1(ShellLinks links, QWidget* parent)
    : QMainWindow(parent), links_(std::move(links))
{
    setObjectName(u"MDIForm1"_s);
    setWindowTitle(kProgramTitle);
    setWindowIcon(QIcon(u":/velnor/icons/velnor.svg"_s));
    setAcceptDrops(true);
    setToolButtonStyle(Qt::ToolButtonIconOnly);

    area_ = new QMdiArea(this);
    area_->setObjectName(u"MdiArea"_s);
    area_->setTabsClosable(true);
    area_->setTabsMovable(true);
    area_->setDocumentMode(true);
    showAsTabs();
    setCentralWidget(area_);
    connect(area_, &QMdiArea::subWindowActivated, this, &MDIForm1::childCameToFront);

    length_ = new QLabel(this);
    length_->setObjectName(u"FileLength"_s);
    statusBar()->addPermanentWidget(length_);

    ToolBarComp1 = new ToolSet(this);
    buildTools();
    buildMenus();
    DisableButtons();
    EnableMDIButtons();
    entry_ = WindowEntry(this);
}

MDIForm1::~MDIForm1()
{
    // The children go while this is still a shell, and their going is nobody's news.
    disconnect(area_, nullptr, this, nullptr);
    delete area_;
    globals().MDI_OPEN_FLG = false;
}

void MDIForm1::Form_Load()
{
    globals().MDI_OPEN_FLG = true;
    loaded_ = true;
    SetMDIWinSize();
    applyOptions();
}

void MDIForm1::applyOptions()
{
    const auto& G = globals();
    for (QToolBar* bar : findChildren<QToolBar*>())
        if (bar->window() == this)
            paintSurface(*bar, {G.TOOLBAR_BACK_COLOR, G.TOOLBAR_TEXT_COLOR});
    area_->setBackground(QApplication::palette().brush(QPalette::Mid));
    useBoldOption(*this);
    for (DocumentChild* child : children())
        child->applyOptions();
}

void MDIForm1::SetMDIWinSize()
{
    auto& G = globals();
    const QRect screen = this->screen()->availableGeometry();
    const int width = G.SHELL_WIDTH > 0 ? sizeInPixels(G.SHELL_WIDTH, screen.width())
                                        : qMin(1040, screen.width() - 80);
    const int height = G.SHELL_HEIGHT > 0 ? sizeInPixels(G.SHELL_HEIGHT, screen.height())
                                          : qMin(700, screen.height() - 80);
    resize(width, height);
    if (G.SHELL_WIDTH <= 0)
        return;
    const auto onScreen = [](int place, int limit) {
        return place < 0 || place > limit ? 500 : place;
    };
    move(toPixels(onScreen(G.SHELL_LEFT, toTwips(screen.right()))),
         toPixels(onScreen(G.SHELL_TOP, toTwips(screen.bottom()))));
}

void MDIForm1::bringUp()
{
    show();
    raise();
    activateWindow();
    Form_Activate();
}

void MDIForm1::Form_Activate()
{
    auto& G = globals();
    if (!G.FILE_WAITING_FLG)
        return;
    G.FILE_WAITING_FLG = false;
    NewWindowFile(G.SELECTED_FILE);
}

void MDIForm1::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && loaded_) {
        const Outcome done = attempt([this] { Form_Activate(); });
        if (!done)
            tellUnexpected(done);
    }
}

QString MDIForm1::uniqueCaption(const QString& title) const
{
    QString caption = title;
    const auto taken = [this](const QString& wanted) {
        for (const DocumentChild* child : children())
            if (child->caption() == wanted)
                return true;
        return false;
    };
    for (int count = 1; taken(caption); ++count)
        caption = title + u'@' + QString::number(count);
    return caption;
}

DocumentChild* MDIForm1::makeChild()
{
    auto& G = globals();
    if (G.TEXT_FILE_FLG)
        return new ChildFrm2(*this);
    if (G.DATA_ENTRY_FLG) {
        G.DATA_ENTRY_FLG = false;
        return new ChildFrm3(*this);
    }
    return new ChildFrm1(*this);
}

void MDIForm1::NewWindowFile(const QString& title)
{
    NEWCAPTION = uniqueCaption(title);
    if (GetFileExtension(title).isEmpty() && !isWebAddress(title))
        return;
    const short count = NUM_CHILDWINDOWS;
    const int left = CHILD_LEFT, top = CHILD_TOP;
    std::unique_ptr<QMdiSubWindow> window;
    const Outcome made = attempt([&] {
        window = std::make_unique<QMdiSubWindow>();
        window->setAttribute(Qt::WA_DeleteOnClose);
        DocumentChild* child = makeChild();
        window->setWidget(child);
        child->setCaption(NEWCAPTION);
        child->Form_Load();
        showChild(window.release(), child, QPoint(left, top));
    });
    if (made)
        return;
    if (window) {  // it was not to be seen yet
        window.reset();
        NUM_CHILDWINDOWS = count;
        CHILD_LEFT = left;
        CHILD_TOP = top;
    }
    if (made.number == static_cast<int>(RunErrorNumber::OutOfMemory))
        prompt().tell(this, u"Running out of Memory - Please Close some File Windows"_s);
    else
        tellUnexpected(made);
}

void MDIForm1::showChild(QMdiSubWindow* window, DocumentChild* child, QPoint place)
{
    window->setWindowTitle(child->windowTitle());
    for (QAction* action : window->systemMenu()->actions())
        action->setShortcut({});  // the shell's own keys would be ambiguous
    area_->addSubWindow(window);
    window->setGeometry(toPixels(place.x()), toPixels(place.y()), toPixels(kChildWidth),
                        toPixels(kChildHeight));
    child->show();
    window->show();
    AddToWindowList(child);
    bringToFront(child);
}

QList<DocumentChild*> MDIForm1::children() const
{
    QList<DocumentChild*> all;
    for (QMdiSubWindow* window : area_->subWindowList(QMdiArea::CreationOrder))
        if (auto* child = qobject_cast<DocumentChild*>(window->widget()))
            if (!child->unloaded())
                all << child;
    return all;
}

DocumentChild* MDIForm1::activeChild() const
{
    if (active_ && !active_->unloaded())
        return active_;
    return nullptr;
}

void MDIForm1::bringToFront(DocumentChild* child)
{
    if (auto* window = qobject_cast<QMdiSubWindow*>(child->parentWidget())) {
        area_->setActiveSubWindow(window);
        childCameToFront(window);
        child->setFocus();
    }
}

void MDIForm1::childCameToFront(QMdiSubWindow* window)
{
    if (!window)
        return;  // the shell itself went to the back
    auto* child = qobject_cast<DocumentChild*>(window->widget());
    if (!child || child->unloaded())
        return;
    active_ = child;
    const Outcome done = attempt([&] {
        child->enableTools();
        child->Form_Activate();
        showTables(*child);
    });
    if (!done)
        tellUnexpected(done);
    for (QAction* each : windowMenu_->actions())
        if (each->isCheckable())
            each->setChecked(each->data().value<void*>() == child);
}

void MDIForm1::AddToWindowList(DocumentChild* child)
{
    if (children().size() <= 1)
        windowMenu_->addSeparator()->setData(true);
    QAction* row = windowMenu_->addAction(QString(child->caption()).replace(u'&', u"&&"_s));
    row->setObjectName(child->caption());
    row->setCheckable(true);
    row->setData(QVariant::fromValue(static_cast<void*>(child)));
    connect(row, &QAction::triggered, child, [this, child] { bringToFront(child); });
}

void MDIForm1::renameInWindowList(DocumentChild* child)
{
    for (QAction* row : windowMenu_->actions())
        if (row->isCheckable() && row->data().value<void*>() == child)
            row->setText(QString(child->caption()).replace(u'&', u"&&"_s));
    if (child == active_)
        setWindowTitle(child->caption() + u" - "_s + QString::fromLatin1(kProgramTitle));
    if (auto* window = qobject_cast<QMdiSubWindow*>(child->parentWidget()))
        window->setWindowTitle(child->windowTitle());
}

void MDIForm1::recordsChanged(const DocumentChild& where)
{
    for (DocumentChild* child : children())
        if (child != &where && child->FILE_USE == where.FILE_USE)
            child->recordsChanged();
}

void MDIForm1::removeFromWindowList(DocumentChild* child)
{
    const auto rows = windowMenu_->actions();
    for (QAction* row : rows)
        if (row->isCheckable() && row->data().value<void*>() == child)
            delete row;
}

void MDIForm1::childGone(DocumentChild* child)
{
    removeFromWindowList(child);
    if (active_ == child)
        active_ = nullptr;
    const auto rest = children();
    if (rest.isEmpty()) {
        allChildrenGone();
        return;
    }
    if (!loaded_ || MDICLOSEALL_FLG)
        return;
    if (!active_)
        active_ = rest.last();
    active_->enableTools();
}

void MDIForm1::allChildrenGone()
{
    active_ = nullptr;
    setWindowTitle(kProgramTitle);
    const auto rows = windowMenu_->actions();
    for (QAction* row : rows)
        if (row->isCheckable() || (row->isSeparator() && row->data().toBool()))
            delete row;
    ID_CMBTable->clear();
    ID_CMBTable->setEnabled(false);
    length_->clear();
    DisableButtons();
    EnableMDIButtons();
}

void MDIForm1::showTables(const DocumentChild& child)
{
    const QSignalBlocker quiet(ID_CMBTable);
    ID_CMBTable->clear();
    ID_CMBTable->addItems(child.tables());
    ID_CMBTable->setCurrentIndex(ID_CMBTable->findText(child.HLDTABLE));
    ID_CMBTable->setEnabled(ID_CMBTable->count() > 1);
}

void MDIForm1::showFileLength(const QString& text)
{
    length_->setText(text);
}

void MDIForm1::ID_CMBTable_Change(int index)
{
    DocumentChild* child = activeChild();
    const QString table = ID_CMBTable->itemText(index);
    if (!child || table.isEmpty() || child->HLDTABLE == table)
        return;
    globals().SELECTED_FILE = child->FILE_USE;
    child->showTable(table);
}

void MDIForm1::cascade()
{
    area_->setViewMode(QMdiArea::SubWindowView);
    const QSize room = area_->viewport()->size();
    const int step = toPixels(kCascadeLeft) + style()->pixelMetric(QStyle::PM_TitleBarHeight);
    QPoint place(0, 0);
    for (DocumentChild* child : children()) {
        auto* window = qobject_cast<QMdiSubWindow*>(child->parentWidget());
        window->showNormal();
        window->setGeometry(QRect(place, room * kCascadedPart));
        window->raise();
        place += QPoint(step, step);
        if (place.x() + window->width() > room.width() ||
            place.y() + window->height() > room.height())
            place = {0, 0};
    }
    if (DocumentChild* front = activeChild())
        bringToFront(front);
}

void MDIForm1::tile(Qt::Orientation orientation)
{
    area_->setViewMode(QMdiArea::SubWindowView);
    const auto all = children();
    const QSize room = area_->viewport()->size();
    const auto count = static_cast<int>(all.size());
    for (int i = 0; i < count; ++i) {
        auto* window = qobject_cast<QMdiSubWindow*>(all[i]->parentWidget());
        window->showNormal();
        // Tiled horizontally: one above the other, each as wide as the shell.
        if (orientation == Qt::Horizontal)
            window->setGeometry(0, room.height() * i / count, room.width(), room.height() / count);
        else
            window->setGeometry(room.width() * i / count, 0, room.width() / count, room.height());
    }
}

void MDIForm1::showAsTabs()
{
    area_->setViewMode(QMdiArea::TabbedView);
    if (auto* tabs = area_->findChild<QTabBar*>())  // the area makes one each time
        tabs->setExpanding(false);
}

void MDIForm1::nextFile()
{
    area_->activateNextSubWindow();
}

void MDIForm1::openDialog()
{
    FileQuestion question;
    question.title = u"Select File to Open"_s;
    question.filter = kShellOpenFilter;
    if (const auto chosen = prompt().file(this, question); chosen && !chosen->isEmpty())
        upcalls().DisplayFile(chosen->first());
}

void MDIForm1::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MDIForm1::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    openDroppedFiles(*event->mimeData());
}

void MDIForm1::closeEvent(QCloseEvent* event)
{
    auto& G = globals();
    if (G.SAVE_WINDOW_SIZE && loaded_) {
        G.SHELL_LEFT = toTwips(x());
        G.SHELL_TOP = toTwips(y());
        G.SHELL_WIDTH = toTwips(width());
        G.SHELL_HEIGHT = toTwips(height());
    }
    MDICLOSEALL_FLG = true;
    const auto all = children();
    for (DocumentChild* child : all)
        child->mnuFileClose_Click();
    MDICLOSEALL_FLG = false;
    if (const auto stay = children(); !stay.isEmpty()) {  // what they hold could not be saved
        bringToFront(stay.last());
        event->ignore();
        return;
    }
    G.MDI_OPEN_FLG = false;
    loaded_ = false;
    entry_ = {};
    event->accept();
    deleteLater();
}

}  // namespace velnor
