#include "windows/save_file_as.h"

#include <QCursor>

#include "access/routing.h"
#include "core/wait_pointer.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/prompt.h"
#include "core/window_list.h"
#include "platform/host.h"
#include "platform/run_error.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

bool stands(const QString& path)
{
    return host().files->fileExists(path.toStdString());
}

void copyCompanion(const QString& from, const QString& to)
{
    if (!stands(from))
        return;
    attempt([&] {  // one that fails isn't reported
        if (stands(to))
            removeFile(to);
        copyFileNew(from, to);
    });
}

void copyCompanions(const QString& source, const QString& target, const QString& type)
{
    const QStringList companions = type == u"DBF"  ? QStringList{u".DBT"_s, u".MDX"_s, u".CDX"_s}
                                   : type == u"DB" ? QStringList{u".PX"_s, u".MB"_s}
                                                   : QStringList{};
    const qsizetype cut = type.size() + 1;
    for (const QString& companion : companions)
        copyCompanion(source.chopped(cut) + companion, target.chopped(cut) + companion);
}

/// The name that was chosen; error 32755 is Cancel in the dialog.
QString askTarget(const QString& source, const QString& type, QWidget* parent)
{
    FileQuestion question;
    question.title = u"Enter New File Name for - "_s + source;
    question.fileName = source;
    question.filter = u"%1 Files|*.%1|All Files|*.*"_s.arg(type);
    question.defaultExtension = type;
    question.save = true;
    const auto chosen = prompt().file(parent, question);
    if (!chosen)
        throw RunError(static_cast<RunErrorNumber>(32755), "Cancel was selected.");
    return chosen->isEmpty() ? QString() : chosen->first();
}

bool copyWithCompanions(const QString& source, const QString& target, const QString& type,
                        QWidget* parent)
{
    const WaitPointer wait;
    if (stands(target))
        removeFile(target);
    if ((type == u"DBF" || type == u"DB") && openCaptions().contains(source))
        CloseWindowOfFile(source);
    copyCompanions(source, target, type);
    const Outcome copied = attempt([&] { copyFileNew(source, target); });
    if (!copied)
        prompt().tell(parent, u"Error Copying File - "_s + target);
    return bool(copied);
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): see the header
bool SaveFileAs(QString source, QWidget* parent)
{
    bool saved = false;
    const Outcome done = attempt([&] {
        const QString type = GetFileExtension(source);
        const QString target = askTarget(source, type, parent);
        if (!target.isEmpty())
            saved = copyWithCompanions(source, target, type, parent);
    });
    if (!done) {
        prompt().tell(parent, u"            File - "_s + source + u" Not Saved"_s);
        return false;
    }
    return saved;
}

}  // namespace velnor
