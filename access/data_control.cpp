#include "access/data_control.h"

#include <algorithm>

#include "platform/run_error.h"

namespace velnor {
namespace {

constexpr auto kNothingOpen = static_cast<RunErrorNumber>(91);

}  // namespace

DataControl::~DataControl()
{
    onReposition = nullptr;
    onValidate = nullptr;
    close();
}

void DataControl::close()
{
    adding_ = false;
    records_.reset();
    database_.reset();
}

void DataControl::commit()
{
    if (database_)
        database_->commit();
}

/// Past an end, where that is not to be passed, the record there is the current one.
void DataControl::stayInside(velnor::Recordset& records) const
{
    if (records.Eof() && !records.Bof() && EOFAction == EndAction::Stay)
        records.MoveLast();
    else if (records.Bof() && !records.Eof() && BOFAction == EndAction::Stay)
        records.MoveFirst();
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
    show();
    reposition();
}

Recordset& DataControl::Recordset()
{
    if (!records_)
        throw RunError(kNothingOpen, "No table is open");
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

bool DataControl::anyChanged() const
{
    return std::any_of(bindings_.begin(), bindings_.end(),
                       [](const DataBinding* b) { return b->changed(); });
}

bool DataControl::validate(DataAction action, bool& save)
{
    save = anyChanged();
    if (onValidate)
        onValidate(action, save);
    return action != DataAction::Cancel;
}

void DataControl::save()
{
    auto& records = Recordset();
    if (!adding_)
        records.Edit();
    for (DataBinding* binding : bindings_)
        if (binding->changed())
            binding->save(records);
    records.Update();
    database_->commit();
    if (adding_)
        records.moveToBookmark(records.lastModified());
    adding_ = false;
}

void DataControl::show()
{
    const bool record = !records_->Eof() && !records_->Bof();
    for (DataBinding* binding : bindings_)
        if (record)
            binding->show(*records_);
        else
            binding->clear();
}

void DataControl::reposition()
{
    if (onReposition)
        onReposition();
}

void DataControl::act(DataAction action, const std::function<void(velnor::Recordset&)>& step)
{
    auto& records = Recordset();
    try {
        bool toSave = false;
        if (!validate(action, toSave))
            return;
        if (toSave)
            save();
        else if (adding_)
            records.CancelUpdate();
        adding_ = false;
        step(records);
        show();
    } catch (const EngineError& error) {
        if (!onError)
            throw;
        onError(error.number(), error.what());
        return;
    }
    reposition();
}

void DataControl::MoveFirst()
{
    act(DataAction::MoveFirst, [](auto& records) { records.MoveFirst(); });
}

void DataControl::MoveLast()
{
    act(DataAction::MoveLast, [](auto& records) { records.MoveLast(); });
}

void DataControl::MoveNext()
{
    if (Recordset().Eof())
        return;
    act(DataAction::MoveNext, [this](auto& records) {
        records.MoveNext();
        stayInside(records);
    });
}

void DataControl::MovePrevious()
{
    if (Recordset().Bof())
        return;
    act(DataAction::MovePrevious, [this](auto& records) {
        records.MovePrevious();
        stayInside(records);
    });
}

void DataControl::Move(std::int64_t rows)
{
    act(DataAction::Find, [this, rows](auto& records) {
        records.Move(rows);
        stayInside(records);
    });
}

void DataControl::SetIndex(const std::string& name)
{
    act(DataAction::Find, [&](auto& records) {
        records.Index(name);
        records.MoveFirst();
    });
}

void DataControl::moveToBookmark(velnor::Recordset::Bookmark bookmark)
{
    act(DataAction::Bookmark, [bookmark](auto& records) {
        if (!records.moveToBookmark(bookmark))
            throw EngineError(EngineErrorNumber::NoCurrentRecord, "The record is gone.");
    });
}

void DataControl::AddNew()
{
    auto& records = Recordset();
    try {
        bool toSave = false;
        if (!validate(DataAction::AddNew, toSave))
            return;
        if (toSave)
            save();
        records.AddNew();
        adding_ = true;
        for (DataBinding* binding : bindings_)
            binding->show(records);
    } catch (const EngineError& error) {
        if (!onError)
            throw;
        onError(error.number(), error.what());
    }
}

void DataControl::Update()
{
    auto& records = Recordset();
    const bool added = adding_;
    try {
        bool toSave = false;
        if (!validate(DataAction::Update, toSave))
            return;
        if (toSave || adding_)
            save();
        show();
    } catch (const EngineError& error) {
        if (!onError)
            throw;
        onError(error.number(), error.what());
        return;
    }
    if (added && !records.Eof())
        reposition();
}

void DataControl::UpdateRecord()
{
    if (adding_ || anyChanged())
        save();
    show();
}

void DataControl::UpdateControls()
{
    if (adding_)
        Recordset().CancelUpdate();
    adding_ = false;
    Recordset();
    show();
}

void DataControl::Delete()
{
    auto& records = Recordset();
    try {
        bool toSave = false;
        if (!validate(DataAction::Delete, toSave))
            return;
        if (adding_) {
            records.CancelUpdate();
            adding_ = false;
            return show();
        }
        records.Delete();
        database_->commit();
        for (DataBinding* binding : bindings_)
            binding->clear();
    } catch (const EngineError& error) {
        if (!onError)
            throw;
        onError(error.number(), error.what());
    }
}

}  // namespace velnor
