// windows/tool_set.h - the tools of one window by name, as its menus and toolbars show them.
//
// A name stands for one QAction, however many menus and toolbars hold it. While clicks are off, a
// click runs nothing: a tree that is being built must not answer its own selection.
#pragma once

#include <QHash>
#include <QIcon>
#include <QList>
#include <QObject>

#include "core/tool_row.h"

class QAction;
class QActionGroup;
class QMenu;
class QToolBar;
class QWidget;

namespace velnor {

class ToolSet : public QObject {
    Q_OBJECT
public:
    explicit ToolSet(QWidget* window);

    /// Adds a tool, or gives the one that stands under this name.
    QAction* add(const ToolRow& row);
    void fill(QToolBar& bar, const QList<ToolRow>& rows);
    void fill(QMenu& menu, const QList<ToolRow>& rows);

    /// Takes up what another part made, a menu for instance, so that it can be switched by name.
    void adopt(const QString& id, QAction* action);

    QAction* find(const QString& id) const { return actions_.value(id); }
    bool contains(const QString& id) const { return actions_.contains(id); }
    QStringList ids() const { return actions_.keys(); }

    /// On or off. A tool without a procedure stays off; a name that no tool has is passed over.
    void enable(const QString& id, bool on);
    bool enabled(const QString& id) const;
    /// Why a tool can never be on for now; empty when it can.
    QString whyOff(const QString& id) const { return rows_.value(id).whyOff; }
    /// Presses a tool of a group without running it.
    void press(const QString& id);
    bool pressed(const QString& id) const;
    /// Runs a tool as a click does: not while it or all clicks are off.
    void click(const QString& id);

    bool clicksOff = false;

private:
    void run(const ToolRow& row);

    QWidget* window_;
    QHash<QString, QAction*> actions_;
    QHash<QString, ToolRow> rows_;
    QHash<QString, QActionGroup*> groups_;
};

/// The icon of a name: our own picture, or the theme's.
QIcon toolIcon(const QString& name);

}  // namespace velnor
