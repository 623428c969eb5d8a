#include "core/keyed_tree.h"

#include <QDragEnterEvent>
#include <QIcon>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>

#include "core/dropped_files.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

enum Role { KeyRole = Qt::UserRole, TagRole, ValueRole, ImageRole };

QIcon pictureOf(int image)
{
    switch (image) {
    case KeyedTree::ClosedFolder:
        return QIcon::fromTheme(u"folder"_s);
    case KeyedTree::OpenFolder:
        return QIcon::fromTheme(u"folder-open"_s);
    case KeyedTree::File:
        return QIcon::fromTheme(u"text-x-generic"_s);
    case KeyedTree::Field:
        return QIcon::fromTheme(u"view-list-details"_s);
    case KeyedTree::Date:
        return QIcon::fromTheme(u"view-calendar"_s);
    default:
        return {};
    }
}

}  // namespace

KeyedTree::KeyedTree(QWidget* parent) : QTreeWidget(parent)
{
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    fileIcon = [](const QString&) { return pictureOf(File); };
    connect(this, &QTreeWidget::itemDoubleClicked, this, &KeyedTree::opened);
}

QTreeWidgetItem* KeyedTree::put(QTreeWidgetItem* parent, const QString& key, const QString& text,
                                int image)
{
    if (!parent || nodes_.contains(key))
        return nullptr;
    auto* made = new QTreeWidgetItem(parent, {text});
    made->setData(0, KeyRole, key);
    made->setToolTip(0, text);
    setImage(*made, image);
    nodes_.insert(key, made);
    if (nodes_.size() == 1)
        viewport()->update();  // the words of the empty tree go
    return made;
}

QTreeWidgetItem* KeyedTree::add(const QString& key, const QString& text, int image)
{
    return put(invisibleRootItem(), key, text, image);
}

QTreeWidgetItem* KeyedTree::addChild(const QString& parent, const QString& key, const QString& text,
                                     int image)
{
    return put(node(parent), key, text, image);
}

QTreeWidgetItem* KeyedTree::node(const QString& key) const
{
    return nodes_.value(key);
}

void KeyedTree::clearNodes()
{
    nodes_.clear();
    clear();
}

QString KeyedTree::key(const QTreeWidgetItem& node)
{
    return node.data(0, KeyRole).toString();
}

QString KeyedTree::tag(const QTreeWidgetItem& node)
{
    return node.data(0, TagRole).toString();
}

void KeyedTree::setTag(QTreeWidgetItem& node, const QString& tag)
{
    node.setData(0, TagRole, tag);
    auto* tree = qobject_cast<KeyedTree*>(node.treeWidget());
    if (tree && image(node) == File)
        node.setIcon(0, tree->fileIcon(tag));
}

QString KeyedTree::nodeValue(const QTreeWidgetItem& node)
{
    return node.data(0, ValueRole).toString();
}

void KeyedTree::setNodeValue(QTreeWidgetItem& node, const QString& value)
{
    node.setData(0, ValueRole, value);
}

int KeyedTree::image(const QTreeWidgetItem& node)
{
    return node.data(0, ImageRole).toInt();
}

void KeyedTree::setImage(QTreeWidgetItem& node, int image)
{
    node.setData(0, ImageRole, image);
    node.setIcon(0, image == File ? fileIcon(tag(node)) : pictureOf(image));
}

void KeyedTree::deleteCurrent()
{
    QTreeWidgetItem* node = currentItem();
    if (!node || !beforeDelete(*node))
        return;
    afterDelete(*node);
    QList<QTreeWidgetItem*> gone{node};
    for (qsizetype i = 0; i < gone.size(); ++i) {
        nodes_.remove(key(*gone[i]));
        for (int child = 0; child < gone[i]->childCount(); ++child)
            gone << gone[i]->child(child);
    }
    delete node;
}

void KeyedTree::setEmptyText(const QString& text)
{
    emptyText_ = text;
    viewport()->update();
}

QStringList KeyedTree::mimeTypes() const
{
    return {u"text/uri-list"_s};
}

void KeyedTree::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void KeyedTree::dragMoveEvent(QDragMoveEvent* event)
{
    QTreeWidget::dragMoveEvent(event);  // marks the node under the pointer
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void KeyedTree::dropEvent(QDropEvent* event)
{
    const QStringList paths = droppedFiles(*event->mimeData());
    QTreeWidgetItem* under = itemAt(event->position().toPoint());
    setState(QAbstractItemView::NoState);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (!paths.isEmpty())
        emit filesDropped(paths, under);
}

void KeyedTree::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Delete) && currentItem()) {
        deleteCurrent();
        return;
    }
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && currentItem())
        emit opened(currentItem());
    else
        QTreeWidget::keyPressEvent(event);
}

void KeyedTree::paintEvent(QPaintEvent* event)
{
    QTreeWidget::paintEvent(event);
    if (topLevelItemCount() > 0 || emptyText_.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                     Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}

}  // namespace velnor
