#include "access/routing.h"

#include "access/schema.h"
#include "core/file_types.h"
#include "core/globals.h"
#include "core/text.h"

namespace velnor {
namespace {

/// A file that holds its tables: the first of them is the record source. When the names cannot be
/// read, the record source stays as it was.
void connectFile(const QString& path, const QString& connect)
{
    auto& G = globals();
    G.CONNECT_STRING = connect;
    G.DATABASE_NAME = path;
    const TableListing listing = listTableNames(path, connect);
    if (listing.listed)
        G.RECORD_SOURCE = listing.first;
}

}  // namespace

QString GetFileExtension(const QString& path)
{
    const int dot = text::instrRev(path, ".");
    return dot == 0 ? QString() : text::mid(path, dot + 1).toUpper();
}

QString SetDatabaseType(const QString& path)
{
    const QString extension = GetFileExtension(path);
    if (extension == "DBF")
        return "dBASE 5.0;";
    if (extension == "DB")
        return "Paradox 5.x;";
    if (extension == "MDB")
        return "Access 2000;";
    if (extension == "XLS")
        return "Excel 8.0;";
    if (extension == "WK4")
        return "Lotus WK4;";
    return {};
}

QString accessConnect(const QString& password, const QString& plain)
{
    return password.isEmpty() ? plain : ";pwd=" + password;
}

bool SetFileConnection(const QString& path)
{
    auto& G = globals();
    G.TABLE_COUNT = 0;
    G.FILE_EXT = GetFileExtension(path);
    const int folderLength = text::instrRev(path, "\\") - 1;
    if (folderLength < 1)
        return false;

    const QString type = SetDatabaseType(path);
    if (G.FILE_EXT == "DBF" || G.FILE_EXT == "DB") {
        G.CONNECT_STRING = type;
        G.DATABASE_NAME = text::left(path, folderLength);
        G.RECORD_SOURCE = text::mid(path, folderLength + 2);
    } else if (G.FILE_EXT == "XLS" || G.FILE_EXT == "WK4") {
        connectFile(path, type);
    } else if (G.FILE_EXT == "MDB") {
        connectFile(path, accessConnect(G.DATABASE_PASSWORD, type));
    }
    return true;
}

void ClassifyFile(const QString& path)
{
    auto& G = globals();
    G.TEXT_FILE_FLG = false;
    G.DATA_FILE_FLG = false;
    G.FILE_EXT = GetFileExtension(path);
    if (text::trim(G.FILE_EXT).isEmpty()) {
        G.SELECTED_FILE.clear();
        return;
    }
    const int slot = extensionSlot(G.FILE_EXT);
    G.DATA_FILE_FLG = slot >= kFirstSlot && slot <= kLastDatabaseSlot;
    G.TEXT_FILE_FLG = slot > kLastDatabaseSlot && slot <= kLastTextSlot;
}

bool isWebAddress(const QString& path)
{
    const QString start = text::left(path, 4).toLower();
    return start == "http" || start == "www.";
}

DisplayRoute routeForDisplay(const QString& path, const std::function<bool()>& fileExists)
{
    auto& G = globals();
    G.TEXT_FILE_FLG = false;
    G.FILE_EXT = GetFileExtension(path);
    const bool web = isWebAddress(path);
    if (text::trim(G.FILE_EXT).isEmpty() && !web) {
        G.SELECTED_FILE.clear();
        return DisplayRoute::Nothing;
    }
    const int slot = extensionSlot(G.FILE_EXT);
    G.TEXT_FILE_FLG = web || (slot > kLastDatabaseSlot && slot <= kLastViewerSlot);
    if (!G.TEXT_FILE_FLG && slot == 0)
        return DisplayRoute::AskOtherProgram;
    return web || fileExists() ? DisplayRoute::Show : DisplayRoute::NotFound;
}

}  // namespace velnor
