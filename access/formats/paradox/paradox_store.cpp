#include "access/formats/paradox/paradox_store.h"

#include "access/formats/paradox/db_cursor.h"
#include "access/formats/paradox/db_writer.h"
#include "access/formats/paradox/index_cursor.h"
#include "access/formats/paradox/structure.h"
#include "access/formats/paradox/table_check.h"
#include "access/formats/paradox/table_layout.h"
#include "platform/paths.h"

namespace velnor::paradox {
ParadoxStore::ParadoxStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form)
    : FolderStore(files, request, kTableExtension), form_(form), passwords_{request.password}
{
}

std::shared_ptr<DbTable> ParadoxStore::openTable(const std::string& path)
{
    finishStructureChange(files_, path, request_.readOnly);
    TableOpening opening;
    opening.files = &files_;
    opening.path = path;
    opening.readOnly = request_.readOnly;
    opening.codePage = request_.codePage;
    opening.passwords = passwords_;
    return std::make_shared<DbTable>(opening);
}

TableLayout ParadoxStore::layout(std::string_view table)
{
    return layoutOf(*open(table));
}

IndexOrder ParadoxStore::indexOrder(std::string_view table, const IndexDef& index)
{
    const auto opened = open(table);
    const FileHeader& header = opened->header();
    IndexOrder order;
    if (index.primary)
        order.nullsFirst =
            keyOrderOf(header, {header.fields.data(), header.keyFields}, false).byBytes;
    if (!textsSortByBytes(header))
        return order;
    const SecondaryIndex* const secondary = findIndex(*opened, index.name);
    const bool blind = !index.primary && secondary && secondary->blindToCase();
    order.texts = blind ? TextKeys::Blind : TextKeys::Bytes;
    return order;
}

std::int64_t ParadoxStore::recordCount(std::string_view table)
{
    return open(table)->chain().records();
}

std::unique_ptr<RowCursor> ParadoxStore::cursor(std::string_view table,
                                                std::optional<std::string_view> index)
{
    auto opened = open(table);
    const bool primary =
        index && opened->keyed() && paths::sameName(*index, opened->primaryIndexName());
    if (index && !primary)
        return std::make_unique<IndexCursor>(std::move(opened), *index);
    return std::make_unique<DbCursor>(std::move(opened), primary);
}

std::unique_ptr<RowWriter> ParadoxStore::writer(std::string_view table)
{
    return std::make_unique<DbWriter>(open(table));
}

std::shared_ptr<DbTable> ParadoxStore::openToChange(std::string_view table)
{
    needWritable();
    return open(table);
}

void ParadoxStore::createTable(const TableLayout& layout)
{
    needWritable();
    const FolderTables::NewTable made = tables().newTable(layout.name);
    close(made.name);
    createTableWithIndexes(files_, made.path, layout, form_, request_.codePage);
}

void ParadoxStore::dropTable(std::string_view table)
{
    needWritable();
    const std::string path = tables().needPath(table);
    try {
        open(table);  // 3045 when somebody else works on it
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;  // a damaged table may go
    }
    close(table);
    const std::vector<Companion> companions = companionsOf(files_, path);
    files_.remove(path);
    for (const Companion& companion : companions)
        files_.remove(companion.path);
    files_.syncFolder(request_.name);
}

void ParadoxStore::addField(std::string_view table, const FieldDef& field)
{
    addTableField(*openToChange(table), field);
}

void ParadoxStore::dropField(std::string_view table, std::string_view field)
{
    dropTableField(*openToChange(table), field);
}

void ParadoxStore::addIndex(std::string_view table, const IndexDef& index)
{
    addTableIndex(*openToChange(table), index);
}

void ParadoxStore::dropIndex(std::string_view table, std::string_view index)
{
    dropTableIndex(*openToChange(table), index);
}

bool ParadoxStore::acceptsPassword(std::string_view password)
{
    // Each table of the folder may have its own: whether it is one is seen when a table is opened.
    passwords_.emplace_back(password);
    return true;
}

void ParadoxStore::check(std::string_view table, const ProblemSink& report)
{
    checkTable(*open(table), report);
}

std::vector<std::pair<std::string, std::string>> ParadoxStore::info(std::string_view table)
{
    return tableInfo(*open(table));
}

}  // namespace velnor::paradox
