// core/file_commands.h - small commands on files and folders, by path. A path without a drive is
// taken from the current folder. Failures are RunError.
#pragma once

#include <QString>
#include <QStringList>

namespace velnor {

inline constexpr int kAttributeReadOnly = 1;
inline constexpr int kAttributeHidden = 2;
inline constexpr int kAttributeFolder = 16;

/// The name of the first file that fits a pattern, empty when there is none. With kAttributeFolder
/// folders count as well. A name without * and ? finds hidden files too; a pattern only with
/// kAttributeHidden. 68 when the drive is not there.
QString Dir(const QString& pattern, int attributes = 0);
/// All of them, sorted by name, blind to case.
QStringList dirAll(const QString& pattern, int attributes = 0);

QString currentFolder();
/// 76 when there is no such folder.
void changeFolder(const QString& folder);
/// The full path of what may be a bare name.
QString fullPath(const QString& path);

/// Bytes; 53 when it isn't there.
qint64 fileLength(const QString& path);
/// "m/d/yy h:mm:ss" of the last change; 53 when it isn't there.
QString fileDateTime(const QString& path);
void removeFile(const QString& path);
void renameFile(const QString& from, const QString& to);
/// Copies; an existing target is replaced, whole or not at all.
void copyFile(const QString& from, const QString& to);
/// Copies where there is nothing yet; 58 when the target exists. A copy that fails leaves no
/// target.
void copyFileNew(const QString& from, const QString& to);

/// The text of a file, at most this many bytes of it. UTF-8; where it isn't, a byte is a character.
QString readTextFile(const QString& path, qint64 longest);
/// Writes a text file as UTF-8, whole or not at all: until the new one is complete the old one
/// stays.
void replaceTextFile(const QString& path, const QString& content);

/// Texts of the platform's interfaces are UTF-8.
inline QString fromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace velnor
