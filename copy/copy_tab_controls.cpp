// The copy tab's controls: made, laid out and connected. What they do is in copy_tab.cpp.
#include "copy/copy_tab.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QVBoxLayout>

#include "copy/drop_pane.h"
#include "copy/line_list.h"
#include "copy/path_label.h"
#include "copy/record_combo.h"
#include "core/attempt.h"
#include "core/globals.h"

namespace velnor {
namespace {

/// The tip serves as the description that a screen reader gives.
void describe(QWidget& control, const QString& name, const QString& tip,
              const QString& accessibleName)
{
    control.setObjectName(name);
    control.setToolTip(tip);
    control.setAccessibleDescription(tip);
    control.setAccessibleName(accessibleName);
}

QIcon themeIcon(const QWidget& widget, const char* name, QStyle::StandardPixmap otherwise)
{
    return QIcon::fromTheme(name, widget.style()->standardIcon(otherwise));
}

QPushButton* button(QWidget* parent, const char* name, const QString& text, const QString& tip,
                    const char* icon, QStyle::StandardPixmap otherwise)
{
    auto* made = new QPushButton(themeIcon(*parent, icon, otherwise), text, parent);
    describe(*made, name, tip, QString(text).remove('&').remove("..."));
    made->setAutoDefault(false);
    return made;
}

QLabel* heading(QWidget* parent, const QString& text)
{
    auto* made = new QLabel(text, parent);
    QFont font = made->font();
    font.setBold(true);
    made->setFont(font);
    return made;
}

QLabel* labelFor(QWidget* buddy, const QString& text, QWidget* parent)
{
    auto* made = new QLabel(text, parent);
    made->setBuddy(buddy);
    return made;
}

QComboBox* recordCombo(QWidget* parent, int index, const QString& tip)
{
    auto* combo = new RecordCombo(parent);
    describe(*combo, QString("CMBRECORD_%1").arg(index), tip,
             index == 0 ? CopyTab::tr("From record source") : CopyTab::tr("To record source"));
    return combo;
}

struct SideTexts {
    QString heading;
    QString recordLabel, recordTip;
    QString listLabel, listName, listTip;
};

SideTexts textsOf(int index)
{
    if (index == 0)
        return {"Copy From File",
                CopyTab::tr("&Record source:"),
                "Select From Record to Copy",
                CopyTab::tr("Fields to cop&y:"),
                CopyTab::tr("From fields"),
                CopyTab::tr("Fields of the From record source: name, type and size")};
    return {"Copy To File",
            CopyTab::tr("Recor&d source:"),
            "Select Record to receive New Records",
            CopyTab::tr("Fields to f&ill:"),
            CopyTab::tr("To fields"),
            CopyTab::tr("Fields of the To record source: name, type and size")};
}

}  // namespace

void CopyTab::buildControls()
{
    OpenFromBtn =
        button(this, "OpenFromBtn", tr("Open Fro&m..."), "Open From Database File to Copy",
               "document-open", QStyle::SP_DialogOpenButton);
    CloseFromBtn = button(this, "CloseFromBtn", tr("C&lose"), "Close From Database File to Copy",
                          "document-close", QStyle::SP_DialogCloseButton);
    OpenToBtn = button(this, "OpenToBtn", tr("Open &To..."), "Open To Database File to Copy",
                       "document-open", QStyle::SP_DialogOpenButton);
    CloseToBtn = button(this, "CloseToBtn", tr("Clo&se"), "Close To Database File to Copy",
                        "document-close", QStyle::SP_DialogCloseButton);

    auto* sides = new QSplitter(Qt::Horizontal, this);
    sides->setObjectName("CopySides");
    sides->setChildrenCollapsible(false);
    sides->addWidget(buildSide(0));
    sides->addWidget(buildSide(1));
    sides->setHandleWidth(sides->handleWidth() * 3);
    for (int index : {0, 1})
        sides->setStretchFactor(index, 1);
    sides->setSizes({1000, 1000});  // in equal parts

    auto* parts = new QSplitter(Qt::Vertical, this);
    parts->setObjectName("CopyParts");
    parts->setChildrenCollapsible(false);
    parts->addWidget(sides);
    parts->addWidget(buildMatches());
    parts->setStretchFactor(0, 3);
    parts->setStretchFactor(1, 2);

    auto* column = new QVBoxLayout(this);
    column->addWidget(parts, 1);
    column->addWidget(buildResult());
}

QWidget* CopyTab::buildSide(int index)
{
    const SideTexts texts = textsOf(index);
    auto* pane = new DropPane(this);
    pane->setObjectName(index == 0 ? "FromPane" : "ToPane");
    connect(pane, &DropPane::dropped, this, [this, index](const QString& path) {
        globals().WORK_FILE = path;
        edge(this, &CopyTab::openWorkFile, index)();
    });
    connect(pane, &DropPane::refused, this, &CopyTab::statusText);
    auto* column = new QVBoxLayout(pane);
    column->setContentsMargins(0, 0, 0, 0);

    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(heading(pane, texts.heading), 1);
    fileRow->addWidget(index == 0 ? OpenFromBtn : OpenToBtn);
    fileRow->addWidget(index == 0 ? CloseFromBtn : CloseToBtn);
    column->addLayout(fileRow);

    Label3[index] = new PathLabel(texts.heading, pane);
    Label3[index]->setObjectName(QString("Label3_%1").arg(index));
    Label3[index]->setTextFormat(Qt::PlainText);
    Label3[index]->setAccessibleName(index == 0 ? tr("From file") : tr("To file"));
    QSizePolicy keepsPlace(QSizePolicy::Ignored, QSizePolicy::Fixed);
    keepsPlace.setRetainSizeWhenHidden(true);
    Label3[index]->setSizePolicy(keepsPlace);
    Label3[index]->hide();
    column->addWidget(Label3[index]);

    CMBRECORD[index] = recordCombo(pane, index, texts.recordTip);
    auto* recordRow = new QHBoxLayout;
    recordRow->addWidget(labelFor(CMBRECORD[index], texts.recordLabel, pane));
    recordRow->addWidget(CMBRECORD[index], 1);
    column->addLayout(recordRow);

    List3[index] = new LineList(pane);
    describe(*List3[index], QString("List3_%1").arg(index), texts.listTip, texts.listName);
    column->addWidget(labelFor(List3[index], texts.listLabel, pane));
    column->addWidget(List3[index], 1);
    return pane;
}

QWidget* CopyTab::buildMatches()
{
    auto* pane = new QWidget(this);
    SelectBtn = button(pane, "SelectBtn", tr("Match &Pair"),
                       "Select Highlighted Fields in both Database Tables to Match Fields",
                       "list-add", QStyle::SP_DialogApplyButton);
    SelectAllBtn =
        button(pane, "SelectAllBtn", tr("Match &All"), "Match all Fields in both Database Files",
               "edit-select-all", QStyle::SP_DialogYesToAllButton);
    CancelBtn =
        button(pane, "CancelBtn", tr("U&nmatch"), "Cancel or Delete Highlighted Matched Fields",
               "list-remove", QStyle::SP_DialogDiscardButton);
    CancelBtn->setEnabled(false);
    // Its caption's closing blanks belong to it.
    CHKCPYQRY = new QCheckBox("Select Records from From Table using Active Query     ", pane);
    describe(*CHKCPYQRY, "CHKCPYQRY",
             tr("Copies the records that the query in the open query window finds"),
             CHKCPYQRY->text().trimmed());

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(SelectBtn);
    buttons->addWidget(SelectAllBtn);
    buttons->addWidget(CancelBtn);
    buttons->addStretch(1);
    buttons->addWidget(CHKCPYQRY);

    List3[2] = new LineList(pane);
    describe(*List3[2], "List3_2",
             tr("Matched fields: each From field and the To field that it goes into"),
             tr("Matched fields"));
    auto* unmatch = new QAction(CancelBtn->icon(), tr("Unmatch"), List3[2]);
    unmatch->setShortcut(QKeySequence::Delete);
    unmatch->setShortcutContext(Qt::WidgetShortcut);
    connect(unmatch, &QAction::triggered, this, edge(this, &CopyTab::CancelBtn_Click));
    List3[2]->addAction(unmatch);
    List3[2]->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto* column = new QVBoxLayout(pane);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(buttons);
    column->addWidget(labelFor(List3[2], tr("Matchin&g fields:"), pane));
    column->addWidget(List3[2], 1);
    return pane;
}

QWidget* CopyTab::buildResult()
{
    auto* row = new QWidget(this);
    Label3[2] = heading(row, {});
    Label3[2]->setObjectName("Label3_2");
    Label3[2]->setAccessibleName(tr("Result of the copy"));
    QSizePolicy keepsPlace = Label3[2]->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    Label3[2]->setSizePolicy(keepsPlace);
    Label3[2]->hide();
    ClearCopyLogBtn =
        button(row, "ClearCopyLogBtn", tr("Clear Copy Log"), "Remove all Records in the Copy Log",
               "edit-clear-history", QStyle::SP_DialogResetButton);
    CopyBtn = button(row, "CopyBtn", tr("&Begin Copy"), "Copy the Selected Database File",
                     "edit-copy", QStyle::SP_DialogOkButton);
    CopyBtn->setEnabled(false);

    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(Label3[2], 1);
    line->addWidget(ClearCopyLogBtn);
    line->addWidget(CopyBtn);
    return row;
}

void CopyTab::connectControls()
{
    const auto onClick = [this](QPushButton* pressed, void (CopyTab::*procedure)()) {
        connect(pressed, &QPushButton::clicked, this, edge(this, procedure));
    };
    onClick(OpenFromBtn, &CopyTab::OpenFromBtn_Click);
    onClick(CloseFromBtn, &CopyTab::CloseFromBtn_Click);
    onClick(OpenToBtn, &CopyTab::OpenToBtn_Click);
    onClick(CloseToBtn, &CopyTab::CloseToBtn_Click);
    onClick(SelectBtn, &CopyTab::SelectBtn_Click);
    onClick(SelectAllBtn, &CopyTab::SelectAllBtn_Click);
    onClick(CancelBtn, &CopyTab::CancelBtn_Click);
    onClick(CopyBtn, &CopyTab::CopyBtn_Click);
    onClick(ClearCopyLogBtn, &CopyTab::ClearCopyLogBtn_Click);
    connect(CHKCPYQRY, &QCheckBox::clicked, this, edge(this, &CopyTab::CHKCPYQRY_Click));
    for (int index : {0, 1})
        connect(CMBRECORD[index], &QComboBox::activated, this,
                edge(this, &CopyTab::CMBRECORD_Click, index));
}

void CopyTab::showEmptyStates()
{
    CloseFromBtn->setEnabled(!Label3[0]->isHidden());
    CloseToBtn->setEnabled(!Label3[1]->isHidden());
    for (int index : {0, 1}) {
        if (Label3[index]->isHidden() || Label3[index]->text().isEmpty())
            List3[index]->setEmptyText(index == 0
                                           ? tr("No file open. Open a From file to see its fields.")
                                           : tr("No file open. Open a To file to see its fields."));
        else
            List3[index]->setEmptyText(tr("No fields. The file or its table could not be opened."));
    }
    List3[2]->setEmptyText(
        tr("No fields matched yet. Highlight a field on each side and press Match Pair, "
           "or press Match All."));
}

}  // namespace velnor
