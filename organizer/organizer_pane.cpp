#include "organizer/organizer_pane.h"

#include <QAction>
#include <QVBoxLayout>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/keyed_tree.h"
#include "core/prompt.h"
#include "core/text.h"
#include "core/wait_pointer.h"
#include "organizer/organizer_store.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

const char* const kTip = "Drag and Drop Files to the Databases in the Database Organizer";

QString nameOfPath(const QString& path)
{
    return text::mid(path, text::instrRev(path, u"\\"_s) + 1);
}

/// The empty slot in front of the types counts: a file without extension is taken, too, unless it
/// is the first of those dropped. Required.
bool isFiled(const QString& path)
{
    const QString extension = GetFileExtension(path);
    return extension.isEmpty() || extensionSlot(extension) != 0;
}

}  // namespace

OrganizerPane::OrganizerPane(QWidget* parent) : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    SSTree1 = new KeyedTree(this);
    SSTree1->setObjectName(u"SSTree1"_s);
    SSTree1->setAccessibleName(tr("Organizer"));
    SSTree1->setToolTip(QString::fromLatin1(kTip));
    SSTree1->setFrameShape(QFrame::NoFrame);
    SSTree1->setExpandsOnDoubleClick(false);  // a double click opens what the node stands for
    SSTree1->setMinimumWidth(140);
    column->addWidget(SSTree1);
    setFocusProxy(SSTree1);
    buildActions();

    SSTree1->beforeDelete = [this](QTreeWidgetItem& node) { return mayDelete(node); };
    SSTree1->afterDelete = [this](QTreeWidgetItem& node) { deleted(node); };
    connect(SSTree1, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* node) {
        if (node && SSTree1->hasFocus())
            nodeClicked(*node);
    });
    connect(SSTree1, &QTreeWidget::itemClicked, this,
            [this](QTreeWidgetItem* node) { nodeClicked(*node); });
    connect(SSTree1, &KeyedTree::opened, this,
            [this](QTreeWidgetItem* node) { nodeOpened(*node); });
    connect(SSTree1, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* node) {
        if (KeyedTree::image(*node) == KeyedTree::ClosedFolder)
            SSTree1->setImage(*node, KeyedTree::OpenFolder);
    });
    connect(SSTree1, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* node) {
        if (KeyedTree::image(*node) == KeyedTree::OpenFolder)
            SSTree1->setImage(*node, KeyedTree::ClosedFolder);
    });
    connect(SSTree1, &KeyedTree::filesDropped, this,
            [this](const QStringList& paths, QTreeWidgetItem* under) {
                const Outcome done = attempt([&] { dropped(paths, under); });
                if (!done)
                    tellUnexpected(done);
            });
}

void OrganizerPane::buildActions()
{
    const auto add = [this](const QString& text, const QString& icon, auto procedure) {
        auto* action = new QAction(QIcon::fromTheme(icon), text, SSTree1);
        connect(action, &QAction::triggered, this, procedure);
        SSTree1->addAction(action);
    };
    add(tr("&Open"), u"document-open"_s, [this] {
        if (QTreeWidgetItem* node = SSTree1->currentItem())
            nodeOpened(*node);
    });
    add(tr("&Add the Selected File"), u"list-add"_s, [this] { addSelectedFile(); });
    add(tr("&Delete from the Organizer..."), u"edit-delete"_s,
        [this] { SSTree1->deleteCurrent(); });
    add(tr("&Refresh"), u"view-refresh"_s, [this] { rebuild(); });
    SSTree1->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void OrganizerPane::setView(const QString& view)
{
    ORG_VIEW = view;
    rebuild();
}

void OrganizerPane::rebuild()
{
    SSTree1->setEmptyText(ORG_VIEW == u"L" ? tr("No copy has been logged. The options for search "
                                                "and databases switch the log on.")
                                           : tr("Nothing is filed in this view."));
    const Outcome done = attempt([this] {
        if (ORG_VIEW == u"L") {
            const WaitPointer wait;
            ViewCopyLog(*SSTree1);
        } else if (ORG_VIEW == u"D" || ORG_VIEW == u"S") {
            BuildDatabaseTree2();
        } else {
            GetDatabases();
            BuildDatabaseTree();
        }
    });
    if (!done)
        tellUnexpected(done);
}

bool OrganizerPane::CreateNewTreeDatabase(const QString& name, const QString& description,
                                          const QString& group)
{
    QTreeWidgetItem* node =
        SSTree1->add(name, name + u" - "_s + description, KeyedTree::ClosedFolder);
    if (!node)
        return false;
    KeyedTree::setTag(*node, name);
    KeyedTree::setNodeValue(*node, group);
    return true;
}

bool OrganizerPane::AddTreeNode(const QString& parent, const QString& text, const QString& key,
                                const QString& suffix, const QString& location, int image,
                                bool child)
{
    QTreeWidgetItem* node = child ? SSTree1->addChild(parent, key, text + suffix, image)
                                  : SSTree1->add(parent, parent + suffix, image);
    if (!node)
        return false;
    if (child) {
        KeyedTree::setTag(*node, location);
        KeyedTree::setNodeValue(*node, key.left(key.indexOf('/')));  // all of it without a "/"
    } else {
        KeyedTree::setTag(*node, key);
        KeyedTree::setNodeValue(*node, text);
    }
    return true;
}

bool OrganizerPane::AddDatabaseTree(const QString& name, const QString& path)
{
    const QString parent = globals().ORG_DATABASE;
    QTreeWidgetItem* node =
        SSTree1->addChild(parent, name + u"/"_s + path, name + u" - "_s + path, KeyedTree::File);
    if (!node)
        return false;
    KeyedTree::setTag(*node, path);
    KeyedTree::setNodeValue(*node, name);
    AddtoDatabase(name, path);
    return true;
}

void OrganizerPane::addSelectedFile()
{
    const QString path = globals().SELECTED_FILE;
    if (path.isEmpty())
        return say(tr("No file is selected."));
    fileAway(path);
    if (QTreeWidgetItem* parent = SSTree1->node(globals().ORG_DATABASE))
        SSTree1->expandItem(parent);
}

/// Files a path and says in the status bar what came of it: the rules of the tree are silent.
void OrganizerPane::fileAway(const QString& path)
{
    const QString name = nameOfPath(path), database = globals().ORG_DATABASE;
    if (AddDatabaseTree(name, path))
        say(tr("%1 is filed under %2.").arg(name, database));
    else if (SSTree1->node(database))
        say(tr("%1 stands under %2 already.").arg(name, database));
    else
        say(tr("Choose a database in the organizer first."));
}

QString OrganizerPane::firstText() const
{
    return SSTree1->topLevelItemCount() ? SSTree1->topLevelItem(0)->text(0) : QString();
}

void OrganizerPane::nodeClicked(QTreeWidgetItem& node)
{
    auto& G = globals();
    const int image = KeyedTree::image(node);
    const QString tag = KeyedTree::tag(node);
    if (ORG_VIEW == u"L") {
        EnableSelectMenus();
        G.SELECTED_FILE = tag;
    } else if (image == KeyedTree::ClosedFolder || image == KeyedTree::OpenFolder) {
        G.ORG_DATABASE = tag;
        G.ORG_GROUP = KeyedTree::nodeValue(node);
    } else if (image == KeyedTree::File) {
        G.SELECTED_FILE = tag;
        EnableSelectMenus();
        setTitle(u"Velnor - The Database File Utility - "_s + nameOfPath(tag));
    }
}

void OrganizerPane::nodeOpened(QTreeWidgetItem& node)
{
    if (ORG_VIEW != u"L")
        globals().SELECTED_FILE = KeyedTree::tag(node);
    if (node.childCount() > 0)
        node.setExpanded(!node.isExpanded());
    const Outcome done = attempt([&] { open(globals().SELECTED_FILE); });
    if (!done)
        tellUnexpected(done);
}

bool OrganizerPane::mayDelete(QTreeWidgetItem& node)
{
    if (ORG_VIEW == u"L" || node.childCount() > 0 ||
        KeyedTree::image(node) == KeyedTree::ClosedFolder)
        return false;
    return prompt().ask(this, u"Do you want to Delete "_s + KeyedTree::tag(node) +
                                  u" from the Database Organizer?"_s);
}

void OrganizerPane::deleted(QTreeWidgetItem& node)
{
    const char* table = KeyedTree::image(node) == KeyedTree::File ? "DatabaseTable" : "Databases";
    const Outcome done =
        attempt([&] { deleteRow(table, KeyedTree::nodeValue(node), KeyedTree::tag(node)); });
    if (!done)
        tellUnexpected(done);
}

void OrganizerPane::dropped(const QStringList& paths, QTreeWidgetItem* under)
{
    if (ORG_VIEW == u"L")
        return say(tr("The copy log takes no files. Choose another view of the organizer."));
    if (under)
        globals().ORG_GROUP = KeyedTree::nodeValue(*under);
    QStringList items = paths;
    if (GetFileExtension(paths.first()).isEmpty()) {
        items.clear();
        for (const QString& pattern : filePattern().split(';', Qt::SkipEmptyParts))
            for (const QString& name : dirAll(paths.first() + u"\\"_s + pattern))
                if (const QString path = paths.first() + u"\\"_s + name; !items.contains(path))
                    items << path;
    }
    for (const QString& path : items)
        if (path.isEmpty() || !dropOne(path, under))
            break;
    if (QTreeWidgetItem* parent = SSTree1->node(globals().ORG_DATABASE))
        parent->setExpanded(true);
}

bool OrganizerPane::dropOne(const QString& path, QTreeWidgetItem* under)
{
    if (!isFiled(path)) {
        prompt().tell(this, u"File Type not supported - Did not add to Database"_s);
        return false;
    }
    if (under) {
        const QString key = KeyedTree::key(*under);
        globals().ORG_DATABASE = key.left(key.indexOf(u" - "_s));
    }
    fileAway(path);
    return true;
}

}  // namespace velnor
