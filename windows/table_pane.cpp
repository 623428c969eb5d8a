#include "windows/table_pane.h"

#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include "windows/pane_heading.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

void fill(QListWidget& list, const QStringList& names)
{
    const QSignalBlocker quiet(list);
    list.clear();
    list.addItems(names);
    list.setCurrentRow(names.isEmpty() ? -1 : 0);
}

}  // namespace

QToolButton* closeButton(QWidget* parent, const QString& name, const QString& tip)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setIcon(QIcon::fromTheme(u"window-close"_s));
    button->setAutoRaise(true);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    return button;
}

TablePane::TablePane(QWidget* parent) : QWidget(parent)
{
    setMinimumWidth(120);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    ExitDBaseBtn =
        closeButton(this, u"ExitDBaseBtn"_s, u"Close Database Table and Index Display"_s);
    column->addWidget(new PaneHeading(tr("Table and Index"), ExitDBaseBtn, this));
    List1 =
        headedList(column, u"List1"_s, tr("&Tables"), tr("Choose the table to show"), tableBox_);
    List2 = headedList(column, u"List2"_s, tr("&Indexes"), tr("Choose the order of the records"),
                       indexBox_);
    tableBox_->hide();
    indexBox_->hide();
    connectClicks(*List1, &TablePane::tableClicked);
    connectClicks(*List2, &TablePane::indexClicked);
    connect(ExitDBaseBtn, &QToolButton::clicked, this, &TablePane::closed);
}

/// An entry that is selected already may be chosen, too: nobody has chosen the first one so far.
void TablePane::connectClicks(const QListWidget& list, void (TablePane::*chosen)())
{
    connect(&list, &QListWidget::currentRowChanged, this, chosen);
    connect(&list, &QListWidget::itemClicked, this, chosen);
    connect(&list, &QListWidget::itemActivated, this, chosen);
}

/// A list under its heading, both in the box.
QListWidget* TablePane::headedList(QVBoxLayout* column, const QString& name, const QString& heading,
                                   const QString& tip, QWidget*& boxOut)
{
    boxOut = new QWidget(this);
    auto* box = new QVBoxLayout(boxOut);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(2);
    auto* label = new QLabel(heading, boxOut);
    label->setContentsMargins(6, 4, 6, 0);
    auto* list = new QListWidget(boxOut);
    list->setObjectName(name);
    list->setToolTip(tip);
    list->setAccessibleName(QString(heading).remove(u'&'));
    list->setUniformItemSizes(true);
    list->setSpacing(1);
    list->setFrameShape(QFrame::NoFrame);
    label->setBuddy(list);
    box->addWidget(label);
    box->addWidget(list, 1);
    column->addWidget(boxOut, 1);
    return list;
}

void TablePane::setTables(const QStringList& names)
{
    fill(*List1, names);
}

void TablePane::setIndexes(const QStringList& names)
{
    fill(*List2, names);
}

void TablePane::markTable(const QString& name)
{
    const QSignalBlocker quiet(List1);
    const auto found = List1->findItems(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (!found.isEmpty())
        List1->setCurrentItem(found.first());
}

QStringList TablePane::tables() const
{
    QStringList names;
    for (int i = 0; i < List1->count(); ++i)
        names << List1->item(i)->text();
    return names;
}

void TablePane::toggleTables()
{
    toggle(tableBox_, List1);
}

void TablePane::toggleIndexes()
{
    toggle(indexBox_, List2);
}

void TablePane::toggle(QWidget* box, QListWidget* list)
{
    const bool shows = box->isHidden();
    box->setVisible(shows);
    showPane();
    if (shows)
        list->setFocus();
}

void TablePane::hideBoth()
{
    tableBox_->hide();
    indexBox_->hide();
    showPane();
}

void TablePane::showPane()
{
    setVisible(!tableBox_->isHidden() || !indexBox_->isHidden());
}

}  // namespace velnor
