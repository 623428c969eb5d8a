#include "access/formats/jet/check_rows.h"

#include <algorithm>

#include "access/formats/jet/data_page.h"
#include "access/formats/jet/long_value.h"
#include "access/formats/jet/text_compression.h"
#include "access/storage/byte_reader.h"

namespace velnor::jet {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kPointerBytes = 4;

class RowCheck {
public:
    RowCheck(CheckContext& context, JetTable& table, const std::string& where)
        : context_(context), table_(table), where_(where), format_(table.file().format()),
          reader_(table.plan())
    {
    }
    RowFacts run();

private:
    struct LongField {
        int field;
        CheckContext::Owner owner;
        std::vector<PageNumber> pages;
    };
    void claimLongValues();
    void claimDataPages();
    void dataPage(PageNumber number);
    void record(const PageRef& page, int slot);
    void fields(RowPointer home, const HeldRow& row);
    void sizeOf(RowPointer home, const FieldPlan& plan, Bytes stored);
    void longValue(RowPointer home, const LongField& field, Bytes stored);
    std::optional<std::size_t> longRow(RowPointer home, const LongField& field, RowPointer at,
                                       bool chain, RowPointer& next);
    void indexEntries();
    void moves();
    void longPages();
    void counts();
    void pageFields(const std::string& what, PageNumber number, const PageRef& page);
    void wrong(RowPointer home, const std::string& text)
    {
        context_.problem(where_, "The record on " + placeText(home) + ": " + text);
    }
    const std::string& nameOf(const FieldPlan& plan) const
    {
        return table_.def().columns[static_cast<std::size_t>(plan.column)].name;
    }

    CheckContext& context_;
    JetTable& table_;
    const std::string& where_;
    const JetFormat& format_;
    RowReader reader_;
    RowFacts facts_;
    std::vector<PageNumber> pages_;
    std::vector<LongField> longFields_;
    std::vector<std::uint32_t> moved_;   // where moved records are said to be
    std::vector<std::uint32_t> hidden_;  // where rows lie that are targets of moves
    std::int64_t largestNumber_ = 0;
    std::string scratch_;
};

RowFacts RowCheck::run()
{
    facts_.entries.assign(table_.def().realIndexes.size(), 0);
    claimLongValues();
    claimDataPages();
    for (const PageNumber page : pages_)
        dataPage(page);
    moves();
    longPages();
    counts();
    return facts_;
}

void RowCheck::claimLongValues()
{
    for (std::size_t i = 0; i < table_.plan().fields.size(); ++i) {
        const FieldPlan& plan = table_.plan().fields[i];
        if (!plan.longValue())
            continue;
        const std::string what = where_ + ", field " + nameOf(plan);
        LongField field{static_cast<int>(i), context_.addOwner(what), {}};
        if (const LongValueMaps* maps = table_.def().mapsOf(plan.id)) {
            field.pages = context_.useMap(maps->owned, what);
            for (const PageNumber page : field.pages)
                context_.claim(page, field.owner);
            if (maps->space.isNull()) {
                context_.note(what, "It has no map of pages with room.");
            } else {
                for (const PageNumber page : context_.useMap(maps->space, what))
                    if (context_.ownerOf(page) != field.owner)
                        context_.problem(what, "Page " + std::to_string(page) +
                                                   " is said to have room, but is not its own.");
            }
        } else {
            context_.problem(what, "It has no maps of its pages.");
        }
        longFields_.push_back(std::move(field));
    }
}

void RowCheck::claimDataPages()
{
    pages_ = context_.useMap(table_.def().ownedMap, where_);
    const auto owner = context_.addOwner("the records of " + where_);
    for (const PageNumber page : pages_)
        context_.claim(page, owner);
    if (!table_.whyReadOnly().empty()) {
        context_.problem(where_, table_.whyReadOnly());
        pages_ = table_.pages();
        for (const PageNumber page : pages_)
            if (context_.ownerOf(page) == 0)
                context_.claim(page, owner);
    }
    for (const PageNumber page : context_.useMap(table_.def().spaceMap, where_))
        if (!std::ranges::binary_search(pages_, page))
            context_.problem(where_, "Page " + std::to_string(page) +
                                         " is said to have room, but is not its own.");
}

/// The fields in front of the rows, and the row table.
void RowCheck::pageFields(const std::string& what, PageNumber number, const PageRef& page)
{
    const DataPage data(format_, page.data());
    const std::string name = "Page " + std::to_string(number);
    const auto rows = loadLE<std::uint16_t>(page.data() + format_.data.rowCount);
    if (rows != data.rowCount() || rows > kMaxRowsPerPage) {
        context_.problem(what, name + " has an impossible number of rows.");
        return;
    }
    for (int slot = 0; slot < data.rowCount(); ++slot)
        if (!data.row(slot)) {
            context_.problem(what, name + " has a damaged row table.");
            return;
        }
    if (loadLE<std::uint16_t>(page.data() + format_.data.freeBytes) != data.freeBytes())
        context_.problem(what, name + " says a wrong number of free bytes.");
}

void RowCheck::dataPage(PageNumber number)
{
    const auto page = table_.dataPage(number);
    if (!page) {
        context_.problem(where_, "Page " + std::to_string(number) +
                                     " in its map holds no records of this table.");
        return;
    }
    pageFields(where_, number, *page);
    const DataPage data(format_, page->data());
    for (int slot = 0; slot < data.rowCount(); ++slot) {
        if (data.delivered(slot))
            record(*page, slot);
        else if ((data.entry(slot) & row_flag::kDeleted) == row_flag::kHidden)
            hidden_.push_back(RowPointer{number, static_cast<std::uint8_t>(slot)}.word());
    }
}

void RowCheck::record(const PageRef& page, int slot)
{
    const RowPointer home{page.number(), static_cast<std::uint8_t>(slot)};
    ++facts_.records;
    const auto row = table_.rowOn(page, slot);
    if (!row)
        return wrong(home, "it was moved to a place where it is not.");
    if (row->stored != home)
        moved_.push_back(row->stored.word());
    if (!reader_.open(row->bytes) || !reader_.sound())
        return wrong(home, "it is damaged.");
    fields(home, *row);
    indexEntries();
}

void RowCheck::fields(RowPointer home, const HeldRow&)
{
    std::size_t nextLong = 0;
    for (std::size_t i = 0; i < table_.plan().fields.size(); ++i) {
        const FieldPlan& plan = table_.plan().fields[i];
        const int field = static_cast<int>(i);
        if (plan.longValue()) {
            const LongField& longField = longFields_[nextLong++];
            if (const auto stored = reader_.raw(field))
                longValue(home, longField, *stored);
        } else if (plan.type == column_type::kText || plan.type == column_type::kBinary) {
            if (const auto stored = reader_.raw(field))
                sizeOf(home, plan, *stored);
        } else if (plan.type == column_type::kLong &&
                   table_.def().columns[static_cast<std::size_t>(plan.column)].autonumber()) {
            const ValueView value = reader_.value(field, scratch_);
            if (!value.isNull())
                largestNumber_ = std::max(largestNumber_, value.asInteger());
        }
    }
}

void RowCheck::sizeOf(RowPointer home, const FieldPlan& plan, Bytes stored)
{
    std::size_t size = stored.size();
    const bool packed = plan.type == column_type::kText && format_.wideText && size >= 2 &&
                        stored[0] == 0xFF && stored[1] == 0xFE;
    if (packed)
        size = (size - 2) * 2;  // at most
    if (size <= plan.length)
        return;
    if (packed && utf16Length(decodeText(stored, scratch_)) * 2 <= plan.length)
        return;
    wrong(home, "field " + nameOf(plan) + " is longer than it may be.");
}

void RowCheck::longValue(RowPointer home, const LongField& field, Bytes stored)
{
    const auto damaged = [&](const char* how) {
        const FieldPlan& plan = table_.plan().fields[static_cast<std::size_t>(field.field)];
        wrong(home, "field " + nameOf(plan) + " " + how);
    };
    const auto header = LongValueHeader::read(stored);
    if (!header)
        return damaged("has a damaged head.");
    if (header->kind == LongValueKind::Inline) {
        if (stored.size() - LongValueHeader::kBytes < header->length)
            damaged("is cut short.");
        return;
    }
    const bool chain = header->kind == LongValueKind::Chain;
    std::uint64_t left = header->length;
    RowPointer next = header->first;
    if (chain && format_.data.longValueStamp >= 0 && next.page < context_.file.pageCount() &&
        DataPage(format_, context_.file.page(next.page).data()).longValueStamp() != header->stamp)
        damaged("does not carry the stamp of its first page.");
    do {
        const RowPointer at = next;
        const auto size = longRow(home, field, at, chain, next);
        if (!size)
            return damaged("leads to a row that is not its own.");
        if (!chain && *size < left)
            return damaged("is cut short.");
        left -= std::min<std::uint64_t>(left, *size);
    } while (left > 0);
    if (chain && !next.isNull())
        damaged("goes on behind its end.");
}

/// Bytes of a value in one of its rows; nothing when the row is another's or no such row.
std::optional<std::size_t> RowCheck::longRow(RowPointer, const LongField& field, RowPointer at,
                                             bool chain, RowPointer& next)
{
    if (at.isNull() || context_.ownerOf(at.page) != field.owner || !context_.useLongRow(at))
        return std::nullopt;
    const PageRef page = context_.file.page(at.page);
    const DataPage data(format_, page.data());
    if (!data.isData() || data.owner() != kLongValueOwner || at.slot >= data.rowCount() ||
        (data.entry(at.slot) & row_flag::kDeleted) == row_flag::kDeleted)
        return std::nullopt;
    const auto bytes = data.row(at.slot);
    if (!bytes || (chain && bytes->size() <= kPointerBytes))
        return std::nullopt;
    if (!chain)
        return bytes->size();
    next = RowPointer::fromWord(loadLE<std::uint32_t>(bytes->data()));
    return bytes->size() - kPointerBytes;
}

void RowCheck::indexEntries()
{
    const auto& indexes = table_.def().realIndexes;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        std::size_t nulls = 0;
        for (const IndexColumn& column : indexes[i].columns) {
            const int field = table_.plan().fieldOfId(column.id);
            if (field >= 0 && reader_.isNull(field) &&
                table_.plan().fields[static_cast<std::size_t>(field)].type != column_type::kBoolean)
                ++nulls;
        }
        if (nulls > 0 && indexes[i].required())
            context_.problem(where_, "A record has Null in index " + std::to_string(i) +
                                         ", which forbids it.");
        if (!indexes[i].ignoreNulls() || nulls < indexes[i].columns.size())
            ++facts_.entries[i];
    }
}

void RowCheck::moves()
{
    std::ranges::sort(moved_);
    std::ranges::sort(hidden_);
    if (std::ranges::adjacent_find(moved_) != moved_.end())
        context_.problem(where_, "Two records were moved to the same place.");
    std::vector<std::uint32_t> odd;
    std::ranges::set_difference(moved_, hidden_, std::back_inserter(odd));
    for (const std::uint32_t row : odd)
        context_.problem(where_, "The row on " + placeText(RowPointer::fromWord(row)) +
                                     " holds a moved record, but is not marked so.");
    odd.clear();
    std::ranges::set_difference(hidden_, moved_, std::back_inserter(odd));
    for (const std::uint32_t row : odd)
        context_.problem(where_, "The row on " + placeText(RowPointer::fromWord(row)) +
                                     " is marked as a moved record, but none leads to it.");
}

void RowCheck::longPages()
{
    for (const LongField& field : longFields_) {
        const std::string& what = context_.ownerName(field.owner);
        for (const PageNumber number : field.pages) {
            const PageRef page = context_.file.page(number);
            const DataPage data(format_, page.data());
            if (!data.isData() || data.owner() != kLongValueOwner) {
                context_.problem(what, "Page " + std::to_string(number) +
                                           " in its map holds no long values.");
                continue;
            }
            pageFields(what, number, page);
            for (int slot = 0; slot < data.rowCount(); ++slot) {
                const RowPointer row{number, static_cast<std::uint8_t>(slot)};
                if ((data.entry(slot) & row_flag::kDeleted) != row_flag::kDeleted &&
                    !context_.longRowUsed(row))
                    context_.note(what, "No record names the value on " + placeText(row) + ".");
            }
        }
    }
}

void RowCheck::counts()
{
    if (facts_.records != table_.def().recordCount)
        context_.note(where_, "The stored number of records is " +
                                  std::to_string(table_.def().recordCount) + "; there are " +
                                  std::to_string(facts_.records) + ".");
    if (largestNumber_ > table_.def().lastAutonumber)
        context_.note(where_, "The next automatic number would be one that is in use.");
}

}  // namespace

RowFacts checkRows(CheckContext& context, JetTable& table, const std::string& where)
{
    return RowCheck(context, table, where).run();
}

}  // namespace velnor::jet
