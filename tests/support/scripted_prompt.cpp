#include "tests/support/scripted_prompt.h"

#include <QDialog>
#include <QTest>

namespace velnor::testing {
namespace {

void failTest(const QString& why)
{
    QTest::qFail(why.toUtf8().constData(), __FILE__, __LINE__);
}

}  // namespace

ScriptedPrompt::~ScriptedPrompt()
{
    setPrompt(nullptr);
    if (!questions_.empty())
        failTest("never asked: " + questions_.front().text);
    if (!files_.empty())
        failTest("never asked for a file: " + files_.front().paths.join(", "));
    if (!dialogs_.empty())
        failTest("never run: " + dialogs_.front().objectName);
}

void ScriptedPrompt::expectQuestion(const QString& text, bool answer)
{
    questions_.push_back({text, answer});
}

void ScriptedPrompt::expectFile(const QStringList& paths, const QString& title)
{
    files_.push_back({paths, title});
}

void ScriptedPrompt::expectDialog(const QString& objectName, std::function<int(QDialog&)> work)
{
    dialogs_.push_back({objectName, std::move(work)});
}

void ScriptedPrompt::tell(QWidget*, const QString& text, const QString& title)
{
    told << text;
    toldTitles << title;
}

bool ScriptedPrompt::ask(QWidget*, const QString& text, const QString&)
{
    asked << text;
    if (questions_.empty() || questions_.front().text != text) {
        failTest("unexpected question: " + text);
        return false;
    }
    const bool answer = questions_.front().answer;
    questions_.pop_front();
    return answer;
}

std::optional<QStringList> ScriptedPrompt::file(QWidget*, FileQuestion& question)
{
    fileQuestions << question;
    const bool fits = !files_.empty() &&
                      (files_.front().title.isEmpty() || files_.front().title == question.title);
    if (!fits) {
        failTest("unexpected file dialog: " + question.title);
        return std::nullopt;
    }
    const QStringList paths = files_.front().paths;
    files_.pop_front();
    if (paths.isEmpty())
        return std::nullopt;
    question.folder = paths.last().left(paths.last().lastIndexOf(u'\\'));
    return paths;
}

int ScriptedPrompt::run(QDialog& dialog)
{
    dialogsRun << dialog.objectName();
    if (dialogs_.empty() || dialogs_.front().objectName != dialog.objectName()) {
        failTest("unexpected dialog: " + dialog.objectName());
        return QDialog::Rejected;
    }
    const auto work = std::move(dialogs_.front().work);
    dialogs_.pop_front();
    dialog.show();  // so that it loads and takes keys as for a person
    const int result = work(dialog);
    if (dialog.isVisible())
        dialog.done(result);
    return result;
}

}  // namespace velnor::testing
