#include "windows/data_strip.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QToolButton>

namespace velnor {

using namespace Qt::StringLiterals;

DataStrip::DataStrip(QWidget* parent) : QWidget(parent)
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 2);
    row->setSpacing(2);
    firstBtn = button(u"Data1_First"_s, u"go-first"_s, tr("First record"));
    previousBtn = button(u"Data1_Previous"_s, u"go-previous"_s, tr("Previous record"));
    label_ = new QLabel(this);
    label_->setObjectName(u"Data1_Caption"_s);
    label_->setAlignment(Qt::AlignCenter);
    label_->setTextFormat(Qt::PlainText);
    label_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    nextBtn = button(u"Data1_Next"_s, u"go-next"_s, tr("Next record"));
    lastBtn = button(u"Data1_Last"_s, u"go-last"_s, tr("Last record"));
    row->addWidget(firstBtn);
    row->addWidget(previousBtn);
    row->addWidget(label_, 1);
    row->addWidget(nextBtn);
    row->addWidget(lastBtn);
}

QToolButton* DataStrip::button(const QString& name, const QString& icon, const QString& tip)
{
    auto* made = new QToolButton(this);
    made->setObjectName(name);
    made->setIcon(QIcon::fromTheme(icon));
    made->setToolTip(tip);
    made->setAccessibleName(tip);
    made->setAutoRaise(true);
    return made;
}

void DataStrip::setCaption(const QString& caption)
{
    caption_ = caption;
    showCaption();
}

void DataStrip::showCaption()
{
    label_->setText(label_->fontMetrics().elidedText(caption_, Qt::ElideRight, label_->width()));
    label_->setToolTip(caption_);
    label_->setAccessibleName(caption_);
}

void DataStrip::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showCaption();
}

void DataStrip::setMoving(bool possible)
{
    for (QToolButton* each : {firstBtn, previousBtn, nextBtn, lastBtn})
        each->setEnabled(possible);
}

}  // namespace velnor
