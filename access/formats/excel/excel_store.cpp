#include "access/formats/excel/excel_store.h"

#include <algorithm>
#include <charconv>

#include "access/formats/excel/new_workbook.h"
#include "access/formats/excel/workbook_check.h"
#include "access/formats/sheet/sheet_cursor.h"
#include "platform/paths.h"

namespace velnor::excel {
namespace {

[[noreturn]] void notFound(std::string_view table)
{
    throw EngineError(EngineErrorNumber::TableNotFound,
                      "There is no table \"" + std::string(table) + "\".");
}

/// Statements may write a name with blanks in apostrophes: 'My sheet$'.
std::string_view withoutQuotes(std::string_view name)
{
    return name.size() > 2 && name.front() == '\'' && name.back() == '\''
               ? name.substr(1, name.size() - 2)
               : name;
}

/// "B12": moves `at` behind it. Columns go up to IV.
bool takeAddress(std::string_view text, std::size_t& at, std::uint32_t& row, std::uint16_t& column)
{
    unsigned letters = 0;
    for (; at < text.size() && letters <= 256; ++at) {
        const char c = static_cast<char>(text[at] & ~0x20);
        if (c < 'A' || c > 'Z')
            break;
        letters = letters * 26 + static_cast<unsigned>(c - 'A' + 1);
    }
    std::uint32_t number = 0;
    const char* const start = text.data() + at;
    const auto [end, error] = std::from_chars(start, text.data() + text.size(), number);
    if (letters == 0 || letters > 256 || error != std::errc{} || number == 0 || number > 65536)
        return false;
    at += static_cast<std::size_t>(end - start);
    row = number - 1;
    column = static_cast<std::uint16_t>(letters - 1);
    return true;
}

}  // namespace

ExcelStore::ExcelStore(FileSystem& files, const OpenRequest& request)
    : workbook_(files, request), options_(sheet::sheetOptions(request.options))
{
}

std::vector<TableEntry> ExcelStore::catalogue()
{
    std::vector<TableEntry> tables;
    for (const SheetInfo& sheet : workbook_.globals().sheets)
        if (sheet.worksheet)
            tables.push_back({sheet.name + "$", 0});
    for (const NameInfo& name : workbook_.globals().names)
        tables.push_back({name.name, 0});
    return tables;
}

int ExcelStore::sheetNamed(std::string_view name)
{
    const std::vector<SheetInfo>& sheets = workbook_.globals().sheets;
    for (std::size_t i = 0; i < sheets.size(); ++i)
        if (sheets[i].worksheet && paths::sameName(sheets[i].name, name))
            return static_cast<int>(i);
    return -1;
}

/// An area given with its sheet: "Sheet1$A1:D20".
std::optional<ExcelStore::Found> ExcelStore::findArea(std::string_view table)
{
    const std::size_t dollar = table.rfind('$');
    if (dollar == table.npos)
        return std::nullopt;
    Found found{std::string(table), sheetNamed(table.substr(0, dollar)), sheet::Area{}, false};
    sheet::Area& area = *found.area;
    std::size_t at = dollar + 1;
    if (found.sheet < 0 || !takeAddress(table, at, area.firstRow, area.firstColumn) ||
        at >= table.size() || table[at++] != ':' ||
        !takeAddress(table, at, area.lastRow, area.lastColumn) || at != table.size() ||
        area.lastRow < area.firstRow || area.lastColumn < area.firstColumn)
        return std::nullopt;
    return found;
}

std::optional<ExcelStore::Found> ExcelStore::find(std::string_view table)
{
    table = withoutQuotes(table);
    if (table.ends_with('$'))
        if (const int sheet = sheetNamed(table.substr(0, table.size() - 1)); sheet >= 0)
            return Found{workbook_.globals().sheets[static_cast<std::size_t>(sheet)].name + "$",
                         sheet, std::nullopt, false};
    for (const NameInfo& name : workbook_.globals().names)
        if (paths::sameName(name.name, table))
            return Found{name.name, name.sheet, name.area, true};
    if (const int sheet = sheetNamed(table); sheet >= 0)  // a table that was made under this name
        return Found{workbook_.globals().sheets[static_cast<std::size_t>(sheet)].name + "$", sheet,
                     std::nullopt, false};
    return findArea(table);
}

std::shared_ptr<sheet::SheetTable> ExcelStore::open(std::string_view table)
{
    const auto found = find(table);
    if (!found)
        notFound(table);
    const std::string key = paths::foldName(found->name);
    if (const auto known = tables_.find(key); known != tables_.end())
        return known->second;
    OpenSheet& open = workbook_.sheet(found->sheet);
    auto made = std::make_shared<sheet::SheetTable>(found->name, open.sheet, found->area, options_);
    if (made->header())
        open.edit.headers.insert(made->area().firstRow);
    if (const std::string& why = workbook_.whyReadOnly(); !why.empty()) {
        made->layout().updatable = false;
        made->layout().whyNotUpdatable = why;
    }
    return tables_[key] = made;
}

TableLayout ExcelStore::layout(std::string_view table)
{
    return open(table)->layout();
}

std::int64_t ExcelStore::recordCount(std::string_view table)
{
    return open(table)->recordCount();
}

std::unique_ptr<RowCursor> ExcelStore::cursor(std::string_view table,
                                              std::optional<std::string_view> index)
{
    if (index)
        throw EngineError(EngineErrorNumber::IndexKeyMissing, "A sheet has no indexes.");
    return std::make_unique<sheet::SheetCursor>(open(table));
}

std::unique_ptr<RowWriter> ExcelStore::writer(std::string_view table)
{
    sheet::SheetRules& rules = *this;
    return std::make_unique<sheet::SheetWriter>(open(table), rules);
}

void ExcelStore::requireWriteable(const sheet::SheetTable& table)
{
    workbook_.requireWriteable();
    if (!table.layout().updatable)
        throw EngineError(EngineErrorNumber::ReadOnly, "Cannot write to " + table.layout().name +
                                                           ". " + table.layout().whyNotUpdatable);
}

void ExcelStore::commit()
{
    if (!workbook_.hasChanges())
        return;
    for (const NameInfo& name : workbook_.globals().names)
        if (const auto open = tables_.find(paths::foldName(name.name));
            open != tables_.end() && open->second->isRange() &&
            open->second->area().lastRow != name.area.lastRow)
            workbook_.nameEnds(name.name, open->second->area().lastRow);
    workbook_.save();
}

// Structure

/// The header in the first row; below it blank cells whose formats tell the types of the fields.
void ExcelStore::putHeader(int sheet, const TableLayout& layout)
{
    OpenSheet& open = workbook_.sheet(sheet);
    for (std::size_t i = 0; i < layout.fields.size(); ++i) {
        const auto column = static_cast<std::uint16_t>(i);
        open.sheet->cells.change(
            0, sheet::Cell::ofText(column, open.sheet->texts->intern(layout.fields[i].name)));
        if (layout.fields[i].type != FieldType::Text)  // what a column is without a mark
            open.edit.blankTypes[column] = layout.fields[i].type;
    }
    open.edit.headers = {0};
    open.edit.blankRow = 1;
}

void ExcelStore::createTable(const TableLayout& layout)
{
    workbook_.requireWriteable();
    std::string name(layout.name);
    if (name.ends_with('$'))
        name.pop_back();
    checkSheetName(name);
    if (!layout.indexes.empty())
        throw EngineError(EngineErrorNumber::NotSupported, "A sheet cannot have indexes.");
    if (layout.fields.empty())
        throw EngineError(EngineErrorNumber::InvalidArgument, "A table needs a field.");
    TableLayout kept;
    kept.name = name + "$";
    for (const FieldDef& field : layout.fields) {
        kept.fields.push_back(sheet::keptField(field));
        workbook_.checkText(field.name);
    }
    commit();
    int sheet = sheetNamed(name);
    if (sheet >= 0 && !workbook_.isEmpty(sheet))
        throw EngineError(EngineErrorNumber::TableAlreadyExists,
                          "The table \"" + name + "\" exists already.");
    if (sheet < 0 && workbook_.isNew()) {
        sheet = 0;
        workbook_.renameSheet(sheet, name);
    } else if (sheet < 0) {
        sheet = workbook_.addSheet(name);
    }
    tables_.erase(paths::foldName(kept.name));
    putHeader(sheet, kept);
    const std::string key = paths::foldName(kept.name);
    tables_[key] =
        std::make_shared<sheet::SheetTable>(std::move(kept), workbook_.sheet(sheet).sheet);
    workbook_.save();
}

void ExcelStore::dropTable(std::string_view table)
{
    workbook_.requireWriteable();
    const auto found = find(table);
    if (!found)
        notFound(table);
    commit();
    forgetTables();
    if (!found->area)
        return workbook_.dropSheet(found->sheet);
    sheet::CellGrid& cells = workbook_.sheet(found->sheet).sheet->cells;
    for (std::uint32_t row = found->area->firstRow; row <= found->area->lastRow; ++row)
        for (std::uint16_t c = found->area->firstColumn; c <= found->area->lastColumn; ++c)
            if (const sheet::Cell* cell = cells.find(row, c); cell && !cell->formula)
                cells.change(row, sheet::Cell::blank(c));
    workbook_.save();
    workbook_.forget(found->sheet);
    if (found->named)
        workbook_.hideName(found->name);
}

void ExcelStore::check(std::string_view table, const ProblemSink& report)
{
    if (!table.empty() && !find(table))
        notFound(table);
    checkWorkbook(workbook_, report);
}

std::vector<std::pair<std::string, std::string>> ExcelStore::info(std::string_view)
{
    return workbookInfo(workbook_);
}

}  // namespace velnor::excel
