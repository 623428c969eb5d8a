// access/model/query_result.h - the records of a statement's answer, fetched as far as they are
// asked for, and then there for good.
//
// Where the answer is records of one table with their fields as they are, their names are kept and
// the fields read when they are looked at; else the values are.
#pragma once

#include <memory>
#include <vector>

#include "access/formats/driver.h"
#include "access/sql/statement.h"
#include "access/storage/row_store.h"

namespace velnor::model {

class QueryResult {
public:
    QueryResult(sql::Translation translation, sql::RunOptions options);

    const TableLayout& layout() const { return layout_; }
    /// Fetches until record n (from 0) is there; false when there is none.
    bool fetch(std::int64_t n);
    /// Fetches all; the statement then needs its tables no longer, except to read kept records.
    std::int64_t fetchAll();
    bool keepsRecords() const { return keepsRecords_; }
    RowId record(std::int64_t n);
    ValueView value(std::int64_t n, int field)
    {
        return rows_.value(n, static_cast<std::size_t>(field));
    }
    int tableField(int column) const
    {
        return translation_.fieldOfColumn[static_cast<std::size_t>(column)];
    }
    sql::SourceTable& table() { return *translation_.tables.front(); }

private:
    bool fetchOne();

    sql::Translation translation_;
    TableLayout layout_;
    bool keepsRecords_;
    std::unique_ptr<sql::Statement> statement_;  // null when all is fetched
    RowStore rows_;
    std::vector<ValueView> values_;
};

/// Walks a result; the name of a record is its place, from 1.
class ResultCursor final : public RowCursor {
public:
    explicit ResultCursor(std::shared_ptr<QueryResult> result);
    bool first() override { return stand(0); }
    bool last() override { return stand(result_->fetchAll() - 1); }
    bool next() override { return at_ <= behind_ && stand(at_ + 1); }
    bool previous() override { return stand(at_ - 1); }
    bool moveTo(RowId row) override { return stand(static_cast<std::int64_t>(row) - 1); }
    bool moveToOrdinal(std::int64_t n) override { return stand(n); }
    std::int64_t ordinal() override { return at_; }
    RowId row() const override { return static_cast<RowId>(at_ + 1); }
    ValueView field(int n) override;

private:
    bool stand(std::int64_t n);

    std::shared_ptr<QueryResult> result_;
    std::unique_ptr<RowCursor> table_;  // of kept records
    bool gone_ = false;                 // the kept record was removed since
    std::int64_t at_ = -1, behind_ = 0;
};

/// Walks a statement once, forwards, and keeps nothing.
class ForwardCursor final : public RowCursor {
public:
    ForwardCursor(sql::Translation translation, sql::RunOptions options);
    bool first() override;
    bool next() override;
    bool last() override { refuse(); }
    bool previous() override { refuse(); }
    bool moveTo(RowId row) override;
    RowId row() const override { return static_cast<RowId>(at_); }
    ValueView field(int n) override { return statement_.value(n); }
    void fields(std::span<ValueView> out) override { statement_.values(out); }

private:
    [[noreturn]] void refuse() const;

    sql::Translation translation_;
    sql::Statement statement_;
    std::int64_t at_ = 0;
    bool there_ = false;
};

}  // namespace velnor::model
