#include "windows/entry_pane.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QScrollBar>
#include <QWheelEvent>

namespace velnor {

using namespace Qt::StringLiterals;

namespace {
constexpr int kPercent = 100;
}

EntryPane::EntryPane(QWidget* parent) : QWidget(parent)
{
    view_ = new QWidget(this);
    Frame1 = new QWidget(view_);
    Frame1->setObjectName(u"Frame1"_s);
    Frame1->installEventFilter(this);
    view_->installEventFilter(this);
    VScroll1 = new QScrollBar(Qt::Vertical, this);
    VScroll1->setObjectName(u"VScroll1"_s);
    VScroll1->setAccessibleName(tr("Fields"));
    VScroll1->setRange(0, kPercent);
    VScroll1->setSingleStep(5);
    VScroll1->setEnabled(false);
    connect(VScroll1, &QScrollBar::valueChanged, this, &EntryPane::VScroll1_Change);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(view_, 1);
    row->addWidget(VScroll1);
}

int EntryPane::hiddenHeight() const
{
    return qMax(0, Frame1->height() - view_->height());
}

void EntryPane::VScroll1_Change()
{
    Frame1->move(0, -hiddenHeight() * VScroll1->value() / kPercent);
}

/// Keeps the bottom of Frame1 in the window, however high that is.
void EntryPane::arrange()
{
    const int high = qMax(Frame1->sizeHint().height(), view_->height());
    Frame1->resize(view_->width(), high);
    const bool hides = hiddenHeight() > 0;
    VScroll1->setEnabled(hides);
    VScroll1->setMaximum(hides ? kPercent : 0);  // its handle fills it while all is seen
    VScroll1->setPageStep(qMax(1, kPercent * view_->height() / qMax(1, high)));
    if (!hides)
        VScroll1->setValue(0);
    VScroll1_Change();
}

void EntryPane::reveal(const QWidget& control)
{
    const int hidden = hiddenHeight();
    if (hidden == 0)
        return;
    const int top = control.mapTo(view_, QPoint(0, 0)).y();
    const int bottom = top + control.height();
    const int step = top < 0 ? top : qMax(0, bottom - view_->height());
    if (step == 0)
        return;
    const int wanted = -Frame1->y() + step;
    // Rounded away from where it stands, so that the control is whole.
    VScroll1->setValue(step > 0 ? (wanted * kPercent + hidden - 1) / hidden
                                : wanted * kPercent / hidden);
}

bool EntryPane::eventFilter(QObject* watched, QEvent* event)
{
    const bool sized = watched == view_ && event->type() == QEvent::Resize;
    const bool filled = watched == Frame1 && event->type() == QEvent::LayoutRequest;
    if (sized || filled)
        arrange();
    return QWidget::eventFilter(watched, event);
}

void EntryPane::wheelEvent(QWheelEvent* event)
{
    if (hiddenHeight() == 0)
        return;
    VScroll1->setValue(VScroll1->value() - event->angleDelta().y() / 8);
    event->accept();
}

}  // namespace velnor
