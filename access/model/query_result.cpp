#include "access/model/query_result.h"

#include "access/engine_error.h"
#include "access/statement_errors.h"

namespace velnor::model {
namespace {

TableLayout layoutOf(const sql::Translation& translation)
{
    TableLayout layout;
    layout.name = "the answer";
    for (const sql::OutputColumn& column : translation.columns)
        layout.fields.push_back(column.field);
    layout.updatable = false;
    layout.whyNotUpdatable = "the answer of a statement is for reading only";
    return layout;
}

using Gives = sql::Statement::Gives;

}  // namespace

QueryResult::QueryResult(sql::Translation translation, sql::RunOptions options)
    : translation_(std::move(translation)), layout_(layoutOf(translation_)),
      keepsRecords_(!translation_.fieldOfColumn.empty()),
      rows_(keepsRecords_ ? 1 : layout_.fields.size(), options.memory),
      values_(keepsRecords_ ? 1 : layout_.fields.size())
{
    statement_ = std::make_unique<sql::Statement>(
        translation_, keepsRecords_ ? Gives::Records : Gives::Values, std::move(options));
}

bool QueryResult::fetchOne()
{
    if (!statement_->step()) {
        statement_.reset();
        return false;
    }
    if (keepsRecords_)
        values_[0] = ValueView::integer(static_cast<std::int64_t>(statement_->record()));
    else
        for (std::size_t i = 0; i < values_.size(); ++i)
            values_[i] = statement_->value(static_cast<int>(i));
    rows_.append(values_);
    return true;
}

bool QueryResult::fetch(std::int64_t n)
{
    while (statement_ && rows_.size() <= n)
        if (!fetchOne())
            break;
    return n < rows_.size();
}

std::int64_t QueryResult::fetchAll()
{
    while (statement_ && fetchOne()) {
    }
    return rows_.size();
}

RowId QueryResult::record(std::int64_t n)
{
    return static_cast<RowId>(rows_.value(n, 0).asInteger());
}

ResultCursor::ResultCursor(std::shared_ptr<QueryResult> result) : result_(std::move(result))
{
    if (result_->keepsRecords())
        table_ = result_->table().cursor(std::nullopt);
}

bool ResultCursor::stand(std::int64_t n)
{
    if (n >= 0 && result_->fetch(n)) {
        at_ = n;
        behind_ = n;
        gone_ = table_ && !table_->moveTo(result_->record(n));
        return true;
    }
    at_ = n < 0 ? -1 : result_->fetchAll();
    behind_ = at_ - 1;
    return false;
}

ValueView ResultCursor::field(int n)
{
    if (!table_)
        return result_->value(at_, n);
    if (gone_)
        throw EngineError(kRecordDeleted, "The record is deleted.");
    return table_->field(result_->tableField(n));
}

ForwardCursor::ForwardCursor(sql::Translation translation, sql::RunOptions options)
    : translation_(std::move(translation)),
      statement_(translation_, Gives::Values, std::move(options))
{
}

bool ForwardCursor::first()
{
    if (at_ == 0)
        return next();
    if (at_ > 1)
        refuse();
    return there_;
}

bool ForwardCursor::next()
{
    there_ = statement_.step();
    ++at_;
    return there_;
}

bool ForwardCursor::moveTo(RowId row)
{
    if (static_cast<std::int64_t>(row) != at_)
        refuse();
    return there_;
}

void ForwardCursor::refuse() const
{
    throw EngineError(EngineErrorNumber::NotSupported, "This recordset only goes forwards.");
}

}  // namespace velnor::model
