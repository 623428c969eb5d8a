#include "windows/copy_place.h"

#include <QCheckBox>
#include <QLabel>
#include <QVBoxLayout>

#include "copy/copy_tab.h"
#include "copy/line_list.h"
#include "core/globals.h"
#include "core/text.h"
#include "windows/not_there_yet.h"

namespace velnor {

using namespace Qt::StringLiterals;

CopyPlace::CopyPlace(QWidget* parent) : MainTab(parent)
{
    tab_ = new CopyTab(this);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(tab_);
    connect(tab_, &CopyTab::statusText, this, &MainTab::statusText);
}

QList<ToolRow> CopyPlace::tools()
{
    static const QHash<QString, QString> icons{
        {u"ID_mnuSelectCopyFrFile"_s, u"document-open"_s},
        {u"ID_mnuSelectCopyToFile"_s, u"document-open-folder"_s},
        {u"ID_mnuAutoMatchFields"_s, u"edit-select-all"_s},
        {u"ID_mnuHelpwithCopy"_s, u"help-contents"_s},
    };
    QList<ToolRow> rows;
    for (const CopyCommand& command : tab_->commands()) {
        ToolRow row = notThereYet(command.id, command.text, icons.value(command.id),
                                  u"the manual"_s, command.tip);
        row.procedure = command.procedure;
        if (row.procedure)
            row.whyOff.clear();
        rows << row;
    }
    return rows;
}

void CopyPlace::entered()
{
    auto& G = globals();
    tab_->Label3[2]->hide();
    if (tab_->List3[0]->count() == 0 && !text::trim(G.WORK_FILE).isEmpty()) {
        tab_->SetCopyFromFile();
        tab_->LoadCopyFields(0);
    }
    tab_->CHKCPYQRY->setEnabled(G.QUERYRUN_FLG);
}

}  // namespace velnor
