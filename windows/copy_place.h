// windows/copy_place.h - the copy workspace as a tab of the main window.
#pragma once

#include "core/main_tab.h"

namespace velnor {

class CopyTab;

class CopyPlace : public MainTab {
    Q_OBJECT
public:
    explicit CopyPlace(QWidget* parent = nullptr);

    QString caption() const override { return tr("Copy"); }
    QList<ToolRow> tools() override;
    void entered() override;
    CopyTab& tab() { return *tab_; }

private:
    CopyTab* tab_;
};

}  // namespace velnor
