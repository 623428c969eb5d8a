// access/model/database_state.h - what stands behind a Database.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "access/engine.h"
#include "access/model/open_stores.h"
#include "access/sql/run_context.h"

namespace velnor::model {

class DatabaseState : public std::enable_shared_from_this<DatabaseState> {
public:
    DatabaseState(std::string name, std::string connect, bool readOnly,
                  std::shared_ptr<OpenStore> store);
    ~DatabaseState();
    DatabaseState(const DatabaseState&) = delete;
    DatabaseState& operator=(const DatabaseState&) = delete;

    const std::string& name() const { return name_; }
    const std::string& connect() const { return connect_; }
    bool isOpen() const { return store_ != nullptr; }
    bool writeable() const { return isOpen() && !readOnly_ && store_->writeable(); }

    // 3420 when it is closed.
    OpenStore& openStore();
    std::shared_ptr<OpenStore> sharedStore();
    Store& store() { return openStore().store(); }
    /// 3027 unless it may be written.
    void requireWriteable();
    const FormatTraits& traits() { return openStore().traits(); }

    Collection<TableDef>& tables();

    /// Other databases that statements may name; null when there is none of this name.
    void attach(std::string_view name, std::shared_ptr<DatabaseState> other);
    DatabaseState* attached(std::string_view name) const;
    void runOptions(const sql::RunOptions& options) { runOptions_ = options; }
    const sql::RunOptions& runOptions() const { return runOptions_; }

    void add(RecordsetState& rows) { recordsets_.push_back(&rows); }
    void remove(RecordsetState& rows) { std::erase(recordsets_, &rows); }

    /// Closes the recordsets, commits, and lets go of the store, in every case.
    void close();

private:
    std::vector<TableDef> readTables();
    void appendTable(TableDef& table);
    void deleteTable(const TableDef& table);

    std::string name_;
    std::string connect_;
    bool readOnly_;
    std::shared_ptr<OpenStore> store_;
    Collection<TableDef> tables_;
    bool tablesRead_ = false;
    std::vector<RecordsetState*> recordsets_;
    std::vector<std::pair<std::string, std::shared_ptr<DatabaseState>>> attached_;
    sql::RunOptions runOptions_;
};

}  // namespace velnor::model
