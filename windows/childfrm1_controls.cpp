// The controls of the table browser and how they are laid out.
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include "core/attempt.h"
#include "core/text.h"
#include "windows/childfrm1.h"
#include "windows/data_strip.h"
#include "windows/find_bar.h"
#include "windows/grid_search.h"
#include "windows/pane_heading.h"
#include "windows/record_grid.h"
#include "windows/recordset_model.h"
#include "windows/text_style_delegate.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

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

/// A list under its heading, the heading at `boxOut` hidden together with it.
QListWidget* headedList(QWidget* parent, QVBoxLayout* column, const QString& name,
                        const QString& heading, const QString& tip, QWidget*& boxOut)
{
    boxOut = new QWidget(parent);
    auto* box = new QVBoxLayout(boxOut);
    box->setContentsMargins(0, 0, 0, 0);
    box->setSpacing(2);
    auto* label = new QLabel(heading, boxOut);
    label->setContentsMargins(6, 4, 6, 0);
    auto* list = new QListWidget(boxOut);
    list->setObjectName(name);
    list->setToolTip(tip);
    list->setAccessibleName(heading);
    list->setUniformItemSizes(true);
    list->setSpacing(1);
    list->setFrameShape(QFrame::NoFrame);
    label->setBuddy(list);
    box->addWidget(label);
    box->addWidget(list, 1);
    column->addWidget(boxOut, 1);
    return list;
}

}  // namespace

void ChildFrm1::buildControls()
{
    setObjectName(u"ChildFrm1"_s);
    Data1Strip = new DataStrip(this);
    Data1Strip->setObjectName(u"Data1"_s);
    rows_ = new RecordsetModel(this);
    MSFlexGrid1 = new RecordGrid(this);
    MSFlexGrid1->setObjectName(u"MSFlexGrid1"_s);
    MSFlexGrid1->setAccessibleName(tr("Records"));
    MSFlexGrid1->setModel(rows_);
    MSFlexGrid1->setFrameShape(QFrame::NoFrame);
    MSFlexGrid1->setItemDelegate(new TextStyleDelegate(MSFlexGrid1));

    auto* main = new QSplitter(Qt::Vertical, this);
    main->addWidget(MSFlexGrid1);
    main->addWidget(buildComments());
    main->setStretchFactor(0, 3);
    main->setStretchFactor(1, 1);
    main->setChildrenCollapsible(false);
    side_ = new QSplitter(Qt::Horizontal, this);
    side_->addWidget(buildLists());
    side_->addWidget(main);
    side_->setStretchFactor(0, 0);
    side_->setStretchFactor(1, 1);
    side_->setSizes({190, 600});
    side_->setChildrenCollapsible(false);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(Data1Strip);
    column->addWidget(side_, 1);
    column->addWidget(buildFind());
    setFocusProxy(MSFlexGrid1);

    const auto move = [this](QToolButton* button, void (DataControl::*step)()) {
        QObject::connect(button, &QToolButton::clicked, this, [this, step] {
            const Outcome moved = attempt([&] { (Data1.*step)(); });
            Q_UNUSED(moved)  // at either end, or no records: it stays where it is
        });
    };
    move(Data1Strip->firstBtn, &DataControl::MoveFirst);
    move(Data1Strip->previousBtn, &DataControl::MovePrevious);
    move(Data1Strip->nextBtn, &DataControl::MoveNext);
    move(Data1Strip->lastBtn, &DataControl::MoveLast);
    connect(List1, &QListWidget::currentRowChanged, this, edge(this, &ChildFrm1::List1_Click));
    connect(List2, &QListWidget::currentRowChanged, this, edge(this, &ChildFrm1::List2_Click));
    connect(MSFlexGrid1->selectionModel(), &QItemSelectionModel::currentChanged, this,
            edge(this, &ChildFrm1::MSFlexGrid1_Click));
    connect(MSFlexGrid1, &QTableView::doubleClicked, this,
            edge(this, &ChildFrm1::mnuViewComments_Click));
    connect(ExitDBaseBtn, &QToolButton::clicked, this, edge(this, &ChildFrm1::ExitDBaseBtn_Click));
    connect(ExitCommBtn, &QToolButton::clicked, this, edge(this, &ChildFrm1::ExitCommBtn_Click));
    showPanes();
    Frame2->hide();
}

QWidget* ChildFrm1::buildFind()
{
    findBar = new FindBar(this);
    search_ = new GridSearch(*rows_, this);
    connect(findBar, &FindBar::findNext, this, edge(this, &ChildFrm1::mnuFindNextText_Click));
    connect(findBar, &FindBar::closed, this, [this] {
        search_->stop();
        findBar->say({});
        findBar->hide();
        MSFlexGrid1->setFocus();
    });
    connect(search_, &GridSearch::found, this, [this](int row, int column) {
        findBar->say(tr("Record %1").arg(text::thousands(row + 1)));
        MSFlexGrid1->setCurrentIndex(rows_->index(row, column));
        MSFlexGrid1->scrollTo(rows_->index(row, column));
    });
    connect(search_, &GridSearch::notFound, this, [this] { findBar->say(tr("Not found")); });
    connect(search_, &GridSearch::at, this, [this](int row) {
        findBar->say(tr("Searching... record %1").arg(text::thousands(row)));
    });
    return findBar;
}

QWidget* ChildFrm1::buildLists()
{
    Frame1 = new QWidget(this);
    Frame1->setObjectName(u"Frame1"_s);
    Frame1->setMinimumWidth(120);
    auto* column = new QVBoxLayout(Frame1);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    ExitDBaseBtn =
        closeButton(Frame1, u"ExitDBaseBtn"_s, u"Close Database Table and Index Display"_s);
    column->addWidget(new PaneHeading(tr("Table and Index"), ExitDBaseBtn, Frame1));
    List1 = headedList(Frame1, column, u"List1"_s, tr("&Tables"), tr("Choose the table to show"),
                       tableBox_);
    List2 = headedList(Frame1, column, u"List2"_s, tr("&Indexes"),
                       tr("Choose the order of the records"), indexBox_);
    return Frame1;
}

QWidget* ChildFrm1::buildComments()
{
    Frame2 = new QWidget(this);
    Frame2->setObjectName(u"Frame2"_s);
    auto* column = new QVBoxLayout(Frame2);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    ExitCommBtn = closeButton(Frame2, u"ExitCommBtn"_s, tr("Close the comments"));
    column->addWidget(new PaneHeading(tr("View Comments"), ExitCommBtn, Frame2));
    Text2 = new QPlainTextEdit(Frame2);
    Text2->setObjectName(u"Text2"_s);
    Text2->setAccessibleName(tr("Comment"));
    Text2->setReadOnly(true);
    Text2->setFrameShape(QFrame::NoFrame);
    Text2->setMinimumHeight(60);
    column->addWidget(Text2, 1);
    return Frame2;
}

}  // namespace velnor
