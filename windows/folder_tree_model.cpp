#include "windows/folder_tree_model.h"

#include <algorithm>
#include <optional>

#include <QDir>

#include "core/attempt.h"
#include "core/wait_pointer.h"
#include "platform/host.h"
#include "platform/paths.h"

namespace velnor {

using namespace Qt::StringLiterals;

struct FolderTreeModel::Node {
    QString name;    ///< what people see
    QString folder;  ///< "C:", "C:\data"
    QString icon;
    Node* above = nullptr;
    int row = 0;
    bool read = false;
    std::vector<std::unique_ptr<Node>> below;

    Node* add(const QString& newName, const QString& newFolder, const QString& newIcon)
    {
        return insert(below.size(), newName, newFolder, newIcon);
    }
    Node* insert(std::size_t at, const QString& newName, const QString& newFolder,
                 const QString& newIcon)
    {
        auto node = std::make_unique<Node>();
        node->name = newName;
        node->folder = newFolder;
        node->icon = newIcon;
        node->above = this;
        const auto made =
            below.insert(below.begin() + static_cast<std::ptrdiff_t>(at), std::move(node));
        number(at);
        return made->get();
    }
    void remove(std::size_t at)
    {
        below.erase(below.begin() + static_cast<std::ptrdiff_t>(at));
        number(at);
    }
    void number(std::size_t from)
    {
        for (; from < below.size(); ++from)
            below[from]->row = static_cast<int>(from);
    }
};

namespace {

/// A drive or a share, not a folder that is mounted somewhere inside one.
bool isRoot(const std::string& prefix)
{
    return prefix.size() == 2 || prefix.starts_with("\\\\");
}

/// In the order of their names; nothing when the folder cannot be read.
std::optional<std::vector<QString>> foldersOf(const QString& folder)
{
    const WaitPointer wait;
    std::vector<std::pair<std::string, QString>> found;
    const Outcome listed = attempt([&] {
        const QString asked = folder.endsWith(u':') ? folder + u'\\' : folder;
        for (const FileInfo& each : host().files->list(asked.toStdString()))
            if (each.folder && !each.hidden)
                found.emplace_back(paths::foldName(each.name), QString::fromStdString(each.name));
    });
    if (!listed)
        return std::nullopt;
    std::sort(found.begin(), found.end());
    std::vector<QString> names;
    for (auto& each : found)
        names.push_back(std::move(each.second));
    return names;
}

bool same(const QString& a, const QString& b)
{
    return paths::sameName(a.toStdString(), b.toStdString());
}

}  // namespace

FolderTreeModel::FolderTreeModel(QObject* parent)
    : QAbstractItemModel(parent), root_(std::make_unique<Node>())
{
    root_->read = true;
    Node* computer = root_->add(tr("Computer"), {}, u"computer"_s);
    computer->read = true;
    attempt([&] {
        const auto home = host().paths->toProgram(QDir::homePath().toStdString());
        if (const auto found = host().files->info(home); found && found->folder)
            computer->add(tr("Home"), QString::fromStdString(home), u"user-home"_s);
    });
    std::vector<std::string> roots;
    for (const auto& mount : host().paths->mounts())
        if (isRoot(mount.prefix))
            roots.push_back(mount.prefix);
    std::sort(roots.begin(), roots.end());
    for (const auto& prefix : roots)
        computer->add(QString::fromStdString(prefix), QString::fromStdString(prefix),
                      prefix.size() == 2 ? u"drive-harddisk"_s : u"folder-network"_s);
}

FolderTreeModel::~FolderTreeModel() = default;

FolderTreeModel::Node* FolderTreeModel::nodeOf(const QModelIndex& index) const
{
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : root_.get();
}

QModelIndex FolderTreeModel::indexOfNode(const Node* node) const
{
    return node == root_.get() ? QModelIndex() : createIndex(node->row, 0, node);
}

QString FolderTreeModel::folder(const QModelIndex& index) const
{
    return index.isValid() ? nodeOf(index)->folder : QString();
}

QModelIndex FolderTreeModel::knownChild(const QModelIndex& parent, const QString& name) const
{
    for (const auto& each : nodeOf(parent)->below)
        if (same(each->name, name))
            return indexOfNode(each.get());
    return {};
}

/// A folder that was made since its parent was read is found, too.
QModelIndex FolderTreeModel::childNamed(const QModelIndex& parent, const QString& name)
{
    const bool fresh = canFetchMore(parent);
    if (fresh)
        fetchMore(parent);
    QModelIndex child = knownChild(parent, name);
    if (!child.isValid() && !fresh) {
        refresh(parent);
        child = knownChild(parent, name);
    }
    return child;
}

QModelIndex FolderTreeModel::indexOf(const QString& folder)
{
    QModelIndex at;
    qsizetype used = 0;
    for (const auto& each : root_->below[0]->below) {
        const QString& start = each->folder;
        const bool whole = folder.size() == start.size() || folder.mid(start.size(), 1) == u"\\";
        if (whole && start.size() > used && same(folder.left(start.size()), start)) {
            at = indexOfNode(each.get());
            used = start.size();
        }
    }
    const QStringList rest = folder.mid(used).split(u'\\', Qt::SkipEmptyParts);
    for (const QString& part : rest) {
        at = at.isValid() ? childNamed(at, part) : at;
        if (!at.isValid())
            return {};
    }
    return at;
}

void FolderTreeModel::refresh(const QModelIndex& index)
{
    Node* node = nodeOf(index);
    if (node->folder.isEmpty() || !node->read)
        return;
    const auto now = foldersOf(node->folder);
    if (!now)
        return;
    for (std::size_t i = node->below.size(); i-- > 0;)
        if (std::find(now->begin(), now->end(), node->below[i]->name) == now->end()) {
            beginRemoveRows(index, static_cast<int>(i), static_cast<int>(i));
            node->remove(i);
            endRemoveRows();
        }
    for (std::size_t i = 0; i < now->size(); ++i)
        if (const QString& name = (*now)[i];
            i == node->below.size() || node->below[i]->name != name) {
            beginInsertRows(index, static_cast<int>(i), static_cast<int>(i));
            node->insert(i, name, node->folder + u'\\' + name, u"folder"_s);
            endInsertRows();
        }
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex& parent) const
{
    const Node* node = nodeOf(parent);
    if (column != 0 || row < 0 || row >= static_cast<int>(node->below.size()))
        return {};
    return createIndex(row, 0, node->below[static_cast<std::size_t>(row)].get());
}

QModelIndex FolderTreeModel::parent(const QModelIndex& child) const
{
    return child.isValid() ? indexOfNode(nodeOf(child)->above) : QModelIndex();
}

int FolderTreeModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > 0 ? 0 : static_cast<int>(nodeOf(parent)->below.size());
}

int FolderTreeModel::columnCount(const QModelIndex&) const
{
    return 1;
}

bool FolderTreeModel::hasChildren(const QModelIndex& parent) const
{
    const Node* node = nodeOf(parent);
    return !node->read || !node->below.empty();
}

bool FolderTreeModel::canFetchMore(const QModelIndex& parent) const
{
    return !nodeOf(parent)->read;
}

void FolderTreeModel::fetchMore(const QModelIndex& parent)
{
    Node* node = nodeOf(parent);
    if (node->read)
        return;
    node->read = true;
    const auto names = foldersOf(node->folder).value_or(std::vector<QString>());
    if (names.empty()) {
        emit dataChanged(parent, parent);  // its arrow goes
        return;
    }
    beginInsertRows(parent, 0, static_cast<int>(names.size()) - 1);
    for (const QString& name : names)
        node->add(name, node->folder + u'\\' + name, u"folder"_s);
    endInsertRows();
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Node* node = nodeOf(index);
    switch (role) {
    case Qt::DisplayRole:
        return node->name;
    case Qt::DecorationRole:
        return QIcon::fromTheme(node->icon);
    case Qt::ToolTipRole:
        return node->folder.isEmpty() ? QVariant() : node->folder;
    default:
        return {};
    }
}

}  // namespace velnor
