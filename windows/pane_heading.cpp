#include "windows/pane_heading.h"

#include <QHBoxLayout>
#include <QLabel>

namespace velnor {

PaneHeading::PaneHeading(const QString& text, QWidget* end, QWidget* parent) : QFrame(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 2, 4, 2);
    label_ = new QLabel(text, this);
    label_->setTextFormat(Qt::PlainText);
    QFont bold = label_->font();
    bold.setBold(true);
    label_->setFont(bold);
    row->addWidget(label_, 1);
    if (end)
        row->addWidget(end);
    setFixedHeight(qMax(sizeHint().height(), fontMetrics().height() + 10));
}

void PaneHeading::setText(const QString& text)
{
    label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);  // however long
    label_->setText(text);
}

void PaneHeading::setBuddy(QWidget* pane)
{
    label_->setBuddy(pane);
}

}  // namespace velnor
