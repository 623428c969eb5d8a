// core/main_tab.h - what a workspace brings to the main window: its caption, its tools, and what
// happens when people come and go. The window itself knows no command of any workspace.
#pragma once

#include <QList>
#include <QString>
#include <QWidget>

#include "core/tool_row.h"

namespace velnor {

class MainTab : public QWidget {
    Q_OBJECT
public:
    explicit MainTab(QWidget* parent = nullptr);
    ~MainTab() override;

    /// The text on the tab strip.
    virtual QString caption() const = 0;
    /// The tools of this tab, in the order in which its toolbar shows them.
    virtual QList<ToolRow> tools() { return {}; }
    /// The tab has come to the front.
    virtual void entered() {}
    /// Another tab is about to come to the front.
    virtual void left() {}

signals:
    /// What is going on, for the status bar.
    void statusText(const QString& text);
};

}  // namespace velnor
