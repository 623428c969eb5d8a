#include "windows/tool_set.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QToolBar>

#include "core/attempt.h"

/// The pictures lie in a library: without this the linker leaves them out.
static void loadIcons()
{
    Q_INIT_RESOURCE(icons);
}

namespace velnor {

using namespace Qt::StringLiterals;

QIcon toolIcon(const QString& name)
{
    if (name.isEmpty())
        return {};
    if (name.startsWith(u':'))
        return QIcon(name);
    return QIcon::fromTheme(name);
}

namespace {

/// "&Open..." without what only a menu shows.
QString plainText(QString text)
{
    text.remove(u'&');
    if (text.endsWith(u"..."))
        text.chop(3);
    return text;
}

QString tipOf(const ToolRow& row)
{
    QString tip = row.tip.isEmpty() ? plainText(row.text) : row.tip;
    if (!row.procedure && !row.whyOff.isEmpty())
        tip += u"\n"_s + row.whyOff;
    return tip;
}

}  // namespace

ToolSet::ToolSet(QWidget* window) : QObject(window), window_(window)
{
    loadIcons();
}

QAction* ToolSet::add(const ToolRow& row)
{
    if (QAction* known = actions_.value(row.id))
        return known;

    auto* action = new QAction(toolIcon(row.icon), row.text, window_);
    action->setObjectName(row.id);
    action->setIconText(plainText(row.text));
    const QString tip = tipOf(row);
    action->setToolTip(row.key.isEmpty()
                           ? tip
                           : tip + u" ("_s + row.key.toString(QKeySequence::NativeText) + u")"_s);
    action->setStatusTip(QString(tip).replace(u"\n"_s, u" - "_s));
    action->setEnabled(bool(row.procedure));
    if (!row.key.isEmpty())
        action->setShortcut(row.key);
    if (!row.group.isEmpty()) {
        QActionGroup*& group = groups_[row.group];
        if (!group)
            group = new QActionGroup(window_);
        action->setCheckable(true);
        group->addAction(action);
    }
    connect(action, &QAction::triggered, this, [this, row] { run(row); });
    actions_.insert(row.id, action);
    rows_.insert(row.id, row);
    return action;
}

void ToolSet::adopt(const QString& id, QAction* action)
{
    ToolRow row;
    row.id = id;
    row.procedure = [] {};
    actions_.insert(id, action);
    rows_.insert(id, row);
}

void ToolSet::fill(QToolBar& bar, const QList<ToolRow>& rows)
{
    for (const ToolRow& row : rows)
        if (row.id.isEmpty())
            bar.addSeparator();
        else
            bar.addAction(add(row));
}

void ToolSet::fill(QMenu& menu, const QList<ToolRow>& rows)
{
    menu.setToolTipsVisible(true);
    for (const ToolRow& row : rows)
        if (row.id.isEmpty())
            menu.addSeparator();
        else
            menu.addAction(add(row));
}

void ToolSet::run(const ToolRow& row)
{
    if (clicksOff || !row.procedure)
        return;
    const Outcome outcome = attempt(row.procedure);
    if (!outcome)
        tellUnexpected(outcome);
}

void ToolSet::enable(const QString& id, bool on)
{
    if (QAction* action = actions_.value(id))
        action->setEnabled(on && rows_[id].procedure);
}

bool ToolSet::enabled(const QString& id) const
{
    const QAction* action = actions_.value(id);
    return action && action->isEnabled();
}

void ToolSet::press(const QString& id)
{
    if (QAction* action = actions_.value(id))
        action->setChecked(true);
}

bool ToolSet::pressed(const QString& id) const
{
    const QAction* action = actions_.value(id);
    return action && action->isChecked();
}

void ToolSet::click(const QString& id)
{
    if (QAction* action = actions_.value(id))
        action->trigger();
}

}  // namespace velnor
