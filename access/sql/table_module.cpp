#include "access/sql/table_module.h"

#include <sqlite3.h>

#include <exception>

#include "access/sql/functions.h"
#include "access/sql/plain_value.h"
#include "access/sql/plan_run.h"

namespace velnor::sql {
namespace {

struct TableUse : sqlite3_vtab {
    explicit TableUse(TableModule& m) : sqlite3_vtab{}, module(m) {}
    TableModule& module;
};

struct TableCursor : sqlite3_vtab_cursor {
    explicit TableCursor(TableModule& m) : sqlite3_vtab_cursor{}, module(m), run(m) {}
    TableModule& module;
    PlanRun run;
    RowRoad* road = nullptr;
    bool there = false;
};

TableModule& moduleOf(sqlite3_vtab* use)
{
    return static_cast<TableUse*>(use)->module;
}

TableCursor& cursorOf(sqlite3_vtab_cursor* cursor)
{
    return *static_cast<TableCursor*>(cursor);
}

/// Nothing may be thrown through the statement machine: the error waits in the context.
template <class Step> int guarded(RunContext& context, Step&& step)
{
    try {
        step();
        return SQLITE_OK;
    } catch (...) {
        context.failure = std::current_exception();
        return SQLITE_IOERR;
    }
}

int connectTable(sqlite3* db, void* given, int, const char* const*, sqlite3_vtab** made, char**)
{
    auto* module = static_cast<TableModule*>(given);
    return guarded(module->context(), [&] {
        if (sqlite3_declare_vtab(db, module->declaration().c_str()) != SQLITE_OK)
            throw EngineError(EngineErrorNumber::TooManyFields,
                              "The table " + module->table().layout().name +
                                  " has too many fields for a statement.");
        *made = new TableUse(*module);
    });
}

int disconnectTable(sqlite3_vtab* use)
{
    delete static_cast<TableUse*>(use);
    return SQLITE_OK;
}

int bestIndex(sqlite3_vtab* use, sqlite3_index_info* info)
{
    TableModule& module = moduleOf(use);
    return guarded(module.context(), [&] { info->idxNum = module.addPlan(*info); });
}

int openCursor(sqlite3_vtab* use, sqlite3_vtab_cursor** made)
{
    TableModule& module = moduleOf(use);
    return guarded(module.context(), [&] { *made = new TableCursor(module); });
}

int closeCursor(sqlite3_vtab_cursor* cursor)
{
    cursorOf(cursor).module.standsOn(nullptr);
    delete &cursorOf(cursor);
    return SQLITE_OK;
}

int filter(sqlite3_vtab_cursor* base, int planNumber, const char*, int count,
           sqlite3_value** values)
{
    TableCursor& cursor = cursorOf(base);
    return guarded(cursor.module.context(), [&] {
        cursor.there = false;
        cursor.road = cursor.run.begin(cursor.module.plan(planNumber),
                                       {values, static_cast<std::size_t>(count)});
        cursor.there = cursor.road != nullptr;
        cursor.module.standsOn(cursor.road);
    });
}

int next(sqlite3_vtab_cursor* base)
{
    TableCursor& cursor = cursorOf(base);
    return guarded(cursor.module.context(), [&] { cursor.there = cursor.road->next(); });
}

int atEnd(sqlite3_vtab_cursor* cursor)
{
    return !cursorOf(cursor).there;
}

int column(sqlite3_vtab_cursor* base, sqlite3_context* call, int number)
{
    TableCursor& cursor = cursorOf(base);
    return guarded(cursor.module.context(), [&] {
        const int fields = cursor.module.fields();
        const bool plain = number < fields;
        const ValueView value = plain                 ? cursor.road->plain(number)
                                : number < 2 * fields ? cursor.road->exact(number - fields)
                                                      : cursor.road->further(number - 2 * fields);
        if (value.kind() == ValueKind::Text)
            cursor.module.context().workOn(value.asText().size());
        setResult(call, value, !plain);
    });
}

int rowId(sqlite3_vtab_cursor* base, sqlite3_int64* row)
{
    *row = static_cast<sqlite3_int64>(cursorOf(base).road->row());
    return SQLITE_OK;
}

/// Without xCreate: the table is there under the module's own name, and nothing is written
/// anywhere.
sqlite3_module makeModule()
{
    sqlite3_module m{};
    m.iVersion = 1;
    m.xConnect = connectTable;
    m.xBestIndex = bestIndex;
    m.xDisconnect = disconnectTable;
    m.xOpen = openCursor;
    m.xClose = closeCursor;
    m.xFilter = filter;
    m.xNext = next;
    m.xEof = atEnd;
    m.xColumn = column;
    m.xRowid = rowId;
    return m;
}

const char* columnType(SqlType type)
{
    switch (type) {
    case SqlType::Boolean:
    case SqlType::Integer:
        return " INTEGER";
    case SqlType::Text:
        return " TEXT COLLATE ";
    case SqlType::Bytes:
        return " BLOB";
    default:
        return " REAL";
    }
}

}  // namespace

TableModule::TableModule(sqlite3* db, const std::string& name, std::shared_ptr<SourceTable> table,
                         RunContext& context)
    : table_(std::move(table)), context_(context)
{
    static const sqlite3_module kModule = makeModule();
    if (sqlite3_create_module_v2(db, name.c_str(), &kModule, this, nullptr) != SQLITE_OK)
        throw std::bad_alloc();
}

std::string TableModule::declaration() const
{
    std::string made = "CREATE TABLE x(";
    std::string hidden;
    int n = 0;
    for (const FieldDef& field : table_->layout().fields) {
        const std::string number = std::to_string(n);
        const SqlType type = sqlTypeOf(field.type);
        made += (n ? ", c" : "c") + number + columnType(type);
        if (type == SqlType::Text)
            made += kTextOrder;
        hidden += ", e" + number + " HIDDEN";
        ++n;
    }
    return made + hidden + furtherColumns() + ")";
}

/// Those of groups: keys in both forms, then functions. Texts need the order of texts.
std::string TableModule::furtherColumns() const
{
    std::string made;
    if (!context_.grouping)
        return made;
    const auto hidden = [&](int field) {
        const auto& fields = table_->layout().fields;
        const bool text =
            field >= 0 && sqlTypeOf(fields[static_cast<std::size_t>(field)].type) == SqlType::Text;
        return text ? std::string(" TEXT HIDDEN COLLATE ") + kTextOrder : std::string(" HIDDEN");
    };
    const Grouping& grouping = *context_.grouping;
    for (const char* letter : {"k", "x"})
        for (std::size_t i = 0; i < grouping.keys.size(); ++i)
            made += std::string(", ") + letter + std::to_string(i) + hidden(grouping.keys[i]);
    for (std::size_t i = 0; i < grouping.functions.size(); ++i) {
        const GroupFunction& function = grouping.functions[i];
        const bool ofField = function.kind >= Aggregate::Min;
        made += ", g" + std::to_string(i) + hidden(ofField ? function.field : -1);
    }
    return made;
}

std::int64_t TableModule::records()
{
    constexpr std::int64_t kUnknown = 100000;  // one table alone has nothing to be weighed against
    if (!context_.severalTables)
        return kUnknown;
    if (records_ < 0)
        records_ = table_->recordCount();
    return records_;
}

int TableModule::addPlan(sqlite3_index_info& info)
{
    const bool groups = !context_.severalTables && context_.groupsInMemory && !context_.grouping;
    AccessPlanner planner(*table_, context_.options.memory, records(), groups);
    plans_.push_back(planner.plan(info));
    return static_cast<int>(plans_.size()) - 1;
}

}  // namespace velnor::sql
