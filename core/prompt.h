// core/prompt.h - messages, questions, file dialogs and modal dialogs behind one interface, so that
// every procedure can be driven in a test.
#pragma once

#include <functional>
#include <optional>

#include <QString>
#include <QStringList>

class QDialog;
class QWidget;

namespace velnor {

inline constexpr const char* kProgramTitle = "Velnor 3.0 - The Database File Copier";

struct FileQuestion {
    QString title;
    QString filter;            ///< "DBase and FoxPro|*.DBF|Paradox|*.DB|..."
    int filterIndex = 1;       ///< from 1; in and out
    QString folder;            ///< "C:\..." form; in and out
    QString fileName;          ///< preset
    bool save = false;
    bool many = false;
    bool confirmOverwrite = true;  ///< of a save: asks before an existing file is chosen
    QString defaultExtension;      ///< of a save: added to a name that has none, "MLS"
};

class Prompt {
public:
    virtual ~Prompt() = default;
    /// A message with an OK button. Leading blanks of the text are trimmed for display only.
    virtual void tell(QWidget* parent, const QString& text, const QString& title = kProgramTitle) = 0;
    /// Yes and No; anything but Yes means no.
    virtual bool ask(QWidget* parent, const QString& text, const QString& title = kProgramTitle) = 0;
    /// The chosen paths in "C:\..." form; nothing when cancelled. Updates filterIndex and folder.
    virtual std::optional<QStringList> file(QWidget* parent, FileQuestion& question) = 0;
    /// Runs a modal dialog; its object name tells tests which one it is.
    virtual int run(QDialog& dialog) = 0;
};

Prompt& prompt();
void setPrompt(Prompt* replacement);  ///< null: the real one

/// A message without the leading blanks that centre it, as the real prompt shows it.
QString shownText(const QString& text);

}  // namespace velnor
