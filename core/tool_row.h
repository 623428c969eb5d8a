// core/tool_row.h - one tool: the name it is known by, what people see of it, and what it runs.
#pragma once

#include <functional>

#include <QKeySequence>
#include <QString>

namespace velnor {

struct ToolRow {
    QString id;    ///< "ID_OpenBtn"; empty: a line between two tools
    QString text;  ///< "&Open..."
    QString tip;
    /// Empty: the tool stands there, is off, and its tip gives `whyOff`.
    std::function<void()> procedure = {};
    QString icon = {};  ///< a name of the icon theme, or ":/velnor/icons/name.svg"
    QKeySequence key = {};
    QString whyOff = {};
    /// Tools of one group are pressed one at a time; empty: a plain push.
    QString group = {};
};

inline ToolRow toolLine()
{
    return {};
}

}  // namespace velnor
