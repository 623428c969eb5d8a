#include "access/sql/statement.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "access/sql/functions.h"
#include "access/sql/grouped_rows.h"
#include "access/sql/plain_walk.h"
#include "access/sql/result_value.h"
#include "access/sql/sql_error.h"
#include "access/sql/table_module.h"
#include "access/statement_errors.h"
#include "access/value_text.h"
#include "platform/run_error.h"

namespace velnor::sql {
namespace {

constexpr int kStepsBetweenQuestions = 1000;
// Bytes that are sorted at one go. Nothing is asked meanwhile, so it must be short; the runs are
// merged from a temporary file.
constexpr std::size_t kLeastRun = 256u << 10, kMostRun = 2u << 20;

struct CloseMachine {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct CloseRun {
    void operator()(sqlite3_stmt* run) const { sqlite3_finalize(run); }
};
using RunHandle = std::unique_ptr<sqlite3_stmt, CloseRun>;

int stopWhenCancelled(void* given)
{
    auto* context = static_cast<RunContext*>(given);
    try {
        context->stopIfCancelled();
        return 0;
    } catch (...) {
        context->failure = std::current_exception();
        return 1;
    }
}

std::unique_ptr<sqlite3, CloseMachine> openMachine()
{
    sqlite3* db = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX;
    const int rc = sqlite3_open_v2(":memory:", &db, flags, nullptr);
    std::unique_ptr<sqlite3, CloseMachine> machine(db);
    if (rc != SQLITE_OK)
        throw std::bad_alloc();
    sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    return machine;
}

}  // namespace

struct Statement::Machine {
    RunContext context;
    std::unique_ptr<sqlite3, CloseMachine> db;
    std::vector<std::unique_ptr<TableModule>> tables;
    RunHandle run;
    std::vector<OutputColumn> columns;
    std::vector<std::string> scratch;
    Gives gives = Gives::Values;

    std::int64_t given = 0, top = -1;  // records, and the bound of TOP
    int tieColumns = 0;
    std::vector<Value> ties;
    bool done = false;

    std::optional<Grouping> grouping;
    std::optional<PlainWalk> walk;  // the machine finds the first record, the road the others
    RowRoad* road = nullptr;        // once the first one is found
    std::vector<int> rawFields;     // of the walk, where the columns are fields as they are
    bool inOrder = false;           // these are the first fields of the table

    ~Machine()
    {
        run.reset();
        db.reset();
    }
    [[noreturn]] void throwError(int rc);
    RunHandle prepare(const std::string& sql);
    std::int64_t countOf(const std::string& sql);
    bool stepRun();
    bool stepAnyway();
    bool takeGrouping(const Translation& translation);
    void takeWalk(const Translation& translation);
    bool stepWalk();
    ValueView walkValue(std::size_t n);
    std::string running;
    int firstTie() const { return gives == Gives::Values ? static_cast<int>(columns.size()) : 1; }
    bool tiesWithLast() const;
    void keepTies();
};

void Statement::Machine::throwError(int rc)
{
    if (context.failure)
        std::rethrow_exception(std::exchange(context.failure, nullptr));
    switch (rc & 0xFF) {
    case SQLITE_NOMEM:
        throw RunError(RunErrorNumber::OutOfMemory, "Out of memory.");
    case SQLITE_INTERRUPT:
        throw EngineError(EngineErrorNumber::Cancelled, "The statement was stopped.");
    case SQLITE_FULL:
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
        throw EngineError(EngineErrorNumber::DiskFull,
                          "There is no room for the temporary files of the statement.");
    case SQLITE_TOOBIG:
        throw EngineError(EngineErrorNumber::ValueTooLong, "A value in the statement is too long.");
    default:
        throw errorOfMessage(
            sqlite3_errmsg(db.get()),
            EngineError(kTooComplex, "The statement is too complicated to be run."));
    }
}

RunHandle Statement::Machine::prepare(const std::string& sql)
{
    sqlite3_stmt* made = nullptr;
    const int rc =
        sqlite3_prepare_v2(db.get(), sql.data(), static_cast<int>(sql.size()), &made, nullptr);
    RunHandle handle(made);
    if (rc != SQLITE_OK)
        throwError(rc);
    return handle;
}

std::int64_t Statement::Machine::countOf(const std::string& sql)
{
    const RunHandle count = prepare(sql);
    const int rc = sqlite3_step(count.get());
    if (rc != SQLITE_ROW)
        throwError(rc);
    return sqlite3_column_int64(count.get(), 0);
}

bool Statement::Machine::stepRun()
{
    const int rc = sqlite3_step(run.get());
    if (rc == SQLITE_ROW)
        return true;
    if (rc != SQLITE_DONE)
        throwError(rc);
    return false;
}

/// Groups that have no room in memory are made by sorting instead; nothing was given yet then. Nor
/// was it where WHERE holds for no record whatever it has: of all records together there is a group
/// even so.
bool Statement::Machine::stepAnyway()
{
    try {
        const bool there = stepRun();
        if (there || given > 0 || !context.grouping || !context.grouping->keys.empty())
            return there;
    } catch (const GroupsTooLarge&) {
        if (given > 0 || !context.groupsInMemory)
            throw EngineError(kTooComplex, "The statement needs more memory than it may have.");
    }
    context.groupsInMemory = false;
    context.grouping = nullptr;
    run = prepare(running);
    return stepRun();
}

/// The groups from the table itself, unless the machine would have to look at records for WHERE.
bool Statement::Machine::takeGrouping(const Translation& translation)
{
    if (gives != Gives::Values || !translation.grouping)
        return false;
    grouping = translation.grouping;
    context.grouping = &*grouping;
    run = prepare(grouping->sql);
    if (!asksColumnsBelow(db.get(), grouping->sql, 2 * tables.front()->fields()))
        return true;
    context.grouping = nullptr;
    return false;
}

void Statement::Machine::takeWalk(const Translation& translation)
{
    if (tables.size() != 1 || tieColumns > 0 || context.grouping)
        return;
    walk = plainWalkOf(db.get(), running);
    if (!walk || gives == Gives::Records || translation.fieldOfColumn.empty())
        return;
    rawFields = translation.fieldOfColumn;
    inOrder = true;
    for (std::size_t i = 0; i < rawFields.size(); ++i)
        inOrder = inOrder && rawFields[i] == static_cast<int>(i);
}

bool Statement::Machine::stepWalk()
{
    if (road)
        return given != walk->most && road->next();
    if (!stepAnyway())
        return false;
    road = tables.front()->road();
    return true;
}

ValueView Statement::Machine::walkValue(std::size_t n)
{
    if (!rawFields.empty())
        return road->raw(rawFields[n]);
    const int column = walk->columns[n], fields = tables.front()->fields();
    const ValueView plain = column < fields ? road->plain(column) : road->exact(column - fields);
    return resultValue(columns[n], plain, scratch[n]);
}

bool Statement::Machine::tiesWithLast() const
{
    for (int i = 0; i < tieColumns; ++i) {
        const ValueView mine = plainOf(sqlite3_column_value(run.get(), firstTie() + i));
        if (comparePlain(mine, ties[static_cast<std::size_t>(i)].view()) != 0)
            return false;
    }
    return true;
}

void Statement::Machine::keepTies()
{
    ties.resize(static_cast<std::size_t>(tieColumns));
    for (int i = 0; i < tieColumns; ++i)
        ties[static_cast<std::size_t>(i)].assign(
            plainOf(sqlite3_column_value(run.get(), firstTie() + i)));
}

Statement::Statement(const Translation& translation, Gives gives, RunOptions options)
    : machine_(std::make_unique<Machine>())
{
    Machine& m = *machine_;
    m.context.options = std::move(options);
    m.context.severalTables = translation.tables.size() > 1;
    m.gives = gives;
    m.columns = translation.columns;
    m.scratch.resize(m.columns.size());
    m.tieColumns = translation.tieColumns;
    m.db = openMachine();
    sqlite3* const db = m.db.get();
    addFunctions(db);
    for (std::size_t i = 0; i < translation.tables.size(); ++i)
        m.tables.push_back(std::make_unique<TableModule>(db, "v" + std::to_string(i),
                                                         translation.tables[i], m.context));
    const std::string bound =
        "PRAGMA cache_size=-" +
        std::to_string(std::clamp<std::size_t>(m.context.options.memory, kLeastRun, kMostRun) >>
                       10);
    sqlite3_exec(db, bound.c_str(), nullptr, nullptr, nullptr);
    if (m.context.options.cancelled)
        sqlite3_progress_handler(db, kStepsBetweenQuestions, stopWhenCancelled, &m.context);
    if (translation.top)
        m.top = *translation.top;
    else if (translation.topPercent)
        m.top = static_cast<std::int64_t>(std::ceil(
            static_cast<double>(m.countOf(translation.countSql)) * *translation.topPercent / 100));
    m.running = gives == Gives::Values ? translation.sql : translation.recordsSql;
    if (!m.takeGrouping(translation))
        m.run = m.prepare(m.running);
    m.takeWalk(translation);
}

Statement::~Statement() = default;

bool Statement::step()
{
    Machine& m = *machine_;
    if (m.done || m.top == 0)
        return false;
    m.done = !(m.walk ? m.stepWalk() : m.stepAnyway()) ||
             (m.top > 0 && m.given >= m.top && !m.tiesWithLast());
    if (m.done)
        return false;
    if (++m.given == m.top)
        m.keepTies();
    return true;
}

ValueView Statement::value(int n)
{
    const auto at = static_cast<std::size_t>(n);
    if (machine_->road)
        return machine_->walkValue(at);
    return resultValue(machine_->columns[at], plainOf(sqlite3_column_value(machine_->run.get(), n)),
                       machine_->scratch[at]);
}

void Statement::values(std::span<ValueView> out)
{
    if (machine_->road && machine_->inOrder)
        return machine_->road->rawFields(out);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = value(static_cast<int>(i));
}

RowId Statement::record() const
{
    if (machine_->road)
        return machine_->road->row();
    return static_cast<RowId>(sqlite3_column_int64(machine_->run.get(), 0));
}

}  // namespace velnor::sql
