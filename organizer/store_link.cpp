#include "organizer/store_link.h"

#include <array>

#include "access/value_text.h"
#include "core/file_commands.h"
#include "core/globals.h"
#include "platform/host.h"

namespace velnor {

QString storePath()
{
    return globals().APP_PATH + "\\DataTabl.MDB";
}

StoreLink::StoreLink(const char* table)
    : workspace_(*host().files),
      store_(workspace_.OpenDatabase(storePath().toStdString(), false, false, "")),
      rows_(store_.OpenRecordset(table, RecordsetType::Table))
{
}

QString StoreLink::text(const char* column) const
{
    std::string text;
    appendText(text, rows_.Fields().Item(column).Value());
    return fromUtf8(text);
}

qint64 StoreLink::number(const char* column) const
{
    return integerOf(rows_.Fields().Item(column).Value()).value_or(0);
}

void StoreLink::set(const char* column, const QString& text)
{
    const std::string utf8 = text.toStdString();
    rows_.Fields().Item(column).Value(ValueView::text(utf8));
}

void StoreLink::set(const char* column, qint64 number)
{
    rows_.Fields().Item(column).Value(ValueView::integer(number));
}

bool StoreLink::seek(const QString& first)
{
    const std::string key = first.toStdString();
    const std::array keys{ValueView::text(key)};
    rows_.Seek("=", keys);
    return !rows_.NoMatch();
}

bool StoreLink::seek(const QString& first, const QString& second)
{
    const std::string a = first.toStdString(), b = second.toStdString();
    const std::array keys{ValueView::text(a), ValueView::text(b)};
    rows_.Seek("=", keys);
    return !rows_.NoMatch();
}

void StoreLink::close()
{
    rows_.Close();
    store_.Close();
}

}  // namespace velnor
