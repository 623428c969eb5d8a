// windows/folder_tree_model.h - the folders of this computer: home, drives and shares, each folder
// read when it is opened for the first time.
#pragma once

#include <memory>
#include <vector>

#include <QAbstractItemModel>
#include <QIcon>

namespace velnor {

class FolderTreeModel : public QAbstractItemModel {
    Q_OBJECT
public:
    explicit FolderTreeModel(QObject* parent = nullptr);
    ~FolderTreeModel() override;

    /// The folder of a row; empty for the root "Computer".
    QString folder(const QModelIndex& index) const;
    /// The row of a folder, read down to it; nothing when there is no such folder.
    QModelIndex indexOf(const QString& folder);
    /// Reads the folders below a row again: new ones appear, those that are gone go, and the others
    /// stay as they are. A folder that cannot be read keeps what it had.
    void refresh(const QModelIndex& index);

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

private:
    struct Node;
    Node* nodeOf(const QModelIndex& index) const;
    QModelIndex indexOfNode(const Node* node) const;
    QModelIndex childNamed(const QModelIndex& parent, const QString& name);
    QModelIndex knownChild(const QModelIndex& parent, const QString& name) const;

    std::unique_ptr<Node> root_;
};

}  // namespace velnor
