#include "core/dropped_files.h"

#include <QMimeData>
#include <QUrl>

#include "core/attempt.h"
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

}  // namespace velnor
