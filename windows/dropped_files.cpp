#include "windows/dropped_files.h"

#include "core/attempt.h"
#include "core/dropped_files.h"
#include "core/upcalls.h"

namespace velnor {

void openDroppedFiles(const QMimeData& data)
{
    for (const QString& file : droppedFiles(data)) {
        const Outcome shown = attempt([&] { upcalls().DisplayFile(file); });
        if (!shown)
            tellUnexpected(shown);
    }
}

}  // namespace velnor
