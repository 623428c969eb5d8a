#include "core/prompt.h"

#include <QDialog>
#include <QFileDialog>
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

class DesktopPrompt final : public Prompt {
public:
    void tell(QWidget* parent, const QString& text, const QString& title) override
    {
        QMessageBox box(QMessageBox::Information, title, shownText(text), QMessageBox::Ok, parent);
        box.setTextFormat(Qt::PlainText);
        box.exec();
    }

    bool ask(QWidget* parent, const QString& text, const QString& title) override
    {
        QMessageBox box(QMessageBox::Question, title, shownText(text),
                        QMessageBox::Yes | QMessageBox::No, parent);
        box.setTextFormat(Qt::PlainText);
        box.setDefaultButton(QMessageBox::Yes);
        box.setEscapeButton(QMessageBox::No);
        return box.exec() == QMessageBox::Yes;
    }

    std::optional<QStringList> file(QWidget* parent, FileQuestion& question) override;

    int run(QDialog& dialog) override { return dialog.exec(); }
};

void prepare(QFileDialog& dialog, const FileQuestion& question)
{
    dialog.setAcceptMode(question.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(question.save   ? QFileDialog::AnyFile
                       : question.many ? QFileDialog::ExistingFiles
                                       : QFileDialog::ExistingFile);
    dialog.setOption(QFileDialog::HideNameFilterDetails);
    dialog.setOption(QFileDialog::DontConfirmOverwrite, !question.confirmOverwrite);
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

std::optional<QStringList> DesktopPrompt::file(QWidget* parent, FileQuestion& question)
{
    QFileDialog dialog(parent, shownText(question.title));
    prepare(dialog, question);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    QStringList chosen;
    const Outcome turned = attempt([&] {
        for (const QString& native : dialog.selectedFiles())
            chosen << programOf(native);
        question.folder = programOf(dialog.directory().absolutePath());
    });
    if (!turned) {
        tell(parent, "Error - " + QString::number(turned.number) + " - " + turned.description,
             kProgramTitle);
        return std::nullopt;
    }
    question.filterIndex = chosenFilter(dialog, question);
    return chosen;
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
