// windows/velnor1.h - the main window: a menu bar, a strip of seven workspaces with a row of tools
// each, and a status line. It keeps the tools by name and runs the one that was clicked; what they
// do belongs to the workspaces, and the gate to the viewing windows is DisplayFile.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include "core/settings.h"
#include "core/window_list.h"
#include "core/main_tab.h"
#include "windows/tool_set.h"

class QAbstractItemDelegate;
class QLabel;
class QListWidget;
class QStackedWidget;
class QTabBar;
class QTimer;
class QToolBar;

namespace velnor {

class About1;
class CopyPlace;
class DatabasesTab;
class HelpWindow;
class MDIForm1;
class OptionsTab;
class QuikTip1;

class Velnor1 : public QMainWindow {
    Q_OBJECT
public:
    explicit Velnor1(QWidget* parent = nullptr);
    ~Velnor1() override;

    // Controls.
    ToolSet* ToolBarComp1;
    QTabBar* TabStrip1;
    QTimer* Timer1;
    QLabel* ID_Date;
    QLabel* ID_Time;
    QListWidget* List1;  // working folder lines, never seen; the next step goes to its current one

    MailFavorites MAIL_FAVORITES;  ///< addresses of the mail options

    /// The command line, joined; its file is opened at the first activation.
    void setCommandLine(const QString& joined) { commandLine_ = joined; }
    /// The folder that the file list shows first.
    void setStartFolder(const QString& folder) { startFolder_ = folder; }
    /// Everything that is read and built before the window is seen.
    void Form_Load();
    void Form_Activate();

    /// The one gate to every viewing window.
    void DisplayFile(const QString& wanted);
    void OpenwithOLE(const QString& file);
    void OpenBtn_Click();
    void EnableSelectMenus();
    void DisableSelectMenus();
    /// Reads the working folders again.
    void LoadFolderList();
    /// Takes the explorer to the next working folder and filter; nothing when there is none.
    void StepFolderList();
    /// Asks for this computer's name on the network, once; Cancel means that there is none.
    void AskNetworkName();
    void showHelp(const QString& topic);
    void showQuickTips();
    void showAbout();
    /// Starts the desktop's program that tells about the machine; set by app/.
    std::function<bool()> startSystemInformation = [] { return false; };
    void SetWinSize();
    void SetWinSizeVariables();
    void Timer1_Timer();
    /// Colours and type of the options, on this window and on the open ones.
    void applyOptions();
    void mnuUtilitiesColors_Click();
    void mnuUtilitiesOptions_Click();

    /// Brings a tab to the front by its caption.
    void showTab(const QString& caption);
    DatabasesTab& databases() { return *databases_; }
    CopyPlace& copyPlace() { return *copy_; }
    OptionsTab& options() { return *options_; }
    MDIForm1* shell() const;
    void status(const QString& text);

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildTabs();
    void addTab(MainTab* tab);
    void buildMenus();
    void buildStatusBar();
    void addComingTabs();
    ToolRow organizerView(const char* id, const QString& text, const QString& tip,
                          const QString& view);
    void TabStrip1_Click(int index);
    void browseSelected();
    void editSelected();
    void saveSelected();
    void closeSelectedWindow();
    void openWithAnother();
    void stepFolders();
    void searchHelp();
    void helpOnTab();
    void closeAssistance();
    MDIForm1& loadShell();

    QList<MainTab*> tabs_;
    QList<QToolBar*> toolbars_;
    QStackedWidget* stack_;
    DatabasesTab* databases_;
    CopyPlace* copy_;
    OptionsTab* options_;
    QPointer<MDIForm1> shell_;
    QPointer<QuikTip1> quickTips_;
    QPointer<About1> about_;
    QPointer<HelpWindow> help_;
    QLabel* selectedFile_;
    QAbstractItemDelegate* lines_ = nullptr;  // of the explorer
    WindowEntry entry_;
    QString commandLine_;
    QString startFolder_;
    QString openFolder_;
    int openFilter_ = 1;
    int tabInFront_ = 0;
    bool notActivated_ = true;
    bool loaded_ = false;
};

/// Up to six arguments as the one path that they are: joined by blanks, its quotes taken off.
QString joinedArguments(const QStringList& arguments);

}  // namespace velnor
