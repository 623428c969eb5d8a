#include "windows/document_child.h"

#include <QCloseEvent>
#include <QMdiSubWindow>
#include <QTimer>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/upcalls.h"
#include "platform/paths.h"
#include "windows/mdiform1.h"

namespace velnor {

DocumentChild::DocumentChild(MDIForm1& shell) : shell_(shell)
{
    entry_ =
        WindowEntry(OpenWindow{[this] { return caption(); }, [this] { shell_.bringToFront(this); },
                               [this] { mnuFileClose_Click(); }, this});
}

DocumentChild::~DocumentChild() = default;

QMdiSubWindow* DocumentChild::frame() const
{
    return qobject_cast<QMdiSubWindow*>(parentWidget());
}

void DocumentChild::setCaption(const QString& caption)
{
    caption_ = caption;
    const QString name =
        isWebAddress(caption) ? caption : fromUtf8(paths::fileName(caption.toStdString()));
    setWindowTitle(name);
}

void DocumentChild::mnuFileClose_Click()
{
    if (QMdiSubWindow* window = frame())
        window->close();
    else
        close();
}

void DocumentChild::mnuFileSaveAs_Click()
{
    upcalls().SaveFileAs(FILE_USE);
}

void DocumentChild::mnuFileOLE_Click()
{
    upcalls().OpenwithOLE(FILE_USE);
}

void DocumentChild::unloadSoon()
{
    QTimer::singleShot(0, this, [this] { mnuFileClose_Click(); });
}

void DocumentChild::closeEvent(QCloseEvent* event)
{
    if (!unloaded_ && !mayClose()) {
        event->ignore();
        return;
    }
    event->accept();
    if (unloaded_)
        return;
    unloaded_ = true;
    entry_ = {};
    const Outcome gone = attempt([this] { Form_Unload(); });
    if (!gone)
        tellUnexpected(gone);
}

}  // namespace velnor
