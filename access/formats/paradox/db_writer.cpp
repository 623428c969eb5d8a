#include "access/formats/paradox/db_writer.h"

#include <algorithm>
#include <cstring>

#include "access/engine_error.h"
#include "access/formats/paradox/field_codec.h"
#include "access/value_text.h"

namespace velnor::paradox {
namespace {

constexpr std::size_t kPictureHead = 8;

/// The leader of a picture repeats it without the eight bytes in front of it.
std::size_t leaderStart(const StoredField& field, std::size_t length)
{
    return field.code == FieldCode::Graphic && length > field.leader() ? kPictureHead : 0;
}

}  // namespace

DbWriter::DbWriter(std::shared_ptr<DbTable> table) : table_(std::move(table))
{
    table_->prepareWriting();
    record_.resize(table_->header().recordSize);
    before_ = record_;
}

std::span<const std::uint8_t> DbWriter::longBytes(const LongChange& change)
{
    if (change.value.isNull())
        return {};
    if (change.value.kind() != ValueKind::Text)
        return change.value.asBytes();
    std::string_view text = change.value.asText();
    if (!isAscii(text)) {
        scratch_.clear();
        if (!table_->header().codePage->encode(text, scratch_))
            throw EngineError(EngineErrorNumber::TypeConversion,
                              "The text has characters that the code page of the table, " +
                                  std::to_string(table_->header().codePage->number()) +
                                  ", does not have (field " + change.field->name + ").");
        text = scratch_;
    }
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Everything that could be wrong with a long value is found before the first one is stored.
void DbWriter::testLong(const StoredField& field, ValueView value)
{
    const ValueKind kind = field.code == FieldCode::Memo ? ValueKind::Text : ValueKind::Bytes;
    if (!value.isNull() && value.kind() != kind)
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The value does not fit the type of the field " + field.name + ".");
    longs_.push_back({&field, value});
    longBytes(longs_.back());
}

void DbWriter::put(const StoredField& field, ValueView value)
{
    if (field.isLong())
        return testLong(field, value);
    encodeField(field, value, *table_->header().codePage, record_.data() + field.offset, scratch_);
}

/// A Null autonumber is given the next number; one that is given counts as given out.
void DbWriter::putAutonumber(const StoredField& field, ValueView value)
{
    const std::int64_t last = table_->lastNumber();
    const std::int64_t given = value.isNull() ? last + 1 : integerOf(value).value_or(0);
    put(field, ValueView::integer(given));
    if (given > last)
        number_ = static_cast<std::uint32_t>(given);
}

/// Short values stay in the record; of others it repeats the beginning.
void DbWriter::storeLong(const LongChange& change)
{
    const auto bytes = longBytes(change);
    const StoredField& field = *change.field;
    std::uint8_t* to = record_.data() + field.offset;
    std::memset(to, 0, field.length);
    if (bytes.empty())
        return;
    const std::size_t start = leaderStart(field, bytes.size());
    const std::size_t shown =
        std::min(bytes.size() - std::min(start, bytes.size()), field.leader());
    std::memcpy(to, bytes.data() + start, shown);
    LongPointer pointer;
    pointer.length = static_cast<std::uint32_t>(bytes.size());
    if (bytes.size() > field.leader())
        pointer = table_->mb()->store(bytes);
    pointer.write(to + field.leader());
}

void DbWriter::releaseLong(const StoredField& field, const std::uint8_t* record)
{
    if (MbFile* mb = table_->mb())
        mb->release(LongPointer::read(record + field.offset + field.leader()));
}

/// What fails from here on is the disk: half a change must not stay.
template <class Work> void DbWriter::change(Work work)
{
    try {
        work();
    } catch (...) {
        table_->rollback();
        throw;
    }
}

RowId DbWriter::insert(std::span<const ValueView> values)
{
    table_->prepareWriting();
    const std::vector<StoredField>& fields = table_->header().fields;
    if (values.size() != fields.size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A new record needs a value for each field.");
    longs_.clear();
    number_ = 0;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].code == FieldCode::Autonumber)
            putAutonumber(fields[i], values[i]);
        else
            put(fields[i], values[i]);
    table_->testRecord(record_.data(), nullptr);
    RowId row = 0;
    change([&] {
        for (const LongChange& value : longs_)
            storeLong(value);
        row = table_->addRecord(record_.data());
        if (number_)
            table_->setLastNumber(number_);
    });
    return row;
}

Place DbWriter::placeToChange(RowId row)
{
    table_->prepareWriting();
    if (!table_->keyed())
        throw EngineError(EngineErrorNumber::ReadOnly,
                          table_->path() +
                              " has no primary key: its records can be added to, not changed.");
    const auto place = table_->placeOf(row);
    if (!place)
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "The record is deleted.");
    const std::uint8_t* bytes = table_->chain().record(*place);
    before_.assign(bytes, bytes + table_->header().recordSize);
    record_ = before_;
    return *place;
}

void DbWriter::update(RowId row, std::span<const FieldChange> changes)
{
    const Place place = placeToChange(row);
    longs_.clear();
    number_ = 0;
    const std::vector<StoredField>& fields = table_->header().fields;
    for (const FieldChange& changed : changes) {
        if (static_cast<std::size_t>(changed.field) >= fields.size())
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "The record has no field " + std::to_string(changed.field) + ".");
        const StoredField& field = fields[static_cast<std::size_t>(changed.field)];
        if (field.code == FieldCode::Autonumber && !changed.value.isNull())
            putAutonumber(field, changed.value);
        else
            put(field, changed.value);
    }
    table_->testRecord(record_.data(), before_.data());
    change([&] {
        for (const LongChange& value : longs_) {
            releaseLong(*value.field, before_.data());
            storeLong(value);
        }
        table_->changeRecord(row, place, before_.data(), record_.data());
        if (number_)
            table_->setLastNumber(number_);
    });
}

void DbWriter::remove(RowId row)
{
    const Place place = placeToChange(row);
    change([&] {
        for (const StoredField& field : table_->header().fields)
            if (field.isLong())
                releaseLong(field, before_.data());
        table_->removeRecord(place, before_.data());
    });
}

}  // namespace velnor::paradox
