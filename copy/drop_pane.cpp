#include "copy/drop_pane.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

#include "access/routing.h"
#include "platform/host.h"

namespace velnor {
namespace {

/// The one local file of a drag, in the program's form; empty for anything else.
QString onlyFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    const std::string native = urls.first().toLocalFile().toStdString();
    return QString::fromStdString(host().paths->toProgram(native));
}

/// Why a drop is not taken; empty when it is.
QString whyNot(const QMimeData& data)
{
    const QString path = onlyFile(data);
    if (path.isEmpty())
        return DropPane::tr("Drop one file at a time.");
    if (SetDatabaseType(path).isEmpty())
        return DropPane::tr("Only DBF, DB, MDB, XLS and WK4 files can be copied.");
    return {};
}

}  // namespace

DropPane::DropPane(QWidget* parent) : QWidget(parent)
{
    setAcceptDrops(true);
}

void DropPane::dragEnterEvent(QDragEnterEvent* event)
{
    if (!event->mimeData()->hasUrls())
        return;
    const QString why = whyNot(*event->mimeData());
    if (!why.isEmpty()) {
        emit refused(why);
        return;
    }
    light(true);
    event->acceptProposedAction();
}

void DropPane::dragLeaveEvent(QDragLeaveEvent*)
{
    light(false);
}

void DropPane::dropEvent(QDropEvent* event)
{
    light(false);
    event->acceptProposedAction();
    emit dropped(onlyFile(*event->mimeData()));
}

void DropPane::light(bool on)
{
    lit_ = on;
    update();
}

void DropPane::paintEvent(QPaintEvent*)
{
    if (!lit_)
        return;
    QPainter painter(this);
    QColor glow = palette().color(QPalette::Highlight);
    painter.setPen(glow);
    glow.setAlpha(40);
    painter.setBrush(glow);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace velnor
