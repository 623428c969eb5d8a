#include "windows/data_control.h"

#include "platform/run_error.h"

namespace velnor {

DataControl::~DataControl()
{
    onReposition = nullptr;
    close();
}

void DataControl::close()
{
    records_.reset();
    database_.reset();
}

void DataControl::commit()
{
    if (database_)
        database_->commit();
}

Recordset DataControl::open()
{
    return database_->OpenRecordset(RecordSource, Type);
}

void DataControl::Refresh()
{
    close();
    database_.emplace(workspace_.OpenDatabase(DatabaseName, Exclusive, ReadOnly, Connect));
    try {
        records_.emplace(open());
    } catch (...) {
        close();
        throw;
    }
    reposition();
}

Recordset& DataControl::Recordset()
{
    if (!records_)
        throw RunError(static_cast<RunErrorNumber>(91), "No table is open");
    return *records_;
}

Recordset DataControl::anotherCursor()
{
    const std::string order = Recordset().Index();
    auto cursor = open();
    if (!order.empty())
        cursor.Index(order);
    return cursor;
}

void DataControl::reposition()
{
    if (onReposition)
        onReposition();
}

void DataControl::MoveFirst()
{
    Recordset().MoveFirst();
    reposition();
}

void DataControl::MoveLast()
{
    Recordset().MoveLast();
    reposition();
}

void DataControl::MoveNext()
{
    auto& records = Recordset();
    if (records.Eof())
        return;
    records.MoveNext();
    if (records.Eof())
        records.MoveLast();
    reposition();
}

void DataControl::MovePrevious()
{
    auto& records = Recordset();
    if (records.Bof())
        return;
    records.MovePrevious();
    if (records.Bof())
        records.MoveFirst();
    reposition();
}

void DataControl::Move(std::int64_t rows)
{
    auto& records = Recordset();
    records.Move(rows);
    if (records.Eof())
        records.MoveLast();
    else if (records.Bof())
        records.MoveFirst();
    reposition();
}

void DataControl::SetIndex(const std::string& name)
{
    Recordset().Index(name);
    Recordset().MoveFirst();
    reposition();
}

}  // namespace velnor
