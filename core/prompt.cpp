#include "core/prompt.h"

#include <QDialog>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>

#include "core/attempt.h"
#include "core/file_types.h"
#include "core/text.h"
#include "platform/host.h"

namespace velnor {
namespace {

QString nativeOf(const QString& path)
{
    QString native;
    if (!path.isEmpty())
        attempt(
            [&] { native = QString::fromStdString(host().paths->toNative(path.toStdString())); });
    return native;
}

QString programOf(const QString& native)
{
    return QString::fromStdString(host().paths->toProgram(native.toStdString()));
}

/// Takes the wait pointer away while people are asked, and puts it back.
class AskingPointer {
public:
    AskingPointer() : busy_(QGuiApplication::overrideCursor() != nullptr)
    {
        if (busy_)
            QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~AskingPointer()
    {
        if (busy_)
            QGuiApplication::restoreOverrideCursor();
    }
    AskingPointer(const AskingPointer&) = delete;
    AskingPointer& operator=(const AskingPointer&) = delete;

private:
    bool busy_;
};

class DesktopPrompt final : public Prompt {
public:
    void tell(QWidget* parent, const QString& text, const QString& title) override
    {
        const AskingPointer pointer;
        QMessageBox box(QMessageBox::Information, title, shownText(text), QMessageBox::Ok, parent);
        box.setTextFormat(Qt::PlainText);
        box.exec();
    }

    bool ask(QWidget* parent, const QString& text, const QString& title) override
    {
        const AskingPointer pointer;
        QMessageBox box(QMessageBox::Question, title, shownText(text),
                        QMessageBox::Yes | QMessageBox::No, parent);
        box.setTextFormat(Qt::PlainText);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
        return box.exec() == QMessageBox::Yes;
    }

    std::optional<QStringList> file(QWidget* parent, FileQuestion& question) override;

    int run(QDialog& dialog) override
    {
        const AskingPointer pointer;
        return dialog.exec();
    }

private:
    std::optional<QStringList> chosenPaths(QFileDialog& dialog, FileQuestion& question);
    bool mayTake(QFileDialog& dialog, const FileQuestion& question, const QString& path);
};

void prepare(QFileDialog& dialog, const FileQuestion& question)
{
    dialog.setAcceptMode(question.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(question.save   ? QFileDialog::AnyFile
                       : question.many ? QFileDialog::ExistingFiles
                                       : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);  // asked in mayTake
    dialog.setDefaultSuffix(question.defaultExtension);
    if (const QString folder = nativeOf(question.folder); !folder.isEmpty())
        dialog.setDirectory(folder);

    const QStringList filters = dialogFilters(question.filter);
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        dialog.selectNameFilter(filters.value(question.filterIndex - 1, filters.first()));
    }
    const bool whole = question.fileName.contains(u'\\');
    if (!question.fileName.isEmpty())
        dialog.selectFile(whole ? nativeOf(question.fileName) : question.fileName);
}

/// Position of the chosen filter from 1. The dialog names it with or without its patterns.
int chosenFilter(const QFileDialog& dialog, const FileQuestion& question)
{
    const QString selected = dialog.selectedNameFilter();
    const QStringList filters = dialogFilters(question.filter);
    for (qsizetype i = 0; i < filters.size(); ++i)
        if (filters[i] == selected || filters[i].startsWith(selected + " ("))
            return static_cast<int>(i) + 1;
    return question.filterIndex;
}

/// A new name may differ from a file that stands there in case only: the dialog doesn't see that it
/// would be replaced, so the question is asked here.
bool DesktopPrompt::mayTake(QFileDialog& dialog, const FileQuestion& question, const QString& path)
{
    if (!question.save || !question.confirmOverwrite)
        return true;
    bool exists = false;
    attempt([&] { exists = host().files->exists(path.toStdString()); });
    return !exists ||
           ask(&dialog, path + " already exists. Do you want to replace it?", dialog.windowTitle());
}

std::optional<QStringList> DesktopPrompt::chosenPaths(QFileDialog& dialog, FileQuestion& question)
{
    QStringList chosen;
    const Outcome turned = attempt([&] {
        for (const QString& native : dialog.selectedFiles())
            chosen << programOf(native);
        question.folder = programOf(dialog.directory().absolutePath());
    });
    if (!turned) {
        tell(&dialog, "Error - " + QString::number(turned.number) + " - " + turned.description,
             kProgramTitle);
        return std::nullopt;
    }
    question.filterIndex = chosenFilter(dialog, question);
    return chosen;
}

std::optional<QStringList> DesktopPrompt::file(QWidget* parent, FileQuestion& question)
{
    const AskingPointer pointer;
    QFileDialog dialog(parent, shownText(question.title));
    prepare(dialog, question);
    while (dialog.exec() == QDialog::Accepted) {
        auto chosen = chosenPaths(dialog, question);
        if (!chosen || mayTake(dialog, question, chosen->value(0)))
            return chosen;
    }
    return std::nullopt;
}

Prompt* replacementPrompt = nullptr;

}  // namespace

Prompt& prompt()
{
    static DesktopPrompt real;
    return replacementPrompt ? *replacementPrompt : real;
}

void setPrompt(Prompt* replacement)
{
    replacementPrompt = replacement;
}

QString shownText(const QString& text)
{
    return text::ltrim(text);
}

}  // namespace velnor
