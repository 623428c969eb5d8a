// organizer/organizer_pane.h - the tree that shows the catalogue, in one of five views, and takes
// files that are dragged onto it.
#pragma once

#include <functional>

#include <QWidget>

class QTreeWidgetItem;

namespace velnor {

class KeyedTree;

class OrganizerPane : public QWidget {
    Q_OBJECT
public:
    explicit OrganizerPane(QWidget* parent = nullptr);

    // Controls.
    KeyedTree* SSTree1;

    /// "N" by name, "G" by group, "D" by date, "S" by size, "L" the copy log.
    QString ORG_VIEW = QStringLiteral("N");

    // Joints with the main window.
    std::function<void()> EnableSelectMenus = [] {};
    std::function<void(const QString& title)> setTitle = [](const QString&) {};
    std::function<void(const QString& path)> open = [](const QString&) {};
    /// What became of a file that was to be filed, for the status bar.
    std::function<void(const QString& words)> say = [](const QString&) {};
    /// Fills the tree with the copy log.
    std::function<void(KeyedTree& tree)> ViewCopyLog = [](KeyedTree&) {};
    /// The pattern of the file list, for a folder that is dropped.
    std::function<QString()> filePattern = [] { return QStringLiteral("*.*"); };

    /// Changes ORG_VIEW and builds the tree. What fails is told.
    void setView(const QString& view);
    /// Builds the view in hand anew.
    void rebuild();

    // A failure to open or read the store is an EngineError.
    void GetDatabases();
    void BuildDatabaseTree();
    void BuildDatabaseTree2();
    /// Adds "Database 1" to an empty tree, and to the store.
    void seed();

    // True when the node was added.
    bool CreateNewTreeDatabase(const QString& name, const QString& description,
                               const QString& group);
    bool AddTreeNode(const QString& parent, const QString& text, const QString& key,
                     const QString& suffix, const QString& location, int image, bool child);
    /// Files a path under ORG_DATABASE: a node of its own, and its row.
    bool AddDatabaseTree(const QString& name, const QString& path);
    /// Files the selected file.
    void addSelectedFile();
    /// The first node's text, as it stands; empty without nodes.
    QString firstText() const;

private:
    void nodeClicked(QTreeWidgetItem& node);
    void nodeOpened(QTreeWidgetItem& node);
    bool mayDelete(QTreeWidgetItem& node);
    void deleted(QTreeWidgetItem& node);
    void dropped(const QStringList& paths, QTreeWidgetItem* under);
    bool dropOne(const QString& path, QTreeWidgetItem* under);
    void buildActions();
    void fileAway(const QString& path);
};

}  // namespace velnor
