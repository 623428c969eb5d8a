// windows/file_words.h - a file in words and pictures, as lists show it.
#pragma once

#include <cstdint>

#include <QIcon>
#include <QString>

namespace velnor {

/// "dBASE or FoxPro table", "Text file" ...: what a file's extension (upper case) makes of it.
QString fileKindText(const QString& extension, bool folder);
/// The picture of such a file.
QIcon fileKindIcon(const QString& extension, bool folder);
/// "1,234 KB", small files in bytes.
QString fileSizeText(std::uint64_t bytes);
/// The time stamp in local time, "2024-03-01  14:05".
QString fileTimeText(std::int64_t secondsUtc);

}  // namespace velnor
