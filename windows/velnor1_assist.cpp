// The main window's help, quick tips, about box, and its question for the computer's name.
#include <QInputDialog>

#include "assist/about1.h"
#include "assist/help_window.h"
#include "assist/quik_tip1.h"
#include "core/attempt.h"
#include "core/globals.h"
#include "core/prompt.h"
#include "platform/host.h"
#include "windows/paint_colors.h"
#include "windows/velnor1.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

void bringUp(QWidget& window)
{
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace

void Velnor1::showHelp(const QString& topic)
{
    if (!help_) {
        help_ = new HelpWindow(this);
        help_->setAttribute(Qt::WA_DeleteOnClose);
    }
    help_->showTopic(topic);
    bringUp(*help_);
}

void Velnor1::searchHelp()
{
    showHelp({});
    help_->startSearch();
}

/// The page on the tab in front.
void Velnor1::helpOnTab()
{
    const QString tab = tabs_[tabInFront_]->caption();
    showHelp(tab == u"Databases" ? u"files"_s
             : tab == u"Copy"    ? u"copy"_s
             : tab == u"Tools"   ? u"options"_s
                                 : QString());
}

void Velnor1::showQuickTips()
{
    if (!quickTips_) {
        quickTips_ = new QuikTip1(this);
        quickTips_->setAttribute(Qt::WA_DeleteOnClose);
        paintDialog(*quickTips_);
        const auto& G = globals();
        paintSurface(*quickTips_, {G.TIPS_BACK_COLOR, G.TIPS_TEXT_COLOR});
    }
    bringUp(*quickTips_);
}

void Velnor1::showAbout()
{
    if (!about_) {
        about_ = new About1(this);
        about_->setAttribute(Qt::WA_DeleteOnClose);
        about_->startSystemInformation = startSystemInformation;
        paintDialog(*about_);
    }
    bringUp(*about_);
}

void Velnor1::closeAssistance()
{
    delete quickTips_.data();
    delete about_.data();
    delete help_.data();
}

void Velnor1::AskNetworkName()
{
    auto& G = globals();
    if (!G.ASK_COMPUTER_NAME)
        return;
    QInputDialog dialog(this);
    dialog.setObjectName(u"AskNetworkName"_s);
    dialog.setWindowTitle(QString::fromLatin1(kProgramTitle));
    dialog.setLabelText(u"Please Select your Computer Name on the Network - Cancel if you are not "
                        "using a Computer Network."_s);
    dialog.setComboBoxEditable(true);
    if (host().desktop)
        dialog.setComboBoxItems({QString::fromStdString(host().desktop->computerName())});
    QString name;
    if (prompt().run(dialog) == QDialog::Accepted)
        name = dialog.textValue();
    G.COMPUTER_NAME = name.section(u'\r', 0, 0).toUpper();
    G.ASK_COMPUTER_NAME = false;
}

}  // namespace velnor
