#include "core/file_types.h"

#include "core/globals.h"
#include "platform/paths.h"
#include "platform/run_error.h"

namespace velnor {
namespace {

constexpr std::array<const char*, kLastSlot> kExtensions{
    "DBF", "DB",   "MDB",  "XLS",   "WK4", "TXT", "RTF", "INI", "LOG",
    "BAT", "BAK",  "DOS",  "SYS",   "DOC", "WPS", "WDB", "WRI", "LST",
    "HTM", "HTML", "SHTM", "SHTML", "ASP", "URL", "MSG", "PDF", "ZIP"};

constexpr short kFilterSlots = 11;

QString withSmallLetters(const QString& patterns)
{
    QStringList all;
    for (const QString& pattern : patterns.split(u';', Qt::SkipEmptyParts)) {
        all << pattern;
        if (pattern != pattern.toLower())
            all << pattern.toLower();
    }
    return all.join(u' ');
}

}  // namespace

const std::array<ListFilter, 9> kListFilters{{
    {"DBase and FoxPro Files (DBF)", "*.DBF", "ID_DBaseBtn", "ID_DBase"},
    {"Paradox Files (DB)", "*.DB", "ID_ParadoxBtn", "ID_Paradox"},
    {"Access Files (MDB)", "*.MDB", "ID_AccessBtn", "ID_Access"},
    {"Excel Files (XLS)", "*.XLS", "ID_ExcelBtn", "ID_Excel"},
    {"Lotus Files (WK4)", "*.WK4", "ID_LotusBtn", "ID_Lotus"},
    {"Database and Spread Sheet Files (DBF,DB,MDB,XLS,WK4)", "*.DBF;*.DB;*.MDB;*.XLS;*.WK4",
     "ID_AllDataFilter", "ID_AllDataFilter"},
    {"Text Files (TXT,RTF,INI,LOG,BAT,BAK,DOS,SYS,DOC,WPS,WDB,WRI,LST,HTM,HTML,SHTM,SHTML,URL,MSG)",
     "*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;"
     "*.SHTM;*.SHTML;*.URL;*.MSG;*.PDF;*.PNP;*.ASP",
     "ID_TextFilterBtn", "ID_TextFilter"},
    {"All Files (*.*)", "*.*", "ID_AllFilesFilter", "ID_AllFilesFilter"},
    {"All Database and Document Files",
     "*.DBF;*.DB;*.MDB;*.XLS;*.WK4;*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;"
     "*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.SHTM;*.SHTML;*.URL;*.MSG;*.PDF;*.PNP;*.ASP",
     "", ""},
}};

const char* const kOpenFilter =
    "DBase and FoxPro|*.DBF|Paradox|*.DB|Access|*.MDB|Excel|*.XLS|Lotus|*.WK4|All Database Files|"
    "*.DBF;*.DB;*.MDB;*.XLS;*.WK4|Text and Document Files|*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;"
    "*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.SHTM;*.SHTML;*.URL;*.MSG;*.PDF;"
    "*.ASP;*.PNP";

const char* const kShellOpenFilter =
    "Access Files|*.MDB;|DBase Files|*.DBF;|Paradox Files|*.DB;|Excel Files|*.XLS;|"
    "Lotus WK4 Files|*.WK4;|Text and Document Files|*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;"
    "*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.SHTM;*.SHTML;*.URL;*.MSG;|All Files|*.*";

void FillExtensionTable()
{
    auto& G = globals();
    for (int slot = kFirstSlot; slot <= kLastSlot; ++slot)
        G.EXT_TABLE[slot] = kExtensions[static_cast<std::size_t>(slot - kFirstSlot)];
}

int extensionSlot(const QString& extension)
{
    auto& G = globals();
    const QString wanted = extension.toUpper();
    if (wanted.isEmpty())
        return 0;
    for (int slot = kFirstSlot; slot <= kLastSlot; ++slot)
        if (G.EXT_TABLE[slot] == wanted)
            return slot;
    return 0;
}

QString filterPattern(int index)
{
    if (index < 0 || index >= kFilterSlots)
        throw RunError(RunErrorNumber::OutOfRange, "Subscript out of range");
    const auto at = static_cast<std::size_t>(index);
    return at < kListFilters.size() ? kListFilters[at].pattern : "";
}

bool passesFilter(const QString& fileName, const QString& pattern)
{
    const std::string name = fileName.toStdString();
    const std::string patterns = pattern.toStdString();
    std::string_view rest = patterns;
    while (!rest.empty()) {
        const std::string_view one = rest.substr(0, rest.find(';'));
        if (!one.empty() && paths::matches(name, one))
            return true;
        rest.remove_prefix(std::min(one.size() + 1, rest.size()));
    }
    return false;
}

QStringList dialogFilters(const QString& filter)
{
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        filters << parts[i] + " (" + withSmallLetters(parts[i + 1]) + ")";
    if (parts.size() % 2 != 0 && !parts.last().isEmpty())
        filters << parts.last() + " (" + withSmallLetters(parts.last()) + ")";
    return filters;
}

}  // namespace velnor
