#include "access/formats/jet/jet_writer.h"

#include <algorithm>
#include <random>

#include "access/formats/jet/cascade.h"
#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/text_compression.h"
#include "access/formats/jet/whole_change.h"

namespace velnor::jet {
namespace {

std::mt19937_64& randomSource()
{
    static std::mt19937_64 source{std::random_device{}()};
    return source;
}

}  // namespace

JetWriter::JetWriter(std::shared_ptr<JetTable> table, const TableByPage& tables,
                     bool randomAutonumber)
    : table_(std::move(table)), tables_(tables), relations_(*table_, tables),
      randomAutonumber_(randomAutonumber), placer_(*table_), buffer_(table_->plan()),
      reader_(table_->plan()), keys_(*table_), longs_(*table_)
{
    if (!table_->whyReadOnly().empty())
        throw EngineError(EngineErrorNumber::NotSupported, table_->whyReadOnly());
    const std::size_t fields = table_->plan().fields.size();
    values_.resize(fields);
    changed_.resize(fields);
    scratch_.resize(fields);
}

// ---- values

void JetWriter::requireCurrent()
{
    if (table_->retired())
        throw EngineError(EngineErrorNumber::ObjectClosed, "The structure of table \"" +
                                                               table_->name() +
                                                               "\" was changed; open it again.");
    relations_.refresh();
}

void JetWriter::openOld(RowPointer home)
{
    const auto held = table_->row(home);
    if (!held)
        throw EngineError(EngineErrorNumber::NoCurrentRecord, "The record is deleted.");
    old_.bytes.assign(held->bytes.begin(), held->bytes.end());
    old_.stored = held->stored;
    if (!reader_.open(old_.bytes))
        throw EngineError(EngineErrorNumber::Corrupt,
                          "The record is damaged; repair the database.");
    longs_.start(reader_);
}

ValueView JetWriter::oldValue(int field)
{
    const FieldPlan& plan = table_->plan().fields[field];
    if (!plan.longValue())
        return reader_.value(field, scratch_[field]);
    const auto stored = reader_.raw(field);
    JetFile& file = table_->file();
    const auto bytes = stored ? readLongValue(file, *stored, gathered_) : std::nullopt;
    if (!bytes)
        return ValueView::null();
    if (plan.type != column_type::kMemo)
        return ValueView::bytes(*bytes);
    const std::string_view chars(reinterpret_cast<const char*>(bytes->data()), bytes->size());
    std::string decoded;
    scratch_[field] = file.format().wideText ? decodeText(*bytes, decoded)
                                             : file.codePage().decode(chars, decoded);
    return ValueView::text(scratch_[field]);
}

ValueView randomGuid(std::string& text)
{
    std::uint64_t random[2] = {randomSource()(), randomSource()()};
    auto* bytes = reinterpret_cast<std::uint8_t*>(random);
    bytes[7] = static_cast<std::uint8_t>((bytes[7] & 0x0F) | 0x40);  // a random GUID
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return ValueView::text(guidText(std::span<const std::uint8_t, 16>(bytes, 16), text));
}

ValueView JetWriter::randomNumber()
{
    return ValueView::integer(static_cast<std::int32_t>(randomSource()()));
}

/// A Null autonumber gets its number.
void JetWriter::giveAutonumbers()
{
    TableDef& def = table_->def();
    const auto& fields = table_->plan().fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = def.columns[fields[i].column];
        if (!column.autonumber() || !values_[i].isNull())
            continue;
        if (column.type == column_type::kGuid) {
            values_[i] = randomGuid(guid_);
        } else if (randomAutonumber_) {
            values_[i] = randomNumber();
        } else {
            if (def.lastAutonumber == INT32_MAX)
                throw EngineError(EngineErrorNumber::DatabaseFull,
                                  "The autonumber of the table has reached its end.");
            values_[i] = ValueView::integer(std::int64_t{def.lastAutonumber} + 1);
        }
    }
}

/// A number that was given moves the counter on.
void JetWriter::raiseAutonumber()
{
    TableDef& def = table_->def();
    const auto& fields = table_->plan().fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = def.columns[fields[i].column];
        if (column.type == column_type::kLong && column.autonumber() && !randomAutonumber_ &&
            values_[i].kind() == ValueKind::Integer && values_[i].asInteger() > def.lastAutonumber)
            def.lastAutonumber = static_cast<std::int32_t>(values_[i].asInteger());
    }
}

// ---- the row

/// Puts every value but new long ones into the row buffer.
void JetWriter::writeRowFields(bool fresh)
{
    const auto& fields = table_->plan().fields;
    buffer_.clear();
    for (int i = 0; i < static_cast<int>(fields.size()); ++i) {
        if (fresh || changed_[i]) {
            if (!longs_.has(i))
                buffer_.set(i, values_[i]);
        } else if (fields[i].type == column_type::kBoolean) {
            buffer_.set(i, ValueView::boolean(!reader_.isNull(i)));
        } else if (const auto raw = reader_.raw(i)) {
            buffer_.setRaw(i, *raw);
        }
    }
}

/// Long values as placeholders of their size: is the row small enough? With values inline, if not:
/// with all new ones outside. 3047 when that is too large as well.
JetWriter::Bytes JetWriter::buildRow()
{
    const auto limit = static_cast<std::size_t>(table_->file().format().row.maxBytes);
    const RecordLongs::Sizes longs = longs_.sizes();
    // The jump bytes of a long Jet 3 row are counted for the worst.
    const std::size_t slack = table_->file().format().row.wide ? 0 : 8;
    const std::size_t plain = buffer_.size();
    if (plain + longs.outside > limit)
        throw EngineError(EngineErrorNumber::RecordTooLarge, "Record is too large.");
    longs_.write(plain + longs.inRow + slack <= limit, buffer_);
    return buffer_.build();
}

// ---- new records

/// Entries of a long append may wait, unless the file is so full that there may be no room for them
/// when their time comes: the record must be refused, then, and not the commit.
bool JetWriter::appendsMany()
{
    constexpr int kMany = 64;
    constexpr std::uint64_t kRoomAnIndex = 32u << 20;
    if (appended_ < kMany) {
        ++appended_;
        return false;
    }
    // A tree is built beside the old one.
    const std::uint64_t wanted = kRoomAnIndex * keys_.indexCount() + 3 * keys_.waitingBytes();
    return table_->file().roomLeft() > wanted;
}

RowId JetWriter::insert(std::span<const ValueView> values)
{
    requireCurrent();
    values_.assign(values.begin(), values.end());
    values_.resize(table_->plan().fields.size());
    giveAutonumbers();
    longs_.startEmpty();
    longs_.setAll(values_);
    writeRowFields(true);
    keys_.startEmpty();
    keys_.prepare(values_, {});
    if (relations_.any())
        relations_.checkInsert([this](int field) { return newValue(field); });

    RowPointer home;
    try {
        home = placer_.add(buildRow());
        keys_.insert(home, appendsMany());
    } catch (...) {
        keys_.undoInsert(home);
        if (!home.isNull())
            placer_.remove(home, home);
        longs_.undoWrite();
        throw;
    }
    raiseAutonumber();
    table_->countsChanged();
    return rowIdOf(home);
}

// ---- changes

/// Of the record that is open: only what keys and relationships look at needs to be decoded.
void JetWriter::takeKeyValues()
{
    std::fill(values_.begin(), values_.end(), ValueView::null());
    for (const int field : keys_.fields())
        values_[static_cast<std::size_t>(field)] = oldValue(field);
}

void JetWriter::openForChange(RowPointer home)
{
    requireCurrent();
    appended_ = 0;
    openOld(home);
    takeKeyValues();
    keys_.start(values_);
}

void JetWriter::takeChanges(std::span<const FieldChange> changes)
{
    std::fill(changed_.begin(), changed_.end(), false);
    for (const FieldChange& change : changes) {
        values_[static_cast<std::size_t>(change.field)] = change.value;
        changed_[static_cast<std::size_t>(change.field)] = true;
    }
}

/// A record that is its own parent follows its own change of key.
void JetWriter::takeOwnKey(const std::vector<ValueView>& before)
{
    ownKey_.clear();
    relations_.followOwnKey(
        [&before](int field) { return before[static_cast<std::size_t>(field)]; },
        [this](int field) { return newValue(field); }, ownKey_);
    for (const auto& [field, value] : ownKey_) {
        values_[static_cast<std::size_t>(field)] = value.view();
        changed_[static_cast<std::size_t>(field)] = true;
    }
}

std::vector<JetTable*> JetWriter::tablesWith(const Cascade& cascade)
{
    std::vector<JetTable*> tables{table_.get()};
    cascade.addTables(tables);
    return tables;
}

/// The record that is open gets the values that were taken: all that could be refused was.
void JetWriter::replaceRecord(RowPointer home)
{
    const Bytes bytes = buildRow();
    keys_.insert(home, false);
    placer_.replace(home, old_.stored, bytes);
    keys_.eraseOld(home);
    longs_.eraseOld();
    table_->countsChanged();
}

void JetWriter::update(RowId row, std::span<const FieldChange> changes)
{
    const RowPointer home = pointerOf(row);
    openForChange(home);
    const bool related = relations_.any();
    const std::vector<ValueView> before = related ? values_ : std::vector<ValueView>();
    takeChanges(changes);
    if (related)
        takeOwnKey(before);
    longs_.setChanged(values_, changed_);
    writeRowFields(false);
    keys_.prepare(values_, home);
    Cascade cascade(tables_);
    if (related) {
        std::vector<LinkedChange> linked;
        relations_.followUpdate(
            home, [&before](int field) { return before[static_cast<std::size_t>(field)]; },
            [this](int field) { return newValue(field); }, -1, linked);
        cascade.plan(table_->page(), home, std::move(linked));
    }
    WholeChange(tablesWith(cascade)).make([&] {
        cascade.run();
        replaceRecord(home);
    });
}

void JetWriter::updateLinked(RowPointer home, std::span<const FieldChange> changes)
{
    openForChange(home);
    takeChanges(changes);
    longs_.setChanged(values_, changed_);
    writeRowFields(false);
    keys_.prepare(values_, home);
    replaceRecord(home);
}

/// The record that is open goes.
void JetWriter::removeRecord(RowPointer home)
{
    keys_.eraseOld(home);
    longs_.setNone();
    placer_.remove(home, old_.stored);
    longs_.eraseOld();
}

void JetWriter::remove(RowId row)
{
    const RowPointer home = pointerOf(row);
    openForChange(home);
    Cascade cascade(tables_);
    if (relations_.any()) {
        std::vector<LinkedChange> linked;
        relations_.followRemove(
            home, [this](int field) { return newValue(field); }, linked);
        cascade.plan(table_->page(), home, std::move(linked));
    }
    WholeChange(tablesWith(cascade)).make([&] {
        cascade.run();
        removeRecord(home);
    });
}

void JetWriter::removeLinked(RowPointer home)
{
    openForChange(home);
    removeRecord(home);
}

void JetWriter::follow(LinkedChange& change, std::vector<LinkedChange>& out)
{
    requireCurrent();
    openOld(change.row);
    takeKeyValues();
    if (change.remove)
        return relations_.followRemove(
            change.row, [this](int field) { return newValue(field); }, out);
    const std::vector<ValueView> old = values_;
    for (const auto& [field, value] : change.fields)
        values_[static_cast<std::size_t>(field)] = value.view();
    takeOwnKey(old);
    for (auto& [field, value] : ownKey_)
        change.fields.emplace_back(field, std::move(value));
    for (const auto& [field, value] : change.fields)  // they may lie elsewhere now
        values_[static_cast<std::size_t>(field)] = value.view();
    relations_.followUpdate(
        change.row, [&old](int field) { return old[static_cast<std::size_t>(field)]; },
        [this](int field) { return newValue(field); }, change.end, out);
}

}  // namespace velnor::jet
