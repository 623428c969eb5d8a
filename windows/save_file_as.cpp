#include "windows/save_file_as.h"

#include <algorithm>

#include "access/routing.h"
#include "core/attempt.h"
#include "core/file_commands.h"
#include "core/prompt.h"
#include "core/wait_pointer.h"
#include "core/window_list.h"
#include "platform/host.h"
#include "platform/paths.h"
#include "platform/run_error.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

const QString kMustBeClosed = u"Window Displaying Database File must be Closed to Save Table - "_s;

bool stands(const QString& path)
{
    return host().files->fileExists(path.toStdString());
}

/// What stands under the target's name stays until the copy is whole.
void copyCompanion(const QString& from, const QString& to)
{
    if (stands(from))
        attempt([&] { copyFile(from, to); });  // one that fails isn't reported
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

QString nativeOf(const QString& path)
{
    const std::string full = fullPath(path).toStdString();
    return QString::fromStdString(host().paths ? host().paths->toNative(full) : full);
}

bool isSameFile(const QString& a, const QString& b)
{
    return paths::sameName(fullPath(a).toStdString(), fullPath(b).toStdString()) ||
           nativeOf(a) == nativeOf(b);
}

/// The windows that show a file close: they would go on with what is no longer there. False when
/// one of them holds a record that could not be saved.
bool closeWindowsOf(const QString& file)
{
    const auto shows = [&](const QString& caption) {
        return caption == file || caption.startsWith(file + u'@') ||
               caption.startsWith(file + u" - DATA ENTRY - "_s);
    };
    for (const QString& caption : openCaptions().mid(1))
        if (shows(caption))
            CloseWindowOfFile(caption, kMustBeClosed);
    const QStringList left = openCaptions().mid(1);
    return std::none_of(left.begin(), left.end(), shows);
}

/// A file is never copied onto itself, and nothing is replaced when there is nothing to copy.
bool copyWithCompanions(const QString& source, const QString& target, const QString& type,
                        QWidget* parent)
{
    const WaitPointer wait;
    bool copied = stands(source) && !isSameFile(source, target) && closeWindowsOf(target);
    if (copied) {
        if (type == u"DBF" || type == u"DB")
            CloseWindowOfFile(source, kMustBeClosed);
        copyCompanions(source, target, type);
        copied = bool(attempt([&] { copyFile(source, target); }));
    }
    if (!copied)
        prompt().tell(parent, u"Error Copying File - "_s + target);
    return copied;
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
