// core/keyed_tree.h - a tree whose nodes are known by keys: the organizer, the copy log,
// structures.
//
// A node has a key that is its own in the whole tree, a text, an image number that tells its kind,
// and two texts more, Tag and NodeValue, that its maker fills. A key that is taken is refused.
#pragma once

#include <functional>

#include <QHash>
#include <QTreeWidget>

namespace velnor {

class KeyedTree : public QTreeWidget {
    Q_OBJECT
public:
    explicit KeyedTree(QWidget* parent = nullptr);

    /// Image numbers that have a picture; others stand without.
    enum Image { ClosedFolder = 1, OpenFolder = 2, File = 3, Field = 4, Date = 5 };

    /// At the top level. Null when the key is taken.
    QTreeWidgetItem* add(const QString& key, const QString& text, int image);
    /// Below the node `parent`. Null when there is no such node, or the key is taken.
    QTreeWidgetItem* addChild(const QString& parent, const QString& key, const QString& text,
                              int image);
    QTreeWidgetItem* node(const QString& key) const;
    int nodeCount() const { return static_cast<int>(nodes_.size()); }
    void clearNodes();

    static QString key(const QTreeWidgetItem& node);
    static QString tag(const QTreeWidgetItem& node);
    static void setTag(QTreeWidgetItem& node, const QString& tag);
    static QString nodeValue(const QTreeWidgetItem& node);
    static void setNodeValue(QTreeWidgetItem& node, const QString& value);
    static int image(const QTreeWidgetItem& node);
    void setImage(QTreeWidgetItem& node, int image);

    /// The picture of a file, by its path; by default the one that all share.
    std::function<QIcon(const QString& path)> fileIcon;
    /// Asked before a node goes; false keeps it.
    std::function<bool(QTreeWidgetItem& node)> beforeDelete = [](QTreeWidgetItem&) {
        return false;
    };
    /// Told before the node leaves the tree, when beforeDelete has allowed it.
    std::function<void(QTreeWidgetItem& node)> afterDelete = [](QTreeWidgetItem&) {};
    /// Takes the current node away, if beforeDelete allows it.
    void deleteCurrent();
    /// What the tree says when it has no nodes.
    void setEmptyText(const QString& text);

signals:
    /// Files or a folder fell on the tree, "C:\folder\file.ext"; `under` is null for empty space.
    void filesDropped(const QStringList& paths, QTreeWidgetItem* under);
    /// By a double click or Enter, also where the desktop opens on a single click: a click chooses.
    void opened(QTreeWidgetItem* node);

protected:
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction; }
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QTreeWidgetItem* put(QTreeWidgetItem* parent, const QString& key, const QString& text,
                         int image);

    QHash<QString, QTreeWidgetItem*> nodes_;
    QString emptyText_;
};

}  // namespace velnor
