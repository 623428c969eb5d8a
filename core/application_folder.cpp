#include "core/application_folder.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

// Resources of a library are left out by the linker unless they are asked for; outside any
// namespace.
static void takeDeliveredFiles()
{
    Q_INIT_RESOURCE(delivered);
}

namespace velnor {
namespace {

void putMissingFiles(const QDir& folder)
{
    takeDeliveredFiles();
    const QDir delivered(":/velnor/delivered");
    for (const QString& name : delivered.entryList(QDir::Files)) {
        const QString target = folder.filePath(name);
        if (QFile::exists(target))
            continue;
        // Under another name first: a file cut short by a full disk would count as delivered.
        const QString part = target + "-new";
        QFile::remove(part);
        QFile source(delivered.filePath(name));
        QFile made(part);
        const bool whole = source.open(QIODevice::ReadOnly) && made.open(QIODevice::WriteOnly) &&
                           made.write(source.readAll()) == source.size() && made.flush();
        made.close();
        if (!whole || !QFile::rename(part, target))
            QFile::remove(part);
    }
}

}  // namespace

void prepareApplicationFolder(HostPaths& paths, const QString& nativeFolder)
{
    const QDir folder(nativeFolder);
    if (folder.mkpath("."))
        putMissingFiles(folder);
    paths.mount(kApplicationFolder, folder.absolutePath().toStdString());
}

QString prepareApplicationFolder(HostPaths& paths)
{
    const QString folder =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Velnor3";
    prepareApplicationFolder(paths, folder);
    return folder;
}

void readDriveMap(HostPaths& paths)
{
    QFile map(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
              "/velnor/drives.map");
    constexpr qint64 kLongestMap = 1 << 20;
    if (map.open(QIODevice::ReadOnly))
        paths.readMap(map.read(kLongestMap).toStdString());
}

}  // namespace velnor
