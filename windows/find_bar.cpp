#include "windows/find_bar.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

namespace velnor {

using namespace Qt::StringLiterals;

FindBar::FindBar(QWidget* parent) : QWidget(parent)
{
    setObjectName(u"FindBar"_s);
    auto* label = new QLabel(tr("Fin&d:"), this);
    words = new QLineEdit(this);
    words->setObjectName(u"FindText"_s);
    words->setClearButtonEnabled(true);
    label->setBuddy(words);
    nextBtn = new QToolButton(this);
    nextBtn->setObjectName(u"FindNextBtn"_s);
    nextBtn->setIcon(QIcon::fromTheme(u"go-down-search"_s));
    nextBtn->setToolTip(tr("Find next (F3)"));
    nextBtn->setAccessibleName(nextBtn->toolTip());
    nextBtn->setAutoRaise(true);
    answer_ = new QLabel(this);
    answer_->setObjectName(u"FindAnswer"_s);
    answer_->setMinimumWidth(fontMetrics().averageCharWidth() * 24);
    auto* closeBtn = new QToolButton(this);
    closeBtn->setIcon(QIcon::fromTheme(u"window-close"_s));
    closeBtn->setToolTip(tr("Close (Esc)"));
    closeBtn->setAccessibleName(closeBtn->toolTip());
    closeBtn->setAutoRaise(true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 2, 4, 2);
    row->addWidget(label);
    row->addWidget(words, 1);
    row->addWidget(nextBtn);
    row->addWidget(answer_);
    row->addWidget(closeBtn);
    connect(words, &QLineEdit::returnPressed, this, &FindBar::findNext);
    connect(words, &QLineEdit::textEdited, this, [this] { say({}); });
    connect(nextBtn, &QToolButton::clicked, this, &FindBar::findNext);
    connect(closeBtn, &QToolButton::clicked, this, &FindBar::closed);
    hide();
}

void FindBar::open()
{
    show();
    words->setFocus();
    words->selectAll();
}

QString FindBar::text() const
{
    return words->text();
}

void FindBar::say(const QString& answer)
{
    answer_->setText(answer);
    answer_->setAccessibleName(answer);
}

QString FindBar::answer() const
{
    return answer_->text();
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        emit closed();
    else
        QWidget::keyPressEvent(event);
}

}  // namespace velnor
