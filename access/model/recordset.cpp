// access/model/recordset.cpp - Recordset and the value of a Field of engine.h.

#include "access/model/collection.h"
#include "access/model/recordset_state.h"

namespace velnor {

Recordset::Recordset(std::unique_ptr<model::RecordsetState> state) : state_(std::move(state)) {}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

bool Recordset::Bof() const
{
    return state_->bof();
}
bool Recordset::Eof() const
{
    return state_->eof();
}
bool Recordset::NoMatch() const
{
    return state_->noMatch();
}
std::int64_t Recordset::RecordCount()
{
    return state_->recordCount();
}
double Recordset::PercentPosition()
{
    return state_->percentPosition();
}

void Recordset::MoveFirst()
{
    state_->moveFirst();
}
void Recordset::MoveLast()
{
    state_->moveLast();
}
void Recordset::MoveNext()
{
    state_->moveNext();
}
void Recordset::MovePrevious()
{
    state_->movePrevious();
}
void Recordset::Move(std::int64_t rows)
{
    state_->move(rows);
}
void Recordset::Index(std::string_view name)
{
    state_->setIndex(name);
}
const std::string& Recordset::Index() const
{
    return state_->index();
}
void Recordset::Seek(std::string_view comparison, std::span<const ValueView> key)
{
    state_->seek(comparison, key);
}

void Recordset::AddNew()
{
    state_->addNew();
}
void Recordset::Edit()
{
    state_->edit();
}
void Recordset::Update()
{
    state_->update();
}
void Recordset::CancelUpdate()
{
    state_->cancelUpdate();
}
void Recordset::Delete()
{
    state_->remove();
}
void Recordset::Close()
{
    state_->close();
}

Collection<Field>& Recordset::Fields()
{
    return state_->fields();
}
void Recordset::values(std::span<ValueView> out) const
{
    state_->values(out);
}

ValueView Recordset::value(int n) const
{
    return state_->value(n);
}
void Recordset::setValue(int n, ValueView v)
{
    state_->setValue(n, v);
}
int Recordset::fieldCount() const
{
    return state_->fieldCount();
}

Recordset::Bookmark Recordset::bookmark() const
{
    return state_->bookmark();
}
bool Recordset::moveToBookmark(Bookmark bookmark)
{
    return state_->moveToBookmark(bookmark);
}
bool Recordset::moveToOrdinal(std::int64_t n)
{
    return state_->moveToOrdinal(n);
}
std::int64_t Recordset::ordinal() const
{
    return state_->ordinal();
}
Recordset::Bookmark Recordset::lastModified() const
{
    return state_->lastModified();
}

ValueView Field::Value() const
{
    if (!rows_)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "Field " + def_.name + " belongs to no recordset.");
    return rows_->value(position_);
}

void Field::Value(ValueView v)
{
    if (!rows_)
        throw EngineError(EngineErrorNumber::NotSupported,
                          "Field " + def_.name + " belongs to no recordset.");
    rows_->setValue(position_, v);
}

}  // namespace velnor
