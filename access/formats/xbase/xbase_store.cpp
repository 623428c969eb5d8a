#include "access/formats/xbase/xbase_store.h"

#include <algorithm>

#include "access/formats/xbase/dbf_check.h"
#include "access/formats/xbase/dbf_cursor.h"
#include "access/formats/xbase/dbf_writer.h"
#include "access/formats/xbase/index_check.h"
#include "access/formats/xbase/index_cursor.h"
#include "access/formats/xbase/new_table.h"
#include "access/formats/xbase/table_info.h"
#include "access/value_text.h"
#include "platform/paths.h"

namespace velnor::xbase {
namespace {

constexpr std::string_view kExtension = "DBF";
/// What goes with a table when it is dropped, in this order behind the DBF.
constexpr std::string_view kCompanions[] = {"DBT", "FPT", "MDX", "CDX"};

}  // namespace

XbaseStore::XbaseStore(FileSystem& files, const OpenRequest& request, const NewTableForm& form)
    : FolderStore(files, request, kExtension), form_(form)
{
}

std::shared_ptr<DbfTable> XbaseStore::openTable(const std::string& path)
{
    TableOpening opening;
    opening.files = &files_;
    opening.path = path;
    opening.readOnly = request_.readOnly;
    opening.foxWord = form_.fox;
    opening.listsIndexFiles = form_.connectWord == "dBASE III;";
    opening.codePage = request_.codePage;
    return std::make_shared<DbfTable>(opening);
}

TableLayout XbaseStore::layout(std::string_view table)
{
    const auto opened = open(table);
    const DbfHeader& header = opened->header();
    TableLayout layout;
    layout.name = paths::baseName(opened->path());
    for (const DbfField& field : header.fields)
        layout.fields.push_back(fieldDefOf(field));
    layout.indexes = opened->indexes().definitions();
    if (header.year)
        layout.lastUpdated = static_cast<double>(dayNumber(header.year, header.month, header.day));
    layout.whyNotUpdatable = opened->whyNotUpdatable();
    layout.updatable = layout.whyNotUpdatable.empty();
    return layout;
}

/// By the bytes of the code page, or of their capitals; what other expressions make is not known.
IndexOrder XbaseStore::indexOrder(std::string_view, const IndexDef& index)
{
    IndexOrder order;
    order.leavesEqualOut = index.unique;
    if (index.fields.size() != 1)
        return order;
    const std::string& field = index.fields[0].name;
    if (paths::sameName(index.expression, field))
        order.texts = TextKeys::Bytes;
    else if (paths::sameName(index.expression, "UPPER(" + field + ")"))
        order.texts = TextKeys::Blind;
    return order;
}

std::int64_t XbaseStore::recordCount(std::string_view table)
{
    return open(table)->recordCount();
}

std::unique_ptr<RowCursor> XbaseStore::cursor(std::string_view table,
                                              std::optional<std::string_view> index)
{
    if (index)
        return std::make_unique<IndexCursor>(open(table), *index);
    return std::make_unique<DbfCursor>(open(table));
}

std::unique_ptr<RowWriter> XbaseStore::writer(std::string_view table)
{
    return std::make_unique<DbfWriter>(open(table));
}

void XbaseStore::createTable(const TableLayout& layout)
{
    needWritable();
    const FolderTables::NewTable made = tables().newTable(layout.name);
    if (made.name.find('.') != std::string::npos)
        throw EngineError(EngineErrorNumber::InvalidTableName,
                          "\"" + layout.name + "\" cannot be the name of a table.");
    TableLayout plain = layout;
    plain.indexes.clear();
    createTableFiles(files_, made.path, plain, form_, request_.codePage);
    try {
        for (const IndexDef& index : layout.indexes)
            addIndex(made.name, index);
    } catch (...) {
        dropTable(made.name);
        throw;
    }
}

void XbaseStore::dropTable(std::string_view table)
{
    needWritable();
    const std::string path = tables().needPath(table);
    std::vector<std::string> indexFiles;
    try {
        indexFiles = open(table)->indexFiles();  // 3045 when somebody else works on it
    } catch (const EngineError& error) {
        if (error.code() != EngineErrorNumber::UnexpectedFormat)
            throw;  // a damaged table may go
    }
    close(table);
    files_.remove(path);
    for (const std::string_view extension : kCompanions) {
        const std::string companion = paths::withExtension(path, extension);
        if (files_.fileExists(companion))
            files_.remove(companion);
    }
    for (const std::string& name : indexFiles)
        if (const std::string file = paths::join(request_.name, name); files_.fileExists(file))
            files_.remove(file);
    if (infListsIndexes(files_, path))  // else a new table of this name would seem to have them
        files_.remove(paths::withExtension(path, "INF"));
    files_.syncFolder(request_.name);
}

/// All or nothing: a failure takes back what was not committed before.
template <class Work> void XbaseStore::changeIndexes(std::string_view table, Work work)
{
    needWritable();
    const auto opened = open(table);
    if (const std::string why = opened->whyNotUpdatable(); !why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          opened->path() + " cannot be written. " + why);
    opened->commit();
    struct Pauses {
        DbfTable& table;
        ~Pauses() { table.onPause({}); }
    } const pauses{*opened};
    opened->onPause([this] { stopIfAsked(); });
    try {
        work(opened->indexes());
        opened->noteChange();
        opened->commit();
    } catch (...) {
        opened->rollback();
        throw;
    }
}

/// The table is closed then: its files are others, and whoever looks next opens them.
template <class Plan> void XbaseStore::rewrite(std::string_view table, RewriteKind kind, Plan plan)
{
    needWritable();
    const auto opened = open(table);
    if (const std::string why = opened->whyNotUpdatable(); !why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          opened->path() + " cannot be written. " + why);
    constexpr long kHere = 2;  // this one, and the store's
    if (opened.use_count() > kHere)
        throw EngineError(EngineErrorNumber::FileInUse, opened->path() + " is in use.");
    opened->commit();
    const std::vector<std::uint8_t> head = opened->headerBytes();
    TablePlanner planner(head, opened->header(), form_);
    plan(*opened, planner);
    close(table);
    rewriteTable(*opened, planner.plan(), kind);
}

void XbaseStore::addField(std::string_view table, const FieldDef& field)
{
    rewrite(table, RewriteKind::Fields,
            [&](DbfTable&, TablePlanner& planner) { planner.add(field); });
}

namespace {

/// The field of a name that no index needs.
std::size_t fieldToChange(DbfTable& table, std::string_view name)
{
    const auto& fields = table.header().fields;
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const DbfField& field) {
        return paths::sameName(field.name, name);
    });
    if (found == fields.end())
        throw EngineError(EngineErrorNumber::ItemNotFound,
                          "There is no field \"" + std::string(name) + "\".");
    const auto n = static_cast<std::size_t>(found - fields.begin());
    if (const std::string index = table.indexes().indexOnField(n); !index.empty())
        throw EngineError(EngineErrorNumber::FieldInIndex,
                          "The field " + found->name + " is needed by the index " + index + ".");
    return n;
}

}  // namespace

void XbaseStore::dropField(std::string_view table, std::string_view field)
{
    rewrite(table, RewriteKind::Fields, [&](DbfTable& opened, TablePlanner& planner) {
        planner.drop(fieldToChange(opened, field));
    });
}

void XbaseStore::widenField(std::string_view table, std::string_view field, const FieldDef& to)
{
    rewrite(table, RewriteKind::Fields, [&](DbfTable& opened, TablePlanner& planner) {
        planner.widen(fieldToChange(opened, field), to);
    });
}

void XbaseStore::pack(std::string_view table)
{
    rewrite(table, RewriteKind::Pack, [](DbfTable&, TablePlanner&) {});
}

void XbaseStore::addIndex(std::string_view table, const IndexDef& index)
{
    changeIndexes(table, [&](IndexSet& indexes) { indexes.add(index); });
}

void XbaseStore::dropIndex(std::string_view table, std::string_view index)
{
    changeIndexes(table, [&](IndexSet& indexes) { indexes.drop(index); });
}

void XbaseStore::check(std::string_view table, const ProblemSink& report)
{
    checkTable(*open(table), report);
    checkIndexes(*open(table), report);
}

std::vector<std::pair<std::string, std::string>> XbaseStore::info(std::string_view table)
{
    return tableInfo(*open(table));
}

}  // namespace velnor::xbase
