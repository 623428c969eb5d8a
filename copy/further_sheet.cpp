#include "copy/further_sheet.h"

#include "access/value_text.h"

namespace velnor {
namespace {

constexpr char kExcelMark = '$', kLotusMark = ':';
constexpr std::size_t kLongestExcelName = 31, kLongestLotusName = 15;
constexpr std::size_t kNumberRoom = 4;

char markOf(Database& database, const std::string& table)
{
    database.TableDefs().Refresh();  // a new sheet is listed with its mark only then
    for (const char mark : {kExcelMark, kLotusMark})
        if ((!table.empty() && table.back() == mark) || database.TableDefs().contains(table + mark))
            return mark;
    return 0;
}

}  // namespace

FurtherSheets::FurtherSheets(Database& database, std::string table)
    : database_(database), mark_(markOf(database, table)), first_(std::move(table))
{
    if (!first_.empty() && first_.back() == mark_)
        first_.pop_back();
}

std::string FurtherSheets::nextName()
{
    const std::size_t longest = mark_ == kLotusMark ? kLongestLotusName : kLongestExcelName;
    const std::string front(textPrefix(first_, longest - kNumberRoom));
    for (int n = 2;; ++n) {
        std::string name = front + "_" + std::to_string(n);
        if (!database_.TableDefs().contains(name + mark_))
            return name;
    }
}

Recordset FurtherSheets::open()
{
    const std::string name = nextName();
    TableDef table = database_.CreateTableDef(name);
    for (const FieldDef& field : database_.TableDefs().Item(first_ + mark_).layout().fields) {
        Field made = table.CreateField(field.name, static_cast<int>(field.type), field.size);
        made.def() = field;
        table.Fields().Append(std::move(made));
    }
    database_.TableDefs().Append(std::move(table));
    database_.TableDefs().Refresh();
    names_.push_back(name);
    return database_.OpenRecordset(name + mark_, RecordsetType::Table);
}

}  // namespace velnor
