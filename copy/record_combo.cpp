#include "copy/record_combo.h"

#include <QEvent>
#include <QLineEdit>

namespace velnor {

RecordCombo::RecordCombo(QWidget* parent) : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
    lineEdit()->setReadOnly(true);
    lineEdit()->installEventFilter(this);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
}

void RecordCombo::showPopup()
{
    if (count() > 0)
        QComboBox::showPopup();
}

bool RecordCombo::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == lineEdit() && event->type() == QEvent::MouseButtonPress && isEnabled()) {
        setFocus(Qt::MouseFocusReason);
        showPopup();
        return true;
    }
    return QComboBox::eventFilter(watched, event);
}

}  // namespace velnor
