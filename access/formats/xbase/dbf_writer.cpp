#include "access/formats/xbase/dbf_writer.h"

#include <algorithm>
#include <limits>

#include "access/formats/xbase/field_decode.h"
#include "access/formats/xbase/field_encode.h"
#include "access/value_text.h"

namespace velnor::xbase {
namespace {

void refuseReadOnly(const DbfTable& table)
{
    if (table.readOnly())
        throw EngineError(EngineErrorNumber::ReadOnly, table.path() + " is open for reading only.");
    const std::string why = table.whyNotUpdatable();
    if (!why.empty())
        throw EngineError(EngineErrorNumber::ReadOnly, table.path() + " cannot be written. " + why);
}

}  // namespace

DbfWriter::DbfWriter(std::shared_ptr<DbfTable> table) : table_(std::move(table))
{
    refuseReadOnly(*table_);
    table_->indexes().needKept();
    const DbfHeader& header = table_->header();
    blank_.resize(header.recordLength);
    blankRecord(header, blank_);
    record_ = before_ = blank_;
}

std::span<const std::uint8_t> DbfWriter::memoBytes(ValueView value)
{
    return value.kind() == ValueKind::Text
               ? encodeText(value.asText(), *table_->header().codePage, scratch_)
               : value.asBytes();
}

/// Everything that could be wrong with a memo is found before the first one is stored.
void DbfWriter::checkMemo(const DbfField& field, ValueView value)
{
    const ValueKind kind = field.coding == Coding::MemoText ? ValueKind::Text : ValueKind::Bytes;
    if (value.isNull())
        return;
    if (value.kind() != kind)
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The value does not fit the type of the field " + field.name + ".");
    table_->memo()->checkStorable(memoBytes(value));
}

void DbfWriter::put(const DbfField& field, ValueView value)
{
    if (field.isMemo()) {
        checkMemo(field, value);
        memos_.push_back({&field, value});
    } else if (field.coding != Coding::Raw || !value.isNull()) {
        encodeField(table_->header(), field, value, record_.data(), scratch_);
    }
}

/// A Null autonumber is given the next number; one that is given moves the next number up.
void DbfWriter::putAutonumber(std::size_t n, ValueView value)
{
    const DbfField& field = table_->header().fields[n];
    const std::int64_t next = table_->nextNumber(n);
    const std::int64_t given = value.isNull() ? next : integerOf(value).value_or(0);
    put(field, value.isNull() ? ValueView::integer(given) : value);
    if (given >= next)
        numbers_.emplace_back(n, static_cast<std::uint32_t>(given + field.step));
}

void DbfWriter::storeMemos()
{
    const DbfHeader& header = table_->header();
    for (const auto& [field, value] : memos_) {
        const std::uint64_t old = memoBlock(header, *field, record_.data());
        std::uint32_t block = 0;
        if (!value.isNull()) {
            const auto bytes = memoBytes(value);
            const bool text = field->coding == Coding::MemoText;
            if (!bytes.empty() || !text)
                block = table_->memo()->write(bytes, text, old == kBadPointer ? 0 : old);
        }
        putMemoBlock(header, *field, block, record_.data());
    }
}

RowId DbfWriter::insert(std::span<const ValueView> values)
{
    const std::vector<DbfField>& fields = table_->header().fields;
    if (values.size() != fields.size())
        throw EngineError(EngineErrorNumber::InvalidArgument,
                          "A new record needs a value for each field.");
    record_ = blank_;
    memos_.clear();
    numbers_.clear();
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].autonumber)
            putAutonumber(i, values[i]);
        else
            put(fields[i], values[i]);
    IndexSet& indexes = table_->indexes();
    indexes.before(table_->count() + 1, {}, record_);
    storeMemos();
    const std::uint32_t number = table_->append(record_);
    for (const auto& [field, next] : numbers_)
        table_->setNextNumber(field, next);
    indexes.after(number);
    return number;
}

void DbfWriter::readLive(RowId row)
{
    if (row == 0 || row > table_->count())
        throw EngineError(EngineErrorNumber::NoCurrentRecord,
                          table_->path() + " has no record " + std::to_string(row) + ".");
    table_->readRecords(static_cast<std::uint32_t>(row), 1, record_);
    if (record_[0] == '*')
        throw EngineError(EngineErrorNumber::NoCurrentRecord,
                          "Record " + std::to_string(row) + " is deleted.");
}

void DbfWriter::update(RowId row, std::span<const FieldChange> changes)
{
    readLive(row);
    before_ = record_;
    memos_.clear();
    const std::vector<DbfField>& fields = table_->header().fields;
    for (const FieldChange& change : changes) {
        if (static_cast<std::size_t>(change.field) >= fields.size())
            throw EngineError(EngineErrorNumber::InvalidArgument,
                              "The record has no field " + std::to_string(change.field) + ".");
        put(fields[static_cast<std::size_t>(change.field)], change.value);
    }
    const auto number = static_cast<std::uint32_t>(row);
    table_->indexes().before(number, before_, record_);
    storeMemos();
    table_->overwrite(number, record_);
    table_->indexes().after(number);
}

void DbfWriter::remove(RowId row)
{
    readLive(row);
    const auto number = static_cast<std::uint32_t>(row);
    IndexSet& indexes = table_->indexes();
    const bool cares = indexes.caresForDeletion();
    if (cares) {
        before_ = record_;
        record_[0] = '*';
        indexes.before(number, before_, record_);
    }
    table_->markDeleted(number);
    if (cares)
        indexes.after(number);
}

}  // namespace velnor::xbase
