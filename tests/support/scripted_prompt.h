// tests/support/scripted_prompt.h - a prompt that answers by a script and writes down what it was
// told. It is the prompt in force as long as it lives. A question that the script doesn't expect
// fails the test and is answered with no; an answer that nobody asked for fails it at the end.
#pragma once

#include <deque>
#include <functional>

#include "core/prompt.h"

namespace velnor::testing {

class ScriptedPrompt final : public Prompt {
public:
    ScriptedPrompt() { setPrompt(this); }
    ~ScriptedPrompt() override;

    // The script, in the order in which it is asked.
    /// The next Yes/No question must have this text.
    void expectQuestion(const QString& text, bool answer);
    /// The next file dialog gets these paths; no paths means cancelled. An empty title fits any.
    void expectFile(const QStringList& paths, const QString& title = {});
    /// The next modal dialog must bear this object name. `work` drives its controls; its result is
    /// the dialog's: QDialog::Accepted or Rejected.
    void expectDialog(const QString& objectName, std::function<int(QDialog&)> work);
    bool finished() const { return questions_.empty() && files_.empty() && dialogs_.empty(); }

    // What happened.
    QStringList told;  ///< texts of messages, with their leading blanks
    QStringList toldTitles;
    QStringList asked;  ///< texts of questions
    QList<FileQuestion> fileQuestions;
    QStringList dialogsRun;  ///< object names

    void tell(QWidget* parent, const QString& text, const QString& title) override;
    bool ask(QWidget* parent, const QString& text, const QString& title) override;
    std::optional<QStringList> file(QWidget* parent, FileQuestion& question) override;
    int run(QDialog& dialog) override;

private:
    struct Question {
        QString text;
        bool answer;
    };
    struct Files {
        QStringList paths;
        QString title;
    };
    struct Dialog {
        QString objectName;
        std::function<int(QDialog&)> work;
    };
    std::deque<Question> questions_;
    std::deque<Files> files_;
    std::deque<Dialog> dialogs_;
};

}  // namespace velnor::testing
