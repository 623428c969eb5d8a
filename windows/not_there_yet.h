// windows/not_there_yet.h - tools and places whose work is still to come: they stand where they
// will be, and say so.
#pragma once

#include "core/main_tab.h"
#include "core/tool_row.h"

namespace velnor {

/// A tool that stays off; its tip says with what it comes.
inline ToolRow notThereYet(const QString& id, const QString& text, const QString& icon,
                           const QString& with, const QString& tip = {})
{
    ToolRow row{id, text, tip, {}, icon};
    row.whyOff = QStringLiteral("Not there yet: it comes with %1.").arg(with);
    return row;
}

/// A tab that says what will be on it.
class ComingTab : public MainTab {
    Q_OBJECT
public:
    ComingTab(const QString& caption, const QString& icon, const QString& words,
              QList<ToolRow> rows, QWidget* parent = nullptr);
    QString caption() const override { return caption_; }
    QList<ToolRow> tools() override { return rows_; }

private:
    QString caption_;
    QList<ToolRow> rows_;
};

}  // namespace velnor
