#include "access/formats/jet/jet_writer.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "access/formats/jet/cascade.h"
#include "access/formats/jet/jet_cursor.h"
#include "access/formats/jet/text_compression.h"

namespace velnor::jet {
namespace {

std::mt19937_64& randomSource()
{
    static std::mt19937_64 source{std::random_device{}()};
    return source;
}

bool isText(const FieldPlan& plan)
{
    return plan.type == column_type::kMemo;
}

}  // namespace

JetWriter::JetWriter(std::shared_ptr<JetTable> table, const TableByPage& tables,
                     bool randomAutonumber)
    : table_(std::move(table)), tables_(tables), relations_(*table_, tables),
      randomAutonumber_(randomAutonumber), placer_(*table_), buffer_(table_->plan()),
      reader_(table_->plan())
{
    if (!table_->whyReadOnly().empty())
        throw EngineError(EngineErrorNumber::NotSupported, table_->whyReadOnly());
    const auto& fields = table_->plan().fields;
    const bool jet3 = !table_->file().format().wideText;
    for (int i = 0; i < table_->indexCount(); ++i) {
        IndexPart part;
        part.open = &table_->index(i);
        part.real = i;
        part.keys =
            std::make_unique<KeyBuilder>(jet3, &table_->file().codePage(), part.open->keyColumns);
        indexes_.push_back(std::move(part));
    }
    longOfField_.assign(fields.size(), -1);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!fields[i].longValue())
            continue;
        longOfField_[i] = static_cast<int>(longs_.size());
        LongPart part;
        part.field = static_cast<int>(i);
        if (const LongValueMaps* maps = table_->def().mapsOf(fields[i].id))
            part.column = std::make_unique<LongValueColumn>(table_->file(), *maps);
        longs_.push_back(std::move(part));
    }
    values_.resize(fields.size());
    changed_.resize(fields.size());
    scratch_.resize(fields.size());
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
    for (LongPart& part : longs_) {
        const auto stored = reader_.raw(part.field);
        part.old.clear();
        if (stored)
            part.old.assign(reinterpret_cast<const char*>(stored->data()), stored->size());
    }
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
    if (!isText(plan))
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

/// A Null autonumber gets its number; one that is given moves the counter on.
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

// ---- keys

void JetWriter::buildKey(IndexPart& index, std::vector<std::uint8_t>& key, bool& has)
{
    const auto& fields = table_->plan().fields;
    keyValues_.clear();
    for (const int field : index.open->fields) {
        ValueView v = field < 0 ? ValueView::null() : values_[field];
        if (field >= 0 && v.isNull() && fields[field].type == column_type::kBoolean)
            v = ValueView::boolean(false);
        keyValues_.push_back(v);
    }
    const KeyView built = index.keys->build(keyValues_);
    key.assign(built.begin(), built.end());
    has = takesKey(definition(index), *index.keys);
}

void JetWriter::prepareNewKeys(RowPointer self)
{
    for (IndexPart& index : indexes_) {
        index.inserted = false;
        buildKey(index, index.newKey, index.hasNew);
        index.changes =
            index.hasNew != index.hadOld || (index.hasNew && index.newKey != index.oldKey);
        if (!index.changes)
            continue;
        requireKey(definition(index), *index.keys, table_->name());
        index.canWait = !definition(index).unique();
        if (index.hasNew && definition(index).unique() && !index.keys->allNull())
            refuseDuplicate(index, self);
    }
}

void JetWriter::refuseDuplicate(IndexPart& index, RowPointer self)
{
    index.canWait = index.open->tree->beyondAll(index.newKey);
    if (!index.canWait && index.open->tree->otherWithKey(index.newKey, self))
        refuseDuplicateKey(table_->name());
}

/// Keys of the record as it stands. One whose order is not known is found by its row instead.
void JetWriter::prepareOldKeys()
{
    for (IndexPart& index : indexes_) {
        buildKey(index, index.oldKey, index.hadOld);
        index.hasNew = false;
        index.changes = true;
        index.inserted = false;
    }
}

void JetWriter::insertEntries(RowPointer home, bool later)
{
    for (IndexPart& index : indexes_) {
        if (!index.changes || !index.hasNew)
            continue;
        if (later && index.canWait) {
            index.open->tree->insertLater(index.newKey, home);
            index.inserted = true;
        } else {
            index.inserted = index.open->tree->insert(index.newKey, home);
        }
    }
}

void JetWriter::undoEntries(RowPointer home)
{
    for (IndexPart& index : indexes_)
        if (index.inserted) {
            index.inserted = false;
            index.open->tree->erase(index.newKey, home);
        }
}

void JetWriter::eraseOldEntries(RowPointer home)
{
    for (IndexPart& index : indexes_) {
        if (!index.changes || !index.hadOld || index.open->tree->erase(index.oldKey, home))
            continue;
        // The entry has another key than ours: it is looked for by its row.
        IndexWalker walker(*index.open->tree);
        for (bool on = walker.first(); on; on = walker.next())
            if (walker.row() == home) {
                const std::vector<std::uint8_t> key(walker.key().begin(), walker.key().end());
                index.open->tree->erase(key, home);
                break;
            }
    }
}

// ---- long values

void JetWriter::encodeLong(const LongPart& part, std::string& bytes, std::size_t& plain) const
{
    const FieldPlan& plan = table_->plan().fields[part.field];
    const JetFile& file = table_->file();
    bytes.clear();
    if (plan.type == column_type::kOle) {
        if (part.value.kind() != ValueKind::Bytes)
            throw EngineError(EngineErrorNumber::TypeConversion,
                              "The value does not fit the type of its field.");
        const auto data = part.value.asBytes();
        bytes.assign(reinterpret_cast<const char*>(data.data()), data.size());
        plain = bytes.size();
        return;
    }
    if (part.value.kind() != ValueKind::Text)
        throw EngineError(EngineErrorNumber::TypeConversion,
                          "The value does not fit the type of its field.");
    if (file.format().wideText) {
        encodeMemo(part.value.asText(), plan.compress, bytes);
        plain = 2 * utf16Length(part.value.asText());
    } else {
        if (!file.codePage().encode(part.value.asText(), bytes))
            throw EngineError(EngineErrorNumber::TypeConversion,
                              "The text has letters that the file's code page cannot hold.");
        plain = bytes.size();
    }
}

/// Bytes that a new value will take in the row.
std::size_t JetWriter::inlineBytes(const LongPart& part)
{
    const LongValueLayout& limits = table_->file().format().longValue;
    std::size_t plain = 0;
    encodeLong(part, encoded_, plain);
    return LongValueHeader::kBytes +
           (plain <= static_cast<std::size_t>(limits.maxInline) ? encoded_.size() : 0);
}

void JetWriter::writeLongValues(bool mayInline)
{
    for (LongPart& part : longs_) {
        if (!part.set || part.value.isNull())
            continue;
        if (!part.column)
            throw EngineError(EngineErrorNumber::Corrupt,
                              "The definition of table \"" + table_->name() +
                                  "\" is damaged; repair the database.");
        std::size_t plain = 0;
        encodeLong(part, encoded_, plain);
        part.column->write(
            {reinterpret_cast<const std::uint8_t*>(encoded_.data()), encoded_.size()}, plain,
            mayInline, part.stored);
        part.written = true;
        buffer_.setRaw(part.field, {reinterpret_cast<const std::uint8_t*>(part.stored.data()),
                                    part.stored.size()});
    }
}

void JetWriter::undoLongValues()
{
    for (LongPart& part : longs_)
        if (part.written) {
            part.written = false;
            part.column->erase(
                {reinterpret_cast<const std::uint8_t*>(part.stored.data()), part.stored.size()});
        }
}

void JetWriter::eraseOldLongValues()
{
    for (LongPart& part : longs_)
        if (part.set && !part.old.empty() && part.column)
            part.column->erase(
                {reinterpret_cast<const std::uint8_t*>(part.old.data()), part.old.size()});
}

// ---- the row

/// Puts every value but new long ones into the row buffer.
void JetWriter::writeRowFields(bool fresh)
{
    const auto& fields = table_->plan().fields;
    buffer_.clear();
    for (int i = 0; i < static_cast<int>(fields.size()); ++i) {
        const int longAt = longOfField_[i];
        if (fresh || changed_[i]) {
            if (longAt < 0)
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
    std::size_t inRow = 0, outside = 0;
    for (const LongPart& part : longs_)
        if (part.set && !part.value.isNull()) {
            inRow += inlineBytes(part);
            outside += LongValueHeader::kBytes;
        }
    // The jump bytes of a long Jet 3 row are counted for the worst.
    const std::size_t slack = table_->file().format().row.wide ? 0 : 8;
    const std::size_t plain = buffer_.size();
    if (plain + outside > limit)
        throw EngineError(EngineErrorNumber::RecordTooLarge, "Record is too large.");
    writeLongValues(plain + inRow + slack <= limit);
    return buffer_.build();
}

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
    std::uint64_t wanted = kRoomAnIndex * indexes_.size();
    for (const IndexPart& index : indexes_)
        wanted += 3 * std::uint64_t{
                          index.open->tree->waitingBytes()};  // a tree is built beside the old one
    return table_->file().roomLeft() > wanted;
}

RowId JetWriter::insert(std::span<const ValueView> values)
{
    requireCurrent();
    values_.assign(values.begin(), values.end());
    values_.resize(table_->plan().fields.size());
    giveAutonumbers();
    for (LongPart& part : longs_) {
        part.set = true;
        part.value = values_[part.field];
        part.written = false;
        part.old.clear();
    }
    writeRowFields(true);
    for (IndexPart& index : indexes_)
        index.hadOld = false;
    prepareNewKeys({});
    if (relations_.any())
        relations_.checkInsert([this](int field) { return newValue(field); });

    RowPointer home;
    try {
        home = placer_.add(buildRow());
        insertEntries(home, appendsMany());
    } catch (...) {
        undoEntries(home);
        if (!home.isNull())
            placer_.remove(home, home);
        undoLongValues();
        throw;
    }

    TableDef& def = table_->def();
    const auto& fields = table_->plan().fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const Column& column = def.columns[fields[i].column];
        if (column.type == column_type::kLong && column.autonumber() && !randomAutonumber_ &&
            values_[i].kind() == ValueKind::Integer && values_[i].asInteger() > def.lastAutonumber)
            def.lastAutonumber = static_cast<std::int32_t>(values_[i].asInteger());
    }
    table_->countsChanged();
    return rowIdOf(home);
}

/// Of the record that is open: only what keys and relationships look at needs to be decoded.
void JetWriter::takeKeyValues()
{
    std::fill(values_.begin(), values_.end(), ValueView::null());
    for (const IndexPart& index : indexes_)
        for (const int field : index.open->fields)
            if (field >= 0)
                values_[field] = oldValue(field);
}

void JetWriter::update(RowId row, std::span<const FieldChange> changes)
{
    change(pointerOf(row), changes, true);
}

void JetWriter::updateLinked(RowPointer home, std::span<const FieldChange> changes)
{
    change(home, changes, false);
}

void JetWriter::change(RowPointer home, std::span<const FieldChange> changes, bool related)
{
    requireCurrent();
    appended_ = 0;
    openOld(home);
    takeKeyValues();
    prepareOldKeys();
    related = related && relations_.any();
    const std::vector<ValueView> before = related ? values_ : std::vector<ValueView>();

    std::fill(changed_.begin(), changed_.end(), false);
    for (const FieldChange& change : changes) {
        values_[change.field] = change.value;
        changed_[change.field] = true;
    }
    std::vector<std::pair<int, Value>> ownKey;
    if (related)
        relations_.followOwnKey([&before](int field) { return before[field]; },
                                [this](int field) { return newValue(field); }, ownKey);
    for (const auto& [field, value] : ownKey) {
        values_[field] = value.view();
        changed_[field] = true;
    }
    for (LongPart& part : longs_) {
        part.set = changed_[part.field];
        part.value = part.set ? values_[part.field] : ValueView::null();
        part.written = false;
    }
    writeRowFields(false);
    prepareNewKeys(home);
    std::optional<Cascade> cascade;
    if (related) {
        std::vector<LinkedChange> linked;
        relations_.followUpdate(
            home, [&before](int field) { return before[field]; },
            [this](int field) { return newValue(field); }, -1, linked);
        cascade.emplace(tables_);
        cascade->plan(table_->page(), home, std::move(linked));
        cascade->run();
    }

    try {
        const Bytes bytes = buildRow();
        insertEntries(home, false);
        placer_.replace(home, old_.stored, bytes);
    } catch (...) {
        undoEntries(home);
        undoLongValues();
        if (cascade)
            cascade->undo();
        throw;
    }
    eraseOldEntries(home);
    eraseOldLongValues();
    table_->countsChanged();
}

void JetWriter::remove(RowId row)
{
    take(pointerOf(row), true);
}

void JetWriter::removeLinked(RowPointer home)
{
    take(home, false);
}

void JetWriter::take(RowPointer home, bool related)
{
    requireCurrent();
    appended_ = 0;
    openOld(home);
    takeKeyValues();
    if (related && relations_.any()) {
        std::vector<LinkedChange> linked;
        relations_.followRemove(
            home, [this](int field) { return newValue(field); }, linked);
        Cascade cascade(tables_);
        cascade.plan(table_->page(), home, std::move(linked));
        cascade.run();
    }
    prepareOldKeys();
    eraseOldEntries(home);
    for (LongPart& part : longs_) {
        part.set = true;
        part.value = ValueView::null();
    }
    placer_.remove(home, old_.stored);
    eraseOldLongValues();
}

void JetWriter::follow(LinkedChange& change, std::vector<std::pair<int, Value>>& before,
                       std::vector<LinkedChange>& out)
{
    requireCurrent();
    openOld(change.row);
    takeKeyValues();
    if (change.remove)
        return relations_.followRemove(
            change.row, [this](int field) { return newValue(field); }, out);
    for (const auto& [field, value] : change.fields)
        before.emplace_back(field, Value(values_[field]));  // an index has it
    const std::vector<ValueView> old = values_;
    for (const auto& [field, value] : change.fields)
        values_[field] = value.view();
    std::vector<std::pair<int, Value>> ownKey;
    relations_.followOwnKey([&old](int field) { return old[field]; },
                            [this](int field) { return newValue(field); }, ownKey);
    for (auto& [field, value] : ownKey) {
        before.emplace_back(field, Value(old[field]));
        change.fields.emplace_back(field, std::move(value));
    }
    for (const auto& [field, value] : change.fields)  // they may lie elsewhere now
        values_[field] = value.view();
    relations_.followUpdate(
        change.row, [&old](int field) { return old[field]; },
        [this](int field) { return newValue(field); }, change.end, out);
}

}  // namespace velnor::jet
