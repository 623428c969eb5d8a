#include "access/formats/jet/table_copy.h"

#include <algorithm>
#include <cstring>

#include "access/formats/jet/catalog.h"
#include "access/formats/jet/data_page.h"
#include "access/formats/jet/definition_gaps.h"
#include "access/formats/jet/text_compression.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {

/// A memo or OLE field on its way.
struct TableCopy::LongField {
    int field = 0;
    std::unique_ptr<LongValueColumn> target;
    std::string stored;    // of the record in hand, for the new file
    bool present = false;  // it has a value
    std::size_t at = 0;    // of the header in the record's bytes
};

void TableCopy::damaged(const std::string& what) const
{
    throw EngineError(EngineErrorNumber::Corrupt, "Table \"" + from_.name() + "\" is damaged (" +
                                                      what + "); repair the database first.");
}

TableCopy::TableCopy(JetTable& from, JetFile& to, PageNumber newDefinition, MapRecords& maps,
                     const std::function<PageNumber(PageNumber)>& newPageOf,
                     const TableCopyOptions& options)
    : from_(from), file_(to), options_(options),
      laidAnew_(!options.salvage && hasGaps(from.def()) && fitsWithoutGaps(from)),
      reader_(from.plan()), places_(from.file().pageCount())
{
    define(newDefinition, maps, newPageOf);
    filler_ = std::make_unique<RowFiller>(*to_);
    if (laidAnew_ || options.salvage)
        buffer_ = std::make_unique<RowWriterBuffer>(to_->plan());
    for (std::size_t i = 0; i < from.plan().fields.size(); ++i) {
        if (!from.plan().fields[i].longValue())
            continue;
        LongField field;
        field.field = static_cast<int>(i);
        if (const LongValueMaps* own = to_->def().mapsOf(to_->plan().fields[i].id))
            field.target = std::make_unique<LongValueColumn>(to, *own);
        longs_.push_back(std::move(field));
    }
    if (options.numbers)
        numberField_ = fieldNamed(from, options.numbers->field);
    without_.assign(to_->def().realIndexes.size(), 0);
    for (const RealIndex& index : to_->def().realIndexes)
        countsNulls_ = countsNulls_ || index.ignoreNulls();
    plain_ = longs_.empty() && !options.numbers && !laidAnew_ && !countsNulls_ && !options.salvage;
}

TableCopy::~TableCopy() = default;

/// The new definition: with maps, roots and neighbours of its own, and no records.
void TableCopy::define(PageNumber page, MapRecords& maps,
                       const std::function<PageNumber(PageNumber)>& newPageOf)
{
    TableDef def = laidAnew_ ? withoutGaps(from_.def()) : from_.def();
    def.chain = {page};
    def.recordCount = 0;
    def.ownedMap = maps.add();
    def.spaceMap = maps.add();
    def.longValues.clear();
    for (const Column& column : def.columns)
        if (column.longValue()) {
            const RowPointer owned = maps.add();
            def.longValues.push_back({column.id, owned, maps.add()});
        }
    for (RealIndex& index : def.realIndexes)
        layIndex(file_, maps, page, index);
    for (LogicalIndex& index : def.logicalIndexes)
        if (index.relation != RelationKind::None)
            index.otherTable = newPageOf(index.otherTable);
    writeTableChain(file_, buildTableDef(def, file_.names()), def.chain);
    to_ = std::make_shared<JetTable>(file_, page, from_.name());
}

void TableCopy::run()
{
    copyRecords();
    for (int real = 0; real < to_->indexCount(); ++real)
        copyIndex(real);
    dropLostIndexes();
    if (definitionChanged_)
        writeTableChain(file_, buildTableDef(to_->def(), file_.names()), to_->def().chain);
    to_->countsChanged();
    to_->saveCounts();
    if (lostRecords_ > 0)
        note(std::to_string(lostRecords_) + " records could not be read and are lost.", false);
    if (lostValues_ > 0)
        note(std::to_string(lostValues_) + " values could not be read; they are Null now.", false);
}

void TableCopy::note(const std::string& text, bool harmless)
{
    if (options_.report)
        options_.report({"table " + from_.name(), text, harmless});
}

// ---- records

void TableCopy::copyRecords()
{
    if (!options_.salvage && !from_.whyReadOnly().empty())
        damaged("its list of pages");
    for (const PageNumber page : options_.pages ? *options_.pages : from_.pages())
        copyPage(page);
    if (options_.salvage)
        copyStrays();
    filler_->finish();
    to_->def().recordCount = static_cast<std::uint32_t>(records_);
    if (largestNumber_ > to_->def().lastAutonumber)
        to_->def().lastAutonumber = static_cast<std::int32_t>(largestNumber_);
}

void TableCopy::copyPage(PageNumber number)
{
    const auto page = from_.dataPage(number);
    if (!page) {
        if (!options_.salvage)
            damaged("page " + std::to_string(number));
        note("Page " + std::to_string(number) + " holds no records that can be read.", false);
        return;
    }
    places_.beginPage(number);
    const DataPage view(from_.file().format(), page->data());
    for (int slot = 0; slot < view.rowCount(); ++slot) {
        if (!view.delivered(slot))
            continue;
        const auto row = from_.rowOn(*page, slot);
        if (!row) {
            lost({number, static_cast<std::uint8_t>(slot)}, "its bytes are not there");
            continue;
        }
        if (options_.salvage &&
            !(row->stored == RowPointer{number, static_cast<std::uint8_t>(slot)}))
            moved_.push_back(row->stored);
        copyRecord(slot, row->bytes, false);
    }
    options_.breathe();
}

/// Rows that were moved here from a home that is gone: they are records as well.
void TableCopy::copyStrays()
{
    std::sort(moved_.begin(), moved_.end(),
              [](RowPointer a, RowPointer b) { return a.word() < b.word(); });
    std::int64_t found = 0;
    for (const PageNumber number : options_.pages ? *options_.pages : from_.pages()) {
        const auto page = from_.dataPage(number);
        if (!page)
            continue;
        const DataPage view(from_.file().format(), page->data());
        for (int slot = 0; slot < view.rowCount(); ++slot) {
            const RowPointer here{number, static_cast<std::uint8_t>(slot)};
            if ((view.entry(slot) & row_flag::kDeleted) != row_flag::kHidden ||
                std::binary_search(moved_.begin(), moved_.end(), here,
                                   [](RowPointer a, RowPointer b) { return a.word() < b.word(); }))
                continue;
            if (const auto bytes = view.row(slot); bytes && !bytes->empty()) {
                copyRecord(slot, *bytes, true);
                ++found;
            }
        }
    }
    if (found > 0)
        note(std::to_string(found) + " records whose places were lost are found again.", true);
}

void TableCopy::lost(RowPointer place, const char* why)
{
    if (!options_.salvage)
        damaged("the record on page " + std::to_string(place.page) + ", row " +
                std::to_string(place.slot) + ": " + why);
    ++lostRecords_;
}

/// `stray`: no old place leads to it.
void TableCopy::copyRecord(int slot, Bytes row, bool stray)
{
    RowPointer placed;
    if (plain_) {
        placed = filler_->add(row);
    } else {
        row_.assign(row.begin(), row.end());
        if (!reader_.open(row_))
            return lost({}, "it is cut short");
        if (options_.numbers && !renumber(row_))
            return;
        moveLongValues();
        if (options_.salvage)
            lookAtFields();
        const auto bytes = laidAnew_ || options_.salvage ? laidAnew() : patched();
        if (bytes.empty())
            return lost({}, "it is too large");
        placed = filler_->add(bytes);
        if (countsNulls_)
            countNulls();
    }
    ++records_;
    if (!stray)
        places_.add(slot, placed);
}

/// False when the record is to be left out.
bool TableCopy::renumber(std::vector<std::uint8_t>& row)
{
    const auto stored = numberField_ < 0 ? std::nullopt : reader_.raw(numberField_);
    if (!stored || stored->size() < 4)
        return !options_.salvage;  // an object without a number is none
    std::string scratch;
    const auto others = [&](const char* name) {
        const int field = fieldNamed(from_, name);
        const bool readable = field >= 0 && (!options_.salvage || soundField(field));
        return readable ? reader_.value(field, scratch) : ValueView::null();
    };
    const auto number = options_.numbers->renumber(loadLE<std::int32_t>(stored->data()), others);
    if (!number)
        return false;
    storeLE(row.data() + (stored->data() - row.data()), *number);
    return true;
}

void TableCopy::moveLongValues()
{
    for (LongField& field : longs_)
        moveLongValue(field);
}

/// One that cannot be read is left out.
void TableCopy::moveLongValue(LongField& field)
{
    const auto stored = reader_.raw(field.field);
    field.present = stored.has_value();
    if (!stored)
        return;
    field.at = static_cast<std::size_t>(stored->data() - row_.data());
    const auto header = LongValueHeader::read(*stored);
    if (header && header->kind == LongValueKind::Inline &&
        stored->size() - LongValueHeader::kBytes >= header->length &&
        acceptable(field.field, stored->subspan(LongValueHeader::kBytes, header->length))) {
        field.stored.assign(reinterpret_cast<const char*>(stored->data()), stored->size());
        return;
    }
    const auto bytes = readLongValue(from_.file(), *stored, gathered_);
    if (bytes && field.target && acceptable(field.field, *bytes)) {
        field.target->write(*bytes, bytes->size(), false, field.stored);
        return;
    }
    if (!options_.salvage)
        damaged("a memo or OLE value");
    field.present = false;
    ++lostValues_;
}

/// Salvage: whether a value that can be read makes sense.
bool TableCopy::acceptable(int field, Bytes value) const
{
    if (!options_.makesSense)
        return true;
    const FieldPlan& plan = from_.plan().fields[static_cast<std::size_t>(field)];
    return options_.makesSense(from_.def().columns[static_cast<std::size_t>(plan.column)].name,
                               value);
}

/// The record with the new places of its long values.
TableCopy::Bytes TableCopy::patched()
{
    for (const LongField& field : longs_)
        if (field.present)
            std::memcpy(row_.data() + field.at, field.stored.data(), LongValueHeader::kBytes);
    return row_;
}

/// The record, laid out by the new definition.
TableCopy::Bytes TableCopy::laidAnew()
{
    buffer_->clear();
    const auto& fields = from_.plan().fields;
    auto nextLong = longs_.begin();
    for (int i = 0; i < static_cast<int>(fields.size()); ++i) {
        if (fields[static_cast<std::size_t>(i)].longValue()) {
            const LongField& value = *nextLong++;
            if (value.present)
                buffer_->setRaw(i, {reinterpret_cast<const std::uint8_t*>(value.stored.data()),
                                    value.stored.size()});
        } else if (fields[static_cast<std::size_t>(i)].type == column_type::kBoolean) {
            buffer_->set(i, ValueView::boolean(!reader_.isNull(i)));
        } else if (const auto raw = reader_.raw(i); raw && (!options_.salvage || soundField(i))) {
            buffer_->setRaw(i, *raw);
        }
    }
    // Of a damaged record written before fields were added: with them it may have no room.
    if (options_.salvage && buffer_->size() > static_cast<std::size_t>(file_.format().row.maxBytes))
        return {};
    return buffer_->build();
}

/// Salvage: counts what cannot be read, and keeps automatic numbers from being given twice.
void TableCopy::lookAtFields()
{
    for (int i = 0; i < static_cast<int>(from_.plan().fields.size()); ++i) {
        const FieldPlan& plan = from_.plan().fields[static_cast<std::size_t>(i)];
        if (!soundField(i)) {
            ++lostValues_;
            continue;
        }
        const bool number = plan.type == column_type::kLong &&
                            from_.def().columns[static_cast<std::size_t>(plan.column)].autonumber();
        if (const auto raw = number ? reader_.raw(i) : std::nullopt)
            largestNumber_ =
                std::max<std::int64_t>(largestNumber_, loadLE<std::int32_t>(raw->data()));
    }
}

/// Long values are looked at where they are moved.
bool TableCopy::soundField(int field)
{
    const FieldPlan& plan = from_.plan().fields[static_cast<std::size_t>(field)];
    if (reader_.isNull(field) || plan.type == column_type::kBoolean || plan.longValue())
        return true;
    const auto raw = reader_.raw(field);
    if (!raw)
        return false;
    if (plan.type == column_type::kBinary)
        return raw->size() <= plan.length;
    if (plan.type != column_type::kText)
        return !reader_.value(field, gathered_).isNull();
    if (!from_.file().format().wideText || raw->size() <= plan.length / 2u)
        return raw->size() <= plan.length;
    return 2 * utf16Length(decodeText(*raw, gathered_)) <= plan.length;
}

void TableCopy::countNulls()
{
    const auto& indexes = from_.def().realIndexes;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        if (!indexes[i].ignoreNulls())
            continue;
        const bool none = std::all_of(
            indexes[i].columns.begin(), indexes[i].columns.end(), [&](const IndexColumn& column) {
                const int field = from_.plan().fieldOfId(column.id);
                return field < 0 || (reader_.isNull(field) &&
                                     from_.plan().fields[static_cast<std::size_t>(field)].type !=
                                         column_type::kBoolean);
            });
        without_[i] += none;
    }
}

}  // namespace velnor::jet
