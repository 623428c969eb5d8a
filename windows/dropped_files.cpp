#include "windows/dropped_files.h"

#include <QMimeData>
#include <QUrl>

#include "core/attempt.h"
#include "core/upcalls.h"
#include "platform/host.h"

namespace velnor {

QStringList droppedFiles(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile() && host().paths)
            attempt([&] {
                files << QString::fromStdString(
                    host().paths->toProgram(url.toLocalFile().toStdString()));
            });
    return files;
}

void openDroppedFiles(const QMimeData& data)
{
    for (const QString& file : droppedFiles(data)) {
        const Outcome shown = attempt([&] { upcalls().DisplayFile(file); });
        if (!shown)
            tellUnexpected(shown);
    }
}

}  // namespace velnor
