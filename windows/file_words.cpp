#include "windows/file_words.h"

#include <array>

#include "core/text.h"
#include "platform/host.h"

namespace velnor {

using namespace Qt::StringLiterals;

namespace {

struct KindWords {
    QLatin1StringView extension;
    QLatin1StringView words;
    QLatin1StringView icon;
};

constexpr std::array kKinds{
    KindWords{"DBF"_L1, "dBASE or FoxPro table"_L1, ":/velnor/icons/file-dbase.svg"_L1},
    KindWords{"DB"_L1, "Paradox table"_L1, ":/velnor/icons/file-paradox.svg"_L1},
    KindWords{"MDB"_L1, "Access database"_L1, ":/velnor/icons/file-access.svg"_L1},
    KindWords{"XLS"_L1, "Excel workbook"_L1, ":/velnor/icons/file-excel.svg"_L1},
    KindWords{"WK4"_L1, "Lotus worksheet"_L1, ":/velnor/icons/file-lotus.svg"_L1},
    KindWords{"HTM"_L1, "Web page"_L1, "text-html"_L1},
    KindWords{"HTML"_L1, "Web page"_L1, "text-html"_L1},
    KindWords{"PDF"_L1, "PDF document"_L1, "application-pdf"_L1},
    KindWords{"ZIP"_L1, "Zip file"_L1, "application-zip"_L1},
    KindWords{"DOC"_L1, "Document"_L1, "application-msword"_L1},
    KindWords{"RTF"_L1, "Rich text"_L1, "application-rtf"_L1},
    KindWords{"TXT"_L1, "Text file"_L1, "text-plain"_L1},
    KindWords{"LOG"_L1, "Log"_L1, "text-plain"_L1},
    KindWords{"INI"_L1, "Settings"_L1, "text-plain"_L1},
};

const KindWords* kindOf(const QString& extension)
{
    for (const KindWords& kind : kKinds)
        if (extension == kind.extension)
            return &kind;
    return nullptr;
}

}  // namespace

QString fileKindText(const QString& extension, bool folder)
{
    if (folder)
        return u"Folder"_s;
    if (const KindWords* kind = kindOf(extension))
        return kind->words.toString();
    return extension.isEmpty() ? u"File"_s : u"%1 file"_s.arg(extension);
}

QIcon fileKindIcon(const QString& extension, bool folder)
{
    if (folder)
        return QIcon::fromTheme(u"folder"_s);
    const KindWords* kind = kindOf(extension);
    const QIcon plain = QIcon::fromTheme(u"text-x-generic"_s);
    if (!kind)
        return plain;
    return kind->icon.startsWith(':'_L1) ? QIcon(kind->icon.toString())
                                         : QIcon::fromTheme(kind->icon.toString(), plain);
}

QString fileSizeText(std::uint64_t bytes)
{
    if (bytes < 1024)
        return u"%1 B"_s.arg(bytes);
    return u"%1 KB"_s.arg(text::thousands(static_cast<long long>((bytes + 1023) / 1024)));
}

QString fileTimeText(std::int64_t secondsUtc)
{
    const LocalTime t = host().clock->local(secondsUtc);
    return QString::asprintf("%04d-%02d-%02d  %02d:%02d", t.year, t.month, t.day, t.hour, t.minute);
}

}  // namespace velnor
