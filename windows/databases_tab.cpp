#include "windows/databases_tab.h"

#include <utility>

#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QScopedValueRollback>
#include <QSplitter>
#include <QStackedWidget>
#include <QTreeView>
#include <QVBoxLayout>

#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/keyed_tree.h"
#include "core/text.h"
#include "core/upcalls.h"
#include "organizer/organizer_pane.h"
#include "platform/host.h"
#include "platform/paths.h"
#include "windows/file_list_model.h"
#include "windows/file_words.h"
#include "windows/folder_tree_model.h"
#include "windows/pane_heading.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

const char* const kViewTools[] = {"ID_LargeIcons", "ID_SmallIcons", "ID_ListIcons",
                                  "ID_DetailIcons"};

QWidget* pane(QWidget* parent, PaneHeading*& heading, const QString& title, QWidget* end = nullptr)
{
    auto* box = new QWidget(parent);
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    heading = new PaneHeading(title, end, box);
    column->addWidget(heading);
    return box;
}

}  // namespace

DatabasesTab::DatabasesTab(QWidget* parent) : MainTab(parent)
{
    setObjectName(u"DatabasesTab"_s);
    folders_ = new FolderTreeModel(this);
    files_ = new FileListModel(this);
    auto* panes = new QSplitter(Qt::Horizontal, this);
    panes->setObjectName(u"DatabasesPanes"_s);
    panes->setChildrenCollapsible(false);
    panes->addWidget(buildTree());
    panes->addWidget(buildList());
    panes->addWidget(buildOrganizer());
    panes->setStretchFactor(0, 2);
    panes->setStretchFactor(1, 5);
    panes->setStretchFactor(2, 2);
    panes->setSizes({230, 600, 290});
    auto* row = new QVBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(panes);

    connect(files_, &FileListModel::arranging, this,
            [this] { kept_ = files_->path(PTxShList1->currentIndex()); });
    connect(files_, &FileListModel::filled, this, &DatabasesTab::filled);
    setListView(globals().FILE_LIST_VIEW);
    const Outcome filtered = attempt([this] { SetFilterButton(kAllDataFilter); });
    Q_UNUSED(filtered)
}

QWidget* DatabasesTab::buildTree()
{
    PaneHeading* heading = nullptr;
    QWidget* box = pane(this, heading, tr("Folders"));
    PTxShTree1 = new QTreeView(box);
    PTxShTree1->setObjectName(u"PTxShTree1"_s);
    PTxShTree1->setAccessibleName(tr("Folders"));
    PTxShTree1->setModel(folders_);
    PTxShTree1->setHeaderHidden(true);
    PTxShTree1->setUniformRowHeights(true);
    PTxShTree1->setFrameShape(QFrame::NoFrame);
    PTxShTree1->setMinimumWidth(140);
    PTxShTree1->expand(folders_->index(0, 0));
    heading->setBuddy(PTxShTree1);
    const auto add = [this](const QString& text, const QString& icon, auto procedure) {
        auto* action = new QAction(QIcon::fromTheme(icon), text, PTxShTree1);
        connect(action, &QAction::triggered, this, procedure);
        PTxShTree1->addAction(action);
    };
    add(tr("&Refresh"), u"view-refresh"_s, [this] { refresh(); });
    add(tr("&Collapse Folders"), u"collapse-all"_s, [this] { collapseTree(); });
    PTxShTree1->setContextMenuPolicy(Qt::ActionsContextMenu);
    box->layout()->addWidget(PTxShTree1);
    connect(PTxShTree1->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& now) { treeFolderChosen(now); });
    return box;
}

void DatabasesTab::dressView(QAbstractItemView& view)
{
    view.setModel(files_);
    view.setFrameShape(QFrame::NoFrame);
    view.setSelectionMode(QAbstractItemView::ExtendedSelection);
    view.setEditTriggers(QAbstractItemView::NoEditTriggers);
    view.setDragEnabled(true);
    view.setDragDropMode(QAbstractItemView::DragOnly);
    view.installEventFilter(this);
    const auto add = [&](const QString& text, const QString& icon, auto procedure) {
        auto* action = new QAction(QIcon::fromTheme(icon), text, &view);
        connect(action, &QAction::triggered, this, procedure);
        view.addAction(action);
    };
    add(tr("&Open"), u"document-open"_s, [this] { fileOpened(this->view()->currentIndex()); });
    add(tr("Open with another &Application"), u"document-open-folder"_s, [this] {
        if (const QModelIndex at = this->view()->currentIndex(); at.isValid())
            upcalls().OpenwithOLE(files_->path(at));
    });
    add(tr("&Up One Folder"), u"go-up"_s, [this] { upFolder(); });
    add(tr("&Refresh"), u"view-refresh"_s, [this] { refresh(); });
    view.setContextMenuPolicy(Qt::ActionsContextMenu);
    // Not activated(): where the desktop opens on a single click, no file could be selected.
    connect(&view, &QAbstractItemView::doubleClicked, this,
            [this](const QModelIndex& index) { fileOpened(index); });
}

QWidget* DatabasesTab::buildList()
{
    PaneHeading* heading = nullptr;
    QWidget* box = pane(this, heading, tr("Files"));
    place_ = new QLabel(box);
    place_->setTextFormat(Qt::PlainText);
    place_->setContentsMargins(8, 2, 8, 2);
    place_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    filterCombo = new QComboBox(box);
    filterCombo->setObjectName(u"FileFilter"_s);
    filterCombo->setAccessibleName(tr("Filter"));
    filterCombo->setToolTip(tr("Which files the list shows"));
    filterCombo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    filterCombo->setMinimumContentsLength(24);
    for (const ListFilter& filter : kListFilters)
        filterCombo->addItem(QString::fromLatin1(filter.caption));
    connect(filterCombo, &QComboBox::currentIndexChanged, this, [this](int index) {
        const Outcome done = attempt([&] { SetFilterButton(index); });
        if (!done)
            tellUnexpected(done);
    });

    PTxShList1 = new QTreeView(box);
    PTxShList1->setObjectName(u"PTxShList1"_s);
    PTxShList1->setAccessibleName(tr("Files"));
    dressView(*PTxShList1);
    PTxShList1->setRootIsDecorated(false);
    PTxShList1->setItemsExpandable(false);
    PTxShList1->setUniformRowHeights(true);
    PTxShList1->setAllColumnsShowFocus(true);
    PTxShList1->setSortingEnabled(true);
    PTxShList1->sortByColumn(FileListModel::Name, Qt::AscendingOrder);
    PTxShList1->header()->setStretchLastSection(false);
    PTxShList1->header()->setSectionResizeMode(FileListModel::Name, QHeaderView::Stretch);
    const int letter = fontMetrics().averageCharWidth();
    PTxShList1->header()->resizeSection(FileListModel::Size, letter * 12);
    PTxShList1->header()->resizeSection(FileListModel::Kind, letter * 24);
    PTxShList1->header()->resizeSection(FileListModel::Modified, letter * 22);

    fileIcons = new QListView(box);
    fileIcons->setObjectName(u"FileIcons"_s);
    fileIcons->setAccessibleName(tr("Files"));
    dressView(*fileIcons);
    fileIcons->setUniformItemSizes(true);
    fileIcons->setResizeMode(QListView::Adjust);
    fileIcons->setWrapping(true);
    fileIcons->setLayoutMode(QListView::Batched);
    fileIcons->setSelectionModel(PTxShList1->selectionModel());
    connect(PTxShList1->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& now) { fileChosen(now); });

    emptyText_ = new QLabel(box);
    emptyText_->setObjectName(u"FilesEmpty"_s);
    emptyText_->setAlignment(Qt::AlignCenter);
    emptyText_->setWordWrap(true);
    emptyText_->setForegroundRole(QPalette::PlaceholderText);
    emptyText_->setMargin(16);
    emptyText_->setBackgroundRole(QPalette::Base);
    emptyText_->setAutoFillBackground(true);

    views_ = new QStackedWidget(box);
    views_->addWidget(PTxShList1);
    views_->addWidget(fileIcons);
    views_->addWidget(emptyText_);
    count_ = new QLabel(box);
    count_->setContentsMargins(8, 2, 8, 3);
    count_->setForegroundRole(QPalette::PlaceholderText);

    auto* column = static_cast<QVBoxLayout*>(box->layout());
    heading->setBuddy(PTxShList1);
    auto* filterRow = new QHBoxLayout;
    filterRow->setContentsMargins(8, 2, 8, 4);
    filterRow->setSpacing(6);
    auto* filterLabel = new QLabel(tr("&Show:"), box);
    filterLabel->setBuddy(filterCombo);
    filterRow->addWidget(filterLabel);
    filterRow->addWidget(filterCombo, 1);
    column->addWidget(place_);
    column->addLayout(filterRow);
    column->addWidget(views_, 1);
    column->addWidget(count_);
    return box;
}

QWidget* DatabasesTab::buildOrganizer()
{
    PaneHeading* heading = nullptr;
    QWidget* box = pane(this, heading, tr("Organizer"));
    organizer = new OrganizerPane(box);
    organizer->SSTree1->fileIcon = [](const QString& path) {
        const std::string name = path.toStdString();
        return fileKindIcon(QString::fromStdString(std::string(paths::extension(name))).toUpper(),
                            false);
    };
    organizer->say = [this](const QString& words) { emit statusText(words); };
    organizer->filePattern = [this] { return files_->pattern(); };
    heading->setBuddy(organizer->SSTree1);
    box->layout()->addWidget(organizer);
    return box;
}

QAbstractItemView* DatabasesTab::view() const
{
    return globals().FILE_LIST_VIEW == 3 ? static_cast<QAbstractItemView*>(PTxShList1) : fileIcons;
}

QString DatabasesTab::folder() const
{
    return files_->folder();
}

void DatabasesTab::entered()
{
    if (folder().isEmpty())
        refresh();
}

/// The folder in front and those beside it are read again, and so are its files.
void DatabasesTab::refresh()
{
    const QScopedValueRollback following(following_, true);
    const QPersistentModelIndex here = PTxShTree1->currentIndex();
    folders_->refresh(here.parent());
    if (here.isValid())
        folders_->refresh(here);
    files_->refresh();
}

void DatabasesTab::focusFiles()
{
    wantsFocus_ = true;
    filled();
}

void DatabasesTab::SetFilterButton(int index)
{
    const QString pattern = filterPattern(index);
    if (pattern != files_->pattern())
        files_->setPattern(pattern);
    if (index < filterCombo->count() && filterCombo->currentIndex() != index) {
        const QSignalBlocker quiet(filterCombo);
        filterCombo->setCurrentIndex(index);
    }
    if (index < 8)
        pressTool(QString::fromLatin1(kListFilters[static_cast<std::size_t>(index)].tool));
}

void DatabasesTab::setListView(int view)
{
    globals().FILE_LIST_VIEW = view;
    const bool details = view == 3;
    if (!details) {
        const int side = view == 0 ? 48 : style()->pixelMetric(QStyle::PM_SmallIconSize);
        fileIcons->setViewMode(view == 0 ? QListView::IconMode : QListView::ListMode);
        fileIcons->setMovement(QListView::Static);
        fileIcons->setFlow(view == 2 ? QListView::TopToBottom : QListView::LeftToRight);
        fileIcons->setIconSize({side, side});
        fileIcons->setDragEnabled(true);
        const int letter = fontMetrics().averageCharWidth();
        const int line = fontMetrics().height();
        fileIcons->setGridSize(view == 0 ? QSize(letter * 16, side + line * 2 + 12)
                                         : QSize(letter * 30, qMax(side, line) + 6));
        fileIcons->setWordWrap(view == 0);
        fileIcons->setSpacing(0);
    }
    filled();
    if (view >= 0 && view <= 3)
        pressTool(QString::fromLatin1(kViewTools[view]));
}

void DatabasesTab::filled()
{
    QString words;
    if (files_->folder().isEmpty())
        words = tr("Choose a folder on the left to see its files.");
    else if (files_->loading())
        words = tr("Reading the folder...");
    else if (!files_->failure().isEmpty())
        words = tr("This folder could not be read.\n%1").arg(files_->failure());
    else if (files_->rowCount() == 0 && files_->hiddenFiles() > 0)
        words = tr("No file here passes the filter.\nChoose \"All Files (*.*)\" above to see the "
                   "other %n file(s).",
                   nullptr, files_->hiddenFiles());
    else if (files_->rowCount() == 0)
        words = tr("This folder is empty.");
    emptyText_->setText(words);
    views_->setCurrentWidget(words.isEmpty() ? static_cast<QWidget*>(view()) : emptyText_);
    if (wantsFocus_ && words.isEmpty()) {
        wantsFocus_ = false;
        view()->setFocus();
    }
    place_->setText(files_->folder().isEmpty() ? QString() : files_->folder());
    place_->setToolTip(files_->folder());

    QString count;
    if (!files_->folder().isEmpty() && !files_->loading()) {
        count = files_->shownFiles() == 1
                    ? tr("1 file")
                    : tr("%1 files").arg(text::thousands(files_->shownFiles()));
        if (files_->hiddenFiles() > 0)
            count +=
                tr(", %1 more not shown by the filter").arg(text::thousands(files_->hiddenFiles()));
    }
    count_->setText(count);
    keepCurrent();
    if (!waiting_.isEmpty() && !files_->loading()) {
        const QModelIndex at = files_->indexOf(waiting_);
        waiting_.clear();
        if (at.isValid()) {
            PTxShList1->setCurrentIndex(at);
            view()->scrollTo(at);
        }
    }
}

/// Sorting and reading again leave people where they were. Nobody chose it anew: the file in hand
/// may be another by now.
void DatabasesTab::keepCurrent()
{
    const QString kept = std::exchange(kept_, {});
    const QModelIndex at = kept.isEmpty() ? QModelIndex() : files_->indexOf(kept);
    if (!at.isValid())
        return;
    const QScopedValueRollback keeping(keeping_, true);
    PTxShList1->setCurrentIndex(at);
    view()->scrollTo(at);
}

void DatabasesTab::treeFolderChosen(const QModelIndex& index)
{
    if (following_)
        return;
    files_->setFolder(folders_->folder(index));
    filled();
}

void DatabasesTab::goToFolder(const QString& folder)
{
    files_->setFolder(folder);
    following_ = true;
    attempt([&] {
        if (const QModelIndex at = folders_->indexOf(folder); at.isValid()) {
            PTxShTree1->setCurrentIndex(at);
            PTxShTree1->scrollTo(at);
        }
    });
    following_ = false;
    filled();
}

void DatabasesTab::showFile(const QString& path)
{
    waiting_ = path;
    goToFolder(fromUtf8(paths::folder(path.toStdString())));
}

void DatabasesTab::upFolder()
{
    const QString here = folder();
    if (!here.contains(u'\\') || here.startsWith(u"\\\\"))
        return;
    waiting_ = here;
    goToFolder(fromUtf8(paths::folder(here.toStdString())));
}

void DatabasesTab::collapseTree()
{
    PTxShTree1->collapseAll();
    const QModelIndex root = folders_->index(0, 0);
    PTxShTree1->expand(root);
    PTxShTree1->setCurrentIndex(root);
}

void DatabasesTab::fileChosen(const QModelIndex& index)
{
    auto& G = globals();
    if (keeping_)
        return;
    if (!index.isValid() || files_->isFolder(index)) {
        if (index.isValid()) {
            G.SELECTED_FILE.clear();
            DisableSelectMenus();
            emit statusText({});
        }
        return;
    }
    G.SELECTED_FILE = files_->path(index);
    EnableSelectMenus();
    emit statusText(G.SELECTED_FILE);
}

void DatabasesTab::fileOpened(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    const Outcome done = attempt([&] {
        const QString path = files_->path(index);
        if (files_->isFolder(index))
            goToFolder(path);
        else
            upcalls().DisplayFile(path);
    });
    if (!done)
        tellUnexpected(done);
}

bool DatabasesTab::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Backspace) {
            upFolder();
            return true;
        }
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            fileOpened(view()->currentIndex());
            return true;
        }
    }
    return MainTab::eventFilter(watched, event);
}

QList<ToolRow> DatabasesTab::tools()
{
    const auto filter = [this](int index, const QString& text, const QString& tip,
                               const QString& icon) {
        ToolRow row{QString::fromLatin1(kListFilters[static_cast<std::size_t>(index)].tool), text,
                    tip, [this, index] { SetFilterButton(index); }, icon};
        row.group = u"filter"_s;
        return row;
    };
    const auto viewTool = [this](int index, const QString& text, const QString& icon) {
        ToolRow row{QString::fromLatin1(kViewTools[index]),
                    text,
                    {},
                    [this, index] { setListView(index); },
                    icon};
        row.group = u"view"_s;
        return row;
    };
    return {
        {u"ID_UpFolderBtn"_s, u"&Up One Folder"_s, u"Up one folder"_s,
         edge(this, &DatabasesTab::upFolder), u"go-up"_s, QKeySequence(u"Alt+Up"_s)},
        {u"ID_FolderList"_s, u"Next &Working Folder"_s, u"Go to the next working folder"_s,
         [this] { StepFolderList(); }, u"folder-bookmark"_s},
        {u"ID_CollapseBtn"_s, u"&Collapse Folders"_s, u"Collapse the folder tree to its root"_s,
         edge(this, &DatabasesTab::collapseTree), u"collapse-all"_s},
        {u"ID_RefreshBtn"_s, u"&Refresh"_s, u"Read the folder again"_s,
         edge(this, &DatabasesTab::refresh), u"view-refresh"_s, QKeySequence::Refresh},
        toolLine(),
        viewTool(0, u"&Large Icons"_s, u"view-list-icons"_s),
        viewTool(1, u"&Small Icons"_s, u"view-grid"_s),
        viewTool(2, u"L&ist"_s, u"view-list-text"_s),
        viewTool(3, u"&Details"_s, u"view-list-details"_s),
        toolLine(),
        filter(0, u"d&BASE and FoxPro"_s, u"Show dBASE and FoxPro files"_s,
               u":/velnor/icons/file-dbase.svg"_s),
        filter(1, u"&Paradox"_s, u"Show Paradox files"_s, u":/velnor/icons/file-paradox.svg"_s),
        filter(2, u"&Access"_s, u"Show Access files"_s, u":/velnor/icons/file-access.svg"_s),
        filter(3, u"&Excel"_s, u"Show Excel files"_s, u":/velnor/icons/file-excel.svg"_s),
        filter(4, u"L&otus"_s, u"Show Lotus files"_s, u":/velnor/icons/file-lotus.svg"_s),
        filter(5, u"All Databa&ses"_s, u"Show all database and spread sheet files"_s,
               u":/velnor/icons/file-data.svg"_s),
        filter(6, u"&Texts"_s, u"Show text and document files"_s, u"text-x-generic"_s),
        filter(7, u"All &Files"_s, u"Show all files"_s, u"view-list-tree"_s),
    };
}

}  // namespace velnor
