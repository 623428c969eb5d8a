#include "access/model/recordset_state.h"

#include <algorithm>

#include "access/model/coercion.h"
#include "access/model/collection.h"
#include "access/model/database_state.h"

namespace velnor::model {
namespace {

constexpr std::int64_t kFarMove = 64;  // from here on a move goes by ordinals
constexpr std::size_t kMaxKeyFields = 32;

Comparison comparisonOf(std::string_view word)
{
    static constexpr std::pair<std::string_view, Comparison> kWords[] = {
        {"=", Comparison::Equal},      {">=", Comparison::GreaterEqual}, {">", Comparison::Greater},
        {"<=", Comparison::LessEqual}, {"<", Comparison::Less},
    };
    for (const auto& [known, comparison] : kWords)
        if (known == word)
            return comparison;
    throw EngineError(EngineErrorNumber::InvalidArgument,
                      "Not a comparison: " + std::string(word) + ".");
}

const FieldDef* fieldNamed(const TableLayout& layout, std::string_view name)
{
    for (const FieldDef& field : layout.fields)
        if (paths::sameName(field.name, name))
            return &field;
    return nullptr;
}

}  // namespace

RecordsetState::RecordsetState(DatabaseState& database, std::unique_ptr<RecordSource> source,
                               RecordsetType type)
    : database_(&database), source_(std::move(source)), type_(type), buffer_(source_->layout()),
      fieldCount_(static_cast<int>(source_->layout().fields.size()))
{
    cursor_ = source_->cursor(order());
    if (cursor_->first())
        stand(0);
    database_->add(*this);
    source_->attach(*this);
}

RecordsetState::~RecordsetState()
{
    close();
}

void RecordsetState::close()
{
    if (!database_)
        return;
    buffer_.end();
    cursor_.reset();
    writer_.reset();
    source_->detach(*this);
    database_->remove(*this);
    database_ = nullptr;
    source_.reset();
    place_ = Place::Empty;
}

// What must hold

RowCursor& RecordsetState::cursor() const
{
    if (!cursor_)
        throw EngineError(EngineErrorNumber::ObjectClosed, "The recordset is closed.");
    return *cursor_;
}

RowWriter& RecordsetState::writer()
{
    if (!writer_)
        writer_ = source_->writer();
    return *writer_;
}

void RecordsetState::noRecord() const
{
    cursor();
    throw EngineError(EngineErrorNumber::NoCurrentRecord,
                      "No current record in " + source_->layout().name + ".");
}

void RecordsetState::requireRecord() const
{
    if (place_ != Place::Record) [[unlikely]]
        noRecord();
}

void RecordsetState::requireWriteable() const
{
    cursor();
    if (const char* why = source_->whyReadOnly())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          "Cannot write to " + source_->layout().name + ": " + why + ".");
}

void RecordsetState::requireField(int n) const
{
    if (static_cast<unsigned>(n) >= static_cast<unsigned>(fieldCount_)) [[unlikely]]
        throwNotInCollection(std::to_string(n));
}

void RecordsetState::requireTableType(const char* what) const
{
    cursor();
    if (type_ != RecordsetType::Table)
        throw EngineError(EngineErrorNumber::NotSupported,
                          std::string(what) + " needs a recordset of table type.");
}

// The place

void RecordsetState::stand(std::int64_t ordinal)
{
    place_ = Place::Record;
    ordinal_ = ordinal;
    met_ = std::max(met_, ordinal + 1);
}

void RecordsetState::standBehind()
{
    place_ = Place::Behind;
    ordinal_ = -1;
    counted_ = true;
}

void RecordsetState::moveFirst()
{
    buffer_.end();
    if (cursor().first())
        return stand(0);
    place_ = Place::Empty;
    noRecord();
}

void RecordsetState::moveLast()
{
    buffer_.end();
    if (!cursor().last()) {
        place_ = Place::Empty;
        noRecord();
    }
    counted_ = true;
    stand(source_->recordCount() - 1);
}

void RecordsetState::moveNext()
{
    if (eof() || place_ == Place::Lost) [[unlikely]]
        noRecord();
    buffer_.end();
    if (!cursor().next())
        return standBehind();
    if (place_ == Place::Before)
        stand(0);
    else
        stand(ordinal_ < 0 ? -1 : ordinal_ + (place_ == Place::Record));
}

void RecordsetState::movePrevious()
{
    if (bof() || place_ == Place::Lost)
        noRecord();
    buffer_.end();
    const bool fromBehind = place_ == Place::Behind;
    if (!cursor().previous()) {
        place_ = Place::Before;
        ordinal_ = -1;
        return;
    }
    stand(fromBehind ? source_->recordCount() - 1 : ordinal_ - (ordinal_ >= 0));
}

void RecordsetState::stepForward(std::int64_t rows)
{
    for (; rows > 0 && place_ != Place::Behind; --rows)
        moveNext();
}

void RecordsetState::stepBack(std::int64_t rows)
{
    for (; rows > 0 && place_ != Place::Before; --rows)
        movePrevious();
}

void RecordsetState::move(std::int64_t rows)
{
    if (place_ == Place::Empty || place_ == Place::Lost || (rows > 0 && eof()) ||
        (rows < 0 && bof()))
        noRecord();
    buffer_.end();
    const bool far = rows >= kFarMove || rows <= -kFarMove;
    if (far && place_ == Place::Record && ordinal_ >= 0) {
        std::int64_t target = 0;
        if (__builtin_add_overflow(ordinal_, rows, &target))
            target = rows < 0 ? -1 : source_->recordCount();
        if (target >= 0 && cursor().moveToOrdinal(target))
            return stand(target);
        // Past an end: as if the last step had gone over it.
        if (rows > 0 ? cursor().last() && cursor().next() : cursor().first() && cursor().previous())
            noRecord();
        if (rows > 0)
            return standBehind();
        place_ = Place::Before;
        ordinal_ = -1;
        return;
    }
    rows > 0 ? stepForward(rows) : stepBack(rows == INT64_MIN ? INT64_MAX : -rows);
}

/// Back to where it stood after a look elsewhere that found nothing.
void RecordsetState::comeBack(Place place, RowId row, std::int64_t ordinal)
{
    if (place == Place::Record && cursor().moveTo(row)) {
        place_ = place;
        ordinal_ = ordinal;
    } else {
        place_ = place == Place::Empty ? Place::Empty : Place::Lost;
    }
}

bool RecordsetState::moveToOrdinal(std::int64_t n)
{
    const RowId here = place_ == Place::Record ? cursor().row() : 0;
    if (n < 0)
        return false;
    buffer_.end();
    if (place_ == Place::Record && n == ordinal_)
        return true;
    if (place_ == Place::Record && n == ordinal_ + 1 && ordinal_ >= 0 && cursor().next()) {
        stand(n);
        return true;
    }
    if (cursor().moveToOrdinal(n)) {
        stand(n);
        return true;
    }
    comeBack(place_, here, ordinal_);
    return false;
}

RowId RecordsetState::bookmark() const
{
    requireRecord();
    return cursor().row();
}

bool RecordsetState::moveToBookmark(RowId row)
{
    const bool standing = place_ == Place::Record;
    const RowId here = standing ? cursor().row() : 0;
    buffer_.end();
    if (standing && here == row && cursor().moveTo(row))
        return true;
    if (cursor().moveTo(row)) {
        place_ = Place::Record;
        ordinal_ = -1;
        return true;
    }
    comeBack(place_, here, ordinal_);
    return false;
}

std::int64_t RecordsetState::recordCount()
{
    cursor();
    if (type_ == RecordsetType::Table || counted_)
        return source_->recordCount();
    return met_;
}

double RecordsetState::percentPosition()
{
    if (place_ == Place::Behind)
        return 100;
    if (place_ != Place::Record)
        return 0;
    if (ordinal_ < 0)
        ordinal_ = cursor().ordinal();
    const std::int64_t steps = source_->recordCount() - 1;
    if (steps <= 0 || ordinal_ <= 0)
        return 0;
    return std::min(100.0, 100.0 * static_cast<double>(ordinal_) / static_cast<double>(steps));
}

// Order and Seek

std::optional<std::string_view> RecordsetState::order() const
{
    if (index_.empty())
        return std::nullopt;
    return index_;
}

const IndexDef* RecordsetState::indexNamed(std::string_view name) const
{
    for (const IndexDef& index : source_->layout().indexes)
        if (paths::sameName(index.name, name))
            return &index;
    return nullptr;
}

void RecordsetState::setIndex(std::string_view name)
{
    requireTableType("Index");
    std::string chosen;
    if (!name.empty()) {
        const IndexDef* index = indexNamed(name);
        if (!index)
            throw EngineError(EngineErrorNumber::IndexKeyMissing, std::string(name) +
                                                                      " is not an index of " +
                                                                      source_->layout().name + ".");
        chosen = index->name;
    }
    buffer_.end();
    auto ordered =
        source_->cursor(chosen.empty() ? std::nullopt : std::optional<std::string_view>(chosen));
    cursor_ = std::move(ordered);
    index_ = std::move(chosen);
    if (cursor_->first())
        stand(0);
    else
        place_ = Place::Empty;
}

void RecordsetState::seek(std::string_view comparison, std::span<const ValueView> key)
{
    requireTableType("Seek");
    const IndexDef* index = indexNamed(index_);
    if (!index)
        throw EngineError(EngineErrorNumber::NoCurrentIndex,
                          "Seek in " + source_->layout().name + " needs an index.");
    const Comparison how = comparisonOf(comparison);
    const std::size_t most =
        std::min(std::max<std::size_t>(index->fields.size(), 1), kMaxKeyFields);
    if (key.empty() || key.size() > most)
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "The key does not fit index " + index->name + ".");
    ValueView settled[kMaxKeyFields];
    std::string scratch[kMaxKeyFields];
    for (std::size_t i = 0; i < key.size(); ++i) {
        const FieldDef* field = i < index->fields.size()
                                    ? fieldNamed(source_->layout(), index->fields[i].name)
                                    : nullptr;
        settled[i] = field ? coerceKey(*field, key[i], scratch[i]) : key[i];
    }
    buffer_.end();
    noMatch_ = !cursor().seek(how, {settled, key.size()});
    place_ = noMatch_ ? Place::Lost : Place::Record;
    ordinal_ = -1;
}

// Editing

void RecordsetState::addNew()
{
    requireWriteable();
    buffer_.beginAdding();
}

void RecordsetState::edit()
{
    requireWriteable();
    requireRecord();
    buffer_.beginEditing();
}

void RecordsetState::insertRecord()
{
    source_->recordWillChange();
    lastModified_ = writer().insert(buffer_.values());
    ++met_;
    if (!index_.empty())
        ordinal_ = -1;  // the new record may have come in before this one
}

void RecordsetState::updateRecord()
{
    const auto changes = buffer_.changes();
    const RowId row = cursor().row();
    lastModified_ = row;
    if (changes.empty())
        return;
    source_->recordWillChange();
    writer().update(row, changes);
    if (!index_.empty())
        ordinal_ = -1;
}

void RecordsetState::update()
{
    const EditBuffer::Mode mode = buffer_.mode();
    if (mode == EditBuffer::Mode::None) {
        cursor();
        throw EngineError(EngineErrorNumber::UpdateWithoutEdit,
                          "Update or CancelUpdate without AddNew or Edit.");
    }
    buffer_.check([this](int n) { return cursor().field(n); });
    if (mode == EditBuffer::Mode::Adding) {
        insertRecord();
    } else {
        updateRecord();
    }
    buffer_.end();
    source_->recordWritten();
    // A cursor shows what was written at its next move: this is one, to where it stands.
    if (mode == EditBuffer::Mode::Editing && !cursor().moveTo(lastModified_))
        place_ = Place::Deleted;
}

void RecordsetState::cancelUpdate()
{
    cursor();
    if (buffer_.mode() == EditBuffer::Mode::None)
        throw EngineError(EngineErrorNumber::UpdateWithoutEdit,
                          "Update or CancelUpdate without AddNew or Edit.");
    buffer_.end();
}

void RecordsetState::remove()
{
    requireWriteable();
    requireRecord();
    if (!source_->traits().canDelete)
        throw EngineError(EngineErrorNumber::DeletesNotSupported,
                          "Records of this kind of file cannot be deleted.");
    buffer_.end();
    source_->recordWillChange();
    writer().remove(cursor().row());
    place_ = Place::Deleted;
    met_ = std::max<std::int64_t>(met_ - 1, 0);
    source_->recordWritten();
}

// Values

Collection<Field>& RecordsetState::fields()
{
    cursor();
    if (fields_.items_.empty()) {
        for (const FieldDef& def : source_->layout().fields) {
            Field field(def);
            field.rows_ = this;
            field.position_ = fields_.Count();
            fields_.items_.push_back(std::move(field));
        }
        fields_.onAppend_ = [](Field&) {
            throw EngineError(EngineErrorNumber::NotSupported, "A recordset's fields are fixed.");
        };
        fields_.onDelete_ = fields_.onAppend_;
    }
    return fields_;
}

ValueView RecordsetState::value(int n)
{
    requireField(n);
    const auto at = static_cast<std::size_t>(n);
    if (buffer_.holds(at))
        return buffer_.value(at);
    requireRecord();
    return cursor_->field(n);
}

void RecordsetState::values(std::span<ValueView> out)
{
    requireRecord();
    if (!out.empty())
        requireField(static_cast<int>(out.size()) - 1);
    cursor_->fields(out);
}

void RecordsetState::setValue(int n, ValueView v)
{
    requireField(n);
    if (buffer_.mode() == EditBuffer::Mode::None) [[unlikely]] {
        cursor();
        throw EngineError(EngineErrorNumber::UpdateWithoutEdit,
                          "A value is set without AddNew or Edit.");
    }
    buffer_.assign(static_cast<std::size_t>(n), v);
}

// The store goes and comes

void RecordsetState::releaseStore()
{
    if (place_ == Place::Record)
        heldRow_ = cursor_->row();
    cursor_.reset();
    writer_.reset();
}

void RecordsetState::restoreStore()
{
    cursor_ = source_->cursor(order());
    switch (place_) {
    case Place::Record:
        if (!cursor_->moveTo(heldRow_))
            place_ = Place::Lost;
        break;
    case Place::Before:
        if (cursor_->first())
            cursor_->previous();
        break;
    case Place::Behind:
        if (cursor_->last())
            cursor_->next();
        break;
    case Place::Deleted:
        place_ = Place::Lost;
        break;
    case Place::Empty:
    case Place::Lost:
        break;
    }
}

}  // namespace velnor::model
