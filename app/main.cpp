// app/main.cpp - the program: its host, the calls upward, and the main window.
#include <memory>

#include <QApplication>

#include "access/routing.h"
#include "core/application_folder.h"
#include "core/attempt.h"
#include "core/startup.h"
#include "core/upcalls.h"
#include "organizer/organizer_store.h"
#include "platform/desktop_qt/qt_desktop.h"
#include "platform/host.h"
#include "windows/context_key.h"
#include "windows/desktop_look.h"
#include "windows/save_file_as.h"
#include "windows/velnor1.h"

namespace velnor {
namespace {

/// Files, clock and desktop of the machine that the program runs on.
class RealHost {
public:
    RealHost() : files_(makeLinuxFileSystem(paths_)), desktop_(makeQtDesktop(paths_))
    {
        attempt([this] { readDriveMap(paths_); });
        deliverStore();
        attempt([this] { prepareApplicationFolder(paths_); });
        host_.files = files_.get();
        host_.clock = &systemClock();
        host_.desktop = desktop_.get();
        host_.paths = &paths_;
        attempt([this] { host_.currentFolder = paths_.toProgram("."); });
        setHost(&host_);
    }

private:
    HostPaths paths_;
    std::unique_ptr<FileSystem> files_;
    std::unique_ptr<Desktop> desktop_;
    Host host_;
};

void fillUpcalls(Velnor1& window)
{
    upcalls().DisplayFile = [&](const QString& path) { window.DisplayFile(path); };
    upcalls().OpenwithOLE = [&](const QString& path) { window.OpenwithOLE(path); };
    upcalls().SaveFileAs = [](const QString& path) { SaveFileAs(path); };
    upcalls().ShowHelp = [&](const QString& topic) { window.showHelp(topic); };
    window.startSystemInformation = startSystemInformation;
    upcalls().EnableSelectMenus = [&] { window.EnableSelectMenus(); };
}

/// The one path on the command line as the program names it; a web address stays as it is.
QString commandLinePath(const QStringList& arguments)
{
    QString path = joinedArguments(arguments.mid(1));
    if (!path.isEmpty() && !isWebAddress(path))
        attempt(
            [&] { path = QString::fromStdString(host().paths->fromPerson(path.toStdString())); });
    return path;
}

int run(QApplication& app)
{
    const RealHost machine;
    const DesktopLook look(app);
    const ContextKey contextKey(app);
    const QString path = commandLinePath(QApplication::arguments());
    upcalls().LoadGroupList = [] { LoadGroupList(); };
    const QString startFolder = QString::fromStdString(host().currentFolder);
    StartProgram();
    Velnor1 window;
    fillUpcalls(window);
    window.setCommandLine(path);
    window.setStartFolder(startFolder);
    window.Form_Load();
    window.show();
    const int result = QApplication::exec();
    resetUpcalls();
    return result;
}

}  // namespace
}  // namespace velnor

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("velnor"));
    QApplication::setDesktopFileName(QStringLiteral("velnor"));
    return velnor::run(app);
}
