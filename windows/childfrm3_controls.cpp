// The controls of the data entry window: its tools, and a row for each field of the table.
#include <QAction>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QToolBar>
#include <QVBoxLayout>

#include "core/attempt.h"
#include "core/colors.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "core/twips.h"
#include "core/upcalls.h"
#include "windows/bound_field.h"
#include "windows/childfrm3.h"
#include "windows/entry_fields.h"
#include "windows/entry_pane.h"
#include "windows/mdiform1.h"
#include "windows/paint_colors.h"
#include "windows/recordset_model.h"
#include "windows/tool_set.h"

namespace velnor {

using namespace Qt::StringLiterals;

void ChildFrm3::buildControls()
{
    setObjectName(u"ChildFrm3"_s);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    buildTools();
    pane = new EntryPane(this);
    new QGridLayout(pane->Frame1);
    column->addWidget(pane, 1);
}

void ChildFrm3::buildTools()
{
    ToolBarComp1 = new ToolSet(this);
    const auto tool = [this](const char* id, const QString& text, const QString& tip,
                             const QString& icon, const char* keys) {
        const QString name = QString::fromLatin1(id);
        return ToolRow{name, text,
                       tip,  [this, name] { ToolBarComp1_Click(name); },
                       icon, QKeySequence(QString::fromLatin1(keys))};
    };
    auto* bar = new QToolBar(this);
    bar->setObjectName(u"ToolBarComp1"_s);
    bar->setIconSize({20, 20});
    ToolBarComp1->fill(
        *bar,
        {tool("ID_AddRecord", tr("&Add"), u"Add New Record to Table"_s, u"list-add"_s, "Ctrl+N"),
         tool("ID_SaveRecord", tr("&Save"), u"Save current Record in Table"_s, u"document-save"_s,
              "Ctrl+S"),
         tool("ID_DeleteRecord", tr("&Delete"), u"Delete current Record in Table"_s,
              u"edit-delete"_s, "Ctrl+D"),
         toolLine(),
         tool("ID_FirstRecord", tr("&First"), tr("First record"), u"go-first"_s, "Ctrl+Shift+PgUp"),
         tool("ID_PreviousRecord", tr("&Previous"), tr("Previous record"), u"go-previous"_s,
              "Ctrl+PgUp")});
    ID_DataPosition = new QLabel(bar);
    ID_DataPosition->setObjectName(u"ID_DataPosition"_s);
    ID_DataPosition->setToolTip(u"Position of Record in Table"_s);
    ID_DataPosition->setAlignment(Qt::AlignCenter);
    ID_DataPosition->setMinimumWidth(
        fontMetrics().horizontalAdvance(u"Record %Position: 100.00000"_s));
    bar->addWidget(ID_DataPosition);
    ToolBarComp1->fill(
        *bar,
        {tool("ID_NextRecord", tr("&Next"), tr("Next record"), u"go-next"_s, "Ctrl+PgDown"),
         tool("ID_LastRecord", tr("&Last"), tr("Last record"), u"go-last"_s, "Ctrl+Shift+PgDown"),
         toolLine(),
         tool("ID_Refresh", tr("&Refresh"), tr("Read the table again (Paradox tables)"),
              u"view-refresh"_s, ""),
         {u"ID_Help"_s, tr("&Help"), tr("Help with data entry"),
          [] { upcalls().ShowHelp(u"data-entry"_s); }, u"help-contents"_s}});
    // Two of these windows may be open: each answers its own keys only.
    for (QAction* action : bar->actions()) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
    layout()->addWidget(bar);
}

void ChildFrm3::clearEntryFields()
{
    for (BoundField* field : bound_)
        Data1.unbind(*field);
    qDeleteAll(bound_);
    bound_.clear();
    for (QWidget* box : Text1)
        delete box;
    qDeleteAll(CHKLOGIC);
    qDeleteAll(Label1);
    Text1.clear();
    CHKLOGIC.clear();
    Label1.clear();
}

void ChildFrm3::BuildEntryFields()
{
    auto& G = globals();
    const Outcome built = attempt([&] {
        clearEntryFields();
        delete pane->Frame1->layout();
        auto* grid = new QGridLayout(pane->Frame1);
        grid->setContentsMargins(12, 10, 12, 10);
        grid->setColumnStretch(1, 1);
        Collection<Field>& fields = Data1.Recordset().Fields();
        const int count = qMin<int>(G.FIELD_COUNT, kMostEntryFields);
        for (int i = 0; i < count; ++i)
            for (int at = 0; at < fields.Count(); ++at)
                if (fromUtf8(fields.Item(at).Name()) == G.FIELD_NAMES[i])
                    addEntryRow(i, at, fields.Item(at).def());
        grid->setRowStretch(grid->rowCount(), 1);
        if (!bound_.isEmpty())
            setFocusProxy(bound_.first()->box());
        for (BoundField* field : bound_)
            field->show(Data1.Recordset());
    });
    for (BoundField* field : bound_)
        field->setWritable(writable_);
    applyOptions();
    if (built)
        return;
    if (built.number == static_cast<int>(EngineErrorNumber::NoCurrentRecord))
        prompt().tell(this, u" No Records in File - "_s + source_.fileName +
                                u" - Copy Records into Table or Pack / Compact Table and Add New "
                                "Records."_s);
    else
        prompt().tell(this,
                      u"Error - %1 - %2"_s.arg(QString::number(built.number), built.description));
    closing_ = true;
    if (isVisible())
        unloadSoon();
}

void ChildFrm3::addEntryRow(int number, int position, const FieldDef& field)
{
    const EntryBox look = entryBox(static_cast<int>(field.type), field.size);
    if (look.kind == EntryKind::None)
        return;
    const QString name = fromUtf8(field.name);
    auto* grid = static_cast<QGridLayout*>(pane->Frame1->layout());
    QWidget* box = nullptr;
    if (look.kind == EntryKind::Check) {
        auto* check = new QCheckBox(QString(name).replace(u'&', u"&&"_s), pane->Frame1);
        check->setObjectName(u"CHKLOGIC_%1"_s.arg(CHKLOGIC.size()));
        CHKLOGIC << check;
        box = check;
    } else {
        QString least(12, u'0');  // what a narrow box has to show in any type
        if (look.kind == EntryKind::Memo) {
            auto* memo = new QPlainTextEdit(pane->Frame1);
            memo->setTabChangesFocus(true);
            memo->setFixedHeight(qMax(toPixels(look.height), memo->fontMetrics().height() * 5));
            box = memo;
        } else {
            auto* line = new QLineEdit(pane->Frame1);
            if (look.maxLength > 0)
                line->setMaxLength(look.maxLength);
            least = least.left(look.maxLength > 0 ? look.maxLength : 12);
            box = line;
        }
        const int needed = box->fontMetrics().horizontalAdvance(least) + 20;
        if (look.width > 0)
            box->setMinimumWidth(qMax(toPixels(look.width), needed));
        if (look.kind == EntryKind::Line && look.width > 0)
            box->setMaximumWidth(box->minimumWidth());
        box->setObjectName(u"Text1_%1"_s.arg(Text1.size()));
        auto* label = new QLabel(name + u':', pane->Frame1);
        label->setTextFormat(Qt::PlainText);
        label->setObjectName(u"Label1_%1"_s.arg(Label1.size()));
        grid->addWidget(label, number, 0,
                        Qt::AlignRight |
                            (look.kind == EntryKind::Memo ? Qt::AlignTop : Qt::AlignVCenter));
        Text1 << box;
        Label1 << label;
    }
    box->setAccessibleName(name);
    box->setToolTip(fieldTypeTip(field));
    box->setAccessibleDescription(box->toolTip());
    box->installEventFilter(this);
    grid->addWidget(box, number, 1, look.kind == EntryKind::Memo ? Qt::Alignment() : Qt::AlignLeft);
    const bool mayBeNull = source_.type != u"MDB";  // there yes or no is always decided
    bound_ << new BoundField(box, position, field, mayBeNull);
    Data1.bind(*bound_.last());
}

void ChildFrm3::applyOptions()
{
    const auto& G = globals();
    paintSurface(*pane, {G.ENTRY_WINDOW_BACK_COLOR, G.ENTRY_WINDOW_TEXT_COLOR});
    for (QWidget* box : Text1) {
        paintField(*box, {G.ENTRY_BACK_COLOR, G.ENTRY_TEXT_COLOR});
        useBoldOption(*box);
    }
}

}  // namespace velnor
