// The controls of the table browser and how they are laid out.
#include <QAction>
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
#include "windows/table_pane.h"
#include "windows/text_style_delegate.h"

namespace velnor {

using namespace Qt::StringLiterals;

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
    auto* side = new QSplitter(Qt::Horizontal, this);
    side->addWidget(buildLists());
    side->addWidget(main);
    side->setStretchFactor(0, 0);
    side->setStretchFactor(1, 1);
    side->setSizes({190, 600});
    side->setChildrenCollapsible(false);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(Data1Strip);
    column->addWidget(side, 1);
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
    connect(Frame1, &TablePane::tableClicked, this, edge(this, &ChildFrm1::List1_Click));
    connect(Frame1, &TablePane::indexClicked, this, edge(this, &ChildFrm1::List2_Click));
    connect(Frame1, &TablePane::closed, this, edge(this, &ChildFrm1::ExitDBaseBtn_Click));
    connect(MSFlexGrid1->selectionModel(), &QItemSelectionModel::currentChanged, this,
            edge(this, &ChildFrm1::MSFlexGrid1_Click));
    connect(ExitCommBtn, &QToolButton::clicked, this, edge(this, &ChildFrm1::ExitCommBtn_Click));
    addGridActions();
    Frame1->hide();
    Frame2->hide();
}

/// What acts on the records, beside the grid's own copying.
void ChildFrm1::addGridActions()
{
    const auto add = [this](const QString& text, const char* icon, void (ChildFrm1::*procedure)()) {
        auto* action = new QAction(QIcon::fromTheme(QString::fromLatin1(icon)), text, MSFlexGrid1);
        connect(action, &QAction::triggered, this, edge(this, procedure));
        MSFlexGrid1->addAction(action);
    };
    add(tr("&Find..."), "edit-find", &ChildFrm1::mnuFindText_Click);
    add(tr("&View Comments"), "view-pim-notes", &ChildFrm1::mnuViewComments_Click);
    add(tr("&Data Entry"), "document-edit", &ChildFrm1::ID_DataToggle_Click);
    add(tr("&Refresh"), "view-refresh", &ChildFrm1::mnuFileRefresh_Click);
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
    Frame1 = new TablePane(this);
    Frame1->setObjectName(u"Frame1"_s);
    List1 = Frame1->List1;
    List2 = Frame1->List2;
    ExitDBaseBtn = Frame1->ExitDBaseBtn;
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
    commentsHeading_ = new PaneHeading(tr("View Comments"), ExitCommBtn, Frame2);
    column->addWidget(commentsHeading_);
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
