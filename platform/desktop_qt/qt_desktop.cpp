#include "platform/desktop_qt/qt_desktop.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QSysInfo>
#include <QUrl>

#include "platform/path_parts.h"

namespace velnor {
namespace {

QString text(std::string_view utf8)
{
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

bool isAddress(const QString& target)
{
    return target.contains("://") || target.startsWith("www.", Qt::CaseInsensitive) ||
           target.startsWith("mailto:", Qt::CaseInsensitive);
}

class QtDesktop final : public Desktop {
public:
    explicit QtDesktop(const HostPaths& paths) : paths_(paths) {}

    bool openWith(std::string_view pathOrAddress) override
    {
        const QString target = text(pathOrAddress);
        if (isAddress(target))
            return QDesktopServices::openUrl(QUrl::fromUserInput(target));
        return QDesktopServices::openUrl(QUrl::fromLocalFile(native(pathOrAddress)));
    }

    bool moveToTrash(std::string_view path) override
    {
        const QString file = native(path);
        if (!QFileInfo::exists(file))
            throw pathError(RunErrorNumber::FileNotFound, path);
        return QFile::moveToTrash(file);
    }

    std::string computerName() override { return QSysInfo::machineHostName().toStdString(); }

    VolumeInfo volume(std::string_view path) override
    {
        // A path that is yet to be made lies where its first existing folder lies.
        QString place = native(path);
        while (!QFileInfo::exists(place) && place.lastIndexOf(u'/') > 0)
            place.truncate(place.lastIndexOf(u'/'));
        const QStorageInfo storage(QFileInfo::exists(place) ? place : "/");
        VolumeInfo info;
        info.name = storage.name().toStdString();
        info.freeBytes = bytes(storage.bytesAvailable());
        info.totalBytes = bytes(storage.bytesTotal());
        return info;
    }

private:
    QString native(std::string_view path) const { return text(paths_.toNative(path)); }
    static std::uint64_t bytes(qint64 count)
    {
        return count < 0 ? 0 : static_cast<std::uint64_t>(count);
    }

    const HostPaths& paths_;
};

}  // namespace

std::unique_ptr<Desktop> makeQtDesktop(const HostPaths& paths)
{
    return std::make_unique<QtDesktop>(paths);
}

bool startSystemInformation()
{
    const std::pair<const char*, QStringList> programs[] = {
        {"kinfocenter", {}},
        {"gnome-control-center", {QStringLiteral("info-overview")}},
        {"hardinfo2", {}},
        {"hardinfo", {}},
    };
    for (const auto& [name, arguments] : programs) {
        const QString program = QStandardPaths::findExecutable(QLatin1String(name));
        if (!program.isEmpty() && QProcess::startDetached(program, arguments))
            return true;
    }
    return false;
}

}  // namespace velnor
