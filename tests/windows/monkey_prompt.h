// tests/windows/monkey_prompt.h - a prompt that answers at random: for runs in which nobody knows
// what will be asked. Files that it names lie in "C:\data".
#pragma once

#include <functional>
#include <random>

#include <QDialog>

#include "core/prompt.h"

namespace velnor::testing {

class MonkeyPrompt final : public Prompt {
public:
    MonkeyPrompt(std::mt19937& random, QStringList files)
        : random_(random), files_(std::move(files))
    {
        setPrompt(this);
    }
    ~MonkeyPrompt() override { setPrompt(nullptr); }

    /// Plays with a dialog before it is answered.
    std::function<void(QDialog&)> play = [](QDialog&) {};
    int messages = 0;
    int questions = 0;

    void tell(QWidget*, const QString&, const QString&) override { ++messages; }
    bool ask(QWidget*, const QString&, const QString&) override
    {
        ++questions;
        return random_() % 2;
    }
    std::optional<QStringList> file(QWidget*, FileQuestion& question) override
    {
        ++questions;
        if (random_() % 4 == 0)
            return std::nullopt;
        if (question.save)
            return QStringList{newName(question)};
        return QStringList{files_[static_cast<qsizetype>(random_()) % files_.size()]};
    }
    int run(QDialog& dialog) override
    {
        ++questions;
        dialog.show();
        play(dialog);
        const int result = random_() % 2 ? QDialog::Accepted : QDialog::Rejected;
        dialog.done(result);
        return result;
    }

private:
    /// A copy keeps its kind: what is checked in the end is by extension. It may go over a file
    /// that stands there, also one that is open, or over itself.
    QString newName(const FileQuestion& question)
    {
        const QString extension =
            question.defaultExtension.isEmpty() ? QStringLiteral("mdb") : question.defaultExtension;
        const QString& standing = files_[static_cast<qsizetype>(random_()) % files_.size()];
        if (standing.endsWith(u'.' + extension, Qt::CaseInsensitive))
            return standing;
        return QStringLiteral("C:\\data\\new%1.%2").arg(random_() % 5).arg(extension);
    }

    std::mt19937& random_;
    QStringList files_;
};

}  // namespace velnor::testing
