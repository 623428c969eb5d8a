#include "core/main_tab.h"

namespace velnor {

MainTab::MainTab(QWidget* parent) : QWidget(parent) {}
MainTab::~MainTab() = default;

}  // namespace velnor
